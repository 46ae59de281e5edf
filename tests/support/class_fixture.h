// Support for the class API's tests: a fixture that also empties the process-wide callback
// registries around each test, recording caller callbacks, and helpers to build resources and
// parcels, read the registries and state expected log lines.
#pragma once

#include <gtest/gtest.h>
#include <hostbinder/hostbinder.h>

#include <functional>
#include <list>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "IClientCallback.h"
#include "halclient.h"
#include "halclient/halclient_internal.h"
#include "support/service_fixture.h"
#include "support/wrapper_test_util.h"

namespace qel_test {

using Hal = drelHalclient;
using Resource = QelClient::Resource;
using ResourceList = std::list<QelClient::Resource>;

inline const std::string kRequestTag = "DRELFramework-lib-vendor";

inline LogLine info(const std::string& message) {
    return {ANDROID_LOG_INFO, kRequestTag, message};
}
inline LogLine error(const std::string& message) {
    return {ANDROID_LOG_ERROR, kRequestTag, message};
}
inline LogLine failed(const std::string& name) {
    return error(name + "() failed: drel HAL service not available");
}
inline LogLine cbInfo(const std::string& message) {
    return {ANDROID_LOG_INFO, std::string("DrelFramework-lib-vendor"), message};
}

// A wire record of the path form.
inline DrelRequestData wirePath(const std::string& path, std::optional<std::string> value) {
    DrelRequestData d;
    d.resPath = path;
    d.resValue = std::move(value);
    return d;
}

// A parcel with the fields a request sets; the others stay at their defaults.
inline DrelRequestParcel requestParcel(int32_t type, int32_t reqId, int64_t timeout, int32_t param3,
                                       bool flag, int32_t param5,
                                       std::vector<DrelRequestData> resources) {
    DrelRequestParcel p;
    p.requestType = type;
    p.reqId = reqId;
    p.timeout = timeout;
    p.param3 = param3;
    p.flag = flag;
    p.param5 = param5;
    p.resources = std::move(resources);
    return p;
}
// A query or registration: param5 and the records only.
inline DrelRequestParcel queryParcel(int32_t param5, std::vector<DrelRequestData> resources) {
    return requestParcel(0, 0, 0, 0, false, param5, std::move(resources));
}
// `parcel` with the debug tag that every path-addressed parcel carries.
inline DrelRequestParcel debugTagged(DrelRequestParcel parcel) {
    parcel.tags = std::vector<std::optional<std::string>>{std::string("zdbdebug")};
    return parcel;
}

inline std::vector<std::shared_ptr<DrelCallbackClient>> parked() {
    std::lock_guard<std::mutex> lock(request_callback_mutex);
    return request_callbacks;
}

// A copy of one entry of callback_groups.
struct Group {
    std::vector<int> ids;
    std::vector<std::string> paths;
    int handle;
    std::shared_ptr<DrelCallbackClient> client;
};
inline std::vector<Group> groups() {
    std::lock_guard<std::mutex> lock(callback_group_mutex);
    std::vector<Group> copies;
    for (const DrelCallbackGroup& g : callback_groups) {
        copies.push_back({g.ids, g.paths, g.handle, g.client});
    }
    return copies;
}
inline std::vector<int> groupHandles() {
    std::vector<int> handles;
    for (const Group& group : groups()) handles.push_back(group.handle);
    return handles;
}

// Records each report; `onReport`, when set, runs inside the caller's callback.
class RecordingCallback : public IClientCallback {
public:
    void onCallback(std::list<QelClient::Resource> resources) override {
        if (onReport) onReport();
        std::lock_guard<std::mutex> lock(mMutex);
        mReports.push_back(std::move(resources));
    }
    std::vector<ResourceList> reports() const {
        std::lock_guard<std::mutex> lock(mMutex);
        return mReports;
    }

    std::function<void()> onReport;

private:
    mutable std::mutex mMutex;
    std::vector<ResourceList> mReports;
};

class RecordingPathCallback : public IClientCallbackByPath {
public:
    struct Report {
        std::vector<std::string> paths;
        std::vector<std::string> values;
    };
    void onCallback(std::vector<std::string> paths, std::vector<std::string> values) override {
        std::lock_guard<std::mutex> lock(mMutex);
        mReports.push_back({std::move(paths), std::move(values)});
    }
    std::vector<Report> reports() const {
        std::lock_guard<std::mutex> lock(mMutex);
        return mReports;
    }

private:
    mutable std::mutex mMutex;
    std::vector<Report> mReports;
};

using ClassApiFixture = ServiceFixture;

}  // namespace qel_test
