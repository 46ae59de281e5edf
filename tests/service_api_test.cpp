// The example service's rules, driven end to end through the library's flat and class APIs as a
// caller's host test would drive it, on a manual clock; and its fault plan.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <thread>
#include <tuple>

#include "drel-service/DrelService.h"
#include "qel.h"
#include "support/class_fixture.h"

namespace qel_test {
namespace {

using ::aidl::vendor::quarn::hardware::drel::DrelService;
using ::testing::Each;
using ::testing::ElementsAre;
using Report = std::vector<std::string>;

constexpr int32_t kCpu = 0x01010010;
constexpr int32_t kGpu = 0x01010020;
const std::string cpu = std::to_string(kCpu), gpu = std::to_string(kGpu);

std::string stateOf(int32_t id) {
    std::string value = "<no answer>";
    QelResStateRequest(id, value);
    return value;
}

// The reports a caller's callback of either form received, each as "key=value" texts.
struct Reports : IClientCallback, IClientCallbackByPath {
    void onCallback(std::list<QelClient::Resource> resources) override {
        std::vector<std::string> keys, values;
        for (const auto& r : resources) keys.push_back(std::to_string(r.resId));
        for (const auto& r : resources) values.push_back(r.resValue.value_or("<absent>"));
        onCallback(keys, values);
    }
    void onCallback(std::vector<std::string> keys, std::vector<std::string> values) override {
        std::lock_guard<std::mutex> lock(mutex);
        Report& report = received.emplace_back();
        for (size_t i = 0; i < keys.size(); ++i) report.push_back(keys[i] + "=" + values[i]);
    }
    std::vector<Report> reports() const {
        std::lock_guard<std::mutex> lock(mutex);
        return received;
    }
    mutable std::mutex mutex;
    std::vector<Report> received;
};

class ServiceApiTest : public ::testing::Test {
protected:
    void SetUp() override {
        ABinderProcess_startThreadPool();
        hostbinder::reset();
        startService();
    }
    // Registers a new instance of the service, on the test's clock.
    void startService() {
        DrelService::Options options;
        options.clock = [this] { return std::chrono::milliseconds(clockMs.load()); };
        service = ::ndk::SharedRefBase::make<DrelService>(options);
        ASSERT_EQ(EX_NONE, AServiceManager_addService(service->asBinder().get(), kInstance));
    }
    // The service's process dies; a new instance takes its place (both APIs reconnect to it).
    void restartService() {
        hostbinder::killService(kInstance);
        hostbinder::waitIdle();
        startService();
    }
    void TearDown() override {
        hostbinder::reset();
        hostbinder::waitIdle();
        clearRegistries();  // process-wide: each test starts without registrations
    }

    std::shared_ptr<DrelService> service;
    std::atomic<int64_t> clockMs{5000};
};

TEST_F(ServiceApiTest, HandlesCountUpNeverReusedAndTheNewestLiveHolderWins) {
    ResourceList resources = {{kGpu, "7"}}, watched = {{kCpu, ""}};
    const int handles[] = {
            QelResAcquire({{kCpu, "1000"}, {kGpu, std::nullopt}}, 0, "", 0),
            QelPlatformResAcquire({{kCpu, "5"}, {kCpu, "2000"}}, 0, "", "pkg", 0),
            Hal::drelResListeningRegister(watched, 0, std::make_shared<Reports>()),
            Hal::drelSACtlRequest(0, 0, kCpu, 0, 0, 0),
            Hal::drelResCtlRequest(0, 0, resources, 0, 0, 0),
    };
    const int first = handles[0];
    ASSERT_GT(first, 0);
    EXPECT_THAT(handles, ElementsAre(first, first + 1, first + 2, first + 3, first + 4))
            << "one count across requests and registrations";
    EXPECT_EQ(-1, Hal::drelResCtlRelease(handles[2])) << "a registration is not a request";
    EXPECT_EQ("1", stateOf(kCpu)) << "a scene is held at 1";
    EXPECT_EQ("7", stateOf(kGpu));
    EXPECT_EQ(4u, service->liveRequestCount());
    EXPECT_EQ(0, Hal::drelResCtlRelease(handles[4]));
    EXPECT_EQ("1", stateOf(kGpu)) << "a record without a value holds its resource at 1";
    EXPECT_EQ(0, Hal::drelSACtlRelease(handles[0]));
    EXPECT_EQ(-1, Hal::drelSACtlRelease(handles[0])) << "released already";
    EXPECT_EQ("1", stateOf(kCpu)) << "releasing an older request changes nothing";
    EXPECT_EQ(0, Hal::drelSACtlRelease(handles[3]));
    EXPECT_EQ("2000", stateOf(kCpu)) << "a resource named twice holds the later value";
    QelRelease(handles[1]);
    EXPECT_EQ("0", stateOf(kCpu));
    EXPECT_EQ(first + 5, QelResAcquire({{kCpu, "1"}}, 0, "", 0)) << "handles are never reused";
}

// The handles of a service that died name nothing in the one that replaced it, though each
// instance numbers its handles in the same order.
TEST_F(ServiceApiTest, AHandleOfADeadInstanceIsUnknownToItsSuccessorAndEndsNothingThere) {
    ResourceList oldIds = {{kGpu, ""}}, newIds = {{kCpu, ""}};
    const int oldListener = Hal::drelResListeningRegister(oldIds, 0, std::make_shared<Reports>());
    const int oldRequest = QelResAcquire({{kCpu, "5"}}, 0, "", 0);
    // The next instance numbers from the boot clock's milliseconds: on a device its start takes
    // far longer than the old instance's two handles; here it is made to.
    std::this_thread::sleep_for(std::chrono::milliseconds(3));
    restartService();
    auto listener = std::make_shared<Reports>();
    ASSERT_GT(Hal::drelResListeningRegister(newIds, 0, listener), 0);
    ASSERT_GT(QelResAcquire({{kCpu, "7"}}, 0, "", 0), 0);
    EXPECT_EQ(-1, Hal::drelResListeningUnRegister(oldListener));
    EXPECT_EQ(-1, Hal::drelResCtlRelease(oldRequest));
    EXPECT_EQ("7", stateOf(kCpu)) << "the new request is held";
    QelResAcquire({{kCpu, "9"}}, 0, "", 0);
    EXPECT_THAT(listener->reports(), ElementsAre(ElementsAre(cpu + "=7"), ElementsAre(cpu + "=9")))
            << "the new listener hears on";
}

TEST_F(ServiceApiTest, TimeoutsAreMillisecondsOnTheClockAndZeroOrLessNeverExpires) {
    const int timed = QelEventAcquire(-2, "", "", 500, {{kCpu, "1400"}});
    QelResAcquire({{kGpu, "300"}}, 0, "", -1);
    clockMs += 499;
    EXPECT_EQ("1400", stateOf(kCpu));
    clockMs += 1;
    EXPECT_EQ("0", stateOf(kCpu)) << "expired by the next query";
    EXPECT_EQ(-1, Hal::drelResCtlRelease(timed)) << "an expired request is gone";
    clockMs += 24 * 3600 * 1000;
    EXPECT_EQ("300", stateOf(kGpu));
    EXPECT_EQ(1u, service->liveRequestCount());
}

// Only the process that made a request or registration can end it; another's attempt answers as
// for an unknown handle and leaves it in place for its maker.
TEST_F(ServiceApiTest, OnlyTheProcessThatMadeARequestOrRegistrationCanEndIt) {
    const pid_t self = 0, other = getpid() + 1;  // 0: this process's own pid
    // Who makes them, who ends them, and what ending answers.
    const std::tuple<pid_t, pid_t, int> rows[] = {
            {self, other, -1}, {other, self, -1}, {other, other, 0}};
    for (const auto& [maker, ender, answer] : rows) {
        ResourceList ids = {{kGpu, ""}};
        auto listener = std::make_shared<Reports>();
        hostbinder::setCallingPid(maker);
        const int request = QelResAcquire({{kCpu, "5"}}, 0, "", 0);
        const int registration = Hal::drelResListeningRegister(ids, 0, listener);
        const int thermal = Hal::drelThermalListeningRegister({1}, listener);
        const auto endAll = [&](pid_t pid) {
            hostbinder::setCallingPid(pid);
            return std::vector<int>{Hal::drelResCtlRelease(request),
                                    Hal::drelResListeningUnRegister(registration),
                                    Hal::drelThermalListeningUnregister(thermal)};
        };
        EXPECT_THAT(endAll(ender), Each(answer)) << maker << " made, " << ender << " ended";
        if (answer != 0) {
            EXPECT_THAT(endAll(maker), Each(0)) << "left in place for its maker";
        }
        hostbinder::setCallingPid(self);
        EXPECT_EQ(0u, service->liveRequestCount());
    }
}

TEST_F(ServiceApiTest, StatesAnswerEachIdOrPathInOrderAndPowerModesTheirLeadingNumber) {
    QelResAcquire({{kCpu, "1800000"}}, 0, "", 0);
    ASSERT_GT(Hal::drel_resctl_request_by_path(0, 0, {"/sys/gpu/min"}, {"400"}, 0, 0, 0), 0);
    std::vector<QelClient::Resource> both = {{kGpu, "x"}, {kCpu, ""}};
    EXPECT_EQ(2, QelMutiResStateRequest(both));
    EXPECT_EQ("0", both[0].resValue) << "nothing holds it: the default";
    EXPECT_EQ("1800000", both[1].resValue);
    std::vector<std::string> paths;
    EXPECT_EQ(2, Hal::drel_res_state_request_by_path({"/sys/gpu/min", "/sys/ddr"}, {}, 0, paths));
    EXPECT_THAT(paths, ElementsAre("400", "0"));
    const std::pair<std::string, int> modes[] = {
            {"3 (balanced)", 3}, {" 7abc", 7}, {"-3", -3}, {"fast", 0}, {"99999999999", 0}};
    int mode = 20;
    for (const auto& [held, status] : modes) {
        QelResAcquire({{++mode, held}}, 0, "", 0);
        EXPECT_EQ(status, QelGetPMStatus(mode)) << held;
    }
    EXPECT_EQ(0, QelGetPMStatus(99)) << "a mode nothing holds";
}

TEST_F(ServiceApiTest, ListenersHearEachChangeInTheirOwnOrderAndOneShotsTheirRequestOnce) {
    auto listener = std::make_shared<Reports>(), byPath = std::make_shared<Reports>(),
         oneShot = std::make_shared<Reports>();
    ResourceList watched = {{kCpu, ""}, {kGpu, ""}}, request = {{kGpu, "700"}, {kCpu, "1400000"}};
    const int registration = Hal::drelResListeningRegister(watched, 0, listener);
    ASSERT_GT(Hal::drel_res_listening_register_by_path({"/sys/a", "/sys/b"}, 0, byPath), 0);
    const int handle = Hal::drelResCtlRequest(0, 0, request, 0, 0, 0, oneShot);
    QelResAcquire({{kGpu, "700"}}, 0, "", 0);  // the same value: no change
    QelResAcquire({{kGpu, "0"}}, 0, "", 100);  // a change to the default value
    clockMs += 100;
    EXPECT_EQ("700", stateOf(kGpu)) << "expiry restores the older value";
    Hal::drel_resctl_request_by_path(0, 0, {"/sys/b"}, {"9"}, 0, 0, 0);
    EXPECT_EQ(0, Hal::drelResCtlRelease(handle));
    EXPECT_EQ(0, Hal::drelResListeningUnRegister(registration));
    QelResAcquire({{kCpu, "1"}}, 0, "", 0);  // heard by nobody: the listener is gone

    EXPECT_THAT(oneShot->reports(), ElementsAre(ElementsAre(gpu + "=700", cpu + "=1400000")));
    EXPECT_THAT(listener->reports(),
                ElementsAre(ElementsAre(cpu + "=1400000", gpu + "=700"), ElementsAre(gpu + "=0"),
                            ElementsAre(gpu + "=700"), ElementsAre(cpu + "=0")));
    EXPECT_THAT(byPath->reports(), ElementsAre(ElementsAre("/sys/b=9")));
}

TEST_F(ServiceApiTest, ThermalLevelsFanOutToTheListenersOfTheirIds) {
    auto both = std::make_shared<Reports>(), second = std::make_shared<Reports>();
    const int bothHandle = Hal::drelThermalListeningRegister({1, 2}, both);
    ASSERT_GT(Hal::drelThermalListeningRegister({2, 3}, second), 0);
    ResourceList levels = {{2, "warm"}, {1, "hot"}, {4, "cool"}};
    EXPECT_EQ(2, Hal::drelThermalNotify(levels, 0)) << "listeners reached";
    EXPECT_THAT(both->reports(), ElementsAre(ElementsAre("2=warm", "1=hot")));
    EXPECT_THAT(second->reports(), ElementsAre(ElementsAre("2=warm")));
    EXPECT_EQ(0, Hal::drelThermalListeningUnregister(bothHandle));
    EXPECT_EQ(1, Hal::drelThermalNotify(levels, 0));
}

TEST_F(ServiceApiTest, WithoutAServiceOrAnAnswerTheCallsGiveMinusOne) {
    hostbinder::reset();  // nothing declared: the calls fail at once
    ResourceList ids = {{kCpu, ""}}, states;
    EXPECT_EQ(-1, Hal::drelResListeningRegister(ids, 0, std::make_shared<Reports>()));
    EXPECT_EQ(-1, Hal::drelResStateRequest(ids, 0, states));
    EXPECT_EQ(-1, qelInit());
}

// One fault of each kind, and what the service did of the call's work.
TEST_F(ServiceApiTest, EachFaultOfThePlanFailsOrDelaysTheCallAsDocumented) {
    // The fault, the exception and status the caller gets, and the requests held afterwards.
    const std::tuple<uint32_t, binder_exception_t, binder_status_t, size_t> rows[] = {
            {DrelService::kFailedTransaction, EX_TRANSACTION_FAILED, STATUS_FAILED_TRANSACTION, 0},
            {DrelService::kException, EX_ILLEGAL_STATE, STATUS_OK, 0},
            {DrelService::kServiceSpecificError, EX_SERVICE_SPECIFIC, STATUS_OK, 0},
            {DrelService::kLostReply, EX_TRANSACTION_FAILED, STATUS_FAILED_TRANSACTION, 1},
            {DrelService::kLateAnswer, EX_NONE, STATUS_OK, 1}};
    const auto parcel = requestParcel(DrelService::kKindResource, 0, 0, 0, false, 0,
                                      {wireRecord(kCpu, 0, "1")});
    for (const auto& [fault, exception, code, live] : rows) {
        auto drel = ::ndk::SharedRefBase::make<DrelService>();
        drel->setFaultPlan(DrelService::FaultPlan{3, 100, fault, std::chrono::microseconds(50)});
        int32_t handle = 0;
        const ::ndk::ScopedAStatus status = drel->request(parcel, &handle);
        EXPECT_EQ(exception, status.getExceptionCode()) << fault;
        EXPECT_EQ(code, status.getStatus()) << fault;
        EXPECT_EQ(exception == EX_SERVICE_SPECIFIC, status.getServiceSpecificError() < -1);
        EXPECT_EQ(live, drel->liveRequestCount()) << fault;
        EXPECT_EQ(1u, drel->faultsInjected());
    }
}

// The same plan fails the same calls in the same ways; another seed fails others.
TEST_F(ServiceApiTest, AFaultPlanIsReproducibleForItsSeed) {
    auto outcomes = [](uint64_t seed) {
        auto drel = ::ndk::SharedRefBase::make<DrelService>();
        drel->setFaultPlan(DrelService::FaultPlan{seed, 50, DrelService::kAnyFault, {}});
        std::vector<std::string> seen;  // each call's exception, status and service code
        for (int32_t i = 0, out; i < 64; ++i)
            seen.push_back(drel->setRelatedSysInfo(1, i, &out).getDescription());
        return std::make_pair(seen, drel->faultsInjected());
    };
    const auto [seen, faults] = outcomes(11);
    EXPECT_EQ(seen, outcomes(11).first);
    EXPECT_NE(seen, outcomes(12).first);
    EXPECT_TRUE(faults > 16 && faults < 48) << faults << " of 64 calls went wrong, not about half";
}

}  // namespace
}  // namespace qel_test
