// Host form of the generated DrelRequestParcel: a field count, then the fields in order.

#include <aidl/vendor/quarn/hardware/drel/DrelRequestParcel.h>
#include <aidl/vendor/quarn/hardware/drel/IDrelCallback.h>

namespace aidl {
namespace vendor {
namespace quarn {
namespace hardware {
namespace drel {
const char* DrelRequestParcel::descriptor = "vendor.quarn.hardware.drel.DrelRequestParcel";

binder_status_t DrelRequestParcel::readFromParcel(const AParcel* _aidl_parcel) {
    int32_t _aidl_count = 0;
    binder_status_t _aidl_ret_status = AParcel_readInt32(_aidl_parcel, &_aidl_count);
    if (_aidl_ret_status != STATUS_OK) return _aidl_ret_status;
    if (_aidl_count < 0) return STATUS_BAD_VALUE;
    int32_t _aidl_read = 0;
    auto more = [&] { return _aidl_ret_status == STATUS_OK && _aidl_read++ < _aidl_count; };
    if (more()) _aidl_ret_status = AParcel_readInt32(_aidl_parcel, &requestType);
    if (more()) _aidl_ret_status = ::ndk::AParcel_readVector(_aidl_parcel, &resources);
    if (more()) _aidl_ret_status = AParcel_readBool(_aidl_parcel, &flag);
    if (more()) _aidl_ret_status = AParcel_readInt32(_aidl_parcel, &param3);
    if (more()) _aidl_ret_status = AParcel_readInt32(_aidl_parcel, &param5);
    if (more()) _aidl_ret_status = AParcel_readInt64(_aidl_parcel, &timeout);
    if (more()) _aidl_ret_status = ::ndk::AParcel_readVector(_aidl_parcel, &tags);
    if (more()) _aidl_ret_status = AParcel_readInt32(_aidl_parcel, &reqId);
    if (more()) _aidl_ret_status = IDrelCallback::readFromParcel(_aidl_parcel, &callback);
    if (more()) _aidl_ret_status = ::ndk::AParcel_readString(_aidl_parcel, &pkg);
    if (more()) _aidl_ret_status = ::ndk::AParcel_readString(_aidl_parcel, &identity);
    if (more()) _aidl_ret_status = ::ndk::AParcel_readVector(_aidl_parcel, &intList);
    return _aidl_ret_status;
}

binder_status_t DrelRequestParcel::writeToParcel(AParcel* _aidl_parcel) const {
    binder_status_t _aidl_ret_status = AParcel_writeInt32(_aidl_parcel, 12);
    auto ok = [&] { return _aidl_ret_status == STATUS_OK; };
    if (ok()) _aidl_ret_status = AParcel_writeInt32(_aidl_parcel, requestType);
    if (ok()) _aidl_ret_status = ::ndk::AParcel_writeVector(_aidl_parcel, resources);
    if (ok()) _aidl_ret_status = AParcel_writeBool(_aidl_parcel, flag);
    if (ok()) _aidl_ret_status = AParcel_writeInt32(_aidl_parcel, param3);
    if (ok()) _aidl_ret_status = AParcel_writeInt32(_aidl_parcel, param5);
    if (ok()) _aidl_ret_status = AParcel_writeInt64(_aidl_parcel, timeout);
    if (ok()) _aidl_ret_status = ::ndk::AParcel_writeVector(_aidl_parcel, tags);
    if (ok()) _aidl_ret_status = AParcel_writeInt32(_aidl_parcel, reqId);
    if (ok()) _aidl_ret_status = IDrelCallback::writeToParcel(_aidl_parcel, callback);
    if (ok()) _aidl_ret_status = ::ndk::AParcel_writeString(_aidl_parcel, pkg);
    if (ok()) _aidl_ret_status = ::ndk::AParcel_writeString(_aidl_parcel, identity);
    if (ok()) _aidl_ret_status = ::ndk::AParcel_writeVector(_aidl_parcel, intList);
    return _aidl_ret_status;
}

std::string DrelRequestParcel::toString() const {
    std::ostringstream os;
    os << "DrelRequestParcel{";
    os << "requestType: " << ::android::internal::ToString(requestType);
    os << ", resources: " << ::android::internal::ToString(resources);
    os << ", flag: " << ::android::internal::ToString(flag);
    os << ", param3: " << ::android::internal::ToString(param3);
    os << ", param5: " << ::android::internal::ToString(param5);
    os << ", timeout: " << ::android::internal::ToString(timeout);
    os << ", tags: " << ::android::internal::ToString(tags);
    os << ", reqId: " << ::android::internal::ToString(reqId);
    os << ", callback: " << ::android::internal::ToString(callback);
    os << ", pkg: " << ::android::internal::ToString(pkg);
    os << ", identity: " << ::android::internal::ToString(identity);
    os << ", intList: " << ::android::internal::ToString(intList);
    os << "}";
    return os.str();
}
}  // namespace drel
}  // namespace hardware
}  // namespace quarn
}  // namespace vendor
}  // namespace aidl
