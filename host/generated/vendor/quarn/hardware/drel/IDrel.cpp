// Host form of the generated IDrel: class definition, stub dispatch, proxy, statics.

#include <aidl/vendor/quarn/hardware/drel/BnDrel.h>
#include <aidl/vendor/quarn/hardware/drel/BpDrel.h>
#include <aidl/vendor/quarn/hardware/drel/IDrel.h>
#include <android/binder_to_string.h>

#include <cassert>

#include "transact_util.h"

namespace aidl {
namespace vendor {
namespace quarn {
namespace hardware {
namespace drel {
namespace {
constexpr const char* kInterface = "vendor.quarn.hardware.drel.IDrel";
using aidl_host::Args;
}  // namespace

static binder_status_t _aidl_vendor_quarn_hardware_drel_IDrel_onTransact(
        AIBinder* _aidl_binder, transaction_code_t _aidl_code, const AParcel* _aidl_in,
        AParcel* _aidl_out) {
    std::shared_ptr<BnDrel> _aidl_impl =
            std::static_pointer_cast<BnDrel>(::ndk::ICInterface::asInterface(_aidl_binder));
    if (_aidl_impl == nullptr) return STATUS_DEAD_OBJECT;
    switch (_aidl_code) {
        case (FIRST_CALL_TRANSACTION + 0 /*init*/): {
            ::ndk::ScopedAStatus status = aidl_host::logged(
                    BnDrel::logFunc, kInterface, "init", nullptr, _aidl_impl.get(),
                    [&] { return Args{}; }, [&] { return _aidl_impl->init(); },
                    aidl_host::noResult);
            return aidl_host::stubReply(_aidl_out, status, aidl_host::noArgs);
        }
        case (FIRST_CALL_TRANSACTION + 1 /*request*/): {
            DrelRequestParcel in_parcel;
            if (binder_status_t ret = ::ndk::AParcel_readParcelable(_aidl_in, &in_parcel);
                ret != STATUS_OK)
                return ret;
            int32_t _aidl_return{};
            ::ndk::ScopedAStatus status = aidl_host::logged(
                    BnDrel::logFunc, kInterface, "request", nullptr, _aidl_impl.get(),
                    [&] {
                        return Args{{"in_parcel", ::android::internal::ToString(in_parcel)}};
                    },
                    [&] { return _aidl_impl->request(in_parcel, &_aidl_return); },
                    [&] { return ::android::internal::ToString(_aidl_return); });
            return aidl_host::stubReply(_aidl_out, status, [&](AParcel* out) {
                return AParcel_writeInt32(out, _aidl_return);
            });
        }
        case (FIRST_CALL_TRANSACTION + 2 /*release*/): {
            int32_t in_handle;
            if (binder_status_t ret = AParcel_readInt32(_aidl_in, &in_handle); ret != STATUS_OK)
                return ret;
            int32_t _aidl_return{};
            ::ndk::ScopedAStatus status = aidl_host::logged(
                    BnDrel::logFunc, kInterface, "release", nullptr, _aidl_impl.get(),
                    [&] {
                        return Args{{"in_handle", ::android::internal::ToString(in_handle)}};
                    },
                    [&] { return _aidl_impl->release(in_handle, &_aidl_return); },
                    [&] { return ::android::internal::ToString(_aidl_return); });
            return aidl_host::stubReply(_aidl_out, status, [&](AParcel* out) {
                return AParcel_writeInt32(out, _aidl_return);
            });
        }
        case (FIRST_CALL_TRANSACTION + 3 /*stateRequest*/): {
            DrelRequestParcel in_parcel;
            if (binder_status_t ret = ::ndk::AParcel_readParcelable(_aidl_in, &in_parcel);
                ret != STATUS_OK)
                return ret;
            std::vector<DrelRequestData> _aidl_return{};
            ::ndk::ScopedAStatus status = aidl_host::logged(
                    BnDrel::logFunc, kInterface, "stateRequest", nullptr, _aidl_impl.get(),
                    [&] {
                        return Args{{"in_parcel", ::android::internal::ToString(in_parcel)}};
                    },
                    [&] { return _aidl_impl->stateRequest(in_parcel, &_aidl_return); },
                    [&] { return ::android::internal::ToString(_aidl_return); });
            return aidl_host::stubReply(_aidl_out, status, [&](AParcel* out) {
                return ::ndk::AParcel_writeVector(out, _aidl_return);
            });
        }
        case (FIRST_CALL_TRANSACTION + 4 /*listeningRegister*/): {
            DrelRequestParcel in_parcel;
            if (binder_status_t ret = ::ndk::AParcel_readParcelable(_aidl_in, &in_parcel);
                ret != STATUS_OK)
                return ret;
            std::shared_ptr<IDrelCallback> in_callback;
            if (binder_status_t ret = IDrelCallback::readFromParcel(_aidl_in, &in_callback);
                ret != STATUS_OK)
                return ret;
            int32_t _aidl_return{};
            ::ndk::ScopedAStatus status = aidl_host::logged(
                    BnDrel::logFunc, kInterface, "listeningRegister", nullptr, _aidl_impl.get(),
                    [&] {
                        return Args{{"in_parcel", ::android::internal::ToString(in_parcel)},
                                    {"in_callback", ::android::internal::ToString(in_callback)}};
                    },
                    [&] {
                        return _aidl_impl->listeningRegister(in_parcel, in_callback, &_aidl_return);
                    },
                    [&] { return ::android::internal::ToString(_aidl_return); });
            return aidl_host::stubReply(_aidl_out, status, [&](AParcel* out) {
                return AParcel_writeInt32(out, _aidl_return);
            });
        }
        case (FIRST_CALL_TRANSACTION + 5 /*listeningUnregister*/): {
            int32_t in_handle;
            if (binder_status_t ret = AParcel_readInt32(_aidl_in, &in_handle); ret != STATUS_OK)
                return ret;
            int32_t _aidl_return{};
            ::ndk::ScopedAStatus status = aidl_host::logged(
                    BnDrel::logFunc, kInterface, "listeningUnregister", nullptr, _aidl_impl.get(),
                    [&] {
                        return Args{{"in_handle", ::android::internal::ToString(in_handle)}};
                    },
                    [&] { return _aidl_impl->listeningUnregister(in_handle, &_aidl_return); },
                    [&] { return ::android::internal::ToString(_aidl_return); });
            return aidl_host::stubReply(_aidl_out, status, [&](AParcel* out) {
                return AParcel_writeInt32(out, _aidl_return);
            });
        }
        case (FIRST_CALL_TRANSACTION + 6 /*propertyGet*/): {
            std::string in_name;
            if (binder_status_t ret = ::ndk::AParcel_readString(_aidl_in, &in_name);
                ret != STATUS_OK)
                return ret;
            std::string _aidl_return{};
            ::ndk::ScopedAStatus status = aidl_host::logged(
                    BnDrel::logFunc, kInterface, "propertyGet", nullptr, _aidl_impl.get(),
                    [&] {
                        return Args{{"in_name", ::android::internal::ToString(in_name)}};
                    },
                    [&] { return _aidl_impl->propertyGet(in_name, &_aidl_return); },
                    [&] { return ::android::internal::ToString(_aidl_return); });
            return aidl_host::stubReply(_aidl_out, status, [&](AParcel* out) {
                return ::ndk::AParcel_writeString(out, _aidl_return);
            });
        }
        case (FIRST_CALL_TRANSACTION + 7 /*propertySet*/): {
            std::string in_name;
            if (binder_status_t ret = ::ndk::AParcel_readString(_aidl_in, &in_name);
                ret != STATUS_OK)
                return ret;
            std::string in_value;
            if (binder_status_t ret = ::ndk::AParcel_readString(_aidl_in, &in_value);
                ret != STATUS_OK)
                return ret;
            int32_t _aidl_return{};
            ::ndk::ScopedAStatus status = aidl_host::logged(
                    BnDrel::logFunc, kInterface, "propertySet", nullptr, _aidl_impl.get(),
                    [&] {
                        return Args{{"in_name", ::android::internal::ToString(in_name)},
                                    {"in_value", ::android::internal::ToString(in_value)}};
                    },
                    [&] { return _aidl_impl->propertySet(in_name, in_value, &_aidl_return); },
                    [&] { return ::android::internal::ToString(_aidl_return); });
            return aidl_host::stubReply(_aidl_out, status, [&](AParcel* out) {
                return AParcel_writeInt32(out, _aidl_return);
            });
        }
        case (FIRST_CALL_TRANSACTION + 8 /*thermalListeningRegister*/): {
            std::vector<int32_t> in_ids;
            if (binder_status_t ret = ::ndk::AParcel_readVector(_aidl_in, &in_ids);
                ret != STATUS_OK)
                return ret;
            std::shared_ptr<IDrelCallback> in_callback;
            if (binder_status_t ret = IDrelCallback::readFromParcel(_aidl_in, &in_callback);
                ret != STATUS_OK)
                return ret;
            int32_t _aidl_return{};
            ::ndk::ScopedAStatus status = aidl_host::logged(
                    BnDrel::logFunc, kInterface, "thermalListeningRegister", nullptr,
                    _aidl_impl.get(),
                    [&] {
                        return Args{{"in_ids", ::android::internal::ToString(in_ids)},
                                    {"in_callback", ::android::internal::ToString(in_callback)}};
                    },
                    [&] {
                        return _aidl_impl->thermalListeningRegister(in_ids, in_callback,
                                                                    &_aidl_return);
                    },
                    [&] { return ::android::internal::ToString(_aidl_return); });
            return aidl_host::stubReply(_aidl_out, status, [&](AParcel* out) {
                return AParcel_writeInt32(out, _aidl_return);
            });
        }
        case (FIRST_CALL_TRANSACTION + 9 /*thermalListeningUnregister*/): {
            int32_t in_handle;
            if (binder_status_t ret = AParcel_readInt32(_aidl_in, &in_handle); ret != STATUS_OK)
                return ret;
            int32_t _aidl_return{};
            ::ndk::ScopedAStatus status = aidl_host::logged(
                    BnDrel::logFunc, kInterface, "thermalListeningUnregister", nullptr,
                    _aidl_impl.get(),
                    [&] {
                        return Args{{"in_handle", ::android::internal::ToString(in_handle)}};
                    },
                    [&] {
                        return _aidl_impl->thermalListeningUnregister(in_handle, &_aidl_return);
                    },
                    [&] { return ::android::internal::ToString(_aidl_return); });
            return aidl_host::stubReply(_aidl_out, status, [&](AParcel* out) {
                return AParcel_writeInt32(out, _aidl_return);
            });
        }
        case (FIRST_CALL_TRANSACTION + 10 /*reserved11*/): {
            ::ndk::ScopedAStatus status = aidl_host::logged(
                    BnDrel::logFunc, kInterface, "reserved11", nullptr, _aidl_impl.get(),
                    [&] { return Args{}; }, [&] { return _aidl_impl->reserved11(); },
                    aidl_host::noResult);
            return aidl_host::stubReply(_aidl_out, status, aidl_host::noArgs);
        }
        case (FIRST_CALL_TRANSACTION + 11 /*setRelatedSysInfo*/): {
            int32_t in_type;
            if (binder_status_t ret = AParcel_readInt32(_aidl_in, &in_type); ret != STATUS_OK)
                return ret;
            int64_t in_info;
            if (binder_status_t ret = AParcel_readInt64(_aidl_in, &in_info); ret != STATUS_OK)
                return ret;
            int32_t _aidl_return{};
            ::ndk::ScopedAStatus status = aidl_host::logged(
                    BnDrel::logFunc, kInterface, "setRelatedSysInfo", nullptr, _aidl_impl.get(),
                    [&] {
                        return Args{{"in_type", ::android::internal::ToString(in_type)},
                                    {"in_info", ::android::internal::ToString(in_info)}};
                    },
                    [&] { return _aidl_impl->setRelatedSysInfo(in_type, in_info, &_aidl_return); },
                    [&] { return ::android::internal::ToString(_aidl_return); });
            return aidl_host::stubReply(_aidl_out, status, [&](AParcel* out) {
                return AParcel_writeInt32(out, _aidl_return);
            });
        }
        case (FIRST_CALL_TRANSACTION + 12 /*ruleCtl*/): {
            int32_t in_ruleId;
            if (binder_status_t ret = AParcel_readInt32(_aidl_in, &in_ruleId); ret != STATUS_OK)
                return ret;
            int32_t in_status;
            if (binder_status_t ret = AParcel_readInt32(_aidl_in, &in_status); ret != STATUS_OK)
                return ret;
            std::vector<DrelRequestData> in_data;
            if (binder_status_t ret = ::ndk::AParcel_readVector(_aidl_in, &in_data);
                ret != STATUS_OK)
                return ret;
            int32_t _aidl_return{};
            ::ndk::ScopedAStatus status = aidl_host::logged(
                    BnDrel::logFunc, kInterface, "ruleCtl", nullptr, _aidl_impl.get(),
                    [&] {
                        return Args{{"in_ruleId", ::android::internal::ToString(in_ruleId)},
                                    {"in_status", ::android::internal::ToString(in_status)},
                                    {"in_data", ::android::internal::ToString(in_data)}};
                    },
                    [&] {
                        return _aidl_impl->ruleCtl(in_ruleId, in_status, in_data, &_aidl_return);
                    },
                    [&] { return ::android::internal::ToString(_aidl_return); });
            return aidl_host::stubReply(_aidl_out, status, [&](AParcel* out) {
                return AParcel_writeInt32(out, _aidl_return);
            });
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

static AIBinder_Class* _g_aidl_vendor_quarn_hardware_drel_IDrel_clazz =
        ::ndk::ICInterface::defineClass(IDrel::descriptor,
                                        _aidl_vendor_quarn_hardware_drel_IDrel_onTransact);

BpDrel::BpDrel(const ::ndk::SpAIBinder& binder) : BpCInterface(binder) {}
BpDrel::~BpDrel() {}
std::function<void(const BpDrel::TransactionLog&)> BpDrel::logFunc;

::ndk::ScopedAStatus BpDrel::init() {
    return aidl_host::logged(
            logFunc, kInterface, "init", this, nullptr, [&] { return Args{}; },
            [&] {
                return aidl_host::proxyTransact(asBinder(), TRANSACTION_init, aidl_host::noArgs,
                                                aidl_host::noReply);
            },
            aidl_host::noResult);
}

::ndk::ScopedAStatus BpDrel::request(const DrelRequestParcel& in_parcel, int32_t* _aidl_return) {
    return aidl_host::logged(
            logFunc, kInterface, "request", this, nullptr,
            [&] {
                return Args{{"in_parcel", ::android::internal::ToString(in_parcel)}};
            },
            [&] {
                return aidl_host::proxyTransact(
                        asBinder(), TRANSACTION_request,
                        [&](AParcel* in) {
                            binder_status_t ret = STATUS_OK;
                            if (ret == STATUS_OK)
                                ret = ::ndk::AParcel_writeParcelable(in, in_parcel);
                            return ret;
                        },
                        [&](const AParcel* out) { return AParcel_readInt32(out, _aidl_return); });
            },
            [&] { return ::android::internal::ToString(*_aidl_return); });
}

::ndk::ScopedAStatus BpDrel::release(int32_t in_handle, int32_t* _aidl_return) {
    return aidl_host::logged(
            logFunc, kInterface, "release", this, nullptr,
            [&] {
                return Args{{"in_handle", ::android::internal::ToString(in_handle)}};
            },
            [&] {
                return aidl_host::proxyTransact(
                        asBinder(), TRANSACTION_release,
                        [&](AParcel* in) {
                            binder_status_t ret = STATUS_OK;
                            if (ret == STATUS_OK) ret = AParcel_writeInt32(in, in_handle);
                            return ret;
                        },
                        [&](const AParcel* out) { return AParcel_readInt32(out, _aidl_return); });
            },
            [&] { return ::android::internal::ToString(*_aidl_return); });
}

::ndk::ScopedAStatus BpDrel::stateRequest(const DrelRequestParcel& in_parcel,
                                          std::vector<DrelRequestData>* _aidl_return) {
    return aidl_host::logged(
            logFunc, kInterface, "stateRequest", this, nullptr,
            [&] {
                return Args{{"in_parcel", ::android::internal::ToString(in_parcel)}};
            },
            [&] {
                return aidl_host::proxyTransact(
                        asBinder(), TRANSACTION_stateRequest,
                        [&](AParcel* in) {
                            binder_status_t ret = STATUS_OK;
                            if (ret == STATUS_OK)
                                ret = ::ndk::AParcel_writeParcelable(in, in_parcel);
                            return ret;
                        },
                        [&](const AParcel* out) {
                            return ::ndk::AParcel_readVector(out, _aidl_return);
                        });
            },
            [&] { return ::android::internal::ToString(*_aidl_return); });
}

::ndk::ScopedAStatus BpDrel::listeningRegister(const DrelRequestParcel& in_parcel,
                                               const std::shared_ptr<IDrelCallback>& in_callback,
                                               int32_t* _aidl_return) {
    return aidl_host::logged(
            logFunc, kInterface, "listeningRegister", this, nullptr,
            [&] {
                return Args{{"in_parcel", ::android::internal::ToString(in_parcel)},
                            {"in_callback", ::android::internal::ToString(in_callback)}};
            },
            [&] {
                return aidl_host::proxyTransact(
                        asBinder(), TRANSACTION_listeningRegister,
                        [&](AParcel* in) {
                            binder_status_t ret = STATUS_OK;
                            if (ret == STATUS_OK)
                                ret = ::ndk::AParcel_writeParcelable(in, in_parcel);
                            if (ret == STATUS_OK)
                                ret = IDrelCallback::writeToParcel(in, in_callback);
                            return ret;
                        },
                        [&](const AParcel* out) { return AParcel_readInt32(out, _aidl_return); });
            },
            [&] { return ::android::internal::ToString(*_aidl_return); });
}

::ndk::ScopedAStatus BpDrel::listeningUnregister(int32_t in_handle, int32_t* _aidl_return) {
    return aidl_host::logged(
            logFunc, kInterface, "listeningUnregister", this, nullptr,
            [&] {
                return Args{{"in_handle", ::android::internal::ToString(in_handle)}};
            },
            [&] {
                return aidl_host::proxyTransact(
                        asBinder(), TRANSACTION_listeningUnregister,
                        [&](AParcel* in) {
                            binder_status_t ret = STATUS_OK;
                            if (ret == STATUS_OK) ret = AParcel_writeInt32(in, in_handle);
                            return ret;
                        },
                        [&](const AParcel* out) { return AParcel_readInt32(out, _aidl_return); });
            },
            [&] { return ::android::internal::ToString(*_aidl_return); });
}

::ndk::ScopedAStatus BpDrel::propertyGet(const std::string& in_name, std::string* _aidl_return) {
    return aidl_host::logged(
            logFunc, kInterface, "propertyGet", this, nullptr,
            [&] {
                return Args{{"in_name", ::android::internal::ToString(in_name)}};
            },
            [&] {
                return aidl_host::proxyTransact(
                        asBinder(), TRANSACTION_propertyGet,
                        [&](AParcel* in) {
                            binder_status_t ret = STATUS_OK;
                            if (ret == STATUS_OK) ret = ::ndk::AParcel_writeString(in, in_name);
                            return ret;
                        },
                        [&](const AParcel* out) {
                            return ::ndk::AParcel_readString(out, _aidl_return);
                        });
            },
            [&] { return ::android::internal::ToString(*_aidl_return); });
}

::ndk::ScopedAStatus BpDrel::propertySet(const std::string& in_name, const std::string& in_value,
                                         int32_t* _aidl_return) {
    return aidl_host::logged(
            logFunc, kInterface, "propertySet", this, nullptr,
            [&] {
                return Args{{"in_name", ::android::internal::ToString(in_name)},
                            {"in_value", ::android::internal::ToString(in_value)}};
            },
            [&] {
                return aidl_host::proxyTransact(
                        asBinder(), TRANSACTION_propertySet,
                        [&](AParcel* in) {
                            binder_status_t ret = STATUS_OK;
                            if (ret == STATUS_OK) ret = ::ndk::AParcel_writeString(in, in_name);
                            if (ret == STATUS_OK) ret = ::ndk::AParcel_writeString(in, in_value);
                            return ret;
                        },
                        [&](const AParcel* out) { return AParcel_readInt32(out, _aidl_return); });
            },
            [&] { return ::android::internal::ToString(*_aidl_return); });
}

::ndk::ScopedAStatus BpDrel::thermalListeningRegister(
        const std::vector<int32_t>& in_ids, const std::shared_ptr<IDrelCallback>& in_callback,
        int32_t* _aidl_return) {
    return aidl_host::logged(
            logFunc, kInterface, "thermalListeningRegister", this, nullptr,
            [&] {
                return Args{{"in_ids", ::android::internal::ToString(in_ids)},
                            {"in_callback", ::android::internal::ToString(in_callback)}};
            },
            [&] {
                return aidl_host::proxyTransact(
                        asBinder(), TRANSACTION_thermalListeningRegister,
                        [&](AParcel* in) {
                            binder_status_t ret = STATUS_OK;
                            if (ret == STATUS_OK) ret = ::ndk::AParcel_writeVector(in, in_ids);
                            if (ret == STATUS_OK)
                                ret = IDrelCallback::writeToParcel(in, in_callback);
                            return ret;
                        },
                        [&](const AParcel* out) { return AParcel_readInt32(out, _aidl_return); });
            },
            [&] { return ::android::internal::ToString(*_aidl_return); });
}

::ndk::ScopedAStatus BpDrel::thermalListeningUnregister(int32_t in_handle, int32_t* _aidl_return) {
    return aidl_host::logged(
            logFunc, kInterface, "thermalListeningUnregister", this, nullptr,
            [&] {
                return Args{{"in_handle", ::android::internal::ToString(in_handle)}};
            },
            [&] {
                return aidl_host::proxyTransact(
                        asBinder(), TRANSACTION_thermalListeningUnregister,
                        [&](AParcel* in) {
                            binder_status_t ret = STATUS_OK;
                            if (ret == STATUS_OK) ret = AParcel_writeInt32(in, in_handle);
                            return ret;
                        },
                        [&](const AParcel* out) { return AParcel_readInt32(out, _aidl_return); });
            },
            [&] { return ::android::internal::ToString(*_aidl_return); });
}

::ndk::ScopedAStatus BpDrel::reserved11() {
    return aidl_host::logged(
            logFunc, kInterface, "reserved11", this, nullptr, [&] { return Args{}; },
            [&] {
                return aidl_host::proxyTransact(asBinder(), TRANSACTION_reserved11,
                                                aidl_host::noArgs, aidl_host::noReply);
            },
            aidl_host::noResult);
}

::ndk::ScopedAStatus BpDrel::setRelatedSysInfo(int32_t in_type, int64_t in_info,
                                               int32_t* _aidl_return) {
    return aidl_host::logged(
            logFunc, kInterface, "setRelatedSysInfo", this, nullptr,
            [&] {
                return Args{{"in_type", ::android::internal::ToString(in_type)},
                            {"in_info", ::android::internal::ToString(in_info)}};
            },
            [&] {
                return aidl_host::proxyTransact(
                        asBinder(), TRANSACTION_setRelatedSysInfo,
                        [&](AParcel* in) {
                            binder_status_t ret = STATUS_OK;
                            if (ret == STATUS_OK) ret = AParcel_writeInt32(in, in_type);
                            if (ret == STATUS_OK) ret = AParcel_writeInt64(in, in_info);
                            return ret;
                        },
                        [&](const AParcel* out) { return AParcel_readInt32(out, _aidl_return); });
            },
            [&] { return ::android::internal::ToString(*_aidl_return); });
}

::ndk::ScopedAStatus BpDrel::ruleCtl(int32_t in_ruleId, int32_t in_status,
                                     const std::vector<DrelRequestData>& in_data,
                                     int32_t* _aidl_return) {
    return aidl_host::logged(
            logFunc, kInterface, "ruleCtl", this, nullptr,
            [&] {
                return Args{{"in_ruleId", ::android::internal::ToString(in_ruleId)},
                            {"in_status", ::android::internal::ToString(in_status)},
                            {"in_data", ::android::internal::ToString(in_data)}};
            },
            [&] {
                return aidl_host::proxyTransact(
                        asBinder(), TRANSACTION_ruleCtl,
                        [&](AParcel* in) {
                            binder_status_t ret = STATUS_OK;
                            if (ret == STATUS_OK) ret = AParcel_writeInt32(in, in_ruleId);
                            if (ret == STATUS_OK) ret = AParcel_writeInt32(in, in_status);
                            if (ret == STATUS_OK) ret = ::ndk::AParcel_writeVector(in, in_data);
                            return ret;
                        },
                        [&](const AParcel* out) { return AParcel_readInt32(out, _aidl_return); });
            },
            [&] { return ::android::internal::ToString(*_aidl_return); });
}

::ndk::ScopedAStatus BpDrel::getInterfaceVersion(int32_t* _aidl_return) {
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

::ndk::ScopedAStatus BpDrel::getInterfaceHash(std::string* _aidl_return) {
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

BnDrel::BnDrel() {}
BnDrel::~BnDrel() {}
std::function<void(const BnDrel::TransactionLog&)> BnDrel::logFunc;

::ndk::SpAIBinder BnDrel::createBinder() {
    AIBinder* binder =
            AIBinder_new(_g_aidl_vendor_quarn_hardware_drel_IDrel_clazz, static_cast<void*>(this));
    return ::ndk::SpAIBinder(binder);
}

::ndk::ScopedAStatus BnDrel::getInterfaceVersion(int32_t* _aidl_return) {
    *_aidl_return = IDrel::version;
    return ::ndk::ScopedAStatus(AStatus_newOk());
}

::ndk::ScopedAStatus BnDrel::getInterfaceHash(std::string* _aidl_return) {
    *_aidl_return = IDrel::hash;
    return ::ndk::ScopedAStatus(AStatus_newOk());
}

const char* IDrel::descriptor = "vendor.quarn.hardware.drel.IDrel";
IDrel::IDrel() {}
IDrel::~IDrel() {}

std::shared_ptr<IDrel> IDrel::fromBinder(const ::ndk::SpAIBinder& binder) {
    if (!AIBinder_associateClass(binder.get(), _g_aidl_vendor_quarn_hardware_drel_IDrel_clazz)) {
        return nullptr;
    }
    std::shared_ptr<::ndk::ICInterface> interface = ::ndk::ICInterface::asInterface(binder.get());
    if (interface) return std::static_pointer_cast<IDrel>(interface);
    return ::ndk::SharedRefBase::make<BpDrel>(binder);
}

binder_status_t IDrel::writeToParcel(AParcel* parcel, const std::shared_ptr<IDrel>& instance) {
    return AParcel_writeStrongBinder(parcel, instance ? instance->asBinder().get() : nullptr);
}

binder_status_t IDrel::readFromParcel(const AParcel* parcel, std::shared_ptr<IDrel>* instance) {
    ::ndk::SpAIBinder binder;
    binder_status_t status = AParcel_readStrongBinder(parcel, binder.getR());
    if (status != STATUS_OK) return status;
    *instance = IDrel::fromBinder(binder);
    return STATUS_OK;
}

bool IDrel::setDefaultImpl(const std::shared_ptr<IDrel>& impl) {
    assert(!IDrel::default_impl);
    if (impl) {
        IDrel::default_impl = impl;
        return true;
    }
    return false;
}

const std::shared_ptr<IDrel>& IDrel::getDefaultImpl() {
    return IDrel::default_impl;
}

std::shared_ptr<IDrel> IDrel::default_impl = nullptr;

::ndk::ScopedAStatus IDrelDefault::init() {
    return ::ndk::ScopedAStatus(AStatus_fromStatus(STATUS_UNKNOWN_TRANSACTION));
}
::ndk::ScopedAStatus IDrelDefault::request(const DrelRequestParcel& /*in_parcel*/,
                                           int32_t* /*_aidl_return*/) {
    return ::ndk::ScopedAStatus(AStatus_fromStatus(STATUS_UNKNOWN_TRANSACTION));
}
::ndk::ScopedAStatus IDrelDefault::release(int32_t /*in_handle*/, int32_t* /*_aidl_return*/) {
    return ::ndk::ScopedAStatus(AStatus_fromStatus(STATUS_UNKNOWN_TRANSACTION));
}
::ndk::ScopedAStatus IDrelDefault::stateRequest(const DrelRequestParcel& /*in_parcel*/,
                                                std::vector<DrelRequestData>* /*_aidl_return*/) {
    return ::ndk::ScopedAStatus(AStatus_fromStatus(STATUS_UNKNOWN_TRANSACTION));
}
::ndk::ScopedAStatus IDrelDefault::listeningRegister(
        const DrelRequestParcel& /*in_parcel*/,
        const std::shared_ptr<IDrelCallback>& /*in_callback*/, int32_t* /*_aidl_return*/) {
    return ::ndk::ScopedAStatus(AStatus_fromStatus(STATUS_UNKNOWN_TRANSACTION));
}
::ndk::ScopedAStatus IDrelDefault::listeningUnregister(int32_t /*in_handle*/,
                                                       int32_t* /*_aidl_return*/) {
    return ::ndk::ScopedAStatus(AStatus_fromStatus(STATUS_UNKNOWN_TRANSACTION));
}
::ndk::ScopedAStatus IDrelDefault::propertyGet(const std::string& /*in_name*/,
                                               std::string* /*_aidl_return*/) {
    return ::ndk::ScopedAStatus(AStatus_fromStatus(STATUS_UNKNOWN_TRANSACTION));
}
::ndk::ScopedAStatus IDrelDefault::propertySet(const std::string& /*in_name*/,
                                               const std::string& /*in_value*/,
                                               int32_t* /*_aidl_return*/) {
    return ::ndk::ScopedAStatus(AStatus_fromStatus(STATUS_UNKNOWN_TRANSACTION));
}
::ndk::ScopedAStatus IDrelDefault::thermalListeningRegister(
        const std::vector<int32_t>& /*in_ids*/,
        const std::shared_ptr<IDrelCallback>& /*in_callback*/, int32_t* /*_aidl_return*/) {
    return ::ndk::ScopedAStatus(AStatus_fromStatus(STATUS_UNKNOWN_TRANSACTION));
}
::ndk::ScopedAStatus IDrelDefault::thermalListeningUnregister(int32_t /*in_handle*/,
                                                              int32_t* /*_aidl_return*/) {
    return ::ndk::ScopedAStatus(AStatus_fromStatus(STATUS_UNKNOWN_TRANSACTION));
}
::ndk::ScopedAStatus IDrelDefault::reserved11() {
    return ::ndk::ScopedAStatus(AStatus_fromStatus(STATUS_UNKNOWN_TRANSACTION));
}
::ndk::ScopedAStatus IDrelDefault::setRelatedSysInfo(int32_t /*in_type*/, int64_t /*in_info*/,
                                                     int32_t* /*_aidl_return*/) {
    return ::ndk::ScopedAStatus(AStatus_fromStatus(STATUS_UNKNOWN_TRANSACTION));
}
::ndk::ScopedAStatus IDrelDefault::ruleCtl(int32_t /*in_ruleId*/, int32_t /*in_status*/,
                                           const std::vector<DrelRequestData>& /*in_data*/,
                                           int32_t* /*_aidl_return*/) {
    return ::ndk::ScopedAStatus(AStatus_fromStatus(STATUS_UNKNOWN_TRANSACTION));
}
::ndk::ScopedAStatus IDrelDefault::getInterfaceVersion(int32_t* _aidl_return) {
    *_aidl_return = 0;
    return ::ndk::ScopedAStatus(AStatus_newOk());
}
::ndk::ScopedAStatus IDrelDefault::getInterfaceHash(std::string* _aidl_return) {
    *_aidl_return = "";
    return ::ndk::ScopedAStatus(AStatus_newOk());
}
::ndk::SpAIBinder IDrelDefault::asBinder() {
    return ::ndk::SpAIBinder();
}
bool IDrelDefault::isRemote() {
    return false;
}
}  // namespace drel
}  // namespace hardware
}  // namespace quarn
}  // namespace vendor
}  // namespace aidl
