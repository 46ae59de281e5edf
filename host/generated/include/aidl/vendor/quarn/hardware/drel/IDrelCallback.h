// Host form of the aidl NDK backend's output (with --log) for
// vendor.quarn.hardware.drel.IDrelCallback, version 1.
#pragma once

#include <aidl/vendor/quarn/hardware/drel/DrelRequestData.h>
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
class IDrelCallback : public ::ndk::ICInterface {
public:
    static const char* descriptor;
    IDrelCallback();
    virtual ~IDrelCallback();

    static const int32_t version = 1;
    static inline const std::string hash = "3059b2124008a265fc9a59fa76c8ac9bb7918919";
    static constexpr uint32_t TRANSACTION_onCallback = FIRST_CALL_TRANSACTION + 0;

    static std::shared_ptr<IDrelCallback> fromBinder(const ::ndk::SpAIBinder& binder);
    static binder_status_t writeToParcel(AParcel* parcel,
                                         const std::shared_ptr<IDrelCallback>& instance);
    static binder_status_t readFromParcel(const AParcel* parcel,
                                          std::shared_ptr<IDrelCallback>* instance);
    static bool setDefaultImpl(const std::shared_ptr<IDrelCallback>& impl);
    static const std::shared_ptr<IDrelCallback>& getDefaultImpl();
    virtual ::ndk::ScopedAStatus onCallback(
            const std::vector<::aidl::vendor::quarn::hardware::drel::DrelRequestData>& in_data) = 0;
    virtual ::ndk::ScopedAStatus getInterfaceVersion(int32_t* _aidl_return) = 0;
    virtual ::ndk::ScopedAStatus getInterfaceHash(std::string* _aidl_return) = 0;

private:
    static std::shared_ptr<IDrelCallback> default_impl;
};
class IDrelCallbackDefault : public IDrelCallback {
public:
    ::ndk::ScopedAStatus onCallback(
            const std::vector<::aidl::vendor::quarn::hardware::drel::DrelRequestData>& in_data)
            override;
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
