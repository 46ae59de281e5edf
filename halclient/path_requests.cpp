// The path-addressed forms of the class API: resources named by a path string, with their values
// as strings beside them. Every parcel sent from here carries the debug tag.

#include <utility>

#include "halclient.h"
#include "halclient/halclient_internal.h"
#include "halclient/registries.h"

using ::aidl::vendor::quarn::hardware::drel::DrelRequestData;
using ::aidl::vendor::quarn::hardware::drel::DrelRequestParcel;
using qel_internal::GuardedCall;
using qel_internal::kDrelConnection;

namespace {

// A query or registration by path: the debug tag and `param` in param5, nothing else set yet.
DrelRequestParcel pathQueryParcel(int param) {
    DrelRequestParcel parcel;
    drelHalclient::drel_add_zdbdebug_for_request_parcel(parcel);
    parcel.param5 = param;
    return parcel;
}

// The wire record of one path: no id, the path, and the value when there is one.
DrelRequestData pathRecord(const std::string& path, const std::string* value) {
    DrelRequestData record;
    record.resPath = path;
    if (value != nullptr) record.resValue = *value;
    return record;
}

// One guarded resource-control request by path; `callback` is null for the form without one.
// paths[i] is sent with values[i].
int requestByPath(int reqId, long timeout, const std::vector<std::string>& paths,
                  const std::vector<std::string>& values, int param3, int flag, int param5,
                  const std::shared_ptr<IClientCallbackByPath>* callback) {
    int32_t result = -1;
    // The callback form's name keeps its "drel client" prefix, so that its failure line begins
    // like its other lines.
    GuardedCall call(kDrelConnection, callback != nullptr
                                              ? "drel client drel_resctl_request_with_callback"
                                              : "drel_resctl_request_by_path");
    if (!call) return -1;

    DrelRequestParcel parcel;
    drelHalclient::drel_add_zdbdebug_for_request_parcel(parcel);
    if (flag >= 1) parcel.flag = true;
    if (paths.size() != values.size()) {
        // The callback form reuses the id form's wording.
        DREL_LOGE(
                "%s",
                callback != nullptr
                        ? "drel client drel_resctl_request ERROR: size unmatched for id and value "
                        : "drel_resctl_request ERROR: size unmatched for paths and value ");
        return -1;
    }
    parcel.requestType = 1;
    parcel.reqId = reqId;
    parcel.timeout = timeout;
    parcel.param3 = param3;
    parcel.param5 = param5;
    if (callback != nullptr) {
        auto client = qel_internal::parkRequestCallback(
                *callback, /*byPath=*/true,
                "drel client drel_resctl_request_with_callback add to request_callbacks");
        parcel.callback = client;
    }
    parcel.resources.reserve(paths.size());
    for (size_t i = 0; i < paths.size(); ++i) {
        parcel.resources.push_back(pathRecord(paths[i], &values[i]));
    }

    call.finish(call->request(parcel, &result));
    return result;
}

// One guarded listening registration for `paths`, whose wire records are `records`. Refused when
// a registration for the same path list (values aside) exists already.
int registerPaths(const char* failureName, std::vector<std::string> paths,
                  std::vector<DrelRequestData> records, int param,
                  const std::shared_ptr<IClientCallbackByPath>& callback) {
    GuardedCall call(kDrelConnection, failureName);
    if (!call) return -1;

    DrelRequestParcel parcel = pathQueryParcel(param);
    parcel.resources = std::move(records);

    return qel_internal::registerListening(call, parcel, std::move(paths),
                                           &DrelCallbackGroup::paths, callback);
}

}  // namespace

void drelHalclient::drel_add_zdbdebug_for_request_parcel(DrelRequestParcel& parcel) {
    parcel.tags = std::vector<std::optional<std::string>>{std::string("zdbdebug")};
}

int drelHalclient::drel_resctl_request_by_path(int reqId, long timeout,
                                               const std::vector<std::string>& paths,
                                               const std::vector<std::string>& values, int param3,
                                               int flag, int param5) {
    DREL_LOGI("drel client drel_resctl_request");
    return requestByPath(reqId, timeout, paths, values, param3, flag, param5, nullptr);
}

int drelHalclient::drel_resctl_request_with_callback_by_path(
        int reqId, long timeout, const std::vector<std::string>& paths,
        const std::vector<std::string>& values, int param3, int flag, int param5,
        const std::shared_ptr<IClientCallbackByPath>& callback) {
    DREL_LOGI("drel client drel_resctl_request_with_callback");
    return requestByPath(reqId, timeout, paths, values, param3, flag, param5, &callback);
}

int drelHalclient::drel_res_state_request_by_path(const std::vector<std::string>& paths,
                                                  const std::vector<std::string>& values, int param,
                                                  std::vector<std::string>& states) {
    DREL_LOGI("drel client drel_res_state_request");
    GuardedCall call(kDrelConnection, "drel_res_state_request");
    if (!call) return -1;

    DrelRequestParcel parcel = pathQueryParcel(param);
    // Values go out only when there is one for every path; otherwise the paths go alone.
    bool withValues = !values.empty() && values.size() == paths.size();
    parcel.resources.reserve(paths.size());
    for (size_t i = 0; i < paths.size(); ++i) {
        parcel.resources.push_back(pathRecord(paths[i], withValues ? &values[i] : nullptr));
    }

    std::vector<DrelRequestData> reply;
    if (!call.finish(call->stateRequest(parcel, &reply)) || reply.empty()) return -1;
    // Values only, in reply order: the caller matches them to paths by position.
    for (const DrelRequestData& record : reply) states.push_back(record.resValue.value_or(""));
    int size = static_cast<int>(states.size());
    DREL_LOGI("drel client drel_res_state_request size %d", size);
    return size;
}

int drelHalclient::drel_res_state_request_map_by_path(
        const std::map<std::string, std::string>& pathValues, int param,
        std::map<std::string, std::string>& stateMap) {
    DREL_LOGI("drel client drel_res_state_request_map");
    GuardedCall call(kDrelConnection, "drel_res_state_request_map");
    if (!call) return -1;

    DrelRequestParcel parcel = pathQueryParcel(param);
    parcel.resources.reserve(pathValues.size());
    for (const auto& [path, value] : pathValues)
        parcel.resources.push_back(pathRecord(path, &value));

    std::vector<DrelRequestData> reply;
    if (!call.finish(call->stateRequest(parcel, &reply)) || reply.empty()) return -1;
    for (const DrelRequestData& record : reply) {
        // A record needs both its path and its value; a repeated path keeps the last value.
        if (!record.resPath || !record.resValue) continue;
        stateMap[*record.resPath] = *record.resValue;
        DREL_LOGE("res_Path: %s, res_Value:%s", record.resPath->c_str(), record.resValue->c_str());
    }
    int size = static_cast<int>(stateMap.size());
    DREL_LOGI("drel client drel_res_state_request_map size %d", size);
    return size;
}

int drelHalclient::drel_res_listening_register_by_path(
        const std::vector<std::string>& paths, int param,
        const std::shared_ptr<IClientCallbackByPath>& callback) {
    DREL_LOGI("drel client drel_res_listening_register");
    std::vector<DrelRequestData> records;
    records.reserve(paths.size());
    for (const std::string& path : paths) records.push_back(pathRecord(path, nullptr));
    return registerPaths("drel_res_listening_register", paths, std::move(records), param, callback);
}

int drelHalclient::drel_res_listening_register_map_by_path(
        const std::map<std::string, std::string>& pathValues, int param,
        const std::shared_ptr<IClientCallbackByPath>& callback) {
    DREL_LOGI("drel client drel_res_listening_register_map");
    std::vector<std::string> paths;
    std::vector<DrelRequestData> records;
    paths.reserve(pathValues.size());
    records.reserve(pathValues.size());
    for (const auto& [path, value] : pathValues) {
        paths.push_back(path);
        records.push_back(pathRecord(path, &value));
    }
    return registerPaths("drel_res_listening_register_map", std::move(paths), std::move(records),
                         param, callback);
}
