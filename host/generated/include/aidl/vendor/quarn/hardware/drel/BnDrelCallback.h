// Host form of the aidl NDK backend's output (with --log): the IDrelCallback stub. logFunc, when
// set, is called after each incoming transaction with its TransactionLog.
#pragma once

#include <aidl/vendor/quarn/hardware/drel/IDrelCallback.h>
#include <android/binder_ibinder.h>

namespace aidl {
namespace vendor {
namespace quarn {
namespace hardware {
namespace drel {
class BnDrelCallback : public ::ndk::BnCInterface<IDrelCallback> {
public:
    BnDrelCallback();
    virtual ~BnDrelCallback();
    ::ndk::ScopedAStatus getInterfaceVersion(int32_t* _aidl_return) final;
    ::ndk::ScopedAStatus getInterfaceHash(std::string* _aidl_return) final;
    struct TransactionLog {
        double duration_ms;
        std::string interface_name;
        std::string method_name;
        const void* proxy_address;
        const void* stub_address;
        std::vector<std::pair<std::string, std::string>> input_args;
        std::vector<std::pair<std::string, std::string>> output_args;
        std::string result;
        std::string exception_message;
        int32_t exception_code;
        int32_t transaction_error;
        int32_t service_specific_error_code;
    };
    static std::function<void(const TransactionLog&)> logFunc;

protected:
    ::ndk::SpAIBinder createBinder() override;

private:
};
}  // namespace drel
}  // namespace hardware
}  // namespace quarn
}  // namespace vendor
}  // namespace aidl
