// The example service's resource requests and queries, through a client's proxy: handles, the
// newest live request winning, release and expiry, path resources, power modes and history.

#include <gtest/gtest.h>

#include "support/service_harness.h"

namespace qel_test {
namespace {

using std::chrono::milliseconds;

constexpr int32_t kCpuMin = 0x01011040;
constexpr int32_t kGpuMin = 0x01021000;

using DrelRequestTest = DrelServiceTest;

TEST_F(DrelRequestTest, HandlesCountUpFromOneAcrossRequestsAndRegistrations) {
    auto callback = ::ndk::SharedRefBase::make<RecordingCallback>();
    EXPECT_EQ(1, hold(kCpuMin, "1400"));
    EXPECT_EQ(2, listen({idRecord(kCpuMin)}, callback));
    int32_t thermal = -100;
    ASSERT_TRUE(drel->thermalListeningRegister({1}, callback, &thermal).isOk());
    EXPECT_EQ(3, thermal);
    EXPECT_EQ(4, send(DrelService::kKindEvent, {idRecord(12)}));

    EXPECT_EQ(-1, release(2)) << "a registration is not a request";
    EXPECT_EQ(0, release(1));
    EXPECT_EQ(-1, release(1)) << "released already";
    EXPECT_EQ(-1, release(99));
    EXPECT_EQ(5, hold(kCpuMin, "1")) << "handles are never reused";
}

class HoldingKindTest : public DrelServiceTest, public ::testing::WithParamInterface<int32_t> {};

TEST_P(HoldingKindTest, HoldsItsResourcesUntilReleased) {
    const int32_t handle = send(GetParam(), {idRecord(kCpuMin, "1400"), idRecord(kGpuMin)});
    ASSERT_GE(handle, 1);
    EXPECT_EQ("1400", valueOf(kCpuMin));
    EXPECT_EQ("1", valueOf(kGpuMin)) << "a record without a value holds its resource at 1";
    EXPECT_EQ(1u, service->liveRequestCount());
    EXPECT_EQ(0, release(handle));
    EXPECT_EQ(DrelService::kDefaultValue, valueOf(kCpuMin));
    EXPECT_EQ(DrelService::kDefaultValue, valueOf(kGpuMin));
}

INSTANTIATE_TEST_SUITE_P(ResourceSceneEventPlatform, HoldingKindTest,
                         ::testing::Values(DrelService::kKindResource, DrelService::kKindScene,
                                           DrelService::kKindEvent, DrelService::kKindPlatform));

TEST_F(DrelRequestTest, KindsThatHoldNothingGiveNoHandle) {
    EXPECT_EQ(-1, send(DrelService::kKindState, {idRecord(kCpuMin, "1")}));
    EXPECT_EQ(-1, send(99, {idRecord(kCpuMin, "1")}));
    EXPECT_EQ(DrelService::kDefaultValue, valueOf(kCpuMin));
    EXPECT_EQ(0u, service->liveRequestCount());
}

TEST_F(DrelRequestTest, NewestLiveRequestWinsAndReleaseRestoresTheOlderValueOrTheDefault) {
    const int32_t older = hold(kCpuMin, "1000");
    const int32_t newer = hold(kCpuMin, "2000");
    EXPECT_EQ("2000", valueOf(kCpuMin));

    EXPECT_EQ(0, release(older));
    EXPECT_EQ("2000", valueOf(kCpuMin)) << "releasing the older request changes nothing";
    const int32_t newest = hold(kCpuMin, "3000");
    EXPECT_EQ(0, release(newest));
    EXPECT_EQ("2000", valueOf(kCpuMin));
    EXPECT_EQ(0, release(newer));
    EXPECT_EQ(DrelService::kDefaultValue, valueOf(kCpuMin));
}

TEST_F(DrelRequestTest, ARequestNamingAResourceTwiceHoldsTheLaterValue) {
    hold(kCpuMin, "1");
    send(DrelService::kKindResource, {idRecord(kCpuMin, "5"), idRecord(kCpuMin, "6")});
    EXPECT_EQ("6", valueOf(kCpuMin));
}

TEST_F(DrelRequestTest, TimeoutsAreMillisecondsOnTheClockAndZeroOrLessNeverExpires) {
    const int32_t timed = hold(kCpuMin, "1400", 500);
    hold(kGpuMin, "300", 0);
    hold(0x01031000, "2", -1);

    advance(milliseconds(499));
    EXPECT_EQ("1400", valueOf(kCpuMin));
    advance(milliseconds(1));
    EXPECT_EQ(DrelService::kDefaultValue, valueOf(kCpuMin)) << "expired by the next query";
    EXPECT_EQ(-1, release(timed)) << "an expired request is gone";

    advance(milliseconds(24 * 3600 * 1000));
    EXPECT_EQ(0, service->expireDue());
    EXPECT_EQ("300", valueOf(kGpuMin));
    EXPECT_EQ("2", valueOf(0x01031000));
    EXPECT_EQ(2u, service->liveRequestCount());
}

TEST_F(DrelRequestTest, ExpiryOfTheNewerRequestRestoresTheOlderValue) {
    hold(kCpuMin, "1000");
    hold(kCpuMin, "2000", 100);
    hold(kGpuMin, "7", 100);
    hold(kGpuMin, "8", 200);
    advance(milliseconds(100));
    EXPECT_EQ(2, service->expireDue());
    EXPECT_EQ(0, service->expireDue());
    EXPECT_EQ("1000", valueOf(kCpuMin));
    EXPECT_EQ("8", valueOf(kGpuMin));
}

TEST_F(DrelRequestTest, StateQueriesAnswerEachIdOrPathInOrder) {
    send(DrelService::kKindResource, {pathRecord("/sys/a", "42"), idRecord(kCpuMin, "1400"), [] {
                                          DrelRequestData both = idRecord(kGpuMin, "9");
                                          both.resPath = "/sys/ignored";  // an id wins over a path
                                          return both;
                                      }()});

    Records reply = query(DrelService::kKindState,
                          {idRecord(kGpuMin), pathRecord("/sys/a"), DrelRequestData{},
                           pathRecord("/sys/unheld"), idRecord(kCpuMin, "stale")});

    Records expected = {idRecord(kGpuMin, "9"), pathRecord("/sys/a", "42"),
                        pathRecord("/sys/unheld", DrelService::kDefaultValue),
                        idRecord(kCpuMin, "1400")};
    EXPECT_EQ(expected, reply) << "a record naming nothing is skipped";
    EXPECT_EQ(Records{pathRecord("/sys/ignored", DrelService::kDefaultValue)},
              query(DrelService::kKindState, {pathRecord("/sys/ignored")}));
}

TEST_F(DrelRequestTest, PowerModeAnswersOneRecordWithTheModesValueAsADecimalStatus) {
    struct Case {
        int32_t mode;
        std::optional<std::string> held;
        std::string status;
    };
    const Case cases[] = {
            {3, "2", "2"},    {4, " 7abc", "7"},       {5, "-3", "-3"},
            {6, "fast", "0"}, {7, "99999999999", "0"}, {8, std::nullopt, "0"},
    };
    for (const Case& c : cases) {
        if (c.held) hold(c.mode, *c.held);
        EXPECT_EQ(Records{idRecord(c.mode, c.status)},
                  query(DrelService::kKindPowerMode, {idRecord(c.mode)}))
                << "mode " << c.mode;
    }
    EXPECT_TRUE(query(DrelService::kKindPowerMode, {}).empty());
    EXPECT_TRUE(query(99, {idRecord(3)}).empty()) << "unknown query kinds answer nothing";
}

TEST_F(DrelRequestTest, HistoryKeepsTheNewestRequestsWithTheirTextInResExtra) {
    DrelRequestParcel event;
    event.requestType = DrelService::kKindEvent;
    event.resources = {idRecord(16), idRecord(kCpuMin, "1400"), pathRecord("/sys/b", "x")};
    event.timeout = 500;
    event.pkg = "com.example.camera";
    event.identity = "";
    int32_t handle = 0;
    ASSERT_TRUE(drel->request(event, &handle).isOk());
    for (int i = 0; i < 3; ++i) hold(kGpuMin, std::to_string(i));

    Records history = query(DrelService::kKindHistory, {});
    ASSERT_EQ(kHistoryCapacity, history.size());
    EXPECT_EQ(2, history[0].resId) << "the oldest entry is dropped";
    EXPECT_EQ(4, history[2].resId);
    EXPECT_EQ(DrelService::kKindResource, history[2].resParam);
    EXPECT_EQ("handle:4 type:1 timeout:0 pkg:none identity:none res:0x01021000=2",
              history[2].resExtra.value_or("<absent>"));

    // Recording off and on again; the first entry's full text.
    EXPECT_EQ(1, send(DrelService::kKindDiagnostic, {idRecord(DrelService::kHistoryRecordOff)}));
    hold(kGpuMin, "off");
    EXPECT_EQ(4, query(DrelService::kKindHistory, {}).back().resId);
    EXPECT_EQ(1, send(DrelService::kKindDiagnostic, {idRecord(DrelService::kHistoryRecordOn)}));
    DrelRequestParcel again = event;
    again.identity = "cam";
    ASSERT_TRUE(drel->request(again, &handle).isOk());
    EXPECT_EQ(
            "handle:6 type:8 timeout:500 pkg:com.example.camera identity:cam "
            "res:0x00000010=1,0x01011040=1400,/sys/b=x",
            query(DrelService::kKindHistory, {}).back().resExtra.value_or("<absent>"));
}

}  // namespace
}  // namespace qel_test
