// Host form of the aidl NDK backend's output for vendor.quarn.hardware.drel.DrelRequestData
// (version 1). Kept in step with aidl/vendor/quarn/hardware/drel/DrelRequestData.aidl.
#pragma once

#include <android/binder_interface_utils.h>
#include <android/binder_parcel_utils.h>
#include <android/binder_to_string.h>

#include <cstdint>
#include <optional>
#include <sstream>
#include <string>
#include <tuple>

namespace ndk {
enum parcelable_stability_t { STABILITY_LOCAL, STABILITY_VINTF };
}  // namespace ndk

namespace aidl {
namespace vendor {
namespace quarn {
namespace hardware {
namespace drel {
class DrelRequestData {
public:
    typedef std::false_type fixed_size;
    static const char* descriptor;

    int32_t resId = 0;
    int32_t resParam = 0;
    std::optional<std::string> resValue;
    std::optional<std::string> resPath;
    std::optional<std::string> resExtra;

    binder_status_t readFromParcel(const AParcel* parcel);
    binder_status_t writeToParcel(AParcel* parcel) const;

    inline bool operator!=(const DrelRequestData& rhs) const {
        return std::tie(resId, resParam, resValue, resPath, resExtra) !=
               std::tie(rhs.resId, rhs.resParam, rhs.resValue, rhs.resPath, rhs.resExtra);
    }
    inline bool operator<(const DrelRequestData& rhs) const {
        return std::tie(resId, resParam, resValue, resPath, resExtra) <
               std::tie(rhs.resId, rhs.resParam, rhs.resValue, rhs.resPath, rhs.resExtra);
    }
    inline bool operator<=(const DrelRequestData& rhs) const {
        return std::tie(resId, resParam, resValue, resPath, resExtra) <=
               std::tie(rhs.resId, rhs.resParam, rhs.resValue, rhs.resPath, rhs.resExtra);
    }
    inline bool operator==(const DrelRequestData& rhs) const {
        return std::tie(resId, resParam, resValue, resPath, resExtra) ==
               std::tie(rhs.resId, rhs.resParam, rhs.resValue, rhs.resPath, rhs.resExtra);
    }
    inline bool operator>(const DrelRequestData& rhs) const {
        return std::tie(resId, resParam, resValue, resPath, resExtra) >
               std::tie(rhs.resId, rhs.resParam, rhs.resValue, rhs.resPath, rhs.resExtra);
    }
    inline bool operator>=(const DrelRequestData& rhs) const {
        return std::tie(resId, resParam, resValue, resPath, resExtra) >=
               std::tie(rhs.resId, rhs.resParam, rhs.resValue, rhs.resPath, rhs.resExtra);
    }

    static const ::ndk::parcelable_stability_t _aidl_stability = ::ndk::STABILITY_VINTF;
    inline std::string toString() const {
        std::ostringstream os;
        os << "DrelRequestData{";
        os << "resId: " << ::android::internal::ToString(resId);
        os << ", resParam: " << ::android::internal::ToString(resParam);
        os << ", resValue: " << ::android::internal::ToString(resValue);
        os << ", resPath: " << ::android::internal::ToString(resPath);
        os << ", resExtra: " << ::android::internal::ToString(resExtra);
        os << "}";
        return os.str();
    }
};
}  // namespace drel
}  // namespace hardware
}  // namespace quarn
}  // namespace vendor
}  // namespace aidl
