// A gmock IDrel service for tests: register it with ServiceFixture::startService (or
// AServiceManager_addService) and it is reached through a real proxy of the host stand-in.
#pragma once

#include <aidl/vendor/quarn/hardware/drel/BnDrel.h>
#include <gmock/gmock.h>

namespace qel_test {

using ::aidl::vendor::quarn::hardware::drel::BnDrel;
using ::aidl::vendor::quarn::hardware::drel::DrelRequestData;
using ::aidl::vendor::quarn::hardware::drel::DrelRequestParcel;
using ::aidl::vendor::quarn::hardware::drel::IDrelCallback;

class MockDrel : public BnDrel {
public:
    MOCK_METHOD(::ndk::ScopedAStatus, init, (), (override));
    MOCK_METHOD(::ndk::ScopedAStatus, request, (const DrelRequestParcel&, int32_t*), (override));
    MOCK_METHOD(::ndk::ScopedAStatus, release, (int32_t, int32_t*), (override));
    MOCK_METHOD(::ndk::ScopedAStatus, stateRequest,
                (const DrelRequestParcel&, std::vector<DrelRequestData>*), (override));
    MOCK_METHOD(::ndk::ScopedAStatus, listeningRegister,
                (const DrelRequestParcel&, const std::shared_ptr<IDrelCallback>&, int32_t*),
                (override));
    MOCK_METHOD(::ndk::ScopedAStatus, listeningUnregister, (int32_t, int32_t*), (override));
    MOCK_METHOD(::ndk::ScopedAStatus, propertyGet, (const std::string&, std::string*), (override));
    MOCK_METHOD(::ndk::ScopedAStatus, propertySet,
                (const std::string&, const std::string&, int32_t*), (override));
    MOCK_METHOD(::ndk::ScopedAStatus, thermalListeningRegister,
                (const std::vector<int32_t>&, const std::shared_ptr<IDrelCallback>&, int32_t*),
                (override));
    MOCK_METHOD(::ndk::ScopedAStatus, thermalListeningUnregister, (int32_t, int32_t*), (override));
    MOCK_METHOD(::ndk::ScopedAStatus, reserved11, (), (override));
    MOCK_METHOD(::ndk::ScopedAStatus, setRelatedSysInfo, (int32_t, int64_t, int32_t*), (override));
    MOCK_METHOD(::ndk::ScopedAStatus, ruleCtl,
                (int32_t, int32_t, const std::vector<DrelRequestData>&, int32_t*), (override));
};

// Actions for the out-parameter style of the generated interface: ReturnResult for methods of
// two parameters (the out-value second), ReturnResult3 and ReturnResult4 for three and four.
ACTION_P(ReturnResult, value) {
    *arg1 = value;
    return ::ndk::ScopedAStatus::ok();
}
ACTION_P(ReturnResult3, value) {
    *arg2 = value;
    return ::ndk::ScopedAStatus::ok();
}
ACTION_P(ReturnResult4, value) {
    *arg3 = value;
    return ::ndk::ScopedAStatus::ok();
}
ACTION(ReturnOk) {
    return ::ndk::ScopedAStatus::ok();
}
ACTION_P(ReturnStatus, status) {
    return ::ndk::ScopedAStatus::fromStatus(status);
}
ACTION_P(ReturnServiceError, code) {
    return ::ndk::ScopedAStatus::fromServiceSpecificError(code);
}

}  // namespace qel_test
