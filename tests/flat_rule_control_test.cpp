// Rule control and related system information: the records and arguments they pass, and the
// service's answer.

#include <gtest/gtest.h>

#include <vector>

#include "qel.h"
#include "support/flat_fixture.h"

namespace qel_test {
namespace {

using ::testing::_;
using ::testing::DoAll;
using ::testing::SaveArg;

class FlatRuleControlTest : public FlatFixture {};

TEST_F(FlatRuleControlTest, RuleCtlSendsOneRecordPerResourceWithValuesPresent) {
    std::vector<DrelRequestData> records;
    std::vector<DrelRequestData> none{wireRecord(1)};
    EXPECT_CALL(*service, ruleCtl(9, 1, _, _))
            .WillOnce(DoAll(SaveArg<2>(&records), ReturnResult4(17)));
    EXPECT_CALL(*service, ruleCtl(130, 0, _, _))
            .WillOnce(DoAll(SaveArg<2>(&none), ReturnResult4(0)));
    // Unpaired ids and values are sent as they are: nothing is validated here.
    std::vector<QelClient::Resource> resources{
            {0x010112F0, "enable 0"}, {0x01011910, std::nullopt}, {0, "7"}};
    EXPECT_EQ(17, qelRuleCtl(9, 1, resources));
    EXPECT_EQ((std::vector<DrelRequestData>{wireRecord(0x010112F0, 0, "enable 0"),
                                            wireRecord(0x01011910, 0, ""), wireRecord(0, 0, "7")}),
              records);
    EXPECT_EQ(0, qelRuleCtl(130, 0, {})) << "an empty list still calls the service";
    EXPECT_TRUE(none.empty());
    EXPECT_EQ(qelLines(), (std::vector<LogLine>{
                                  qelLine(ANDROID_LOG_INFO, "qelRuleCtl, ruleId:9, status:1"),
                                  qelLine(ANDROID_LOG_INFO, "qelRuleCtl, ruleId:130, status:0")}));
}

TEST_F(FlatRuleControlTest, SetRelatedSysInfoPassesBothArgumentsUnchangedWithoutLogging) {
    EXPECT_CALL(*service, setRelatedSysInfo(-3, 0x123456789ABCL, _)).WillOnce(ReturnResult3(21));
    EXPECT_EQ(21, setRelatedSysInfo(-3, 0x123456789ABCL));
    EXPECT_TRUE(qelLines().empty());
}

}  // namespace
}  // namespace qel_test
