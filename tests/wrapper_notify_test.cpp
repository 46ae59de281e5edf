// QelNotifyWapper: each scenario source and switch value, through to the rule control the
// service receives (rule id, status and resource list), or to no call at all.

#include <gtest/gtest.h>

#include <mutex>

#include "QelWrapper.h"
#include "support/service_fixture.h"
#include "support/wrapper_test_util.h"

namespace qel_test {
namespace {

using ::testing::_;

struct RuleCall {
    int ruleId;
    int status;
    ResourcePairs resources;

    bool operator==(const RuleCall& other) const {
        return ruleId == other.ruleId && status == other.status && resources == other.resources;
    }
};

void PrintTo(const RuleCall& call, std::ostream* os) {
    *os << "qelRuleCtl(" << call.ruleId << ", " << call.status << ", "
        << ::testing::PrintToString(call.resources) << ")";
}

struct NotifyCase {
    int src;
    int type;
    int param;
    std::string text;
    std::vector<RuleCall> calls;  // what the service receives: nothing or one call
};

void PrintTo(const NotifyCase& c, std::ostream* os) {
    *os << "src " << c.src << ", type " << c.type << ", param " << c.param << ", text \"" << c.text
        << "\"";
}

class WrapperNotifyTest : public ServiceFixture, public ::testing::WithParamInterface<NotifyCase> {
protected:
    // Records every rule control the service receives; the service answers `answer`.
    void recordRuleCalls(int answer) {
        ON_CALL(*service, ruleCtl(_, _, _, _))
                .WillByDefault([this, answer](int32_t ruleId, int32_t status,
                                              const std::vector<DrelRequestData>& data,
                                              int32_t* result) {
                    RuleCall call{ruleId, status, {}};
                    for (const DrelRequestData& d : data) {
                        call.resources.emplace_back(d.resId, d.resValue);
                    }
                    std::lock_guard<std::mutex> l(mutex);
                    calls.push_back(std::move(call));
                    *result = answer;
                    return ::ndk::ScopedAStatus::ok();
                });
    }

    std::vector<RuleCall> received() {
        std::lock_guard<std::mutex> l(mutex);
        return calls;
    }

    std::mutex mutex;
    std::vector<RuleCall> calls;
};

TEST_P(WrapperNotifyTest, SendsTheRowsRuleControl) {
    const NotifyCase& c = GetParam();
    recordRuleCalls(-1);
    EXPECT_EQ(0, QelNotifyWapper("scenario", c.src, c.type, c.param, 11, 12, c.text));
    EXPECT_EQ(c.calls, received());
}

// Sources whose rule id and status are the source and the type, whatever the type.
INSTANTIATE_TEST_SUITE_P(PassThrough, WrapperNotifyTest,
                         ::testing::Values(NotifyCase{1, 7, 0, "", {{1, 7, {}}}},
                                           NotifyCase{10, 0, 0, "x", {{10, 0, {}}}},
                                           NotifyCase{11, -5, 3, "", {{11, -5, {}}}},
                                           NotifyCase{12, 1, 0, "", {{12, 1, {}}}},
                                           NotifyCase{16, 2, 0, "", {{16, 2, {}}}},
                                           NotifyCase{110, 1, 0, "", {{110, 1, {}}}},
                                           NotifyCase{129, 0, 0, "", {{129, 0, {}}}},
                                           NotifyCase{1000, 7, 0, "", {{1000, 7, {}}}}));

INSTANTIATE_TEST_SUITE_P(SharedRule200, WrapperNotifyTest,
                         ::testing::Values(NotifyCase{2, 1, 0, "", {{200, 2, {}}}},
                                           NotifyCase{3, 1, 0, "", {{200, 3, {}}}},
                                           NotifyCase{5, 1, 0, "", {{200, 5, {}}}},
                                           NotifyCase{6, 1, 0, "", {{200, 6, {}}}},
                                           NotifyCase{2, 0, 0, "", {{200, 0, {}}}},
                                           NotifyCase{6, 4, 0, "", {{200, 0, {}}}},
                                           NotifyCase{3, -1, 0, "", {{200, 0, {}}}}));

INSTANTIATE_TEST_SUITE_P(Source8, WrapperNotifyTest,
                         ::testing::Values(NotifyCase{8, 1, 1, "", {{8, 1, {{0x010103A0, "0"}}}}},
                                           NotifyCase{8, 2, 1, "", {{8, 2, {{0x010103A0, "0"}}}}},
                                           NotifyCase{8, 1, 0, "", {{8, 1, {}}}},
                                           NotifyCase{8, 2, 5, "", {{8, 2, {}}}},
                                           NotifyCase{8, 0, 1, "", {{8, 0, {}}}},
                                           NotifyCase{8, 3, 1, "", {}},
                                           NotifyCase{8, -1, 1, "", {}}));

INSTANTIATE_TEST_SUITE_P(
        Source9, WrapperNotifyTest,
        ::testing::Values(
                NotifyCase{9, 1, 0, "", {{9, 1, {{0x010112F0, "enable 0"}, {0x01011910, "0"}}}}},
                // Switching off sends an empty list.
                NotifyCase{9, 0, 0, "", {{9, 0, {}}}}, NotifyCase{9, 2, 0, "", {}}));

INSTANTIATE_TEST_SUITE_P(
        Source14, WrapperNotifyTest,
        ::testing::Values(
                NotifyCase{14, 1, 2, "abc", {{14, 1, {{0x01011040, "2"}, {0x010115B0, "abc"}}}}},
                NotifyCase{14, 1, 0, "", {{14, 1, {}}}},
                NotifyCase{14, 0, 2, "abc", {{14, 0, {{0x01011040, "-1"}, {0x01011040, ""}}}}},
                NotifyCase{14, 2, 2, "abc", {}}));

INSTANTIATE_TEST_SUITE_P(Source15, WrapperNotifyTest,
                         ::testing::Values(NotifyCase{15, 1, 2, "", {{15, 0x201, {}}}},
                                           NotifyCase{15, -1, 0, "", {{15, 0xFF, {}}}},
                                           NotifyCase{15, 0, 3, "", {{15, 0x300, {}}}},
                                           NotifyCase{15, 1, -1, "", {{15, -255, {}}}},
                                           NotifyCase{15, 2, 2, "", {}},
                                           NotifyCase{15, -2, 2, "", {}}));

INSTANTIATE_TEST_SUITE_P(
        Source102, WrapperNotifyTest,
        ::testing::Values(NotifyCase{102, 1, 0, "", {{102, 1, {{0x01011070, "3"}}}}},
                          NotifyCase{102, 1, 5, "", {{102, 1, {{0x01011070, "5"}}}}},
                          NotifyCase{102, 1, -1, "", {{102, 1, {{0x01011070, "3"}}}}},
                          NotifyCase{102, 1, -2, "", {{102, 1, {{0x01011070, "-2"}}}}},
                          NotifyCase{102, 0, 5, "", {{102, 0, {{0x01011070, "0"}}}}},
                          NotifyCase{102, 2, 5, "", {}}));

INSTANTIATE_TEST_SUITE_P(
        Source111, WrapperNotifyTest,
        ::testing::Values(NotifyCase{111, -1, 0, "", {{111, -1, {{0x010103A0, "-1"}}}}},
                          NotifyCase{111, 0, 0, "", {{111, 0, {{0x010103A0, "0"}}}}},
                          NotifyCase{111, 1, 0, "", {{111, 1, {{0x010103A0, "1"}}}}},
                          NotifyCase{111, 2, 0, "", {}}, NotifyCase{111, -2, 0, "", {}}));

// Text rules: a non-empty text switches on with the builder's list, even an empty one.
INSTANTIATE_TEST_SUITE_P(
        TextRules, WrapperNotifyTest,
        ::testing::Values(
                NotifyCase{130,
                           1,
                           0,
                           "100,200",
                           {{130, 1, {{0x010108A0, "100"}, {0x010108B0, "200"}}}}},
                NotifyCase{130, 1, 0, "-1", {{130, 1, {}}}}, NotifyCase{130, 1, 0, "", {}},
                NotifyCase{130, 0, 0, "100,200", {{130, 0, {}}}}, NotifyCase{130, 2, 0, "1", {}},
                NotifyCase{131, 1, 0, "colocation:1", {{131, 1, {{0x01011040, "1"}}}}},
                NotifyCase{131, 1, 0, "", {}},
                NotifyCase{131, 0, 0, "colocation:1", {{131, 0, {}}}},
                NotifyCase{131, 3, 0, "colocation:1", {}},
                NotifyCase{9000, 1, 0, "1,2;", {{9000, 1, {{0x01010B10, "1"}, {0x01010B20, "2"}}}}},
                NotifyCase{9000, 1, 0, "", {}}, NotifyCase{9000, 0, 0, "1,2;", {{9000, 0, {}}}},
                NotifyCase{9000, -1, 0, "1,2;", {}}));

INSTANTIATE_TEST_SUITE_P(
        IgnoredSources, WrapperNotifyTest,
        ::testing::Values(NotifyCase{0, 1, 0, "", {}}, NotifyCase{-1, 1, 0, "", {}},
                          NotifyCase{4, 1, 0, "", {}}, NotifyCase{7, 0, 0, "", {}},
                          NotifyCase{13, 1, 0, "", {}}, NotifyCase{17, 1, 0, "", {}},
                          NotifyCase{101, 1, 0, "", {}}, NotifyCase{103, 1, 0, "", {}},
                          NotifyCase{109, 1, 0, "", {}}, NotifyCase{112, 1, 0, "", {}},
                          NotifyCase{128, 1, 0, "x", {}}, NotifyCase{132, 1, 0, "x", {}},
                          NotifyCase{999, 7, 0, "", {}}, NotifyCase{8999, 1, 0, "1,", {}},
                          NotifyCase{9001, 1, 0, "1,", {}}));

class WrapperNotifyLogTest : public ServiceFixture {};

TEST_F(WrapperNotifyLogTest, LogsTheReportAndReturnsZeroWhateverTheRuleControlSays) {
    EXPECT_CALL(*service, ruleCtl(1000, 7, _, _)).WillOnce(ReturnServiceError(4));
    EXPECT_CALL(*service, ruleCtl(12, 1, _, _)).WillOnce(ReturnResult4(-1));
    EXPECT_EQ(0, QelNotifyWapper("gameScene", 1000, 7, 0, 0, 0, ""));
    EXPECT_EQ(0, QelNotifyWapper("", 12, 1, 0, 0, 0, ""));
    EXPECT_EQ(0, QelNotifyWapper("", 4, 1, 0, 0, 0, ""));
    EXPECT_EQ(log.linesWithTag("[QEL_CLIENT_WRAPPER]"),
              (std::vector<LogLine>{
                      {ANDROID_LOG_INFO, std::string("[QEL_CLIENT_WRAPPER]"),
                       "[QelNotifyWapper] gameScene, src:1000, type:7"},
                      {ANDROID_LOG_INFO, std::string("[QEL_CLIENT_WRAPPER]"),
                       "[QelNotifyWapper] none, src:12, type:1"},
                      {ANDROID_LOG_INFO, std::string("[QEL_CLIENT_WRAPPER]"),
                       "[QelNotifyWapper] none, src:4, type:1"},
              }));
}

}  // namespace
}  // namespace qel_test
