// Host form of the generated DrelRequestData: its size in bytes, then the fields in order. A
// reader stops at the size, so an older reader skips the fields of a newer record.

#include <aidl/vendor/quarn/hardware/drel/DrelRequestData.h>

#include "transact_util.h"

namespace aidl {
namespace vendor {
namespace quarn {
namespace hardware {
namespace drel {
const char* DrelRequestData::descriptor = "vendor.quarn.hardware.drel.DrelRequestData";

binder_status_t DrelRequestData::readFromParcel(const AParcel* _aidl_parcel) {
    return aidl_host::readSized(
            _aidl_parcel, [&] { return AParcel_readInt32(_aidl_parcel, &resId); },
            [&] { return AParcel_readInt32(_aidl_parcel, &resParam); },
            [&] { return ::ndk::AParcel_readString(_aidl_parcel, &resValue); },
            [&] { return ::ndk::AParcel_readString(_aidl_parcel, &resPath); },
            [&] { return ::ndk::AParcel_readString(_aidl_parcel, &resExtra); });
}

binder_status_t DrelRequestData::writeToParcel(AParcel* _aidl_parcel) const {
    return aidl_host::writeSized(_aidl_parcel, [&] {
        binder_status_t _aidl_ret_status = AParcel_writeInt32(_aidl_parcel, resId);
        auto ok = [&] { return _aidl_ret_status == STATUS_OK; };
        if (ok()) _aidl_ret_status = AParcel_writeInt32(_aidl_parcel, resParam);
        if (ok()) _aidl_ret_status = ::ndk::AParcel_writeString(_aidl_parcel, resValue);
        if (ok()) _aidl_ret_status = ::ndk::AParcel_writeString(_aidl_parcel, resPath);
        if (ok()) _aidl_ret_status = ::ndk::AParcel_writeString(_aidl_parcel, resExtra);
        return _aidl_ret_status;
    });
}
}  // namespace drel
}  // namespace hardware
}  // namespace quarn
}  // namespace vendor
}  // namespace aidl
