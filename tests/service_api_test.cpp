// The example service's rules, driven end to end through the library's flat and class APIs as a
// caller's host test would drive it, on a manual clock; and, through a raw proxy, the few rules no
// API of the library can reach.

#include <aidl/vendor/quarn/hardware/drel/BnDrelCallback.h>
#include <aidl/vendor/quarn/hardware/drel/IDrel.h>
#include <android/binder_manager.h>
#include <android/binder_process.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <hostbinder/hostbinder.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <list>
#include <map>
#include <mutex>
#include <string>
#include <vector>

#include "IClientCallback.h"
#include "drel-service/DrelService.h"
#include "halclient.h"
#include "halclient/halclient_internal.h"
#include "qel.h"
#include "support/log_capture.h"

namespace qel_test {
namespace {

using ::aidl::vendor::quarn::hardware::drel::DrelRequestData;
using ::aidl::vendor::quarn::hardware::drel::DrelRequestParcel;
using ::aidl::vendor::quarn::hardware::drel::DrelService;
using ::aidl::vendor::quarn::hardware::drel::IDrel;
using ::testing::ElementsAre;
using ::testing::Pair;
using Hal = drelHalclient;
using Report = std::vector<std::string>;
using Resources = std::list<QelClient::Resource>;

constexpr const char* kInstance = "vendor.quarn.hardware.drel.IDrel/default";
constexpr int32_t kCpu = 0x01010010;
constexpr int32_t kGpu = 0x01010020;
const std::string cpu = std::to_string(kCpu), gpu = std::to_string(kGpu);

std::string stateOf(int32_t id) {
    std::string value = "<no answer>";
    QelResStateRequest(id, value);
    return value;
}

// The reports a caller's callback of either form received, each as "key=value" texts.
class Reports : public IClientCallback, public IClientCallbackByPath {
public:
    void onCallback(std::list<QelClient::Resource> resources) override {
        Report report;
        for (const auto& r : resources) {
            report.push_back(std::to_string(r.resId) + "=" + r.resValue.value_or("<absent>"));
        }
        add(std::move(report));
    }
    void onCallback(std::vector<std::string> paths, std::vector<std::string> values) override {
        Report report;
        for (size_t i = 0; i < paths.size(); ++i) report.push_back(paths[i] + "=" + values[i]);
        add(std::move(report));
    }
    std::vector<Report> reports() const {
        std::lock_guard<std::mutex> lock(mutex_);
        return reports_;
    }
    // For reports from the service's own expiry thread: true once `count` have arrived.
    bool waitFor(size_t count) {
        std::unique_lock<std::mutex> lock(mutex_);
        return arrived_.wait_for(lock, std::chrono::seconds(10),
                                 [&] { return reports_.size() >= count; });
    }

    std::function<void()> onReport;  // runs after each report is recorded

private:
    void add(Report report) {
        {
            std::lock_guard<std::mutex> lock(mutex_);
            reports_.push_back(std::move(report));
        }
        arrived_.notify_all();
        if (onReport) onReport();
    }

    mutable std::mutex mutex_;
    std::condition_variable arrived_;
    std::vector<Report> reports_;
};

class ServiceApiTest : public ::testing::Test {
protected:
    void SetUp() override {
        ABinderProcess_startThreadPool();
        hostbinder::reset();
        DrelService::Options options;
        options.clock = [this] { return std::chrono::milliseconds(clockMs.load()); };
        options.historyCapacity = 3;
        service = ::ndk::SharedRefBase::make<DrelService>(options);
        ASSERT_EQ(EX_NONE, AServiceManager_addService(service->asBinder().get(), kInstance));
    }
    void TearDown() override {
        hostbinder::reset();
        hostbinder::waitIdle();
        // Registrations live in the class API's process-wide registry; each test starts without.
        std::vector<DrelCallbackGroup> groups;
        std::lock_guard<std::mutex> lock(callback_group_mutex);
        groups.swap(callback_groups);
    }

    std::shared_ptr<DrelService> service;
    std::atomic<int64_t> clockMs{5000};
};

TEST_F(ServiceApiTest, HandlesCountUpFromOneAcrossRequestsAndRegistrations) {
    auto reports = std::make_shared<Reports>();
    Resources watched = {{kCpu, ""}};
    EXPECT_EQ(1, QelResAcquire({{kCpu, "1"}}, 0, "", 0));
    EXPECT_EQ(2, Hal::drelResListeningRegister(watched, 0, reports));
    EXPECT_EQ(3, Hal::drelThermalListeningRegister({1}, reports));
    EXPECT_EQ(4, QelEventAcquire(12, "", "", 0, {}));
    EXPECT_EQ(-1, Hal::drelResCtlRelease(2)) << "a registration is not a request";
    EXPECT_EQ(0, Hal::drelResCtlRelease(1));
    EXPECT_EQ(-1, Hal::drelSACtlRelease(1)) << "released already";
    EXPECT_EQ(5, QelResAcquire({{kCpu, "1"}}, 0, "", 0)) << "handles are never reused";
}

TEST_F(ServiceApiTest, EveryHoldingKindHoldsItsResourcesAndTheNewestLiveHolderWins) {
    Resources resources = {{kGpu, "7"}};
    const int handles[] = {
            QelResAcquire({{kCpu, "1000"}, {kGpu, std::nullopt}}, 0, "", 0),
            QelPlatformResAcquire({{kCpu, "5"}, {kCpu, "2000"}}, 0, "", "pkg", 0),
            Hal::drelSACtlRequest(0, 0, kCpu, 0, 0, 0),
            Hal::drelResCtlRequest(0, 0, resources, 0, 0, 0),
    };
    EXPECT_EQ("1", stateOf(kCpu)) << "a scene is held at 1";
    EXPECT_EQ("7", stateOf(kGpu));
    EXPECT_EQ(4u, service->liveRequestCount());
    EXPECT_EQ(0, Hal::drelResCtlRelease(handles[3]));
    EXPECT_EQ("1", stateOf(kGpu)) << "a record without a value holds its resource at 1";
    EXPECT_EQ(0, Hal::drelSACtlRelease(handles[0]));
    EXPECT_EQ("1", stateOf(kCpu)) << "releasing an older request changes nothing";
    EXPECT_EQ(0, Hal::drelSACtlRelease(handles[2]));
    EXPECT_EQ("2000", stateOf(kCpu)) << "a resource named twice holds the later value";
    QelRelease(handles[1]);
    EXPECT_EQ("0", stateOf(kCpu));
    EXPECT_EQ(0, QelNotify(5, 1, {42, 43})) << "a notification holds nothing";
    EXPECT_EQ(0u, service->liveRequestCount());
    EXPECT_EQ(1u, service->notifications().size());
}

TEST_F(ServiceApiTest, TimeoutsAreMillisecondsOnTheClockAndZeroOrLessNeverExpires) {
    const int timed = QelEventAcquire(-2, "", "", 500, {{kCpu, "1400"}});
    QelResAcquire({{kGpu, "300"}}, 0, "", -1);
    QelResAcquire({{13, "older"}}, 0, "", 0);
    QelResAcquire({{13, "newer"}}, 0, "", 600);
    clockMs += 499;
    EXPECT_EQ("1400", stateOf(kCpu));
    clockMs += 1;
    EXPECT_EQ("0", stateOf(kCpu)) << "expired by the next query";
    EXPECT_EQ(-1, Hal::drelResCtlRelease(timed)) << "an expired request is gone";
    clockMs += 100;
    EXPECT_EQ("older", stateOf(13)) << "expiry restores the older value";
    clockMs += 24 * 3600 * 1000;
    EXPECT_EQ("300", stateOf(kGpu));
    EXPECT_EQ(2u, service->liveRequestCount());
}

TEST_F(ServiceApiTest, StatesAnswerEachIdOrPathInOrderAndPowerModesTheirLeadingNumber) {
    QelResAcquire({{kCpu, "1800000"}}, 0, "", 0);
    ASSERT_GT(Hal::drel_resctl_request_by_path(0, 0, {"/sys/gpu/min"}, {"400"}, 0, 0, 0), 0);
    std::vector<QelClient::Resource> both = {{kGpu, "x"}, {kCpu, ""}};
    EXPECT_EQ(2, QelMutiResStateRequest(both));
    EXPECT_EQ("0", both[0].resValue) << "nothing holds it: the default";
    EXPECT_EQ("1800000", both[1].resValue);
    std::map<std::string, std::string> states;
    EXPECT_EQ(2, Hal::drel_res_state_request_map_by_path({{"/sys/gpu/min", ""}, {"/sys/ddr", ""}},
                                                         0, states));
    EXPECT_THAT(states, ElementsAre(Pair("/sys/ddr", "0"), Pair("/sys/gpu/min", "400")));

    const std::pair<std::string, int> modes[] = {
            {"3 (balanced)", 3}, {" 7abc", 7}, {"-3", -3}, {"fast", 0}, {"99999999999", 0}};
    int mode = 20;
    for (const auto& [held, status] : modes) {
        QelResAcquire({{++mode, held}}, 0, "", 0);
        EXPECT_EQ(status, QelGetPMStatus(mode)) << held;
    }
    EXPECT_EQ(0, QelGetPMStatus(99)) << "a mode nothing holds";
}

TEST_F(ServiceApiTest, HistoryKeepsTheNewestRecordedRequestsAsText) {
    QelEventAcquire(16, "com.example.camera", "cam", 500, {{kCpu, "1400"}});
    std::string history;
    ASSERT_EQ(0, QelGetHistory(history));
    EXPECT_EQ(
            "start:handle:1 type:8 timeout:500 pkg:com.example.camera identity:cam "
            "res:0x00000010=1,0x01010010=1400;end",
            history);
    ASSERT_GT(Hal::drel_resctl_request_by_path(0, 0, {"/sys/b"}, {"x"}, 0, 0, 0), 0);
    EXPECT_EQ(0, Hal::drelHistoryRequestRecordOff());
    EXPECT_FALSE(service->historyRecording());
    QelResAcquire({{kGpu, "off"}}, 0, "", 0);
    EXPECT_EQ(0, Hal::drelHistoryRequestRecordOn());
    QelPlatformResAcquire({{kGpu, "2"}}, 0, "", "", 0);
    QelResAcquire({{kGpu, "3"}}, 0, "me", 0);
    ASSERT_EQ(0, QelGetHistory(history));
    EXPECT_EQ(
            "start:handle:2 type:1 timeout:0 pkg:none identity:none res:/sys/b=x;"
            "handle:4 type:12 timeout:0 pkg:none identity:none res:0x01010020=2;"
            "handle:5 type:1 timeout:0 pkg:none identity:me res:0x01010020=3;end",
            history)
            << "three entries at most, none made while recording was off";
}

TEST_F(ServiceApiTest, ListenersHearEachChangeInTheirOwnOrderAndOneShotsTheirRequestOnce) {
    auto listener = std::make_shared<Reports>(), byPath = std::make_shared<Reports>();
    Resources watched = {{kCpu, ""}, {kGpu, ""}};
    std::vector<std::string> seen;  // a callback may call back into the service
    listener->onReport = [&] { seen.push_back(stateOf(kCpu)); };
    // The first report comes from inside a class-API call, on this thread: the flat API may be
    // used there only while it is connected.
    ASSERT_EQ("0", stateOf(kCpu));
    const int registration = Hal::drelResListeningRegister(watched, 0, listener);
    ASSERT_GT(registration, 0);
    ASSERT_GT(Hal::drel_res_listening_register_by_path({"/sys/a", "/sys/b"}, 0, byPath), 0);

    auto oneShot = std::make_shared<Reports>();
    Resources request = {{kGpu, "700"}, {kCpu, "1400000"}};
    const int handle = Hal::drelResCtlRequest(0, 0, request, 0, 0, 0, oneShot);
    ASSERT_GT(handle, 0);
    QelResAcquire({{kGpu, "700"}}, 0, "", 0);  // the same value: no change
    QelResAcquire({{kGpu, "0"}}, 0, "", 100);  // a change to the default value
    clockMs += 100;
    EXPECT_EQ("700", stateOf(kGpu)) << "expiry restores the older value";
    Hal::drel_resctl_request_by_path(0, 0, {"/sys/b"}, {"9"}, 0, 0, 0);
    EXPECT_EQ(0, Hal::drelResCtlRelease(handle));

    EXPECT_THAT(oneShot->reports(), ElementsAre(ElementsAre(gpu + "=700", cpu + "=1400000")));
    EXPECT_THAT(listener->reports(),
                ElementsAre(ElementsAre(cpu + "=1400000", gpu + "=700"), ElementsAre(gpu + "=0"),
                            ElementsAre(gpu + "=700"), ElementsAre(cpu + "=0")));
    EXPECT_THAT(byPath->reports(), ElementsAre(ElementsAre("/sys/b=9")));
    EXPECT_EQ((std::vector<std::string>{"1400000", "1400000", "1400000", "0"}), seen);
    listener->onReport = nullptr;

    EXPECT_EQ(0, Hal::drelResListeningUnRegister(registration));
    QelResAcquire({{kCpu, "1"}}, 0, "", 0);
    EXPECT_EQ(4u, listener->reports().size()) << "nothing after unregistering";
    EXPECT_EQ(1u, oneShot->reports().size());
}

TEST_F(ServiceApiTest, ThermalLevelsFanOutToTheListenersOfTheirIds) {
    auto both = std::make_shared<Reports>(), second = std::make_shared<Reports>();
    const int bothHandle = Hal::drelThermalListeningRegister({1, 2}, both);
    ASSERT_GT(Hal::drelThermalListeningRegister({2, 3}, second), 0);
    Resources levels = {{2, "warm"}, {1, "hot"}, {4, "cool"}};
    EXPECT_EQ(2, Hal::drelThermalNotify(levels, 0)) << "listeners reached";
    EXPECT_THAT(both->reports(), ElementsAre(ElementsAre("2=warm", "1=hot")));
    EXPECT_THAT(second->reports(), ElementsAre(ElementsAre("2=warm")));
    EXPECT_EQ("cool", service->thermalLevel(4));
    EXPECT_EQ("0", stateOf(2)) << "thermal levels are not resources";
    EXPECT_EQ(0, Hal::drelThermalListeningUnregister(bothHandle));
    EXPECT_EQ(1, Hal::drelThermalNotify(levels, 0));
}

TEST_F(ServiceApiTest, TheExpiryThreadDropsRequestsWithoutAnyCall) {
    auto listener = std::make_shared<Reports>();
    Resources watched = {{kCpu, ""}};
    Hal::drelResListeningRegister(watched, 0, listener);
    QelResAcquire({{kCpu, "1400"}}, 0, "", 20);
    service->startExpiryThread();
    service->startExpiryThread();  // idempotent
    clockMs += 20;
    ASSERT_TRUE(listener->waitFor(2));
    EXPECT_EQ(Report{cpu + "=0"}, listener->reports()[1]);
    EXPECT_EQ(0u, service->liveRequestCount());
}

TEST_F(ServiceApiTest, PropertiesRulesAndRecordsAreKeptWithoutTouchingResources) {
    QelResAcquire({{kCpu, "1400"}}, 0, "", 0);
    EXPECT_EQ(0, Hal::drelPropertySet("mode", "game"));
    EXPECT_EQ(0, Hal::drelPropertySet("mode", "camera"));
    EXPECT_EQ(-1, Hal::drelPropertySet("", "x")) << "a property needs a name";
    for (const char* name : {"mode", "unset"}) {
        char* text = Hal::drelPropertyGet(name);
        EXPECT_STREQ(name[0] == 'm' ? "camera" : "", text) << "an unknown property reads empty";
        delete[] text;
    }
    EXPECT_EQ(0, qelRuleCtl(7, 1, {{1, "a"}}));
    EXPECT_EQ(0, qelRuleCtl(7, 0, {}));
    ASSERT_TRUE(service->ruleState(7).has_value());
    EXPECT_EQ(0, service->ruleState(7)->status) << "the latest state of the rule";
    EXPECT_TRUE(service->ruleState(7)->data.empty());
    EXPECT_EQ(0, setRelatedSysInfo(4, 123456789012));
    EXPECT_EQ(123456789012, service->relatedSysInfo(4));
    Hal::drel_init();
    EXPECT_EQ(1, service->initCount());
    EXPECT_EQ("1400", stateOf(kCpu)) << "none of these touches a resource";
}

TEST_F(ServiceApiTest, EachDumpLogsItsTable) {
    Hal::drelSACtlRequest(0, 100, 7, 0, 0, 0);
    QelResAcquire({{kCpu, "1400"}}, 0, "", 0);
    QelResAcquire({{kCpu, "1500"}}, 0, "", 0);
    const std::pair<int (*)(), const char*> dumps[] = {
            {Hal::drelDumpToDoQueue, "dump ToDoQueue: 1 entries"},
            {Hal::drelDumpRunMap, "dump RunMap: 3 entries"},
            {Hal::drelDumpActiveResMap, "dump ActiveResMap: 2 entries"},
            {Hal::drelDumpResRequest, "dump ResRequest: 2 entries"},
            {Hal::drelDumpResInfo, "dump ResInfo: 0 entries"},
            {Hal::drelDumpSAInfo, "dump SAInfo: 1 entries"},
            {Hal::drelDumpPidFdList, "dump PidFdList: 0 entries"},
            {Hal::drelDumpPidfdMonitorMap, "dump PidfdMonitorMap: 0 entries"},
            {Hal::drelDumpResRecordList, "dump ResRecordList: 3 entries"},
    };
    for (const auto& [dump, header] : dumps) {
        LogCapture log;
        EXPECT_EQ(0, dump());
        ASSERT_FALSE(log.linesWithTag(DrelService::kLogTag).empty()) << header;
        EXPECT_EQ(header, log.linesWithTag(DrelService::kLogTag)[0].message);
        if (dump == Hal::drelDumpResRequest) {
            EXPECT_THAT(log.messages(), ::testing::IsSupersetOf({"  0x00000007: 1=1",
                                                                 "  0x01010010: 2=1400 3=1500"}));
        }
    }
}

TEST_F(ServiceApiTest, WithoutAServiceOrAnAnswerTheCallsGiveMinusOne) {
    std::map<std::string, std::string> paths;
    EXPECT_EQ(-1, Hal::drel_res_state_request_map_by_path({}, 0, paths))
            << "an empty reply is no answer";
    hostbinder::reset();  // nothing declared: the calls fail at once
    auto reports = std::make_shared<Reports>();
    Resources ids = {{kCpu, ""}}, states, levels = {{1, "hot"}};
    std::vector<QelClient::Resource> flat = {{kCpu, ""}};
    EXPECT_EQ(-1, Hal::drelResListeningRegister(ids, 0, reports));
    EXPECT_EQ(-1, Hal::drelResStateRequest(ids, 0, states));
    EXPECT_EQ(-1, Hal::drelThermalNotify(levels, 0));
    EXPECT_EQ(-1, Hal::drel_res_state_request_map_by_path({{"/a", ""}}, 0, paths));
    EXPECT_EQ(-1, QelMutiResStateRequest(flat));
    EXPECT_EQ(-1, qelInit());
}

// Through a raw proxy: what no API of the library sends or can answer.
class RawReports : public ::aidl::vendor::quarn::hardware::drel::BnDrelCallback {
public:
    explicit RawReports(binder_status_t answer) : answer(answer) {}
    ::ndk::ScopedAStatus onCallback(const std::vector<DrelRequestData>&) override {
        ++reports;
        return ::ndk::ScopedAStatus::fromStatus(answer);
    }
    const binder_status_t answer;
    std::atomic<int> reports{0};
};

TEST_F(ServiceApiTest, RawCallsTheLibraryNeverMakesAreAnsweredByTheRules) {
    auto drel = IDrel::fromBinder(::ndk::SpAIBinder(AServiceManager_checkService(kInstance)));
    ASSERT_TRUE(drel && drel->isRemote());
    int32_t out = -100;
    auto call = [&out](::ndk::ScopedAStatus status) {
        EXPECT_TRUE(status.isOk());
        return out;
    };
    DrelRequestParcel parcel;
    parcel.requestType = 99;
    parcel.resources = {DrelRequestData{}};
    EXPECT_EQ(-1, call(drel->request(parcel, &out))) << "an unknown kind";
    EXPECT_EQ(-1, call(drel->listeningRegister(parcel, nullptr, &out))) << "no callback";
    EXPECT_EQ(-1, call(drel->thermalListeningRegister({1}, nullptr, &out)));
    EXPECT_EQ(EX_UNSUPPORTED_OPERATION, drel->reserved11().getExceptionCode());
    parcel.requestType = DrelService::kKindState;
    std::vector<DrelRequestData> reply = {DrelRequestData{}};
    EXPECT_TRUE(drel->stateRequest(parcel, &reply).isOk());
    EXPECT_TRUE(reply.empty()) << "a record naming nothing is skipped";

    // A registration whose client has died is dropped; one whose callback fails otherwise stays.
    auto dead = ::ndk::SharedRefBase::make<RawReports>(STATUS_DEAD_OBJECT);
    auto failing = ::ndk::SharedRefBase::make<RawReports>(STATUS_BAD_VALUE);
    parcel.resources[0].resId = kCpu;
    const int32_t deadHandle = call(drel->listeningRegister(parcel, dead, &out));
    const int32_t failingHandle = call(drel->listeningRegister(parcel, failing, &out));
    const int32_t deadThermal = call(drel->thermalListeningRegister({1}, dead, &out));
    QelResAcquire({{kCpu, "1"}}, 0, "", 0);
    Resources levels = {{1, "hot"}};
    Hal::drelThermalNotify(levels, 0);
    QelResAcquire({{kCpu, "2"}}, 0, "", 0);
    EXPECT_EQ(2, dead->reports) << "one listener report and one thermal report";
    EXPECT_EQ(2, failing->reports);
    EXPECT_EQ(-1, call(drel->listeningUnregister(deadHandle, &out)));
    EXPECT_EQ(-1, call(drel->thermalListeningUnregister(deadThermal, &out)));
    EXPECT_EQ(0, call(drel->listeningUnregister(failingHandle, &out)));
}

}  // namespace
}  // namespace qel_test
