// The example service's rules seen through the library's own APIs (flat, class and wrapper), as
// a caller's host test would drive it: newest holder wins, release and expiry restore, listeners
// and one-shot callbacks, thermal fan-out, rules and records.

#include <android/binder_manager.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <hostbinder/hostbinder.h>

#include <atomic>
#include <chrono>
#include <list>
#include <map>
#include <mutex>
#include <string>
#include <vector>

#include "IClientCallback.h"
#include "QelWrapper.h"
#include "drel-service/DrelService.h"
#include "halclient.h"
#include "halclient/halclient_internal.h"
#include "qel.h"

namespace qel_test {
namespace {

using ::aidl::vendor::quarn::hardware::drel::DrelService;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::Pair;

constexpr const char* kServiceName = "vendor.quarn.hardware.drel.IDrel/default";
constexpr int32_t kCpuBoost = 0x01010010;
constexpr int32_t kGpuBoost = 0x01010020;

QelClient::Resource resource(int32_t id, std::string value) {
    QelClient::Resource r;
    r.resId = id;
    r.resValue = std::move(value);
    return r;
}

std::string stateOf(int32_t id) {
    std::string value = "<no answer>";
    QelResStateRequest(id, value);
    return value;
}

// Reports by id, as "id=value" texts per report.
// The reports a callback received, each as "key=value" texts, safe to read from the test thread.
class Reports {
public:
    std::vector<std::vector<std::string>> reports() const {
        std::lock_guard<std::mutex> lock(mutex_);
        return reports_;
    }

protected:
    void add(std::vector<std::string> report) {
        std::lock_guard<std::mutex> lock(mutex_);
        reports_.push_back(std::move(report));
    }

private:
    mutable std::mutex mutex_;
    std::vector<std::vector<std::string>> reports_;
};

class IdReports : public IClientCallback, public Reports {
public:
    void onCallback(std::list<QelClient::Resource> resources) override {
        std::vector<std::string> report;
        for (const auto& r : resources) {
            report.push_back(std::to_string(r.resId) + "=" + r.resValue.value_or("<absent>"));
        }
        add(std::move(report));
    }
};

class PathReports : public IClientCallbackByPath, public Reports {
public:
    void onCallback(std::vector<std::string> paths, std::vector<std::string> values) override {
        std::vector<std::string> report;
        for (size_t i = 0; i < paths.size(); ++i) report.push_back(paths[i] + "=" + values[i]);
        add(std::move(report));
    }
};

class ServiceApiTest : public ::testing::Test {
protected:
    void SetUp() override {
        hostbinder::reset();
        dropGroups();
        DrelService::Options options;
        options.clock = [this] { return std::chrono::milliseconds(clockMs_.load()); };
        service = ::ndk::SharedRefBase::make<DrelService>(options);
        ASSERT_EQ(EX_NONE, AServiceManager_addService(service->asBinder().get(), kServiceName));
    }
    void TearDown() override {
        hostbinder::reset();
        hostbinder::waitIdle();
        dropGroups();
    }

    // Registrations live in the class API's process-wide registry; each test starts without.
    static void dropGroups() {
        std::vector<DrelCallbackGroup> groups;
        std::lock_guard<std::mutex> lock(callback_group_mutex);
        groups.swap(callback_groups);
    }

    void advance(int64_t ms) { clockMs_ += ms; }

    std::shared_ptr<DrelService> service;

private:
    std::atomic<int64_t> clockMs_{5000};
};

TEST_F(ServiceApiTest, FlatRequestsFollowTheNewestLiveHolderAndAreRecorded) {
    const int first = QelResAcquire({resource(kCpuBoost, "1200000")}, 0, "first", 0);
    const int second =
            QelPlatformResAcquire({resource(kCpuBoost, "1800000")}, 0, "second", "com.game", 0);
    ASSERT_GT(first, 0);
    ASSERT_GT(second, first);
    EXPECT_EQ("1800000", stateOf(kCpuBoost));

    std::vector<QelClient::Resource> both = {resource(kGpuBoost, ""), resource(kCpuBoost, "")};
    EXPECT_EQ(2, QelMutiResStateRequest(both));
    EXPECT_EQ("0", both[0].resValue) << "nothing holds it: the default";
    EXPECT_EQ("1800000", both[1].resValue);

    QelRelease(second);
    EXPECT_EQ("1200000", stateOf(kCpuBoost)) << "the older holder is in force again";
    QelRelease(first);
    EXPECT_EQ("0", stateOf(kCpuBoost));

    std::string history;
    ASSERT_EQ(0, QelGetHistory(history));
    EXPECT_EQ(
            "start:handle:1 type:1 timeout:0 pkg:none identity:first res:0x01010010=1200000;"
            "handle:2 type:12 timeout:0 pkg:com.game identity:second res:0x01010010=1800000;end",
            history);
}

TEST_F(ServiceApiTest, AnExpiredRequestIsGoneForEveryApi) {
    const int handle = QelEventAcquire(-2, "", "", 100, {resource(kCpuBoost, "5")});
    ASSERT_GT(handle, 0);
    advance(99);
    EXPECT_EQ("5", stateOf(kCpuBoost));
    advance(1);
    EXPECT_EQ("0", stateOf(kCpuBoost)) << "expired at its deadline";
    EXPECT_EQ(-1, drelHalclient::drelResCtlRelease(handle)) << "nothing left to release";
    EXPECT_EQ(0u, service->liveRequestCount());
}

TEST_F(ServiceApiTest, ClassApiListenersHearChangesAndOneShotCallbacksHearTheirRequestOnce) {
    auto listener = std::make_shared<IdReports>();
    std::list<QelClient::Resource> watched = {resource(kCpuBoost, ""), resource(kGpuBoost, "")};
    const int registration = drelHalclient::drelResListeningRegister(watched, 0, listener);
    ASSERT_GT(registration, 0);

    auto oneShot = std::make_shared<IdReports>();
    std::list<QelClient::Resource> request = {resource(kGpuBoost, "700"),
                                              resource(kCpuBoost, "1400000")};
    const int handle = drelHalclient::drelResCtlRequest(0, 0, request, 0, 0, 0, oneShot);
    ASSERT_GT(handle, 0);
    EXPECT_EQ(0, drelHalclient::drelResCtlRelease(handle));

    const std::string cpu = std::to_string(kCpuBoost);
    const std::string gpu = std::to_string(kGpuBoost);
    EXPECT_THAT(oneShot->reports(), ElementsAre(ElementsAre(gpu + "=700", cpu + "=1400000")));
    // In the order the listener registered its resources.
    EXPECT_THAT(listener->reports(), ElementsAre(ElementsAre(cpu + "=1400000", gpu + "=700"),
                                                 ElementsAre(cpu + "=0", gpu + "=0")));

    EXPECT_EQ(0, drelHalclient::drelResListeningUnRegister(registration));
    QelResAcquire({resource(kCpuBoost, "1")}, 0, "", 0);
    EXPECT_EQ(2u, listener->reports().size()) << "nothing after unregistering";
}

TEST_F(ServiceApiTest, PathResourcesAreHeldListenedToAndQueriedByPath) {
    auto listener = std::make_shared<PathReports>();
    ASSERT_GT(drelHalclient::drel_res_listening_register_by_path({"/sys/gpu/min"}, 0, listener), 0);
    ASSERT_GT(drelHalclient::drel_resctl_request_by_path(0, 0, {"/sys/gpu/min", "/sys/cpu/max"},
                                                         {"400", "2000"}, 0, 0, 0),
              0);
    std::map<std::string, std::string> states;
    EXPECT_EQ(3,
              drelHalclient::drel_res_state_request_map_by_path(
                      {{"/sys/gpu/min", ""}, {"/sys/cpu/max", ""}, {"/sys/ddr", ""}}, 0, states));
    EXPECT_THAT(states, ElementsAre(Pair("/sys/cpu/max", "2000"), Pair("/sys/ddr", "0"),
                                    Pair("/sys/gpu/min", "400")));
    EXPECT_THAT(listener->reports(), ElementsAre(ElementsAre("/sys/gpu/min=400")));
}

TEST_F(ServiceApiTest, ThermalLevelsReachTheListenersOfTheirIds) {
    auto hot = std::make_shared<IdReports>();
    auto other = std::make_shared<IdReports>();
    ASSERT_GT(drelHalclient::drelThermalListeningRegister({1, 2}, hot), 0);
    ASSERT_GT(drelHalclient::drelThermalListeningRegister({3}, other), 0);
    std::list<QelClient::Resource> levels = {resource(2, "45"), resource(1, "38")};
    EXPECT_EQ(1, drelHalclient::drelThermalNotify(levels, 0)) << "one listener got a report";
    EXPECT_THAT(hot->reports(), ElementsAre(ElementsAre("2=45", "1=38")));
    EXPECT_TRUE(other->reports().empty());
    EXPECT_EQ("45", service->thermalLevel(2));
}

TEST_F(ServiceApiTest, WrapperActionsAndScenariosLandInTheService) {
    const int handle =
            QelEventAcquireWrapper("PRAXEL_ACTION_CAMERA_MULTI_SCENE", "camera", "preview", 0);
    ASSERT_GT(handle, 0);
    EXPECT_EQ("1", stateOf(102)) << "the first catalogue position of the name is held";
    EXPECT_EQ("0", stateOf(162));
    EXPECT_EQ(-1, QelEventAcquireWrapper("ACTION_CAMERA_MULTI_SCENE", "", "", 0));

    EXPECT_EQ(0, QelNotifyWapper("scenario", 131, 1, 0, 0, 0, "colocation:2,groupmigrate:6-3"));
    auto rule = service->ruleState(131);
    ASSERT_TRUE(rule.has_value());
    EXPECT_EQ(1, rule->status);
    ASSERT_EQ(3u, rule->data.size());
    EXPECT_EQ(0x01011040, rule->data[0].resId);
    EXPECT_EQ("2", rule->data[0].resValue);
    EXPECT_EQ("3", rule->data[2].resValue);

    EXPECT_EQ(0, QelNotifyWapper("", 9, 0, 0, 0, 0, ""));
    ASSERT_TRUE(service->ruleState(9).has_value());
    EXPECT_TRUE(service->ruleState(9)->data.empty());

    EXPECT_EQ(0, setRelatedSysInfo(4, 123456789012));
    EXPECT_EQ(123456789012, service->relatedSysInfo(4));
}

TEST_F(ServiceApiTest, PowerModesDiagnosticsAndPropertiesAnswerThroughTheirCalls) {
    QelResAcquire({resource(13, "3 (balanced)")}, 0, "", 0);
    EXPECT_EQ(3, QelGetPMStatus(13));
    EXPECT_EQ(0, QelGetPMStatus(14)) << "a mode nothing holds has the default status";

    EXPECT_EQ(0, drelHalclient::drelDumpRunMap());
    EXPECT_EQ(0, drelHalclient::drelHistoryRequestRecordOff());
    QelResAcquire({resource(kCpuBoost, "1")}, 0, "", 0);
    std::string history;
    ASSERT_EQ(0, QelGetHistory(history));
    EXPECT_THAT(history, ::testing::Not(HasSubstr("0x01010010")))
            << "not recorded while recording is off";

    EXPECT_EQ(0, drelHalclient::drelPropertySet("vendor.boost", "on"));
    char* value = drelHalclient::drelPropertyGet("vendor.boost");
    EXPECT_STREQ("on", value);
    delete[] value;
    EXPECT_EQ(-1, drelHalclient::drelPropertySet("", "x"));
}

}  // namespace
}  // namespace qel_test
