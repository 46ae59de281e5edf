// qelctl's tests run the tool in-process, with captured output, against the example service
// registered under the service's name by the fixture (as --embedded would, but owned by the test
// so that it can be looked at).
#pragma once

#include <android/binder_manager.h>
#include <android/binder_process.h>
#include <gtest/gtest.h>
#include <hostbinder/hostbinder.h>

#include <memory>
#include <mutex>
#include <sstream>
#include <string>
#include <vector>

#include "drel-service/DrelService.h"
#include "halclient/halclient_internal.h"
#include "qelctl.h"

namespace qel_test {

inline constexpr const char* kQelctlInstance = "vendor.quarn.hardware.drel.IDrel/default";

struct QelctlRun {
    int status;
    std::string out;
    std::string err;
};

class QelctlTest : public ::testing::Test {
protected:
    void SetUp() override {
        ABinderProcess_startThreadPool();  // as qelctl's main does
        hostbinder::reset();
        dropListeningGroups();
        service = ::ndk::SharedRefBase::make<::aidl::vendor::quarn::hardware::drel::DrelService>();
        ASSERT_EQ(EX_NONE, AServiceManager_addService(service->asBinder().get(), kQelctlInstance));
    }
    void TearDown() override {
        hostbinder::reset();
        hostbinder::waitIdle();
        dropListeningGroups();
    }

    // Registrations live in the class API's process-wide registry, and thermal ones stay there
    // after unregistering: each test starts without any, so that none refuses a later test's.
    static void dropListeningGroups() {
        std::vector<DrelCallbackGroup> groups;
        std::lock_guard<std::mutex> lock(callback_group_mutex);
        groups.swap(callback_groups);
    }

    static QelctlRun run(const std::vector<std::string>& args, const std::string& input = "") {
        std::ostringstream out, err;
        std::istringstream in(input);
        const int status = qelctl::runQelctl(args, out, err, in);
        return {status, out.str(), err.str()};
    }

    std::shared_ptr<::aidl::vendor::quarn::hardware::drel::DrelService> service;
};

}  // namespace qel_test
