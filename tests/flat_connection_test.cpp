// The flat API's connection: qelInit, the non-blocking connect, the failure line and reset of
// every entry point, death and reconnect, and its independence from the class API's connection.

#include <android/binder_manager.h>
#include <gtest/gtest.h>
#include <hostbinder/hostbinder.h>

#include <atomic>
#include <chrono>
#include <functional>
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

bool classConnected() {
    std::shared_lock<std::shared_timed_mutex> lock(g_drel_hal_lock);
    return g_drel_hal != nullptr;
}

class FlatConnectionTest : public FlatFixture {};

TEST_F(FlatConnectionTest, QelInitConnectsWithoutWaitingAndCallsInit) {
    EXPECT_CALL(*service, init()).WillOnce(ReturnOk());
    EXPECT_EQ(0, qelInit());
    EXPECT_EQ(log.lines(), std::vector<LogLine>{kInitEnter});
    EXPECT_EQ(2, hostbinder::serviceManagerCalls()) << "isDeclared + checkService";
    std::shared_lock<std::shared_timed_mutex> lock(g_qel_hal_lock);
    ASSERT_NE(nullptr, g_qel_hal);
    EXPECT_TRUE(g_qel_hal->isRemote()) << "the flat API must hold a proxy, not the service";
}

TEST_F(FlatConnectionTest, CallsAfterConnectingMakeNoServiceManagerCall) {
    EXPECT_CALL(*service, init()).WillRepeatedly(ReturnOk());
    EXPECT_CALL(*service, request(_, _)).WillRepeatedly(ReturnResult(1));
    EXPECT_CALL(*service, ruleCtl(_, _, _, _)).WillRepeatedly(ReturnResult4(0));
    ASSERT_EQ(0, qelInit());
    int afterConnect = hostbinder::serviceManagerCalls();
    EXPECT_EQ(0, qelInit());
    EXPECT_EQ(1, QelEventAcquire(3, "pkg", "id", 10, {}));
    EXPECT_EQ(1, QelNotify(1, 2, {}));
    EXPECT_EQ(0, qelRuleCtl(1, 1, {}));
    EXPECT_EQ(afterConnect, hostbinder::serviceManagerCalls());
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

TEST_F(FlatConnectionTest, QelInitReturnsMinusTwoOnAFailedInitAndDropsTheProxy) {
    EXPECT_CALL(*service, init())
            .WillOnce(ReturnServiceError(3))
            .WillOnce(ReturnStatus(STATUS_FAILED_TRANSACTION))
            .WillOnce(ReturnOk());
    const LogLine failed =
            qelLine(ANDROID_LOG_ERROR, "drel_init() failed : drel HAL service not available");
    for (int attempt = 0; attempt < 2; ++attempt) {
        log.clear();
        int before = hostbinder::serviceManagerCalls();
        EXPECT_EQ(-2, qelInit()) << "attempt " << attempt;
        EXPECT_EQ(log.lines(), (std::vector<LogLine>{kInitEnter, failed}));
        EXPECT_FALSE(qelConnected());
        EXPECT_EQ(before + 2, hostbinder::serviceManagerCalls()) << "each attempt reconnects";
    }
    EXPECT_EQ(0, qelInit());
    EXPECT_TRUE(qelConnected());
}

TEST_F(FlatConnectionTest, DeathDropsTheProxyAndTheNextCallLinksANewRecipient) {
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

TEST_F(FlatConnectionTest, FlatAndClassConnectionsFailAndReconnectIndependently) {
    EXPECT_CALL(*service, init()).WillOnce(ReturnOk()).WillOnce(ReturnServiceError(1));
    drelHalclient::drel_init();
    ASSERT_TRUE(classConnected());
    // A failed flat call resets the flat connection only.
    EXPECT_EQ(-2, qelInit());
    EXPECT_FALSE(qelConnected());
    EXPECT_TRUE(classConnected());

    // Both die with the service; each comes back on its own next call, and only then.
    EXPECT_CALL(*service, init()).WillOnce(ReturnOk());
    ASSERT_EQ(0, qelInit());
    killService();
    EXPECT_FALSE(qelConnected());
    EXPECT_FALSE(classConnected());
    EXPECT_TRUE(log.contains(kDied));
    EXPECT_TRUE(log.contains(
            {ANDROID_LOG_ERROR, std::string("DRELFramework-lib-vendor"), "Drel HAL Service died"}));

    startService();
    EXPECT_CALL(*service, init()).Times(2).WillRepeatedly(ReturnOk());
    EXPECT_EQ(0, qelInit());
    EXPECT_TRUE(qelConnected());
    EXPECT_FALSE(classConnected()) << "the flat API's connect must not connect the class API";
    drelHalclient::drel_init();
    EXPECT_TRUE(classConnected());
}

TEST_F(FlatConnectionTest, DeclaredServiceThatIsNotRunningFailsEveryCallAtOnce) {
    hostbinder::reset();
    hostbinder::declareService(kInstance);
    auto calls = std::async(std::launch::async, [] {
        std::vector<int> results{qelInit(), QelEventAcquire(1, "p", "i", 1, {}),
                                 QelNotify(1, 1, {}), qelRuleCtl(1, 1, {}),
                                 setRelatedSysInfo(1, 1)};
        QelRelease(1);
        return results;
    });
    // Bounded only so that a waiting implementation fails here instead of hanging the suite.
    if (calls.wait_for(std::chrono::seconds(5)) != std::future_status::ready) {
        startService();  // lets a waiting call go so that the test can end
        calls.wait();
        FAIL() << "a flat-API call waited for a declared service to start";
    }
    EXPECT_EQ(calls.get(), (std::vector<int>{-1, -1, -1, -1, -1}));
    EXPECT_EQ(6, log.count("Drel HAL Service not found"));
    EXPECT_EQ(6, log.count("qel_get_drel_hal_and_link_to_death error:-1"));
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
    EXPECT_TRUE(qelConnected());
    killService();
    EXPECT_EQ(1, log.count("Drel HAL Service died")) << "one live link, to the kept proxy";
}

// Every entry point: its result and its last log line when connecting fails, and when the
// service answers with a failed status.
struct EntryPoint {
    const char* name;  // the operation's name in the failure line
    std::function<int()> call;
    int failedStatusResult;
};

void PrintTo(const EntryPoint& entry, std::ostream* os) {
    *os << entry.name;
}

int releaseAsInt() {
    QelRelease(7);
    return -1;
}
int resStateAsInt() {
    std::string value = "unchanged";
    QelResStateRequest(0x10, value);
    return value == "unchanged" ? -1 : 0;
}

const EntryPoint kEntryPoints[] = {
        {"drel_init", qelInit, -2},
        {"QelEventAcquire", [] { return QelEventAcquire(1, "p", "i", 10, {}); }, -1},
        {"QelEventAcquire", [] { return QelResAcquire({}, 0, "i", 10); }, -1},
        {"QelEventAcquire", [] { return QelPlatformResAcquire({}, 0, "i", "p", 10); }, -1},
        {"drelResCtlRelease", releaseAsInt, -1},
        {"QelNotify", [] { return QelNotify(1, 2, {3}); }, -1},
        {"QelMutiResStateRequest",
         [] {
             std::vector<QelClient::Resource> resources{{0x10, std::nullopt}};
             return QelMutiResStateRequest(resources);
         },
         -1},
        {"QelMutiResStateRequest", resStateAsInt, -1},
        {"QelGetHistory",
         [] {
             std::string history;
             return QelGetHistory(history);
         },
         -1},
        {"QelGetPMStatus", [] { return QelGetPMStatus(2); }, -1},
        {"qelRuleCtl", [] { return qelRuleCtl(1, 1, {}); }, -1},
        {"setRelatedSysInfo", [] { return setRelatedSysInfo(1, 2); }, -1},
};

class FlatEntryPointTest : public FlatFixture, public ::testing::WithParamInterface<EntryPoint> {
protected:
    // Every operation answers with `status`, having written 5 into its out-value.
    void answerEveryCallWith(binder_status_t status) {
        auto failed = [status] { return ndk::ScopedAStatus::fromStatus(status); };
        ON_CALL(*service, init()).WillByDefault(failed);
        ON_CALL(*service, request(_, _)).WillByDefault([=](auto&, int32_t* out) {
            *out = 5;
            return failed();
        });
        ON_CALL(*service, release(_, _)).WillByDefault([=](auto, int32_t* out) {
            *out = 5;
            return failed();
        });
        ON_CALL(*service, stateRequest(_, _))
                .WillByDefault([=](auto&, std::vector<DrelRequestData>* out) {
                    out->push_back(wireRecord(0x10, 0, "5", "5"));
                    return failed();
                });
        ON_CALL(*service, ruleCtl(_, _, _, _)).WillByDefault([=](auto, auto, auto&, int32_t* out) {
            *out = 5;
            return failed();
        });
        ON_CALL(*service, setRelatedSysInfo(_, _, _)).WillByDefault([=](auto, auto, int32_t* out) {
            *out = 5;
            return failed();
        });
    }
};

TEST_P(FlatEntryPointTest, FailsWithTheConnectErrorWhenTheServiceIsNotDeclared) {
    hostbinder::reset();
    EXPECT_EQ(-1, GetParam().call());
    ASSERT_FALSE(log.lines().empty());
    EXPECT_EQ(kConnectError, log.lines().back());
}

TEST_P(FlatEntryPointTest, FailedStatusLogsTheOperationAndDropsTheProxy) {
    for (binder_status_t status : {STATUS_FAILED_TRANSACTION, STATUS_DEAD_OBJECT}) {
        answerEveryCallWith(status);
        log.clear();
        EXPECT_EQ(GetParam().failedStatusResult, GetParam().call()) << "status " << status;
        EXPECT_TRUE(log.contains(qelLine(
                ANDROID_LOG_ERROR,
                std::string(GetParam().name) + "() failed : drel HAL service not available")))
                << "status " << status;
        EXPECT_FALSE(qelConnected());
    }
    EXPECT_FALSE(classConnected());
}

INSTANTIATE_TEST_SUITE_P(EveryEntryPoint, FlatEntryPointTest, ::testing::ValuesIn(kEntryPoints));

}  // namespace
}  // namespace qel_test
