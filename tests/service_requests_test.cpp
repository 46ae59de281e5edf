// The example service's requests and queries, through a client's proxy: handles, the newest live
// request winning, release and expiry, path resources, history and diagnostic dumps.

#include <gtest/gtest.h>

#include "support/log_capture.h"
#include "support/service_harness.h"

namespace qel_test {
namespace {

using DrelRequestTest = DrelServiceTest;

TEST_F(DrelRequestTest, HandlesCountUpFromOneAcrossRequestsAndRegistrations) {
    auto callback = ::ndk::SharedRefBase::make<RecordingCallback>();
    EXPECT_EQ(1, hold(kCpuMin, "1400"));
    EXPECT_EQ(2, listen({idRecord(kCpuMin)}, callback));
    EXPECT_EQ(3, listenThermal({1}, callback));
    EXPECT_EQ(4, send(DrelService::kKindEvent, {idRecord(12)}));

    EXPECT_EQ(-1, release(2)) << "a registration is not a request";
    EXPECT_EQ(0, release(1));
    EXPECT_EQ(-1, release(1)) << "released already";
    EXPECT_EQ(-1, release(99));
    EXPECT_EQ(5, hold(kCpuMin, "1")) << "handles are never reused";
}

TEST_F(DrelRequestTest, OnlyResourceSceneEventAndPlatformRequestsHoldTheirResources) {
    for (int32_t kind : {DrelService::kKindResource, DrelService::kKindScene,
                         DrelService::kKindEvent, DrelService::kKindPlatform}) {
        SCOPED_TRACE(kind);
        const int32_t handle = send(kind, {idRecord(kCpuMin, "1400"), idRecord(kGpuMin)});
        ASSERT_GE(handle, 1);
        EXPECT_EQ("1400", valueOf(kCpuMin));
        EXPECT_EQ("1", valueOf(kGpuMin)) << "a record without a value holds its resource at 1";
        EXPECT_EQ(1u, service->liveRequestCount());
        EXPECT_EQ(0, release(handle));
        EXPECT_EQ(DrelService::kDefaultValue, valueOf(kCpuMin));
        EXPECT_EQ(DrelService::kDefaultValue, valueOf(kGpuMin));
    }
    EXPECT_EQ(-1, send(DrelService::kKindState, {idRecord(kCpuMin, "1")}));
    EXPECT_EQ(-1, send(99, {idRecord(kCpuMin, "1")}));
    EXPECT_EQ(DrelService::kDefaultValue, valueOf(kCpuMin));
    EXPECT_EQ(0u, service->liveRequestCount());
}

TEST_F(DrelRequestTest, NewestLiveRequestWinsAndReleaseRestoresTheOlderValueOrTheDefault) {
    const int32_t older = hold(kCpuMin, "1000");
    const int32_t newer =
            send(DrelService::kKindResource, {idRecord(kCpuMin, "5"), idRecord(kCpuMin, "2000")});
    EXPECT_EQ("2000", valueOf(kCpuMin)) << "a resource named twice holds the later value";
    EXPECT_EQ(0, release(older));
    EXPECT_EQ("2000", valueOf(kCpuMin)) << "releasing the older request changes nothing";
    EXPECT_EQ(0, release(hold(kCpuMin, "3000")));
    EXPECT_EQ("2000", valueOf(kCpuMin));
    EXPECT_EQ(0, release(newer));
    EXPECT_EQ(DrelService::kDefaultValue, valueOf(kCpuMin));
}

TEST_F(DrelRequestTest, TimeoutsAreMillisecondsOnTheClockAndZeroOrLessNeverExpires) {
    const int32_t timed = hold(kCpuMin, "1400", 500);
    hold(kGpuMin, "300", 0);
    hold(0x01031000, "2", -1);
    hold(0x01041000, "older");
    hold(0x01041000, "newer", 600);

    advance(499);
    EXPECT_EQ("1400", valueOf(kCpuMin));
    advance(1);
    EXPECT_EQ(DrelService::kDefaultValue, valueOf(kCpuMin)) << "expired by the next query";
    EXPECT_EQ(-1, release(timed)) << "an expired request is gone";
    advance(100);
    EXPECT_EQ(1, service->expireDue());
    EXPECT_EQ("older", valueOf(0x01041000)) << "expiry restores the older value";

    advance(24 * 3600 * 1000);
    EXPECT_EQ(0, service->expireDue());
    EXPECT_EQ("300", valueOf(kGpuMin));
    EXPECT_EQ("2", valueOf(0x01031000));
    EXPECT_EQ(3u, service->liveRequestCount());
}

TEST_F(DrelRequestTest, StateQueriesAnswerEachIdOrPathInOrder) {
    DrelRequestData both = idRecord(kGpuMin, "9");
    both.resPath = "/sys/ignored";  // an id wins over a path
    send(DrelService::kKindResource, {pathRecord("/sys/a", "42"), idRecord(kCpuMin, "1400"), both});

    Records reply = query(DrelService::kKindState,
                          {idRecord(kGpuMin), pathRecord("/sys/a"), DrelRequestData{},
                           pathRecord("/sys/unheld"), idRecord(kCpuMin, "stale")});
    Records expected = {idRecord(kGpuMin, "9"), pathRecord("/sys/a", "42"),
                        pathRecord("/sys/unheld", DrelService::kDefaultValue),
                        idRecord(kCpuMin, "1400")};
    EXPECT_EQ(expected, reply) << "a record naming nothing is skipped";
    EXPECT_EQ(Records{pathRecord("/sys/ignored", DrelService::kDefaultValue)},
              query(DrelService::kKindState, {pathRecord("/sys/ignored")}));
    EXPECT_TRUE(query(99, {idRecord(3)}).empty()) << "unknown query kinds answer nothing";
}

TEST_F(DrelRequestTest, HistoryKeepsTheNewestRecordedRequestsWithTheirTextInResExtra) {
    DrelRequestParcel event;
    event.requestType = DrelService::kKindEvent;
    event.resources = {idRecord(16), idRecord(kCpuMin, "1400"), pathRecord("/sys/b", "x")};
    event.timeout = 500;
    event.pkg = "com.example.camera";
    event.identity = "cam";
    int32_t handle = 0;
    ASSERT_TRUE(drel->request(event, &handle).isOk());
    hold(kGpuMin, "1");
    EXPECT_EQ(1, send(DrelService::kKindDiagnostic, {idRecord(DrelService::kHistoryRecordOff)}));
    hold(kGpuMin, "off");
    EXPECT_EQ(1, send(DrelService::kKindDiagnostic, {idRecord(DrelService::kHistoryRecordOn)}));
    hold(kGpuMin, "2");
    hold(kGpuMin, "3");

    Records history = query(DrelService::kKindHistory, {});
    ASSERT_EQ(kHistoryCapacity, history.size()) << "the oldest entry is dropped";
    EXPECT_EQ((std::vector<int32_t>{2, 4, 5}),
              (std::vector<int32_t>{history[0].resId, history[1].resId, history[2].resId}))
            << "nothing is recorded while recording is off";
    EXPECT_EQ(DrelService::kKindResource, history[2].resParam);
    EXPECT_EQ("handle:5 type:1 timeout:0 pkg:none identity:none res:0x01021000=3",
              history[2].resExtra.value_or("<absent>"));
    event.resources.push_back(DrelRequestData{});  // names nothing: not in the text
    ASSERT_TRUE(drel->request(event, &handle).isOk());
    EXPECT_EQ(
            "handle:6 type:8 timeout:500 pkg:com.example.camera identity:cam "
            "res:0x00000010=1,0x01011040=1400,/sys/b=x",
            query(DrelService::kKindHistory, {}).back().resExtra.value_or("<absent>"));
}

TEST_F(DrelRequestTest, EachDumpLogsItsTableAndAnswersOne) {
    send(DrelService::kKindScene, {idRecord(7)}, 100);
    hold(kCpuMin, "1400");
    hold(kCpuMin, "1500");
    const char* headers[] = {
            "dump ToDoQueue: 1 entries",     "dump RunMap: 3 entries",
            "dump ActiveResMap: 2 entries",  "dump ResRequest: 2 entries",
            "dump ResInfo: 0 entries",       "dump SAInfo: 1 entries",
            "dump PidFdList: 0 entries",     "dump PidfdMonitorMap: 0 entries",
            "dump ResRecordList: 3 entries",
    };
    for (int32_t selector = 0; selector <= 8; ++selector) {
        LogCapture log;
        EXPECT_EQ(1, send(DrelService::kKindDiagnostic, {idRecord(selector)}));
        ASSERT_FALSE(log.lines().empty()) << selector;
        EXPECT_EQ((LogLine{ANDROID_LOG_INFO, DrelService::kLogTag, headers[selector]}),
                  log.lines()[0]);
        if (selector == 3) {
            EXPECT_EQ((std::vector<std::string>{headers[3], "  0x00000007: 1=1",
                                                "  0x01011040: 2=1400 3=1500"}),
                      log.messages());
        }
    }
    EXPECT_EQ(0, send(DrelService::kKindDiagnostic, {idRecord(0x9)})) << "unknown selector";
    EXPECT_EQ(0, send(DrelService::kKindDiagnostic, {}));
}

}  // namespace
}  // namespace qel_test
