// Diagnostics dumps and history switches, and service properties.

#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>

#include "support/class_fixture.h"

namespace qel_test {
namespace {

using ::testing::_;
using ::testing::DoAll;
using ::testing::SaveArg;

class DiagnosticsTest : public ClassApiFixture {};

TEST_F(DiagnosticsTest, EachSendsItsSelectorAndReturnsZeroOnlyForAPositiveAnswer) {
    const struct {
        const char* name;
        int (*call)();
        int32_t selector;
    } diagnostics[] = {
            {"drelDumpToDoQueue", Hal::drelDumpToDoQueue, 0x0},
            {"drelDumpRunMap", Hal::drelDumpRunMap, 0x1},
            {"drelDumpActiveResMap", Hal::drelDumpActiveResMap, 0x2},
            {"drelDumpResRequest", Hal::drelDumpResRequest, 0x3},
            {"drelDumpResInfo", Hal::drelDumpResInfo, 0x4},
            {"drelDumpSAInfo", Hal::drelDumpSAInfo, 0x5},
            {"drelDumpPidFdList", Hal::drelDumpPidFdList, 0x6},
            {"drelDumpPidfdMonitorMap", Hal::drelDumpPidfdMonitorMap, 0x7},
            {"drelDumpResRecordList", Hal::drelDumpResRecordList, 0x8},
            {"drelHistoryRequestRecordOn", Hal::drelHistoryRequestRecordOn, 0xA},
            {"drelHistoryRequestRecordOff", Hal::drelHistoryRequestRecordOff, 0xB},
    };
    for (const auto& d : diagnostics) {
        SCOPED_TRACE(d.name);
        log.clear();
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
        // Kind 5, param3 1, and one record holding only the selector.
        EXPECT_EQ(requestParcel(5, 0, 0, 1, false, 0, {wireRecord(d.selector, 0, std::nullopt)}),
                  sent);
        EXPECT_EQ(log.lines(), std::vector<LogLine>(4, info(std::string("drel client ") + d.name)));
    }
}

class PropertyTest : public ClassApiFixture {};

ACTION_P(ReplyValue, value) {
    *arg1 = value;
    return ::ndk::ScopedAStatus::ok();
}

TEST_F(PropertyTest, GetReturnsTheWholeValueInANewBufferAndAnEmptyOneForAnUnknownName) {
    const std::string longest(255, 'v');
    EXPECT_CALL(*service, propertyGet("vendor.x", _))
            .WillOnce(ReplyValue(std::string("on")))
            .WillOnce(ReplyValue(longest))
            .WillOnce(ReturnOk());
    std::vector<LogLine> lines;
    for (const std::string& expected : {std::string("on"), longest, std::string()}) {
        std::unique_ptr<char[]> value(Hal::drelPropertyGet("vendor.x"));
        EXPECT_EQ(expected, value.get());
        lines.push_back(info("drel client drelPropertyGet"));
        lines.push_back(info("drelPropertyGet " + expected + " "));
    }
    EXPECT_EQ(lines, log.lines());
}

// Logs every line to stderr, so that the dying child's last words can be matched.
void dieWithA256ByteProperty() {
    __android_log_set_logger(__android_log_stderr_logger);
    delete[] Hal::drelPropertyGet("p");
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
    EXPECT_EQ(4, Hal::drelPropertySet("vendor.x", "1"));
    EXPECT_EQ(log.lines(), std::vector<LogLine>{info("drel client drelPropertySet")});
}

}  // namespace
}  // namespace qel_test
