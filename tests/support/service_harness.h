// A fixture that runs the example DrelService under the service's instance name on a manual
// clock, and reaches it only through a proxy of the host stand-in, as a client does; plus a
// recording IDrelCallback and record builders.
#pragma once

#include <aidl/vendor/quarn/hardware/drel/BnDrelCallback.h>
#include <aidl/vendor/quarn/hardware/drel/IDrel.h>
#include <android/binder_manager.h>
#include <gtest/gtest.h>
#include <hostbinder/hostbinder.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include "drel-service/DrelService.h"

namespace aidl {
namespace vendor {
namespace quarn {
namespace hardware {
namespace drel {
// Readable records in test failures.
inline void PrintTo(const DrelRequestData& record, std::ostream* os) {
    *os << record.toString();
}
}  // namespace drel
}  // namespace hardware
}  // namespace quarn
}  // namespace vendor
}  // namespace aidl

namespace qel_test {

using ::aidl::vendor::quarn::hardware::drel::BnDrelCallback;
using ::aidl::vendor::quarn::hardware::drel::DrelRequestData;
using ::aidl::vendor::quarn::hardware::drel::DrelRequestParcel;
using ::aidl::vendor::quarn::hardware::drel::DrelService;
using ::aidl::vendor::quarn::hardware::drel::IDrel;
using ::aidl::vendor::quarn::hardware::drel::IDrelCallback;
using Records = std::vector<DrelRequestData>;

inline constexpr const char* kDrelInstance = "vendor.quarn.hardware.drel.IDrel/default";

inline DrelRequestData idRecord(int32_t id, std::optional<std::string> value = std::nullopt) {
    DrelRequestData record;
    record.resId = id;
    record.resValue = std::move(value);
    return record;
}

inline DrelRequestData pathRecord(const std::string& path,
                                  std::optional<std::string> value = std::nullopt) {
    DrelRequestData record;
    record.resPath = path;
    record.resValue = std::move(value);
    return record;
}

// Records every report it is given. Reports arrive on binder threads; `onReport`, when set, runs
// inside onCallback (after the report is recorded) and its status is returned.
class RecordingCallback : public BnDrelCallback {
public:
    ::ndk::ScopedAStatus onCallback(const std::vector<DrelRequestData>& data) override {
        {
            std::lock_guard<std::mutex> lock(mutex_);
            reports_.push_back(data);
        }
        changed_.notify_all();
        if (onReport) return onReport(data);
        return ::ndk::ScopedAStatus::ok();
    }

    std::vector<Records> reports() const {
        std::lock_guard<std::mutex> lock(mutex_);
        return reports_;
    }
    void clear() {
        std::lock_guard<std::mutex> lock(mutex_);
        reports_.clear();
    }
    // Waits (for a bounded while) until `count` reports have arrived; for reports sent from the
    // service's own expiry thread rather than from inside a call.
    bool waitForReports(size_t count) {
        std::unique_lock<std::mutex> lock(mutex_);
        return changed_.wait_for(lock, std::chrono::seconds(10),
                                 [&] { return reports_.size() >= count; });
    }

    std::function<::ndk::ScopedAStatus(const std::vector<DrelRequestData>&)> onReport;

private:
    mutable std::mutex mutex_;
    std::condition_variable changed_;
    std::vector<Records> reports_;
};

class DrelServiceTest : public ::testing::Test {
protected:
    static constexpr size_t kHistoryCapacity = 3;

    void SetUp() override {
        hostbinder::reset();
        DrelService::Options options;
        options.clock = [this] { return std::chrono::milliseconds(clockMs_.load()); };
        options.historyCapacity = kHistoryCapacity;
        service = ::ndk::SharedRefBase::make<DrelService>(options);
        ASSERT_EQ(EX_NONE, AServiceManager_addService(service->asBinder().get(), kDrelInstance));
        ::ndk::SpAIBinder binder(AServiceManager_checkService(kDrelInstance));
        drel = IDrel::fromBinder(binder);
        ASSERT_NE(nullptr, drel);
        ASSERT_TRUE(drel->isRemote());
    }
    void TearDown() override {
        drel.reset();
        hostbinder::reset();
    }

    void advance(std::chrono::milliseconds by) { clockMs_ += by.count(); }

    // request() of the given kind and records; returns the service's answer.
    int32_t send(int32_t kind, Records records, int64_t timeout = 0,
                 std::shared_ptr<IDrelCallback> callback = nullptr) {
        DrelRequestParcel parcel;
        parcel.requestType = kind;
        parcel.resources = std::move(records);
        parcel.timeout = timeout;
        parcel.callback = std::move(callback);
        int32_t result = -100;
        EXPECT_TRUE(drel->request(parcel, &result).isOk());
        return result;
    }
    int32_t hold(int32_t id, const std::string& value, int64_t timeout = 0) {
        return send(DrelService::kKindResource, {idRecord(id, value)}, timeout);
    }
    int32_t release(int32_t handle) {
        int32_t result = -100;
        EXPECT_TRUE(drel->release(handle, &result).isOk());
        return result;
    }
    Records query(int32_t kind, Records records) {
        DrelRequestParcel parcel;
        parcel.requestType = kind;
        parcel.resources = std::move(records);
        Records reply;
        EXPECT_TRUE(drel->stateRequest(parcel, &reply).isOk());
        return reply;
    }
    // The value in force of one resource, as a state query answers it.
    std::string valueOf(int32_t id) {
        Records reply = query(DrelService::kKindState, {idRecord(id)});
        if (reply.size() != 1 || !reply[0].resValue) return "<no answer>";
        return *reply[0].resValue;
    }
    int32_t listen(Records records, const std::shared_ptr<IDrelCallback>& callback) {
        DrelRequestParcel parcel;
        parcel.resources = std::move(records);
        int32_t handle = -100;
        EXPECT_TRUE(drel->listeningRegister(parcel, callback, &handle).isOk());
        return handle;
    }

    std::shared_ptr<DrelService> service;  // for the service's own accessors
    std::shared_ptr<IDrel> drel;           // how clients reach it

private:
    std::atomic<int64_t> clockMs_{1000};
};

}  // namespace qel_test
