// A caller's host tests: its code runs against the packaged example service for behaviour, and
// against the packaged gmock service where every call and answer must be exact.

#include <android/binder_manager.h>
#include <android/binder_process.h>
#include <drel-service/DrelService.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <hostbinder/hostbinder.h>
#include <quarn-qel-testkit/MockDrel.h>

#include <string>
#include <vector>

#include "halclient.h"
#include "qel.h"

namespace {

using ::aidl::vendor::quarn::hardware::drel::DrelRequestData;
using ::aidl::vendor::quarn::hardware::drel::DrelService;
using ::qel_test::MockDrel;
using ::qel_test::ReturnResult4;
using ::qel_test::ReturnStatus;
using ::testing::_;
using ::testing::AllOf;
using ::testing::ElementsAre;
using ::testing::Field;
using ::testing::Optional;
using ::testing::StrictMock;

constexpr const char* kInstance = "vendor.quarn.hardware.drel.IDrel/default";
constexpr int32_t kCpuBoost = 0x01010010;

// The caller's code under test: boosts the CPU for a launch and gives the boost back.
class LaunchBooster {
public:
    bool start() {
        QelClient::Resource boost;
        boost.resId = kCpuBoost;
        boost.resValue = "1800000";
        handle_ = QelEventAcquire(1, "com.example.launcher", "launch", 0, {boost});
        return handle_ > 0;
    }
    // A refused boost has nothing to give back.
    void stop() {
        if (handle_ > 0) QelRelease(handle_);
    }

private:
    int handle_ = -1;
};

std::string cpuBoost() {
    std::string value = "<none>";
    QelResStateRequest(kCpuBoost, value);
    return value;
}

class ConsumerTest : public ::testing::Test {
protected:
    void SetUp() override {
        ABinderProcess_startThreadPool();  // reports arrive on this process's binder threads
        hostbinder::reset();
    }
    void TearDown() override { hostbinder::reset(); }
};

TEST_F(ConsumerTest, TheBoostIsInForceWhileTheLaunchRuns) {
    auto service = ndk::SharedRefBase::make<DrelService>();
    ASSERT_EQ(EX_NONE, AServiceManager_addService(service->asBinder().get(), kInstance));

    LaunchBooster booster;
    ASSERT_TRUE(booster.start());
    EXPECT_EQ("1800000", cpuBoost());
    booster.stop();
    EXPECT_EQ("0", cpuBoost());
    EXPECT_EQ(0u, service->liveRequestCount());
}

// The caller's error handling: with the service failing in every way its fault plan knows, a
// launch whose boost was refused goes on unboosted and gives nothing back, and once the service
// is well again the next launch is boosted.
TEST_F(ConsumerTest, ALaunchGoesOnWhenTheServiceFails) {
    auto service = ndk::SharedRefBase::make<DrelService>();
    ASSERT_EQ(EX_NONE, AServiceManager_addService(service->asBinder().get(), kInstance));
    DrelService::FaultPlan plan;
    plan.seed = 42;
    plan.percent = 100;
    plan.faults = DrelService::kAnyFault & ~DrelService::kLateAnswer;  // every call fails
    service->setFaultPlan(plan);
    for (int launch = 0; launch < 8; ++launch) {
        LaunchBooster booster;
        EXPECT_FALSE(booster.start());
        booster.stop();
    }
    EXPECT_EQ(8u, service->faultsInjected());

    service->setFaultPlan(std::nullopt);
    LaunchBooster booster;
    ASSERT_TRUE(booster.start()) << "the first call after the faults reconnects and succeeds";
    EXPECT_EQ("1800000", cpuBoost());
    booster.stop();
}

TEST_F(ConsumerTest, RuleControlSendsExactlyTheCallersResources) {
    auto mock = ndk::SharedRefBase::make<StrictMock<MockDrel>>();
    ASSERT_EQ(EX_NONE, AServiceManager_addService(mock->asBinder().get(), kInstance));
    EXPECT_CALL(*mock, ruleCtl(130, 1,
                               ElementsAre(AllOf(Field(&DrelRequestData::resId, 0x010108a0),
                                                 Field(&DrelRequestData::resValue,
                                                       Optional(std::string("85"))))),
                               _))
            .WillOnce(ReturnResult4(0))
            .WillOnce(ReturnStatus(STATUS_DEAD_OBJECT));

    QelClient::Resource load;
    load.resId = 0x010108a0;
    load.resValue = "85";
    EXPECT_EQ(0, qelRuleCtl(130, 1, {load}));
    EXPECT_EQ(-1, qelRuleCtl(130, 1, {load})) << "a failed call is -1 to the caller";
}

}  // namespace
