// Diagnostics dumps and history switches, and service properties.

#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>

#include "support/class_fixture.h"

namespace qel_test {
namespace {

using ::testing::_;
using ::testing::DoAll;
using ::testing::SaveArg;

struct Diagnostic {
    const char* name;
    int (*call)();
    int32_t selector;
};

const Diagnostic kDiagnostics[] = {
        {"drelDumpToDoQueue", drelHalclient::drelDumpToDoQueue, 0x0},
        {"drelDumpRunMap", drelHalclient::drelDumpRunMap, 0x1},
        {"drelDumpActiveResMap", drelHalclient::drelDumpActiveResMap, 0x2},
        {"drelDumpResRequest", drelHalclient::drelDumpResRequest, 0x3},
        {"drelDumpResInfo", drelHalclient::drelDumpResInfo, 0x4},
        {"drelDumpSAInfo", drelHalclient::drelDumpSAInfo, 0x5},
        {"drelDumpPidFdList", drelHalclient::drelDumpPidFdList, 0x6},
        {"drelDumpPidfdMonitorMap", drelHalclient::drelDumpPidfdMonitorMap, 0x7},
        {"drelDumpResRecordList", drelHalclient::drelDumpResRecordList, 0x8},
        {"drelHistoryRequestRecordOn", drelHalclient::drelHistoryRequestRecordOn, 0xA},
        {"drelHistoryRequestRecordOff", drelHalclient::drelHistoryRequestRecordOff, 0xB},
};

class DiagnosticTest : public ClassApiFixture, public ::testing::WithParamInterface<Diagnostic> {};

TEST_P(DiagnosticTest, SendsItsSelectorAndReturnsZeroOnlyForAPositiveAnswer) {
    const Diagnostic& d = GetParam();
    DrelRequestParcel sent;
    EXPECT_CALL(*service, request(_, _))
            .WillOnce(DoAll(SaveArg<0>(&sent), ReturnResult(1)))
            .WillOnce(ReturnResult(7))
            .WillOnce(ReturnResult(0))
            .WillOnce(ReturnResult(-3));

    EXPECT_EQ(0, d.call());
    EXPECT_EQ(0, d.call()) << "the service's positive answer is not passed on";
    EXPECT_EQ(-1, d.call());
    EXPECT_EQ(-1, d.call());

    DrelRequestParcel expected;
    expected.requestType = 5;
    expected.param3 = 1;
    DrelRequestData record;
    record.resId = d.selector;  // and no strings
    expected.resources = {record};
    EXPECT_EQ(expected, sent);
    const LogLine entry = info(std::string("drel client ") + d.name);
    EXPECT_EQ(log.lines(), (std::vector<LogLine>{entry, entry, entry, entry}));
}

TEST_P(DiagnosticTest, AFailedCallLogsItsNameAndReturnsMinusOne) {
    const Diagnostic& d = GetParam();
    EXPECT_CALL(*service, request(_, _)).WillOnce(ReturnServiceError(1));
    EXPECT_EQ(-1, d.call());
    EXPECT_TRUE(
            log.contains(error(std::string(d.name) + "() failed: drel HAL service not available")));
}

INSTANTIATE_TEST_SUITE_P(Selectors, DiagnosticTest, ::testing::ValuesIn(kDiagnostics),
                         [](const ::testing::TestParamInfo<Diagnostic>& info) {
                             return std::string(info.param.name);
                         });

class PropertyTest : public ClassApiFixture {};

ACTION_P(ReplyValue, value) {
    *arg1 = value;
    return ::ndk::ScopedAStatus::ok();
}

TEST_F(PropertyTest, GetReturnsTheValueInANewBufferAndLogsIt) {
    EXPECT_CALL(*service, propertyGet("vendor.x", _)).WillOnce(ReplyValue(std::string("on")));
    char* value = drelHalclient::drelPropertyGet("vendor.x");
    ASSERT_NE(nullptr, value);
    EXPECT_STREQ("on", value);
    delete[] value;
    EXPECT_EQ(log.lines(), (std::vector<LogLine>{info("drel client drelPropertyGet"),
                                                 info("drelPropertyGet on ")}));
}

TEST_F(PropertyTest, GetOfA255ByteValueReturnsItWhole) {
    const std::string longest(255, 'v');
    EXPECT_CALL(*service, propertyGet(_, _)).WillOnce(ReplyValue(longest));
    char* value = drelHalclient::drelPropertyGet("p");
    EXPECT_EQ(longest, std::string(value));
    delete[] value;
}

TEST_F(PropertyTest, GetGivesAnEmptyStringForAnUnknownPropertyAFailureOrNoService) {
    EXPECT_CALL(*service, propertyGet(_, _)).WillOnce(ReturnOk()).WillOnce(ReturnServiceError(1));
    for (int i = 0; i < 2; ++i) {
        char* value = drelHalclient::drelPropertyGet("unknown");
        EXPECT_STREQ("", value);
        delete[] value;
    }
    EXPECT_TRUE(log.contains(error("drelPropertyGet() failed: drel HAL service not available")));
    hostbinder::reset();
    char* value = drelHalclient::drelPropertyGet("unknown");
    EXPECT_STREQ("", value);
    delete[] value;
}

// Logs every line to stderr, so that the dying child's last words can be matched.
void dieWithA256ByteProperty() {
    __android_log_set_logger(__android_log_stderr_logger);
    delete[] drelHalclient::drelPropertyGet("p");
}

TEST_F(PropertyTest, GetOfA256ByteValueEndsTheProcess) {
    ON_CALL(*service, propertyGet(_, _)).WillByDefault(ReplyValue(std::string(256, 'v')));
    setenv("ANDROID_LOG_TAGS", "*:v", 1);
    EXPECT_DEATH(dieWithA256ByteProperty(),
                 "E/DRELFramework-lib-vendor: drelPropertyGet value of 256 bytes does not fit in "
                 "256 bytes");
    unsetenv("ANDROID_LOG_TAGS");
}

TEST_F(PropertyTest, SetPassesNameAndValueAndReturnsTheServiceResult) {
    EXPECT_CALL(*service, propertySet("vendor.x", "1", _)).WillOnce(ReturnResult3(4));
    EXPECT_EQ(4, drelHalclient::drelPropertySet("vendor.x", "1"));
    EXPECT_CALL(*service, propertySet(_, _, _)).WillOnce(ReturnServiceError(1));
    EXPECT_EQ(-1, drelHalclient::drelPropertySet("vendor.x", "1"));
    EXPECT_EQ(log.lines(),
              (std::vector<LogLine>{
                      info("drel client drelPropertySet"), info("drel client drelPropertySet"),
                      error("drelPropertySet() failed: drel HAL service not available")}));
}

}  // namespace
}  // namespace qel_test
