// The example service driven end to end through the library's three APIs (flat, class and
// wrapper), as a caller's host test would drive it: what each API sends lands in the service,
// and what the service answers and reports comes back in the caller's forms.

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
using ::testing::Pair;

constexpr int32_t kCpuBoost = 0x01010010;
constexpr int32_t kGpuBoost = 0x01010020;

std::string stateOf(int32_t id) {
    std::string value = "<no answer>";
    QelResStateRequest(id, value);
    return value;
}

// The reports a callback of either form received, each as "key=value" texts.
class Reports : public IClientCallback, public IClientCallbackByPath {
public:
    void onCallback(std::list<QelClient::Resource> resources) override {
        std::vector<std::string> report;
        for (const auto& r : resources) {
            report.push_back(std::to_string(r.resId) + "=" + r.resValue.value_or("<absent>"));
        }
        add(std::move(report));
    }
    void onCallback(std::vector<std::string> paths, std::vector<std::string> values) override {
        std::vector<std::string> report;
        for (size_t i = 0; i < paths.size(); ++i) report.push_back(paths[i] + "=" + values[i]);
        add(std::move(report));
    }
    std::vector<std::vector<std::string>> reports() const {
        std::lock_guard<std::mutex> lock(mutex_);
        return reports_;
    }

private:
    void add(std::vector<std::string> report) {
        std::lock_guard<std::mutex> lock(mutex_);
        reports_.push_back(std::move(report));
    }

    mutable std::mutex mutex_;
    std::vector<std::vector<std::string>> reports_;
};

class ServiceApiTest : public ::testing::Test {
protected:
    void SetUp() override {
        hostbinder::reset();
        DrelService::Options options;
        options.clock = [this] { return std::chrono::milliseconds(clockMs_.load()); };
        service = ::ndk::SharedRefBase::make<DrelService>(options);
        ASSERT_EQ(EX_NONE, AServiceManager_addService(service->asBinder().get(),
                                                      "vendor.quarn.hardware.drel.IDrel/default"));
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
    std::atomic<int64_t> clockMs_{5000};
};

TEST_F(ServiceApiTest, FlatRequestsFollowTheNewestLiveHolderExpireAndAreRecorded) {
    const int first = QelResAcquire({{kCpuBoost, "1200000"}}, 0, "first", 0);
    const int second = QelPlatformResAcquire({{kCpuBoost, "1800000"}}, 0, "second", "game", 0);
    const int timed = QelEventAcquire(-2, "", "", 100, {{kGpuBoost, "5"}});
    ASSERT_EQ((std::vector<int>{1, 2, 3}), (std::vector<int>{first, second, timed}));
    std::vector<QelClient::Resource> both = {{kGpuBoost, ""}, {kCpuBoost, ""}};
    EXPECT_EQ(2, QelMutiResStateRequest(both));
    EXPECT_EQ("5", both[0].resValue);
    EXPECT_EQ("1800000", both[1].resValue);

    clockMs_ += 100;
    EXPECT_EQ("0", stateOf(kGpuBoost)) << "expired at its deadline";
    QelRelease(second);
    EXPECT_EQ("1200000", stateOf(kCpuBoost)) << "the older holder is in force again";
    QelResAcquire({{13, "3 (balanced)"}}, 0, "", 0);
    EXPECT_EQ(3, QelGetPMStatus(13));
    std::string history;
    ASSERT_EQ(0, QelGetHistory(history));
    EXPECT_EQ(
            "start:handle:1 type:1 timeout:0 pkg:none identity:first res:0x01010010=1200000;"
            "handle:2 type:12 timeout:0 pkg:game identity:second res:0x01010010=1800000;"
            "handle:3 type:1 timeout:100 pkg:none identity:none res:0x01010020=5;"
            "handle:4 type:1 timeout:0 pkg:none identity:none res:0x0000000d=3 (balanced);end",
            history);
    EXPECT_EQ(0, setRelatedSysInfo(4, 123456789012));
    EXPECT_EQ(123456789012, service->relatedSysInfo(4));
}

TEST_F(ServiceApiTest, ClassApiReportsReachTheCallersCallbacksInTheirForms) {
    auto listener = std::make_shared<Reports>();
    auto byPath = std::make_shared<Reports>();
    auto thermal = std::make_shared<Reports>();
    std::list<QelClient::Resource> watched = {{kCpuBoost, ""}, {kGpuBoost, ""}};
    ASSERT_GT(drelHalclient::drelResListeningRegister(watched, 0, listener), 0);
    ASSERT_GT(drelHalclient::drel_res_listening_register_by_path({"/sys/gpu/min"}, 0, byPath), 0);
    ASSERT_GT(drelHalclient::drelThermalListeningRegister({1, 2}, thermal), 0);

    auto oneShot = std::make_shared<Reports>();
    std::list<QelClient::Resource> request = {{kGpuBoost, "700"}, {kCpuBoost, "1400000"}};
    const int handle = drelHalclient::drelResCtlRequest(0, 0, request, 0, 0, 0, oneShot);
    ASSERT_GT(handle, 0);
    EXPECT_EQ(0, drelHalclient::drelResCtlRelease(handle));
    ASSERT_GT(drelHalclient::drel_resctl_request_by_path(0, 0, {"/sys/gpu/min", "/sys/cpu/max"},
                                                         {"400", "2000"}, 0, 0, 0),
              0);
    std::list<QelClient::Resource> levels = {{2, "45"}, {3, "38"}};
    EXPECT_EQ(1, drelHalclient::drelThermalNotify(levels, 0)) << "one listener got a report";

    const std::string cpu = std::to_string(kCpuBoost), gpu = std::to_string(kGpuBoost);
    EXPECT_THAT(oneShot->reports(), ElementsAre(ElementsAre(gpu + "=700", cpu + "=1400000")));
    // In the order the listener registered its resources.
    EXPECT_THAT(listener->reports(), ElementsAre(ElementsAre(cpu + "=1400000", gpu + "=700"),
                                                 ElementsAre(cpu + "=0", gpu + "=0")));
    EXPECT_THAT(byPath->reports(), ElementsAre(ElementsAre("/sys/gpu/min=400")));
    EXPECT_THAT(thermal->reports(), ElementsAre(ElementsAre("2=45")));
    std::map<std::string, std::string> states;
    EXPECT_EQ(2, drelHalclient::drel_res_state_request_map_by_path(
                         {{"/sys/gpu/min", ""}, {"/sys/ddr", ""}}, 0, states));
    EXPECT_THAT(states, ElementsAre(Pair("/sys/ddr", "0"), Pair("/sys/gpu/min", "400")));

    EXPECT_EQ(0, drelHalclient::drelPropertySet("vendor.boost", "on"));
    char* value = drelHalclient::drelPropertyGet("vendor.boost");
    EXPECT_STREQ("on", value);
    delete[] value;
    EXPECT_EQ(0, drelHalclient::drelHistoryRequestRecordOff());
    EXPECT_FALSE(service->historyRecording());
}

TEST_F(ServiceApiTest, WrapperActionsAndScenariosLandInTheService) {
    ASSERT_GT(QelEventAcquireWrapper("PRAXEL_ACTION_CAMERA_MULTI_SCENE", "camera", "preview", 0),
              0);
    EXPECT_EQ("1", stateOf(102)) << "the first catalogue position of the name is held";
    EXPECT_EQ("0", stateOf(162));

    EXPECT_EQ(0, QelNotifyWapper("scenario", 131, 1, 0, 0, 0, "colocation:2,groupmigrate:6-3"));
    auto rule = service->ruleState(131);
    ASSERT_TRUE(rule.has_value());
    EXPECT_EQ(1, rule->status);
    ASSERT_EQ(3u, rule->data.size());
    EXPECT_EQ(0x01011040, rule->data[0].resId);
    EXPECT_EQ("2", rule->data[0].resValue);
    EXPECT_EQ("3", rule->data[2].resValue);
}

}  // namespace
}  // namespace qel_test
