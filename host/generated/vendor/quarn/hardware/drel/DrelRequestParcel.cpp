// Host form of the generated DrelRequestParcel: its size in bytes, then the fields in order.

#include <aidl/vendor/quarn/hardware/drel/DrelRequestParcel.h>
#include <aidl/vendor/quarn/hardware/drel/IDrelCallback.h>

#include "transact_util.h"

namespace aidl {
namespace vendor {
namespace quarn {
namespace hardware {
namespace drel {
const char* DrelRequestParcel::descriptor = "vendor.quarn.hardware.drel.DrelRequestParcel";

binder_status_t DrelRequestParcel::readFromParcel(const AParcel* _aidl_parcel) {
    const AParcel* p = _aidl_parcel;
    return aidl_host::readSized(
            p, [&] { return AParcel_readInt32(p, &requestType); },
            [&] { return ::ndk::AParcel_readVector(p, &resources); },
            [&] { return AParcel_readBool(p, &flag); },
            [&] { return AParcel_readInt32(p, &param3); },
            [&] { return AParcel_readInt32(p, &param5); },
            [&] { return AParcel_readInt64(p, &timeout); },
            [&] { return ::ndk::AParcel_readVector(p, &tags); },
            [&] { return AParcel_readInt32(p, &reqId); },
            [&] { return IDrelCallback::readFromParcel(p, &callback); },
            [&] { return ::ndk::AParcel_readString(p, &pkg); },
            [&] { return ::ndk::AParcel_readString(p, &identity); },
            [&] { return ::ndk::AParcel_readVector(p, &intList); });
}

binder_status_t DrelRequestParcel::writeToParcel(AParcel* _aidl_parcel) const {
    return aidl_host::writeSized(_aidl_parcel, [&] {
        binder_status_t _aidl_ret_status = AParcel_writeInt32(_aidl_parcel, requestType);
        auto ok = [&] { return _aidl_ret_status == STATUS_OK; };
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
    });
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
