// What the example service records and dumps, through a client's proxy: properties, rules,
// related system information, notifications, init, diagnostic dumps and the history switch.

#include <gtest/gtest.h>

#include "support/log_capture.h"
#include "support/service_harness.h"

namespace qel_test {
namespace {

constexpr int32_t kCpuMin = 0x01011040;

using DrelRecordTest = DrelServiceTest;

TEST_F(DrelRecordTest, PropertiesAreKeptByName) {
    std::string value = "stale";
    ASSERT_TRUE(drel->propertyGet("vendor.drel.mode", &value).isOk());
    EXPECT_EQ("", value) << "an unknown property reads empty";

    int32_t result = -100;
    ASSERT_TRUE(drel->propertySet("vendor.drel.mode", "game", &result).isOk());
    EXPECT_EQ(0, result);
    ASSERT_TRUE(drel->propertySet("vendor.drel.mode", "camera", &result).isOk());
    ASSERT_TRUE(drel->propertySet("vendor.drel.other", "1", &result).isOk());
    ASSERT_TRUE(drel->propertyGet("vendor.drel.mode", &value).isOk());
    EXPECT_EQ("camera", value);

    ASSERT_TRUE(drel->propertySet("", "x", &result).isOk());
    EXPECT_EQ(-1, result) << "a property needs a name";
}

TEST_F(DrelRecordTest, RuleCtlKeepsTheLatestStateOfEachRule) {
    int32_t result = -100;
    ASSERT_TRUE(drel->ruleCtl(7, 1, {idRecord(kCpuMin, "1400")}, &result).isOk());
    EXPECT_EQ(0, result);
    ASSERT_TRUE(drel->ruleCtl(8, 1, {}, &result).isOk());
    ASSERT_TRUE(drel->ruleCtl(7, 0, {}, &result).isOk());

    std::optional<DrelService::RuleState> rule7 = service->ruleState(7);
    ASSERT_TRUE(rule7.has_value());
    EXPECT_EQ(0, rule7->status);
    EXPECT_TRUE(rule7->data.empty());
    ASSERT_TRUE(service->ruleState(8).has_value());
    EXPECT_EQ(1, service->ruleState(8)->status);
    EXPECT_FALSE(service->ruleState(9).has_value());
    EXPECT_EQ(DrelService::kDefaultValue, valueOf(kCpuMin)) << "a rule holds no resource";
}

TEST_F(DrelRecordTest, RelatedSysInfoNotifyAndInitAreRecordedWithoutTouchingResources) {
    hold(kCpuMin, "1400");
    int32_t result = -100;
    ASSERT_TRUE(drel->setRelatedSysInfo(3, int64_t{1} << 40, &result).isOk());
    EXPECT_EQ(0, result);
    EXPECT_EQ(std::optional<int64_t>(int64_t{1} << 40), service->relatedSysInfo(3));
    EXPECT_FALSE(service->relatedSysInfo(4).has_value());

    DrelRequestData note = idRecord(42);
    note.resParam = 5;
    EXPECT_EQ(0, send(DrelService::kKindNotify, {note, note, note}));
    EXPECT_EQ((std::vector<Records>{{note, note, note}}), service->notifications());

    ASSERT_TRUE(drel->init().isOk());
    ASSERT_TRUE(drel->init().isOk());
    EXPECT_EQ(2, service->initCount());
    EXPECT_EQ("1400", valueOf(kCpuMin)) << "init resets nothing";
    EXPECT_EQ(1u, service->liveRequestCount());
}

TEST_F(DrelRecordTest, Reserved11IsUnsupported) {
    EXPECT_EQ(EX_UNSUPPORTED_OPERATION, drel->reserved11().getExceptionCode());
}

struct DumpCase {
    int32_t selector;
    const char* header;
};

class DrelDumpTest : public DrelServiceTest, public ::testing::WithParamInterface<DumpCase> {};

TEST_P(DrelDumpTest, AnswersOneAndLogsItsTable) {
    // One of everything each table lists, two of some.
    send(DrelService::kKindScene, {idRecord(7)}, 100);
    hold(kCpuMin, "1400");
    hold(kCpuMin, "1500");
    auto callback = ::ndk::SharedRefBase::make<RecordingCallback>();
    listen({idRecord(kCpuMin), pathRecord("/sys/a")}, callback);
    int32_t result = 0;
    ASSERT_TRUE(drel->thermalListeningRegister({1, 2}, callback, &result).isOk());
    ASSERT_TRUE(drel->propertySet("p", "v", &result).isOk());
    ASSERT_TRUE(drel->ruleCtl(3, 1, {}, &result).isOk());

    LogCapture log;
    EXPECT_EQ(1, send(DrelService::kKindDiagnostic, {idRecord(GetParam().selector)}));
    EXPECT_TRUE(log.contains({ANDROID_LOG_INFO, DrelService::kLogTag, GetParam().header}))
            << ::testing::PrintToString(log.lines());
}

INSTANTIATE_TEST_SUITE_P(EverySelector, DrelDumpTest,
                         ::testing::Values(DumpCase{0x0, "dump ToDoQueue: 1 entries"},
                                           DumpCase{0x1, "dump RunMap: 3 entries"},
                                           DumpCase{0x2, "dump ActiveResMap: 2 entries"},
                                           DumpCase{0x3, "dump ResRequest: 2 entries"},
                                           DumpCase{0x4, "dump ResInfo: 2 entries"},
                                           DumpCase{0x5, "dump SAInfo: 1 entries"},
                                           DumpCase{0x6, "dump PidFdList: 1 entries"},
                                           DumpCase{0x7, "dump PidfdMonitorMap: 1 entries"},
                                           DumpCase{0x8, "dump ResRecordList: 3 entries"}));

TEST_F(DrelRecordTest, DumpEntriesNameHandlesAndValues) {
    hold(kCpuMin, "1400");
    hold(kCpuMin, "1500");
    LogCapture log;
    send(DrelService::kKindDiagnostic, {idRecord(0x2)});
    send(DrelService::kKindDiagnostic, {idRecord(0x3)});
    std::vector<std::string> expected = {
            "dump ActiveResMap: 1 entries", "  0x01011040=1500 (handle 2)",
            "dump ResRequest: 1 entries", "  0x01011040: 1=1400 2=1500"};
    EXPECT_EQ(expected, log.messages());
}

TEST_F(DrelRecordTest, UnknownSelectorsAnswerZeroAndTheHistorySwitchAnswersOne) {
    EXPECT_EQ(0, send(DrelService::kKindDiagnostic, {idRecord(0x9)}));
    EXPECT_EQ(0, send(DrelService::kKindDiagnostic, {idRecord(0xC)}));
    EXPECT_EQ(0, send(DrelService::kKindDiagnostic, {}));
    EXPECT_TRUE(service->historyRecording()) << "recording starts on";
    EXPECT_EQ(1, send(DrelService::kKindDiagnostic, {idRecord(DrelService::kHistoryRecordOff)}));
    EXPECT_FALSE(service->historyRecording());
    EXPECT_EQ(1, send(DrelService::kKindDiagnostic, {idRecord(DrelService::kHistoryRecordOn)}));
    EXPECT_TRUE(service->historyRecording());
}

}  // namespace
}  // namespace qel_test
