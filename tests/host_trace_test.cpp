// The host libcutils trace: the mask set by tests, and the device's marker text.

#include <cutils/trace.h>
#include <gtest/gtest.h>
#include <hostbinder/hostbinder.h>
#include <unistd.h>

namespace {

TEST(HostTraceTest, SectionsWriteTheDeviceMarkerText) {
    hostbinder::reset();  // no markers or tags left by an earlier test
    hostbinder::setTraceTags(ATRACE_TAG_ALWAYS);
    EXPECT_EQ(1u, atrace_get_enabled_tags());
    atrace_begin(ATRACE_TAG_ALWAYS, "name with  spaces");
    atrace_end(ATRACE_TAG_ALWAYS);
    std::string pid = std::to_string(getpid());
    EXPECT_EQ((std::vector<std::string>{"B|" + pid + "|name with  spaces", "E|" + pid}),
              hostbinder::traceMarkers());
    hostbinder::clearTrace();
    EXPECT_TRUE(hostbinder::traceMarkers().empty());
    hostbinder::reset();
    EXPECT_EQ(0u, atrace_get_enabled_tags());
}

}  // namespace
