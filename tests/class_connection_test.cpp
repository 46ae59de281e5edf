// The class API's connection: lazy connect, one connect under contention, reconnect after a
// death or a failed call, waiting for a declared service, and the not-declared path.

#include <android/binder_manager.h>
#include <gtest/gtest.h>
#include <hostbinder/hostbinder.h>

#include <atomic>
#include <future>
#include <thread>

#include "halclient.h"
#include "halclient/halclient_internal.h"
#include "support/service_fixture.h"

namespace qel_test {
namespace {

using ::testing::_;
using ::testing::Return;

const LogLine kDied{ANDROID_LOG_ERROR, std::string("DRELFramework-lib-vendor"),
                    "Drel HAL Service died"};

class ClassConnectionTest : public ServiceFixture {};

TEST_F(ClassConnectionTest, DrelInitConnectsLogsAndCallsInit) {
    EXPECT_CALL(*service, init()).WillOnce(ReturnOk());
    drelHalclient::drel_init();
    EXPECT_EQ(log.lines(),
              (std::vector<LogLine>{{ANDROID_LOG_INFO, std::string("DRELFramework-lib-vendor"),
                                     "drel client drel_init"}}));
    // isDeclared + waitForService, nothing more.
    EXPECT_EQ(2, hostbinder::serviceManagerCalls());
    std::shared_lock<std::shared_timed_mutex> lock(g_drel_hal_lock);
    ASSERT_NE(nullptr, g_drel_hal);
    EXPECT_TRUE(g_drel_hal->isRemote()) << "the library must hold a proxy, not the service";
}

TEST_F(ClassConnectionTest, ASecondCallMakesNoServiceManagerCall) {
    EXPECT_CALL(*service, init()).Times(2).WillRepeatedly(ReturnOk());
    drelHalclient::drel_init();
    int afterFirst = hostbinder::serviceManagerCalls();
    drelHalclient::drel_init();
    EXPECT_EQ(afterFirst, hostbinder::serviceManagerCalls());
}

TEST_F(ClassConnectionTest, EightThreadsConnectingAtOnceConnectOnce) {
    EXPECT_CALL(*service, init()).Times(8).WillRepeatedly(ReturnOk());
    std::atomic<int> ready{0};
    std::vector<std::thread> threads;
    for (int i = 0; i < 8; ++i) {
        threads.emplace_back([&] {
            ++ready;
            while (ready < 8) std::this_thread::yield();
            drelHalclient::drel_init();
        });
    }
    for (auto& t : threads) t.join();
    EXPECT_EQ(2, hostbinder::serviceManagerCalls());
}

TEST_F(ClassConnectionTest, ReconnectsAfterServiceDeathWithoutCallerAction) {
    EXPECT_CALL(*service, init()).WillOnce(ReturnOk());
    drelHalclient::drel_init();
    killService();
    EXPECT_TRUE(log.contains(kDied));
    {
        std::shared_lock<std::shared_timed_mutex> lock(g_drel_hal_lock);
        EXPECT_EQ(nullptr, g_drel_hal);
    }
    startService();
    EXPECT_CALL(*service, init()).WillOnce(ReturnOk());
    log.clear();
    drelHalclient::drel_init();
    EXPECT_EQ(1u, log.lines().size()) << "no failure is logged: the call reconnected first";
    // A second death is delivered too: the new connection linked a new recipient.
    killService();
    EXPECT_EQ(1, log.count("Drel HAL Service died"));
}

TEST_F(ClassConnectionTest, FailedStatusResetsTheProxyAndTheNextCallReconnects) {
    EXPECT_CALL(*service, init()).WillOnce(ReturnServiceError(5)).WillOnce(ReturnOk());
    drelHalclient::drel_init();
    EXPECT_TRUE(log.contains({ANDROID_LOG_ERROR, std::string("DRELFramework-lib-vendor"),
                              "drel_init() failed: drel HAL service not available"}));
    {
        std::shared_lock<std::shared_timed_mutex> lock(g_drel_hal_lock);
        EXPECT_EQ(nullptr, g_drel_hal);
    }
    int before = hostbinder::serviceManagerCalls();
    log.clear();
    drelHalclient::drel_init();
    EXPECT_EQ(before + 2, hostbinder::serviceManagerCalls()) << "the next call reconnects";
    EXPECT_EQ(0, log.count("drel_init() failed: drel HAL service not available"));
}

TEST_F(ClassConnectionTest, TransportFailuresResetTheProxyToo) {
    EXPECT_CALL(*service, init()).WillOnce(ReturnStatus(STATUS_FAILED_TRANSACTION));
    drelHalclient::drel_init();
    std::shared_lock<std::shared_timed_mutex> lock(g_drel_hal_lock);
    EXPECT_EQ(nullptr, g_drel_hal);
}

TEST_F(ClassConnectionTest, DeclaredServiceThatIsNotRunningMakesDrelInitWait) {
    hostbinder::reset();
    hostbinder::declareService(kInstance);
    std::atomic<bool> returned{false};
    auto done = std::async(std::launch::async, [&] {
        drelHalclient::drel_init();
        returned = true;
    });
    EXPECT_EQ(std::future_status::timeout, done.wait_for(std::chrono::milliseconds(200)));
    EXPECT_FALSE(returned);
    service = ::ndk::SharedRefBase::make<::testing::NiceMock<MockDrel>>();
    EXPECT_CALL(*service, init()).WillOnce(ReturnOk());
    ASSERT_EQ(EX_NONE, AServiceManager_addService(service->asBinder().get(), kInstance));
    done.get();
    EXPECT_TRUE(returned);
}

TEST_F(ClassConnectionTest, UndeclaredServiceLogsTheSecondAnswerAndFailsEveryCall) {
    hostbinder::reset();
    drelHalclient::drel_init();
    EXPECT_EQ(log.lines(),
              (std::vector<LogLine>{{ANDROID_LOG_INFO, std::string("DRELFramework-lib-vendor"),
                                     "drel client drel_init"},
                                    {ANDROID_LOG_ERROR, std::string("DRELFramework-lib-vendor"),
                                     "Drel is not declared, AServiceManager_isDeclared:0"}}));
    EXPECT_EQ(2, hostbinder::serviceManagerCalls()) << "isDeclared is asked twice";
    EXPECT_EQ(-1, drelHalclient::drelResCtlRelease(1));
}

}  // namespace
}  // namespace qel_test
