// Host form of the aidl NDK backend's output for vendor.quarn.hardware.drel.DrelRequestParcel
// (version 1). Kept in step with aidl/vendor/quarn/hardware/drel/DrelRequestParcel.aidl.
#pragma once

#include <aidl/vendor/quarn/hardware/drel/DrelRequestData.h>
#include <android/binder_interface_utils.h>
#include <android/binder_parcel_utils.h>
#include <android/binder_to_string.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <sstream>
#include <string>
#include <tuple>
#include <vector>

namespace aidl {
namespace vendor {
namespace quarn {
namespace hardware {
namespace drel {
class IDrelCallback;
class DrelRequestParcel {
public:
    typedef std::false_type fixed_size;
    static const char* descriptor;

    int32_t requestType = 0;
    std::vector<::aidl::vendor::quarn::hardware::drel::DrelRequestData> resources;
    bool flag = false;
    int32_t param3 = 0;
    int32_t param5 = 0;
    int64_t timeout = 0L;
    std::optional<std::vector<std::optional<std::string>>> tags;
    int32_t reqId = 0;
    std::shared_ptr<::aidl::vendor::quarn::hardware::drel::IDrelCallback> callback;
    std::optional<std::string> pkg;
    std::optional<std::string> identity;
    std::optional<std::vector<int32_t>> intList;

    binder_status_t readFromParcel(const AParcel* parcel);
    binder_status_t writeToParcel(AParcel* parcel) const;

    inline bool operator!=(const DrelRequestParcel& rhs) const {
        return std::tie(requestType, resources, flag, param3, param5, timeout, tags, reqId,
                        callback, pkg, identity,
                        intList) != std::tie(rhs.requestType, rhs.resources, rhs.flag, rhs.param3,
                                             rhs.param5, rhs.timeout, rhs.tags, rhs.reqId,
                                             rhs.callback, rhs.pkg, rhs.identity, rhs.intList);
    }
    inline bool operator<(const DrelRequestParcel& rhs) const {
        return std::tie(requestType, resources, flag, param3, param5, timeout, tags, reqId,
                        callback, pkg, identity,
                        intList) < std::tie(rhs.requestType, rhs.resources, rhs.flag, rhs.param3,
                                            rhs.param5, rhs.timeout, rhs.tags, rhs.reqId,
                                            rhs.callback, rhs.pkg, rhs.identity, rhs.intList);
    }
    inline bool operator<=(const DrelRequestParcel& rhs) const {
        return std::tie(requestType, resources, flag, param3, param5, timeout, tags, reqId,
                        callback, pkg, identity,
                        intList) <= std::tie(rhs.requestType, rhs.resources, rhs.flag, rhs.param3,
                                             rhs.param5, rhs.timeout, rhs.tags, rhs.reqId,
                                             rhs.callback, rhs.pkg, rhs.identity, rhs.intList);
    }
    inline bool operator==(const DrelRequestParcel& rhs) const {
        return std::tie(requestType, resources, flag, param3, param5, timeout, tags, reqId,
                        callback, pkg, identity,
                        intList) == std::tie(rhs.requestType, rhs.resources, rhs.flag, rhs.param3,
                                             rhs.param5, rhs.timeout, rhs.tags, rhs.reqId,
                                             rhs.callback, rhs.pkg, rhs.identity, rhs.intList);
    }
    inline bool operator>(const DrelRequestParcel& rhs) const {
        return std::tie(requestType, resources, flag, param3, param5, timeout, tags, reqId,
                        callback, pkg, identity,
                        intList) > std::tie(rhs.requestType, rhs.resources, rhs.flag, rhs.param3,
                                            rhs.param5, rhs.timeout, rhs.tags, rhs.reqId,
                                            rhs.callback, rhs.pkg, rhs.identity, rhs.intList);
    }
    inline bool operator>=(const DrelRequestParcel& rhs) const {
        return std::tie(requestType, resources, flag, param3, param5, timeout, tags, reqId,
                        callback, pkg, identity,
                        intList) >= std::tie(rhs.requestType, rhs.resources, rhs.flag, rhs.param3,
                                             rhs.param5, rhs.timeout, rhs.tags, rhs.reqId,
                                             rhs.callback, rhs.pkg, rhs.identity, rhs.intList);
    }

    static const ::ndk::parcelable_stability_t _aidl_stability = ::ndk::STABILITY_VINTF;
    std::string toString() const;
};
}  // namespace drel
}  // namespace hardware
}  // namespace quarn
}  // namespace vendor
}  // namespace aidl
