// Host form of the aidl NDK backend's output (with --log) for vendor.quarn.hardware.drel.IDrel,
// version 1. Kept in step with aidl/vendor/quarn/hardware/drel/IDrel.aidl.
#pragma once

#include <aidl/vendor/quarn/hardware/drel/DrelRequestData.h>
#include <aidl/vendor/quarn/hardware/drel/DrelRequestParcel.h>
#include <aidl/vendor/quarn/hardware/drel/IDrelCallback.h>
#include <android/binder_interface_utils.h>

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

namespace aidl {
namespace vendor {
namespace quarn {
namespace hardware {
namespace drel {
class IDrel : public ::ndk::ICInterface {
public:
    static const char* descriptor;
    IDrel();
    virtual ~IDrel();

    static const int32_t version = 1;
    static inline const std::string hash = "3059b2124008a265fc9a59fa76c8ac9bb7918919";
    static constexpr uint32_t TRANSACTION_init = FIRST_CALL_TRANSACTION + 0;
    static constexpr uint32_t TRANSACTION_request = FIRST_CALL_TRANSACTION + 1;
    static constexpr uint32_t TRANSACTION_release = FIRST_CALL_TRANSACTION + 2;
    static constexpr uint32_t TRANSACTION_stateRequest = FIRST_CALL_TRANSACTION + 3;
    static constexpr uint32_t TRANSACTION_listeningRegister = FIRST_CALL_TRANSACTION + 4;
    static constexpr uint32_t TRANSACTION_listeningUnregister = FIRST_CALL_TRANSACTION + 5;
    static constexpr uint32_t TRANSACTION_propertyGet = FIRST_CALL_TRANSACTION + 6;
    static constexpr uint32_t TRANSACTION_propertySet = FIRST_CALL_TRANSACTION + 7;
    static constexpr uint32_t TRANSACTION_thermalListeningRegister = FIRST_CALL_TRANSACTION + 8;
    static constexpr uint32_t TRANSACTION_thermalListeningUnregister = FIRST_CALL_TRANSACTION + 9;
    static constexpr uint32_t TRANSACTION_reserved11 = FIRST_CALL_TRANSACTION + 10;
    static constexpr uint32_t TRANSACTION_setRelatedSysInfo = FIRST_CALL_TRANSACTION + 11;
    static constexpr uint32_t TRANSACTION_ruleCtl = FIRST_CALL_TRANSACTION + 12;

    static std::shared_ptr<IDrel> fromBinder(const ::ndk::SpAIBinder& binder);
    static binder_status_t writeToParcel(AParcel* parcel, const std::shared_ptr<IDrel>& instance);
    static binder_status_t readFromParcel(const AParcel* parcel, std::shared_ptr<IDrel>* instance);
    static bool setDefaultImpl(const std::shared_ptr<IDrel>& impl);
    static const std::shared_ptr<IDrel>& getDefaultImpl();
    virtual ::ndk::ScopedAStatus init() = 0;
    virtual ::ndk::ScopedAStatus request(
            const ::aidl::vendor::quarn::hardware::drel::DrelRequestParcel& in_parcel,
            int32_t* _aidl_return) = 0;
    virtual ::ndk::ScopedAStatus release(int32_t in_handle, int32_t* _aidl_return) = 0;
    virtual ::ndk::ScopedAStatus stateRequest(
            const ::aidl::vendor::quarn::hardware::drel::DrelRequestParcel& in_parcel,
            std::vector<::aidl::vendor::quarn::hardware::drel::DrelRequestData>* _aidl_return) = 0;
    virtual ::ndk::ScopedAStatus listeningRegister(
            const ::aidl::vendor::quarn::hardware::drel::DrelRequestParcel& in_parcel,
            const std::shared_ptr<::aidl::vendor::quarn::hardware::drel::IDrelCallback>&
                    in_callback,
            int32_t* _aidl_return) = 0;
    virtual ::ndk::ScopedAStatus listeningUnregister(int32_t in_handle, int32_t* _aidl_return) = 0;
    virtual ::ndk::ScopedAStatus propertyGet(const std::string& in_name,
                                             std::string* _aidl_return) = 0;
    virtual ::ndk::ScopedAStatus propertySet(const std::string& in_name,
                                             const std::string& in_value,
                                             int32_t* _aidl_return) = 0;
    virtual ::ndk::ScopedAStatus thermalListeningRegister(
            const std::vector<int32_t>& in_ids,
            const std::shared_ptr<::aidl::vendor::quarn::hardware::drel::IDrelCallback>&
                    in_callback,
            int32_t* _aidl_return) = 0;
    virtual ::ndk::ScopedAStatus thermalListeningUnregister(int32_t in_handle,
                                                            int32_t* _aidl_return) = 0;
    virtual ::ndk::ScopedAStatus reserved11() = 0;
    virtual ::ndk::ScopedAStatus setRelatedSysInfo(int32_t in_type, int64_t in_info,
                                                   int32_t* _aidl_return) = 0;
    virtual ::ndk::ScopedAStatus ruleCtl(
            int32_t in_ruleId, int32_t in_status,
            const std::vector<::aidl::vendor::quarn::hardware::drel::DrelRequestData>& in_data,
            int32_t* _aidl_return) = 0;
    virtual ::ndk::ScopedAStatus getInterfaceVersion(int32_t* _aidl_return) = 0;
    virtual ::ndk::ScopedAStatus getInterfaceHash(std::string* _aidl_return) = 0;

private:
    static std::shared_ptr<IDrel> default_impl;
};
class IDrelDefault : public IDrel {
public:
    ::ndk::ScopedAStatus init() override;
    ::ndk::ScopedAStatus request(
            const ::aidl::vendor::quarn::hardware::drel::DrelRequestParcel& in_parcel,
            int32_t* _aidl_return) override;
    ::ndk::ScopedAStatus release(int32_t in_handle, int32_t* _aidl_return) override;
    ::ndk::ScopedAStatus stateRequest(
            const ::aidl::vendor::quarn::hardware::drel::DrelRequestParcel& in_parcel,
            std::vector<::aidl::vendor::quarn::hardware::drel::DrelRequestData>* _aidl_return)
            override;
    ::ndk::ScopedAStatus listeningRegister(
            const ::aidl::vendor::quarn::hardware::drel::DrelRequestParcel& in_parcel,
            const std::shared_ptr<::aidl::vendor::quarn::hardware::drel::IDrelCallback>&
                    in_callback,
            int32_t* _aidl_return) override;
    ::ndk::ScopedAStatus listeningUnregister(int32_t in_handle, int32_t* _aidl_return) override;
    ::ndk::ScopedAStatus propertyGet(const std::string& in_name,
                                     std::string* _aidl_return) override;
    ::ndk::ScopedAStatus propertySet(const std::string& in_name, const std::string& in_value,
                                     int32_t* _aidl_return) override;
    ::ndk::ScopedAStatus thermalListeningRegister(
            const std::vector<int32_t>& in_ids,
            const std::shared_ptr<::aidl::vendor::quarn::hardware::drel::IDrelCallback>&
                    in_callback,
            int32_t* _aidl_return) override;
    ::ndk::ScopedAStatus thermalListeningUnregister(int32_t in_handle,
                                                    int32_t* _aidl_return) override;
    ::ndk::ScopedAStatus reserved11() override;
    ::ndk::ScopedAStatus setRelatedSysInfo(int32_t in_type, int64_t in_info,
                                           int32_t* _aidl_return) override;
    ::ndk::ScopedAStatus ruleCtl(
            int32_t in_ruleId, int32_t in_status,
            const std::vector<::aidl::vendor::quarn::hardware::drel::DrelRequestData>& in_data,
            int32_t* _aidl_return) override;
    ::ndk::ScopedAStatus getInterfaceVersion(int32_t* _aidl_return) override;
    ::ndk::ScopedAStatus getInterfaceHash(std::string* _aidl_return) override;
    ::ndk::SpAIBinder asBinder() override;
    bool isRemote() override;
};
}  // namespace drel
}  // namespace hardware
}  // namespace quarn
}  // namespace vendor
}  // namespace aidl
