// The usual fixture: a MockDrel registered under the service's instance name, log lines
// captured, and the host stand-in reset after each test (which also drops both API connections
// through their death notifications).
#pragma once

#include <android/binder_manager.h>
#include <android/binder_process.h>
#include <gtest/gtest.h>
#include <hostbinder/hostbinder.h>

#include <memory>
#include <ostream>

#include "mocks/MockDrel.h"
#include "support/log_capture.h"

namespace aidl::vendor::quarn::hardware::drel {
// Failed comparisons of whole records print the records, not their bytes.
inline void PrintTo(const DrelRequestData& data, std::ostream* os) {
    *os << data.toString();
}
inline void PrintTo(const DrelRequestParcel& parcel, std::ostream* os) {
    *os << parcel.toString();
}
}  // namespace aidl::vendor::quarn::hardware::drel

namespace qel_test {

inline constexpr const char* kInstance = "vendor.quarn.hardware.drel.IDrel/default";

class ServiceFixture : public ::testing::Test {
protected:
    void SetUp() override {
        // Reports and death notices reach this process on its binder threads, as on a device.
        ABinderProcess_startThreadPool();
        hostbinder::reset();
        startService();
        log.clear();
    }
    void TearDown() override {
        hostbinder::reset();
        ::testing::Mock::VerifyAndClearExpectations(service.get());
    }

    // Registers a new mock service (a restart when one ran before).
    void startService() {
        service = ::ndk::SharedRefBase::make<::testing::NiceMock<MockDrel>>();
        ASSERT_EQ(EX_NONE, AServiceManager_addService(service->asBinder().get(), kInstance));
    }
    void killService() {
        hostbinder::killService(kInstance);
        hostbinder::waitIdle();
    }

    LogCapture log;
    std::shared_ptr<::testing::NiceMock<MockDrel>> service;
};

}  // namespace qel_test
