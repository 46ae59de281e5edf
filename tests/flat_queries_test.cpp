// State, history and power-mode queries: what they send, how they read the reply, and what they
// leave untouched on failure.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

#include "qel.h"
#include "support/flat_fixture.h"

namespace qel_test {
namespace {

using ::testing::_;
using ::testing::DoAll;
using ::testing::SaveArg;
using ::testing::SetArgPointee;

class FlatQueriesTest : public FlatFixture {
protected:
    // The service answers every state request with `reply` and keeps the last parcel.
    void answerStateRequests(std::vector<DrelRequestData> reply) {
        ON_CALL(*service, stateRequest(_, _))
                .WillByDefault(DoAll(SaveArg<0>(&sent), SetArgPointee<1>(reply), ReturnOk()));
    }
    DrelRequestParcel sent;
};

TEST_F(FlatQueriesTest, MultiStateRequestSendsIdsOnlyAndTakesTheFirstMatchOfEach) {
    answerStateRequests({wireRecord(0xA, 0, "10"), wireRecord(0xB), wireRecord(0xA, 0, "99"),
                         wireRecord(0xD, 0, "4")});
    std::vector<QelClient::Resource> resources{
            {0xA, "old"}, {0xB, "keep"}, {0xC, std::nullopt}, {0xA, std::nullopt}};
    EXPECT_EQ(2, QelMutiResStateRequest(resources));

    EXPECT_EQ(0, sent.requestType);
    EXPECT_EQ((std::vector<DrelRequestData>{wireRecord(0xA), wireRecord(0xB), wireRecord(0xC),
                                            wireRecord(0xA)}),
              sent.resources)
            << "the caller's values are not sent";
    EXPECT_EQ(std::optional<std::string>("10"), resources[0].resValue);
    EXPECT_EQ(std::optional<std::string>("keep"), resources[1].resValue) << "reply had no value";
    EXPECT_EQ(std::nullopt, resources[2].resValue) << "no reply record";
    EXPECT_EQ(std::optional<std::string>("10"), resources[3].resValue);
    const LogLine got =
            qelLine(ANDROID_LOG_DEBUG, "get resource value, opcode 0x0000000a, value 10");
    EXPECT_EQ(qelLines(),
              (std::vector<LogLine>{qelLine(ANDROID_LOG_INFO, "QelMutiResStateRequest enter"), got,
                                    qelLine(ANDROID_LOG_INFO, "not match any opcode in qelcore"),
                                    got}));
}

TEST_F(FlatQueriesTest, MultiStateRequestRefusesAnEmptyListAndAnEmptyReply) {
    answerStateRequests({});
    std::vector<QelClient::Resource> none;
    EXPECT_EQ(-1, QelMutiResStateRequest(none));
    EXPECT_EQ(qelLines().back(), qelLine(ANDROID_LOG_ERROR, "input resource is empty, return"));
    EXPECT_EQ(DrelRequestParcel(), sent) << "nothing was asked";

    std::vector<QelClient::Resource> one{{0x10, "kept"}};
    EXPECT_EQ(-1, QelMutiResStateRequest(one));
    EXPECT_EQ(qelLines().back(), qelLine(ANDROID_LOG_ERROR, "failed to get resource value"));
    EXPECT_EQ(std::optional<std::string>("kept"), one[0].resValue);
}

TEST_F(FlatQueriesTest, SingleStateRequestSetsTheValueOnlyWhenTheServiceHasOne) {
    const struct {
        std::vector<DrelRequestData> reply;
        std::string expected;
    } cases[] = {
            {{wireRecord(0x42, 0, "800")}, "800"},
            {{wireRecord(0x42, 0, std::string("ab\0cd", 5))}, "ab"},  // ends at the NUL
            {{wireRecord(0x42)}, "before"},                           // no value
            {{wireRecord(0x43, 0, "1")}, "before"},                   // another opcode
            {{}, "before"},                                           // empty reply
    };
    for (const auto& c : cases) {
        answerStateRequests(c.reply);
        std::string value = "before";
        QelResStateRequest(0x42, value);
        EXPECT_EQ(c.expected, value);
        EXPECT_EQ(std::vector<DrelRequestData>{wireRecord(0x42)}, sent.resources);
    }
    EXPECT_TRUE(log.contains(qelLine(ANDROID_LOG_INFO, "QelResStateRequest enter")));
}

TEST_F(FlatQueriesTest, HistoryJoinsTheRecordsExtraTexts) {
    const struct {
        std::vector<DrelRequestData> reply;
        std::string history;
    } cases[] = {
            {{wireRecord(1, 0, std::nullopt, "x")}, "start:x;end"},
            {{wireRecord(1, 0, "v", "a"), wireRecord(2, 0, "w", "b"), wireRecord(3, 0, "not read")},
             "start:a;b;none;end"},
    };
    for (const auto& c : cases) {
        answerStateRequests(c.reply);
        log.clear();
        std::string history = "previous";
        EXPECT_EQ(0, QelGetHistory(history));
        EXPECT_EQ(c.history, history);
        EXPECT_EQ(11, sent.requestType);
        EXPECT_TRUE(sent.resources.empty());
        EXPECT_EQ(qelLines(),
                  (std::vector<LogLine>{
                          qelLine(ANDROID_LOG_INFO, "qel client QelGetHistory"),
                          qelLine(ANDROID_LOG_INFO, "qel client hal QelGetHistory"),
                          qelLine(ANDROID_LOG_DEBUG, "get history successful: " + c.history)}));
    }
}

TEST_F(FlatQueriesTest, EmptyRepliesLogTheRecordCountAndLeaveTheOutputAlone) {
    answerStateRequests({});
    std::string history = "previous";
    EXPECT_EQ(-1, QelGetHistory(history));
    EXPECT_EQ(history, "previous");
    EXPECT_EQ(qelLines().back(),
              qelLine(ANDROID_LOG_ERROR,
                      "failed to get history or return vector empty, data vector size 0"));
    EXPECT_EQ(-1, QelGetPMStatus(9));
    EXPECT_EQ(qelLines().back(),
              qelLine(ANDROID_LOG_ERROR,
                      "failed to get power mode status, mode 9, data vector size 0"));
}

TEST_F(FlatQueriesTest, PowerModeParsesTheFirstValueAsADecimalNumber) {
    const struct {
        const char* reply;
        int result;
        std::string printed;  // the start of the line written to standard output, if any
    } cases[] = {
            {"12abc", 12, ""},
            {"-3", -3, ""},
            {"abc", -1, "Invalid argument exception: "},
            {"99999999999", -1, "Out of range exception: "},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.reply);
        answerStateRequests({wireRecord(3, 0, c.reply), wireRecord(3, 0, "55")});
        log.clear();
        ::testing::internal::CaptureStdout();
        EXPECT_EQ(c.result, QelGetPMStatus(3));
        std::string out = ::testing::internal::GetCapturedStdout();

        EXPECT_EQ(13, sent.requestType);
        EXPECT_EQ(std::vector<DrelRequestData>{wireRecord(3)}, sent.resources);
        if (c.printed.empty()) {
            EXPECT_EQ("", out);
        } else {
            EXPECT_THAT(out, ::testing::StartsWith(c.printed));
            EXPECT_GT(out.size(), c.printed.size()) << "the exception's message follows";
            EXPECT_EQ(out.find('\n'), out.size() - 1) << "one line, ended";
        }
        EXPECT_EQ(qelLines(), (std::vector<LogLine>{
                                      qelLine(ANDROID_LOG_INFO, "qel client QelGetPMStatus"),
                                      qelLine(ANDROID_LOG_INFO, "qel client hal QelGetPMStatus")}));
    }
}

TEST_F(FlatQueriesTest, PowerModeWithoutAValueThrowsToTheCallerAndLeavesTheLockFree) {
    answerStateRequests({wireRecord(3)});
    EXPECT_THROW(QelGetPMStatus(3), std::bad_optional_access);
    // The call had already let the connection go: a reset (exclusive) still goes through.
    EXPECT_CALL(*service, stateRequest(_, _)).WillOnce(ReturnServiceError(1));
    EXPECT_EQ(-1, QelGetPMStatus(3));
    EXPECT_FALSE(qelConnected());
}

}  // namespace
}  // namespace qel_test
