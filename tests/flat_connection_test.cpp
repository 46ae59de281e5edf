// The flat API's connection: qelInit, the non-blocking connect, the failure line and reset of
// every entry point, death and reconnect (also, for both APIs, of a call in flight when the
// service dies), and its independence from the class API's connection.

#include <android/binder_manager.h>
#include <gtest/gtest.h>
#include <hostbinder/hostbinder.h>

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <future>
#include <thread>

#include "halclient.h"
#include "halclient/halclient_internal.h"
#include "qel.h"
#include "support/flat_fixture.h"

namespace qel_test {
namespace {

using ::testing::_;

const LogLine kInitEnter = qelLine(ANDROID_LOG_ERROR, "qelInit enter");
const LogLine kConnectError =
        qelLine(ANDROID_LOG_ERROR, "qel_get_drel_hal_and_link_to_death error:-1");
const LogLine kDied = qelLine(ANDROID_LOG_ERROR, "Drel HAL Service died");

class FlatConnectionTest : public FlatFixture {};

TEST_F(FlatConnectionTest, QelInitConnectsOnceWithoutWaitingAndCallsInitThroughAProxy) {
    EXPECT_CALL(*service, init()).Times(2).WillRepeatedly(ReturnOk());
    EXPECT_EQ(0, qelInit());
    EXPECT_EQ(0, qelInit());
    EXPECT_EQ(log.lines(), (std::vector<LogLine>{kInitEnter, kInitEnter}));
    EXPECT_EQ(2, hostbinder::serviceManagerCalls()) << "isDeclared + checkService, once";
    std::shared_lock<std::shared_timed_mutex> lock(g_qel_hal_lock);
    ASSERT_NE(nullptr, g_qel_hal);
    EXPECT_TRUE(g_qel_hal->isRemote()) << "the flat API must hold a proxy, not the service";
}

TEST_F(FlatConnectionTest, UndeclaredServiceLogsTheSecondAnswerAndFails) {
    hostbinder::reset();
    EXPECT_EQ(-1, qelInit());
    EXPECT_EQ(log.lines(),
              (std::vector<LogLine>{kInitEnter,
                                    qelLine(ANDROID_LOG_ERROR,
                                            "Drel is not declared, AServiceManager_isDeclared:0"),
                                    kConnectError}));
    EXPECT_EQ(2, hostbinder::serviceManagerCalls()) << "isDeclared is asked twice, no look-up";
}

TEST_F(FlatConnectionTest, DeclaredServiceThatIsNotRunningFailsAtOnce) {
    hostbinder::reset();
    hostbinder::declareService(kInstance);
    auto init = std::async(std::launch::async, qelInit);
    // Bounded only so that a waiting implementation fails here instead of hanging the suite.
    if (init.wait_for(std::chrono::seconds(5)) != std::future_status::ready) {
        startService();  // lets a waiting call go so that the test can end
        FAIL() << "qelInit waited for a declared service to start";
    }
    EXPECT_EQ(-1, init.get());
    EXPECT_EQ(log.lines(),
              (std::vector<LogLine>{kInitEnter,
                                    qelLine(ANDROID_LOG_ERROR, "Drel HAL Service not found"),
                                    kConnectError}));
}

// A death, also one between the look-up and the link, leaves no proxy behind.
TEST_F(FlatConnectionTest, DeathDropsTheProxyAndTheNextCallLinksANewRecipient) {
    hostbinder::dieAtNextDeathLink(kInstance);
    EXPECT_EQ(-1, qelInit());
    EXPECT_EQ(log.lines(),
              (std::vector<LogLine>{kInitEnter,
                                    qelLine(ANDROID_LOG_ERROR,
                                            "Unable to link to g_qel_hal death notifications!"),
                                    kConnectError}));
    EXPECT_FALSE(qelConnected());
    startService();
    log.clear();
    EXPECT_CALL(*service, init()).WillOnce(ReturnOk());
    ASSERT_EQ(0, qelInit());
    killService();
    EXPECT_EQ(log.lines(), (std::vector<LogLine>{kInitEnter, kDied}));
    EXPECT_FALSE(qelConnected());

    startService();
    EXPECT_CALL(*service, init()).WillOnce(ReturnOk());
    log.clear();
    EXPECT_EQ(0, qelInit());
    EXPECT_EQ(log.lines(), std::vector<LogLine>{kInitEnter}) << "reconnected before calling";
    killService();
    EXPECT_EQ(1, log.count("Drel HAL Service died")) << "the new connection is linked to death";
}

// A call in flight when the service dies fails once, in either API, wherever its death notice
// runs: on a binder thread, or inside the call on its thread, which holds the connection lock
// shared (as RPC binder runs it). One death line, then one reconnect.
TEST_F(FlatConnectionTest, ACallInFlightWhenTheServiceDiesResetsOnceWhereverItsNoticeRuns) {
    for (int (*call)() : {+[] { return (drelHalclient::drel_init(), 0); }, qelInit}) {
        for (bool inCall : {false, true}) {
            SCOPED_TRACE((call == qelInit ? "flat API" : "class API") +
                         std::string(inCall ? " in call" : ""));
            SetUp();  // neither API connected
            hostbinder::deliverDeathsInFailingCalls(inCall);
            EXPECT_CALL(*service, init()).WillOnce([] {
                hostbinder::killService(kInstance);
                return ::ndk::ScopedAStatus::ok();
            });
            auto done = std::async(std::launch::async, call);
            if (done.wait_for(std::chrono::minutes(1)) != std::future_status::ready) {
                ADD_FAILURE() << "a death notice waits for its own thread's lock: ending the tests";
                std::_Exit(1);  // nothing can end that thread
            }
            hostbinder::waitIdle();
            EXPECT_EQ(1, log.count(kDied.message));
            EXPECT_TRUE(!inCall || log.lines().at(1).message == kDied.message) << "inside the call";
            startService();
            EXPECT_CALL(*service, init()).WillOnce(ReturnOk());
            call();
            EXPECT_EQ(4, hostbinder::serviceManagerCalls()) << "connected, then reconnected once";
        }
    }
}

TEST_F(FlatConnectionTest, FlatAndClassConnectionsFailAndReconnectIndependently) {
    EXPECT_CALL(*service, init())
            .WillOnce(ReturnOk())
            .WillOnce(ReturnServiceError(1))
            .WillRepeatedly(ReturnOk());
    drelHalclient::drel_init();
    ASSERT_TRUE(classConnected());
    EXPECT_EQ(-2, qelInit());
    EXPECT_TRUE(classConnected()) << "a failed flat call resets the flat connection only";

    ASSERT_EQ(0, qelInit());
    killService();
    EXPECT_FALSE(qelConnected());
    EXPECT_FALSE(classConnected());
    startService();
    EXPECT_CALL(*service, init()).WillRepeatedly(ReturnOk());
    EXPECT_EQ(0, qelInit());
    EXPECT_FALSE(classConnected()) << "the flat API's connect must not connect the class API";
}

TEST_F(FlatConnectionTest, ThreadsConnectingAtOnceAllSucceed) {
    // A thread that loses the race to connect connects again; every caller still succeeds.
    EXPECT_CALL(*service, init()).Times(8).WillRepeatedly(ReturnOk());
    std::atomic<int> ready{0};
    std::atomic<int> failures{0};
    std::vector<std::thread> threads;
    for (int i = 0; i < 8; ++i) {
        threads.emplace_back([&] {
            ++ready;
            while (ready < 8) std::this_thread::yield();
            if (qelInit() != 0) ++failures;
        });
    }
    for (auto& t : threads) t.join();
    EXPECT_EQ(0, failures);
    killService();
    EXPECT_EQ(1, log.count("Drel HAL Service died")) << "one live link, to the kept proxy";
}

// Every entry point, under the name its failure line gives it, and its result when the service
// answers with a failed status.
std::vector<QelClient::Resource> gResources{{0x10, std::nullopt}};
std::string gText = "unchanged";

const struct {
    const char* name;
    int (*call)();
    int failedStatusResult;
} kEntryPoints[] = {
        {"drel_init", qelInit, -2},
        {"QelEventAcquire", [] { return QelEventAcquire(1, "p", "i", 10, {}); }, -1},
        {"QelEventAcquire", [] { return QelResAcquire({}, 0, "i", 10); }, -1},
        {"QelEventAcquire", [] { return QelPlatformResAcquire({}, 0, "i", "p", 10); }, -1},
        {"drelResCtlRelease",
         [] {
             QelRelease(7);
             return -1;
         },
         -1},
        {"QelNotify", [] { return QelNotify(1, 2, {3}); }, -1},
        {"QelMutiResStateRequest", [] { return QelMutiResStateRequest(gResources); }, -1},
        {"QelMutiResStateRequest",
         [] {
             QelResStateRequest(0x10, gText);
             return gText == "unchanged" ? -1 : 0;
         },
         -1},
        {"QelGetHistory", [] { return QelGetHistory(gText); }, -1},
        {"QelGetPMStatus", [] { return QelGetPMStatus(2); }, -1},
        {"qelRuleCtl", [] { return qelRuleCtl(1, 1, {}); }, -1},
        {"setRelatedSysInfo", [] { return setRelatedSysInfo(1, 2); }, -1},
};

TEST_F(FlatConnectionTest, WithoutADeclaredServiceEveryEntryPointEndsWithTheConnectError) {
    hostbinder::reset();
    for (const auto& entry : kEntryPoints) {
        SCOPED_TRACE(entry.name);
        log.clear();
        EXPECT_EQ(-1, entry.call());
        ASSERT_FALSE(log.lines().empty());
        EXPECT_EQ(kConnectError, log.lines().back());
    }
    std::vector<QelClient::Resource> none;
    EXPECT_EQ(-1, QelMutiResStateRequest(none));
    EXPECT_EQ(kConnectError, log.lines().back()) << "the connection is looked at first";
}

TEST_F(FlatConnectionTest, AFailedStatusLogsTheOperationAndDropsTheProxy) {
    // No answer is set: every method returns an empty status, which is not OK.
    for (const auto& entry : kEntryPoints) {
        SCOPED_TRACE(entry.name);
        log.clear();
        EXPECT_EQ(entry.failedStatusResult, entry.call());
        EXPECT_TRUE(log.contains(
                qelLine(ANDROID_LOG_ERROR,
                        std::string(entry.name) + "() failed : drel HAL service not available")));
        EXPECT_FALSE(qelConnected());
    }
    EXPECT_EQ("unchanged", gText);
    EXPECT_EQ(std::nullopt, gResources[0].resValue);
}

}  // namespace
}  // namespace qel_test
