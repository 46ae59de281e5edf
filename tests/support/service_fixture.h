// The usual fixture: a MockDrel registered under the service's instance name, log lines
// captured, and the host stand-in reset after each test (which also drops both API connections
// through their death notifications).
#pragma once

#include <android/binder_manager.h>
#include <android/binder_process.h>
#include <gtest/gtest.h>
#include <hostbinder/hostbinder.h>

#include <memory>
#include <optional>
#include <ostream>
#include <shared_mutex>
#include <string>
#include <vector>

#include "halclient/halclient_internal.h"
#include "mocks/MockDrel.h"
#include "qel/qel_internal.h"
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

// Empties the class API's process-wide registries (listening groups, which thermal ones outlive
// unregistering, and parked one-shot clients), so that no test sees or is refused by another's.
// The entries are destroyed after the locks are released.
inline void clearRegistries() {
    std::vector<DrelCallbackGroup> groups;
    std::vector<std::shared_ptr<DrelCallbackClient>> clients;
    {
        std::lock_guard<std::mutex> lock(callback_group_mutex);
        groups.swap(callback_groups);
    }
    std::lock_guard<std::mutex> lock(request_callback_mutex);
    clients.swap(request_callbacks);
}

// Whether each API holds a proxy of the service now.
inline bool classConnected() {
    std::shared_lock<std::shared_timed_mutex> lock(g_drel_hal_lock);
    return g_drel_hal != nullptr;
}
inline bool qelConnected() {
    std::shared_lock<std::shared_timed_mutex> lock(g_qel_hal_lock);
    return g_qel_hal != nullptr;
}

// A wire record with the given fields; the texts absent unless given.
inline DrelRequestData wireRecord(int32_t id, int32_t param = 0,
                                  std::optional<std::string> value = std::nullopt,
                                  std::optional<std::string> extra = std::nullopt) {
    DrelRequestData data;
    data.resId = id;
    data.resParam = param;
    data.resValue = std::move(value);
    data.resExtra = std::move(extra);
    return data;
}

inline constexpr const char* kInstance = "vendor.quarn.hardware.drel.IDrel/default";

class ServiceFixture : public ::testing::Test {
protected:
    void SetUp() override {
        // Reports and death notices reach this process on its binder threads, as on a device.
        ABinderProcess_startThreadPool();
        clearRegistries();
        hostbinder::reset();
        startService();
        log.clear();
    }
    void TearDown() override {
        hostbinder::reset();
        ::testing::Mock::VerifyAndClearExpectations(service.get());
        clearRegistries();
        hostbinder::waitIdle();
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
