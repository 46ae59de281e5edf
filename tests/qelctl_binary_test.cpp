// The built qelctl binary: exit statuses, a missing service, --embedded and scripts from stdin,
// as a shell script would see them.

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

struct Result {
    int status;
    std::string out;
    std::string err;
};

// Runs the binary with arguments (already shell-quoted) and stdin text.
Result runBinary(const std::string& args, const std::string& input = "") {
    const std::string base = ::testing::TempDir() + "qelctl_" + std::to_string(getpid());
    std::ofstream(base + ".in") << input;
    const std::string command = std::string(QELCTL_EMULATOR) + " " + QELCTL_BINARY + " " + args +
                                " <" + base + ".in >" + base + ".out 2>" + base + ".err";
    const int raw = std::system(command.c_str());
    Result result{WIFEXITED(raw) ? WEXITSTATUS(raw) : -1, "", ""};
    for (auto [suffix, text] : {std::pair{".out", &result.out}, std::pair{".err", &result.err}}) {
        std::ostringstream content;
        content << std::ifstream(base + suffix).rdbuf();
        *text = content.str();
        std::remove((base + suffix).c_str());
    }
    std::remove((base + ".in").c_str());
    return result;
}

TEST(QelctlBinary, ExitsZeroOneOrTwoAndRunsScriptsFromStdin) {
    Result help = runBinary("--help");
    EXPECT_EQ(0, help.status);
    EXPECT_THAT(help.out, HasSubstr("usage: qelctl"));
    Result usage = runBinary("acquire");
    EXPECT_EQ(2, usage.status);
    EXPECT_EQ("qelctl: missing ACTION or command id\nTry 'qelctl --help'.\n", usage.err);
    Result missing = runBinary("history");
    EXPECT_EQ(1, missing.status);
    EXPECT_THAT(missing.err, HasSubstr("qelctl: history: service not available"));
    EXPECT_EQ("", missing.out);

    Result script = runBinary("--embedded script -",
                              "listen 0x01010010\n"
                              "acquire -2 --res 0x01010010=1800000\n"
                              "release 2\n"
                              "release 2\n");
    EXPECT_EQ(1, script.status);
    EXPECT_THAT(script.out, HasSubstr("report (handle 1): 0x01010010=1800000\n"));
    EXPECT_THAT(script.out, HasSubstr("report (handle 1): 0x01010010=0\n"));
    EXPECT_THAT(script.err, HasSubstr("qelctl: script stopped at line 4"));
}

}  // namespace
