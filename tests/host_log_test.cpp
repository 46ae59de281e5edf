// The host liblog: capture through the logger, the minimum priority, the stderr default.

#include <android/log.h>
#include <gtest/gtest.h>
#include <stdlib.h>

#include "support/log_capture.h"

namespace qel_test {
namespace {

TEST(HostLogTest, TheInstalledLoggerReceivesFormattedLinesAtOrAboveTheMinimumPriority) {
    LogCapture capture;
    __android_log_print(ANDROID_LOG_ERROR, "T", "a %d %s", 7, "b");
    const int32_t previous = __android_log_set_minimum_priority(ANDROID_LOG_WARN);
    __android_log_print(ANDROID_LOG_INFO, "T", "dropped");
    __android_log_print(ANDROID_LOG_WARN, nullptr, "untagged");
    __android_log_set_minimum_priority(previous);
    EXPECT_EQ(capture.lines(),
              (std::vector<LogLine>{{ANDROID_LOG_ERROR, std::string("T"), "a 7 b"},
                                    {ANDROID_LOG_WARN, std::nullopt, "untagged"}}));
}

TEST(HostLogTest, WithoutALoggerLinesGoToStderrOnlyWhenAsked) {
    unsetenv("ANDROID_LOG_TAGS");
    ::testing::internal::CaptureStderr();
    __android_log_print(ANDROID_LOG_ERROR, "T", "silent");
    EXPECT_EQ("", ::testing::internal::GetCapturedStderr());

    setenv("ANDROID_LOG_TAGS", "T:i *:s", 1);
    ::testing::internal::CaptureStderr();
    __android_log_print(ANDROID_LOG_INFO, "T", "shown %d", 1);
    __android_log_print(ANDROID_LOG_DEBUG, "T", "below");
    __android_log_print(ANDROID_LOG_ERROR, "U", "other tag");
    EXPECT_EQ("I/T: shown 1\n", ::testing::internal::GetCapturedStderr());
    unsetenv("ANDROID_LOG_TAGS");
}

}  // namespace
}  // namespace qel_test
