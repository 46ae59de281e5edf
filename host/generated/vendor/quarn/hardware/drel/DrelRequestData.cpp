// Host form of the generated DrelRequestData: a field count, then the fields in order. A reader
// stops at the count, so an older reader accepts a newer record.

#include <aidl/vendor/quarn/hardware/drel/DrelRequestData.h>

namespace aidl {
namespace vendor {
namespace quarn {
namespace hardware {
namespace drel {
const char* DrelRequestData::descriptor = "vendor.quarn.hardware.drel.DrelRequestData";

binder_status_t DrelRequestData::readFromParcel(const AParcel* _aidl_parcel) {
    int32_t _aidl_count = 0;
    binder_status_t _aidl_ret_status = AParcel_readInt32(_aidl_parcel, &_aidl_count);
    if (_aidl_ret_status != STATUS_OK) return _aidl_ret_status;
    if (_aidl_count < 0) return STATUS_BAD_VALUE;
    int32_t _aidl_read = 0;
    auto field = [&](auto* value) {
        if (_aidl_ret_status != STATUS_OK || _aidl_read++ >= _aidl_count) return;
        _aidl_ret_status = ::ndk::AParcel_readData(_aidl_parcel, value);
    };
    field(&resId);
    field(&resParam);
    field(&resValue);
    field(&resPath);
    field(&resExtra);
    return _aidl_ret_status;
}

binder_status_t DrelRequestData::writeToParcel(AParcel* _aidl_parcel) const {
    binder_status_t _aidl_ret_status = AParcel_writeInt32(_aidl_parcel, 5);
    auto field = [&](const auto& value) {
        if (_aidl_ret_status == STATUS_OK) {
            _aidl_ret_status = ::ndk::AParcel_writeData(_aidl_parcel, value);
        }
    };
    field(resId);
    field(resParam);
    field(resValue);
    field(resPath);
    field(resExtra);
    return _aidl_ret_status;
}
}  // namespace drel
}  // namespace hardware
}  // namespace quarn
}  // namespace vendor
}  // namespace aidl
