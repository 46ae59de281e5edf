// Host form of the generated IDrelCallback: class definition, stub dispatch, proxy, statics.

#include <aidl/vendor/quarn/hardware/drel/BnDrelCallback.h>
#include <aidl/vendor/quarn/hardware/drel/BpDrelCallback.h>
#include <aidl/vendor/quarn/hardware/drel/IDrelCallback.h>
#include <android/binder_to_string.h>

#include <cassert>

#include "transact_util.h"

namespace aidl {
namespace vendor {
namespace quarn {
namespace hardware {
namespace drel {
namespace {
constexpr const char* kInterface = "vendor.quarn.hardware.drel.IDrelCallback";
using aidl_host::Args;
}  // namespace

static binder_status_t _aidl_vendor_quarn_hardware_drel_IDrelCallback_onTransact(
        AIBinder* _aidl_binder, transaction_code_t _aidl_code, const AParcel* _aidl_in,
        AParcel* _aidl_out) {
    std::shared_ptr<BnDrelCallback> _aidl_impl =
            std::static_pointer_cast<BnDrelCallback>(::ndk::ICInterface::asInterface(_aidl_binder));
    if (_aidl_impl == nullptr) return STATUS_DEAD_OBJECT;
    switch (_aidl_code) {
        case (FIRST_CALL_TRANSACTION + 0 /*onCallback*/): {
            std::vector<DrelRequestData> in_data;
            binder_status_t ret = ::ndk::AParcel_readVector(_aidl_in, &in_data);
            if (ret != STATUS_OK) return ret;
            ::ndk::ScopedAStatus status = aidl_host::logged(
                    BnDrelCallback::logFunc, kInterface, "onCallback", nullptr, _aidl_impl.get(),
                    [&] {
                        return Args{{"in_data", ::android::internal::ToString(in_data)}};
                    },
                    [&] { return _aidl_impl->onCallback(in_data); }, aidl_host::noResult);
            return aidl_host::stubReply(_aidl_out, status, aidl_host::noArgs);
        }
        case (FIRST_CALL_TRANSACTION + 16777214 /*getInterfaceVersion*/): {
            int32_t result = 0;
            ::ndk::ScopedAStatus status = _aidl_impl->getInterfaceVersion(&result);
            return aidl_host::stubReply(_aidl_out, status, [&](AParcel* out) {
                return AParcel_writeInt32(out, result);
            });
        }
        case (FIRST_CALL_TRANSACTION + 16777213 /*getInterfaceHash*/): {
            std::string result;
            ::ndk::ScopedAStatus status = _aidl_impl->getInterfaceHash(&result);
            return aidl_host::stubReply(_aidl_out, status, [&](AParcel* out) {
                return ::ndk::AParcel_writeString(out, result);
            });
        }
    }
    return STATUS_UNKNOWN_TRANSACTION;
}

static AIBinder_Class* _g_aidl_vendor_quarn_hardware_drel_IDrelCallback_clazz =
        ::ndk::ICInterface::defineClass(IDrelCallback::descriptor,
                                        _aidl_vendor_quarn_hardware_drel_IDrelCallback_onTransact);

BpDrelCallback::BpDrelCallback(const ::ndk::SpAIBinder& binder) : BpCInterface(binder) {}
BpDrelCallback::~BpDrelCallback() {}
std::function<void(const BpDrelCallback::TransactionLog&)> BpDrelCallback::logFunc;

::ndk::ScopedAStatus BpDrelCallback::onCallback(const std::vector<DrelRequestData>& in_data) {
    return aidl_host::logged(
            logFunc, kInterface, "onCallback", this, nullptr,
            [&] {
                return Args{{"in_data", ::android::internal::ToString(in_data)}};
            },
            [&] {
                return aidl_host::proxyTransact(
                        asBinder(), TRANSACTION_onCallback,
                        [&](AParcel* in) { return ::ndk::AParcel_writeVector(in, in_data); },
                        aidl_host::noReply);
            },
            aidl_host::noResult);
}

::ndk::ScopedAStatus BpDrelCallback::getInterfaceVersion(int32_t* _aidl_return) {
    if (_aidl_cached_version != -1) {
        *_aidl_return = _aidl_cached_version;
        return ::ndk::ScopedAStatus::ok();
    }
    ::ndk::ScopedAStatus status = aidl_host::proxyTransact(
            asBinder(), FIRST_CALL_TRANSACTION + 16777214, aidl_host::noArgs,
            [&](const AParcel* out) { return AParcel_readInt32(out, _aidl_return); });
    if (status.isOk()) _aidl_cached_version = *_aidl_return;
    return status;
}

::ndk::ScopedAStatus BpDrelCallback::getInterfaceHash(std::string* _aidl_return) {
    std::lock_guard<std::mutex> lock(_aidl_cached_hash_mutex);
    if (_aidl_cached_hash != "-1") {
        *_aidl_return = _aidl_cached_hash;
        return ::ndk::ScopedAStatus::ok();
    }
    ::ndk::ScopedAStatus status = aidl_host::proxyTransact(
            asBinder(), FIRST_CALL_TRANSACTION + 16777213, aidl_host::noArgs,
            [&](const AParcel* out) { return ::ndk::AParcel_readString(out, _aidl_return); });
    if (status.isOk()) _aidl_cached_hash = *_aidl_return;
    return status;
}

BnDrelCallback::BnDrelCallback() {}
BnDrelCallback::~BnDrelCallback() {}
std::function<void(const BnDrelCallback::TransactionLog&)> BnDrelCallback::logFunc;

::ndk::SpAIBinder BnDrelCallback::createBinder() {
    AIBinder* binder = AIBinder_new(_g_aidl_vendor_quarn_hardware_drel_IDrelCallback_clazz,
                                    static_cast<void*>(this));
    return ::ndk::SpAIBinder(binder);
}

::ndk::ScopedAStatus BnDrelCallback::getInterfaceVersion(int32_t* _aidl_return) {
    *_aidl_return = IDrelCallback::version;
    return ::ndk::ScopedAStatus(AStatus_newOk());
}

::ndk::ScopedAStatus BnDrelCallback::getInterfaceHash(std::string* _aidl_return) {
    *_aidl_return = IDrelCallback::hash;
    return ::ndk::ScopedAStatus(AStatus_newOk());
}

const char* IDrelCallback::descriptor = "vendor.quarn.hardware.drel.IDrelCallback";
IDrelCallback::IDrelCallback() {}
IDrelCallback::~IDrelCallback() {}

std::shared_ptr<IDrelCallback> IDrelCallback::fromBinder(const ::ndk::SpAIBinder& binder) {
    if (!AIBinder_associateClass(binder.get(),
                                 _g_aidl_vendor_quarn_hardware_drel_IDrelCallback_clazz)) {
        return nullptr;
    }
    std::shared_ptr<::ndk::ICInterface> interface = ::ndk::ICInterface::asInterface(binder.get());
    if (interface) return std::static_pointer_cast<IDrelCallback>(interface);
    return ::ndk::SharedRefBase::make<BpDrelCallback>(binder);
}

binder_status_t IDrelCallback::writeToParcel(AParcel* parcel,
                                             const std::shared_ptr<IDrelCallback>& instance) {
    return AParcel_writeStrongBinder(parcel, instance ? instance->asBinder().get() : nullptr);
}

binder_status_t IDrelCallback::readFromParcel(const AParcel* parcel,
                                              std::shared_ptr<IDrelCallback>* instance) {
    ::ndk::SpAIBinder binder;
    binder_status_t status = AParcel_readStrongBinder(parcel, binder.getR());
    if (status != STATUS_OK) return status;
    *instance = IDrelCallback::fromBinder(binder);
    return STATUS_OK;
}

bool IDrelCallback::setDefaultImpl(const std::shared_ptr<IDrelCallback>& impl) {
    assert(!IDrelCallback::default_impl);
    if (impl) {
        IDrelCallback::default_impl = impl;
        return true;
    }
    return false;
}

const std::shared_ptr<IDrelCallback>& IDrelCallback::getDefaultImpl() {
    return IDrelCallback::default_impl;
}

std::shared_ptr<IDrelCallback> IDrelCallback::default_impl = nullptr;

::ndk::ScopedAStatus IDrelCallbackDefault::onCallback(const std::vector<DrelRequestData>&) {
    return ::ndk::ScopedAStatus(AStatus_fromStatus(STATUS_UNKNOWN_TRANSACTION));
}
::ndk::ScopedAStatus IDrelCallbackDefault::getInterfaceVersion(int32_t* _aidl_return) {
    *_aidl_return = 0;
    return ::ndk::ScopedAStatus(AStatus_newOk());
}
::ndk::ScopedAStatus IDrelCallbackDefault::getInterfaceHash(std::string* _aidl_return) {
    *_aidl_return = "";
    return ::ndk::ScopedAStatus(AStatus_newOk());
}
::ndk::SpAIBinder IDrelCallbackDefault::asBinder() {
    return ::ndk::SpAIBinder();
}
bool IDrelCallbackDefault::isRemote() {
    return false;
}
}  // namespace drel
}  // namespace hardware
}  // namespace quarn
}  // namespace vendor
}  // namespace aidl
