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

class WrapperNotifyTest : public ServiceFixture {
protected:
    // Records every rule control the service receives, and answers -1 to each.
    void SetUp() override {
        ServiceFixture::SetUp();
        ON_CALL(*service, ruleCtl(_, _, _, _))
                .WillByDefault([this](int32_t ruleId, int32_t status,
                                      const std::vector<DrelRequestData>& data, int32_t* result) {
                    RuleCall call{ruleId, status, {}};
                    for (const DrelRequestData& d : data) {
                        call.resources.emplace_back(d.resId, d.resValue);
                    }
                    std::lock_guard<std::mutex> l(mutex);
                    calls.push_back(std::move(call));
                    *result = -1;
                    return ::ndk::ScopedAStatus::ok();
                });
    }

    std::vector<RuleCall> takeCalls() {
        std::lock_guard<std::mutex> l(mutex);
        std::vector<RuleCall> taken;
        taken.swap(calls);
        return taken;
    }

    std::mutex mutex;
    std::vector<RuleCall> calls;
};

constexpr int32_t kOp8 = 0x010103A0;  // sources 8 and 111
constexpr int32_t kOp102 = 0x01011070;
constexpr int32_t kUpgrade = 0x01011040;

TEST_F(WrapperNotifyTest, EachSourceAndSwitchValueSendsItsRuleControlOrNone) {
    const NotifyCase cases[] = {
            {8, 1, 1, "", {{8, 1, {{kOp8, "0"}}}}},
            {8, 2, 1, "", {{8, 2, {{kOp8, "0"}}}}},
            {8, 1, 0, "", {{8, 1, {}}}},
            {8, 2, 5, "", {{8, 2, {}}}},
            {8, 0, 1, "", {{8, 0, {}}}},
            {8, 3, 1, "", {}},
            {8, -1, 1, "", {}},
            {9, 1, 0, "", {{9, 1, {{0x010112F0, "enable 0"}, {0x01011910, "0"}}}}},
            {9, 0, 0, "", {{9, 0, {}}}},  // switching off sends an empty list
            {9, 2, 0, "", {}},
            {14, 1, 2, "abc", {{14, 1, {{kUpgrade, "2"}, {0x010115B0, "abc"}}}}},
            {14, 1, 0, "", {{14, 1, {}}}},
            {14, 0, 2, "abc", {{14, 0, {{kUpgrade, "-1"}, {kUpgrade, ""}}}}},
            {14, 2, 2, "abc", {}},
            // The switch in the low byte, param above it.
            {15, 1, 2, "", {{15, 0x201, {}}}},
            {15, -1, 0, "", {{15, 0xFF, {}}}},
            {15, 0, 3, "", {{15, 0x300, {}}}},
            {15, 1, -1, "", {{15, -255, {}}}},
            {15, 2, 2, "", {}},
            {15, -2, 2, "", {}},
            {102, 1, 0, "", {{102, 1, {{kOp102, "3"}}}}},
            {102, 1, 5, "", {{102, 1, {{kOp102, "5"}}}}},
            {102, 1, -1, "", {{102, 1, {{kOp102, "3"}}}}},
            {102, 1, -2, "", {{102, 1, {{kOp102, "-2"}}}}},
            {102, 0, 5, "", {{102, 0, {{kOp102, "0"}}}}},
            {102, 2, 5, "", {}},
            {111, -1, 0, "", {{111, -1, {{kOp8, "-1"}}}}},
            {111, 0, 0, "", {{111, 0, {{kOp8, "0"}}}}},
            {111, 1, 0, "", {{111, 1, {{kOp8, "1"}}}}},
            {111, 2, 0, "", {}},
            {111, -2, 0, "", {}},
            // Text rules: a non-empty text switches on with the builder's list, even an empty one.
            {130, 1, 0, "100,200", {{130, 1, {{0x010108A0, "100"}, {0x010108B0, "200"}}}}},
            {130, 1, 0, "-1", {{130, 1, {}}}},
            {130, 1, 0, "", {}},
            {130, 0, 0, "100,200", {{130, 0, {}}}},
            {130, 2, 0, "1", {}},
            {131, 1, 0, "colocation:1", {{131, 1, {{kUpgrade, "1"}}}}},
            {131, 1, 0, "", {}},
            {131, 0, 0, "colocation:1", {{131, 0, {}}}},
            {131, 3, 0, "colocation:1", {}},
            {9000, 1, 0, "1,2;", {{9000, 1, {{0x01010B10, "1"}, {0x01010B20, "2"}}}}},
            {9000, 1, 0, "", {}},
            {9000, 0, 0, "1,2;", {{9000, 0, {}}}},
            {9000, -1, 0, "1,2;", {}},
    };
    std::vector<NotifyCase> all(std::begin(cases), std::end(cases));
    for (int type : {-5, 0, 1, 7}) {
        // Rule id and status are the source and the type, whatever the type.
        for (int src : {1, 10, 11, 12, 16, 110, 129, 1000}) {
            all.push_back({src, type, 3, "x", {{src, type, {}}}});
        }
        // One shared rule: switched on with the source as its status, anything else is off.
        for (int src : {2, 3, 5, 6}) {
            all.push_back({src, type, 0, "", {{200, type == 1 ? src : 0, {}}}});
        }
    }
    // Every other source is no scenario of this device: ignored.
    for (int src : {0, -1, 4, 7, 13, 17, 101, 103, 109, 112, 128, 132, 999, 8999, 9001}) {
        all.push_back({src, 1, 1, "1,2;", {}});
    }
    for (const NotifyCase& c : all) {
        SCOPED_TRACE("src " + std::to_string(c.src) + ", type " + std::to_string(c.type) +
                     ", param " + std::to_string(c.param) + ", text \"" + c.text + "\"");
        EXPECT_EQ(0, QelNotifyWapper("scenario", c.src, c.type, c.param, 11, 12, c.text));
        EXPECT_EQ(c.calls, takeCalls());
    }
}

TEST_F(WrapperNotifyTest, LogsTheReportAndReturnsZeroWhateverTheRuleControlSays) {
    EXPECT_CALL(*service, ruleCtl(1000, 7, _, _)).WillOnce(ReturnServiceError(4));
    EXPECT_EQ(0, QelNotifyWapper("gameScene", 1000, 7, 0, 0, 0, ""));
    EXPECT_EQ(0, QelNotifyWapper("", 4, 1, 0, 0, 0, ""));
    const std::string tag = "[QEL_CLIENT_WRAPPER]";
    EXPECT_EQ(log.linesWithTag(tag),
              (std::vector<LogLine>{
                      {ANDROID_LOG_INFO, tag, "[QelNotifyWapper] gameScene, src:1000, type:7"},
                      {ANDROID_LOG_INFO, tag, "[QelNotifyWapper] none, src:4, type:1"}}));
}

}  // namespace
}  // namespace qel_test
