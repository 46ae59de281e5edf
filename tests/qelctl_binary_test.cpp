// The built qelctl binary, run once end to end as a shell script would run it: --embedded, a
// script from stdin, its output streams and its exit status.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>

namespace {

using ::testing::HasSubstr;

std::string readAndRemove(const std::string& path) {
    std::ostringstream content;
    content << std::ifstream(path).rdbuf();
    std::remove(path.c_str());
    return content.str();
}

TEST(QelctlBinary, RunsAScriptFromStdinAndExitsOneWhenALineFails) {
    const std::string base = ::testing::TempDir() + "qelctl_" + std::to_string(getpid());
    std::ofstream(base + ".in") << "listen 0x01010010\n"
                                   "acquire -2 --res 0x01010010=1800000\n"
                                   "release 2\n"
                                   "release 2\n";
    const std::string command = std::string(QELCTL_EMULATOR) + " " + QELCTL_BINARY +
                                " --embedded script - <" + base + ".in >" + base + ".out 2>" +
                                base + ".err";
    const int raw = std::system(command.c_str());
    ASSERT_TRUE(WIFEXITED(raw));
    EXPECT_EQ(1, WEXITSTATUS(raw));
    const std::string out = readAndRemove(base + ".out");
    EXPECT_THAT(out, HasSubstr("report (handle 1): 0x01010010=1800000\n"));
    EXPECT_THAT(out, HasSubstr("report (handle 1): 0x01010010=0\nreleased handle 2\n"));
    EXPECT_EQ(
            "qelctl: release: the service answered -1 (no live request has handle 2)\n"
            "qelctl: script stopped at line 4\n",
            readAndRemove(base + ".err"));
    std::remove((base + ".in").c_str());
}

}  // namespace
