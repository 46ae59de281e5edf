// qelctl's usage errors, a missing service, and JSON escaping.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "qelctl_internal.h"
#include "support/qelctl_fixture.h"

namespace qel_test {
namespace {

using ::testing::HasSubstr;

TEST_F(QelctlTest, UsageErrorsExitTwoBeforeTheServiceIsReached) {
    struct Case {
        std::vector<std::string> args;
        std::string message;
        std::string script = "";  // stdin, for "script -"
    };
    const Case cases[] = {
            {{}, "missing command"},
            {{"frobnicate"}, "unknown command 'frobnicate'"},
            {{"--verbose", "history"}, "unknown option '--verbose'"},
            {{"acquire", "action_cold_launch"}, "unknown action 'action_cold_launch'"},
            {{"acquire", "1", "--res", "0x01010010"}, "invalid resource '0x01010010'"},
            {{"--json", "acquire", "1", "--duration", "5s"}, "invalid duration '5s'"},
            {{"acquire", "1", "--pkg", "a", "--pkg", "b"}, "option --pkg given twice"},
            {{"release", "1", "2"}, "unexpected argument '2'"},
            {{"state", "12x", "--json"}, "invalid opcode '12x'"},
            {{"prop", "set", "a", std::string(256, 'x')}, "property values are at most 255"},
            {{"listen", "--json=1", "1"}, "option --json takes no value"},
            {{"thermal", "notify", "0=3"}, "thermal id 0 cannot carry a level"},
            {{"build", "targetload", "1", "--level", "2"}, "--level belongs to gameupgrade"},
            {{"script", "/nonexistent/qelctl.script"}, "cannot read script"},
            // A script is checked whole before its first line runs.
            {{"--json", "script", "-"},
             "script line 2: unterminated ' quote",
             "acquire -2 --res 0x01010010=1\nacquire 'unterminated\n"},
            {{"script", "-"}, "script line 1: script cannot run in a script", "script -\n"},
    };
    for (const auto& [args, message, script] : cases) {
        SCOPED_TRACE(message);
        QelctlRun r = run(args, script);
        EXPECT_EQ(2, r.status);
        EXPECT_THAT(r.err, HasSubstr("qelctl: " + message));
        EXPECT_EQ("", r.out);
        // Under --json the text is followed by one object that says the same.
        if (std::find(args.begin(), args.end(), "--json") == args.end()) {
            EXPECT_EQ(std::string::npos, r.err.find('{'));
            continue;
        }
        const auto fields = jsonObject(lines(r.err).back());
        EXPECT_EQ("false", fields.at("ok"));
        EXPECT_THAT(fields.at("error"), ::testing::StartsWith("\"" + message));
        EXPECT_EQ("2", fields.at("exit"));
    }
    EXPECT_EQ(0, hostbinder::serviceManagerCalls()) << "no look-up was made";
}

TEST_F(QelctlTest, AMissingServiceFailsAtOnce) {
    hostbinder::reset();
    QelctlRun r = run({"history"});
    EXPECT_EQ(1, r.status);
    EXPECT_THAT(r.err, HasSubstr("qelctl: history: service not available: "
                                 "vendor.quarn.hardware.drel.IDrel/default is not declared here"));
    // Declared but not running: the class API would wait for it forever.
    hostbinder::declareService("vendor.quarn.hardware.drel.IDrel/default");
    r = run({"--json", "script", "-"}, "build targetload 1\nprop get x\nrelease 1\n");
    EXPECT_EQ(1, r.status);
    EXPECT_THAT(r.err, HasSubstr("prop get: service not available: "));
    EXPECT_THAT(r.err, HasSubstr("is declared but not running\nqelctl: script stopped at line 2"));
    EXPECT_EQ("false", jsonObject(lines(r.out).at(1)).at("ok")) << "the line before it ran";
}

TEST(QelctlOutput, JsonStringsEscapeQuotesBackslashesAndControlBytes) {
    const char raw[] = "q\"b\\n\nr\rt\t\0\x01\x1f\x7f caf\xc3\xa9";
    const std::string text(raw, sizeof(raw) - 1);
    EXPECT_EQ(R"("q\"b\\n\nr\rt\t\u0000\u0001\u001f\u007f caf)"
              "\xc3\xa9\"",
              qelctl::jsonString(text));
    size_t end = 0;
    readJson(qelctl::jsonString(text), end);
}

}  // namespace
}  // namespace qel_test
