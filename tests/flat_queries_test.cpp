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
using ::testing::HasSubstr;
using ::testing::SaveArg;
using ::testing::SetArgPointee;
using ::testing::StartsWith;

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
    EXPECT_EQ(qelLines(),
              (std::vector<LogLine>{
                      qelLine(ANDROID_LOG_INFO, "QelMutiResStateRequest enter"),
                      qelLine(ANDROID_LOG_DEBUG, "get resource value, opcode 0x0000000a, value 10"),
                      qelLine(ANDROID_LOG_INFO, "not match any opcode in qelcore"),
                      qelLine(ANDROID_LOG_DEBUG,
                              "get resource value, opcode 0x0000000a, value 10")}));
}

TEST_F(FlatQueriesTest, MultiStateRequestRefusesAnEmptyListAndAnEmptyReply) {
    EXPECT_CALL(*service, stateRequest(_, _)).Times(0);
    std::vector<QelClient::Resource> none;
    EXPECT_EQ(-1, QelMutiResStateRequest(none));
    EXPECT_EQ(qelLines().back(), qelLine(ANDROID_LOG_ERROR, "input resource is empty, return"));
    ::testing::Mock::VerifyAndClearExpectations(service.get());

    answerStateRequests({});
    std::vector<QelClient::Resource> one{{0x10, "kept"}};
    EXPECT_EQ(-1, QelMutiResStateRequest(one));
    EXPECT_EQ(qelLines().back(), qelLine(ANDROID_LOG_ERROR, "failed to get resource value"));
    EXPECT_EQ(std::optional<std::string>("kept"), one[0].resValue);
}

TEST_F(FlatQueriesTest, SingleStateRequestSetsTheValueOnlyWhenTheServiceHasOne) {
    struct Case {
        std::vector<DrelRequestData> reply;
        std::string expected;
    };
    const Case cases[] = {
            {{wireRecord(0x42, 0, "800")}, "800"},
            {{wireRecord(0x42, 0, std::string("ab\0cd", 5))}, "ab"},  // ends at the NUL
            {{wireRecord(0x42)}, "before"},                           // no value
            {{wireRecord(0x43, 0, "1")}, "before"},                   // another opcode
            {{}, "before"},                                           // empty reply
    };
    for (const Case& c : cases) {
        answerStateRequests(c.reply);
        std::string value = "before";
        QelResStateRequest(0x42, value);
        EXPECT_EQ(c.expected, value);
        EXPECT_EQ(std::vector<DrelRequestData>{wireRecord(0x42)}, sent.resources);
    }
    EXPECT_TRUE(log.contains(qelLine(ANDROID_LOG_INFO, "QelResStateRequest enter")));
}

struct HistoryCase {
    std::vector<DrelRequestData> reply;
    std::string history;
};

class FlatHistoryTest : public FlatQueriesTest,
                        public ::testing::WithParamInterface<HistoryCase> {};

TEST_P(FlatHistoryTest, JoinsTheRecordsExtraTexts) {
    answerStateRequests(GetParam().reply);
    std::string history = "previous";
    EXPECT_EQ(0, QelGetHistory(history));
    EXPECT_EQ(GetParam().history, history);
    EXPECT_EQ(11, sent.requestType);
    EXPECT_TRUE(sent.resources.empty());
    EXPECT_EQ(qelLines(),
              (std::vector<LogLine>{
                      qelLine(ANDROID_LOG_INFO, "qel client QelGetHistory"),
                      qelLine(ANDROID_LOG_INFO, "qel client hal QelGetHistory"),
                      qelLine(ANDROID_LOG_DEBUG, "get history successful: " + history)}));
}

INSTANTIATE_TEST_SUITE_P(
        Replies, FlatHistoryTest,
        ::testing::Values(HistoryCase{{wireRecord(1, 0, std::nullopt, "x")}, "start:x;end"},
                          HistoryCase{{wireRecord(1, 0, "v", "a"), wireRecord(2, 0, "w", "b"),
                                       wireRecord(3, 0, "not read")},
                                      "start:a;b;none;end"},
                          HistoryCase{{wireRecord(1)}, "start:none;end"}));

TEST_F(FlatQueriesTest, HistoryFailuresLogTheRecordCountAndLeaveTheTextAlone) {
    answerStateRequests({});
    std::string history = "previous";
    EXPECT_EQ(-1, QelGetHistory(history));
    EXPECT_EQ(qelLines().back(),
              qelLine(ANDROID_LOG_ERROR,
                      "failed to get history or return vector empty, data vector size 0"));

    EXPECT_CALL(*service, stateRequest(_, _)).WillOnce(ReturnServiceError(1));
    log.clear();
    EXPECT_EQ(-1, QelGetHistory(history));
    EXPECT_EQ(history, "previous");
    std::vector<LogLine> lines = qelLines();
    ASSERT_GE(lines.size(), 2u);
    EXPECT_EQ((std::vector<LogLine>(lines.end() - 2, lines.end())),
              (std::vector<LogLine>{
                      qelLine(ANDROID_LOG_ERROR,
                              "QelGetHistory() failed : drel HAL service not available"),
                      qelLine(ANDROID_LOG_ERROR,
                              "failed to get history or return vector empty, "
                              "data vector size 0")}));
}

struct PowerModeCase {
    const char* reply;
    int result;
    const char* printed;  // the start of the line written to standard output, if any
};

class FlatPowerModeTest : public FlatQueriesTest,
                          public ::testing::WithParamInterface<PowerModeCase> {};

TEST_P(FlatPowerModeTest, ParsesTheFirstValueAsADecimalNumber) {
    answerStateRequests({wireRecord(3, 0, GetParam().reply), wireRecord(3, 0, "55")});
    ::testing::internal::CaptureStdout();
    int result = QelGetPMStatus(3);
    std::string out = ::testing::internal::GetCapturedStdout();

    EXPECT_EQ(GetParam().result, result);
    EXPECT_EQ(13, sent.requestType);
    EXPECT_EQ(std::vector<DrelRequestData>{wireRecord(3)}, sent.resources);
    std::string printed = GetParam().printed;
    if (printed.empty()) {
        EXPECT_EQ("", out);
    } else {
        EXPECT_THAT(out, StartsWith(printed));
        EXPECT_GT(out.size(), printed.size()) << "the exception's message follows";
        EXPECT_EQ(out.find('\n'), out.size() - 1) << "one line, ended";
        for (const LogLine& line : log.lines()) {
            EXPECT_THAT(line.message, ::testing::Not(HasSubstr("exception")));
        }
    }
    EXPECT_EQ(qelLines(),
              (std::vector<LogLine>{qelLine(ANDROID_LOG_INFO, "qel client QelGetPMStatus"),
                                    qelLine(ANDROID_LOG_INFO, "qel client hal QelGetPMStatus")}));
}

INSTANTIATE_TEST_SUITE_P(Replies, FlatPowerModeTest,
                         ::testing::Values(PowerModeCase{"12abc", 12, ""},
                                           PowerModeCase{" 7", 7, ""}, PowerModeCase{"-3", -3, ""},
                                           PowerModeCase{"abc", -1, "Invalid argument exception: "},
                                           PowerModeCase{"", -1, "Invalid argument exception: "},
                                           PowerModeCase{"99999999999", -1,
                                                         "Out of range exception: "}));

TEST_F(FlatQueriesTest, PowerModeWithoutAValueThrowsToTheCallerAndLeavesTheLockFree) {
    answerStateRequests({wireRecord(3)});
    EXPECT_THROW(QelGetPMStatus(3), std::bad_optional_access);
    // The call had already let the connection go: a reset (exclusive) still goes through.
    EXPECT_CALL(*service, stateRequest(_, _)).WillOnce(ReturnServiceError(1));
    EXPECT_EQ(-1, QelGetPMStatus(3));
    EXPECT_FALSE(qelConnected());
}

TEST_F(FlatQueriesTest, PowerModeFailureLogsTheModeAndTheRecordCount) {
    answerStateRequests({});
    EXPECT_EQ(-1, QelGetPMStatus(9));
    EXPECT_EQ(qelLines().back(),
              qelLine(ANDROID_LOG_ERROR,
                      "failed to get power mode status, mode 9, data vector size 0"));
}

}  // namespace
}  // namespace qel_test
