// qelctl's usage errors, help, a missing service, and the pieces its output is made of.

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
            {{"acquire"}, "missing ACTION or command id"},
            {{"acquire", "action_cold_launch"}, "unknown action 'action_cold_launch'"},
            {{"acquire", "1", "--res", "0x01010010"},
             "invalid resource '0x01010010': expected OPCODE=VALUE"},
            {{"acquire", "1", "--duration", "5s"}, "invalid duration '5s'"},
            {{"acquire", "1", "--pkg", "a", "--pkg", "b"}, "option --pkg given twice"},
            {{"acquire", "1", "2"}, "unexpected argument '2'"},
            {{"release", "99999999999"}, "invalid handle '99999999999'"},
            {{"rule", "130"}, "missing RULE and STATUS"},
            {{"state", "12x"}, "invalid opcode '12x'"},
            {{"dump", "everything"}, "unknown dump 'everything'; one of: todoqueue"},
            {{"prop", "put", "a", "b"}, "prop takes get or set"},
            {{"prop", "set", "a", std::string(256, 'x')}, "property values are at most 255 bytes"},
            {{"listen", "1", "--for=soon"}, "invalid --for 'soon'"},
            {{"listen", "--json=1", "1"}, "option --json takes no value"},
            {{"thermal", "notify", "1"}, "invalid thermal level '1'"},
            {{"thermal", "notify", "0=3"}, "thermal id 0 cannot carry a level"},
            {{"notify", "130", "x"}, "invalid type 'x'"},
            {{"build", "targetload", "1", "--level", "2"}, "--level belongs to gameupgrade"},
            {{"script"}, "script takes one FILE"},
            {{"script", "/nonexistent/qelctl.script"}, "cannot read script"},
            // A script is checked whole before its first line runs.
            {{"script", "-"},
             "script line 2: unterminated ' quote",
             "acquire -2 --res 0x01010010=1\nacquire 'unterminated\n"},
            {{"script", "-"}, "script line 1: script cannot run in a script", "script -\n"},
    };
    for (const auto& [args, message, script] : cases) {
        SCOPED_TRACE(message);
        QelctlRun r = run(args, script);
        EXPECT_EQ(2, r.status);
        EXPECT_THAT(r.err, HasSubstr("qelctl: " + message));
        if (script.empty()) {
            EXPECT_THAT(r.err, HasSubstr("Try 'qelctl --help'."));
        }
        EXPECT_EQ("", r.out);
    }
    EXPECT_EQ(0, hostbinder::serviceManagerCalls()) << "no look-up was made";
    EXPECT_EQ(0u, service->liveRequestCount());
}

TEST_F(QelctlTest, AMissingServiceFailsClearlyWithoutWaiting) {
    hostbinder::reset();
    QelctlRun r = run({"state", "1"});
    EXPECT_EQ(1, r.status);
    EXPECT_EQ(
            "qelctl: state: service not available: vendor.quarn.hardware.drel.IDrel/default is "
            "not declared here (on a host, add --embedded to run the example service in this "
            "process)\n",
            r.err);
    EXPECT_EQ("", r.out);

    // Declared but not running: the class API would wait for it forever.
    hostbinder::declareService(kQelctlInstance);
    r = run({"--json", "prop", "get", "x"});
    EXPECT_EQ(1, r.status);
    EXPECT_THAT(r.err, HasSubstr("is declared but not running"));
    EXPECT_THAT(r.out, HasSubstr(R"({"command":"prop get","ok":false,"error":"service not )"));

    r = run({"script", "-"}, "build targetload 1,2\nlisten 1\nrelease 1\n");
    EXPECT_EQ(1, r.status);
    EXPECT_EQ("0x010108a0=1\n0x010108b0=2\n", r.out) << "lines before the failing one ran";
    EXPECT_THAT(r.err, HasSubstr("qelctl: listen: service not available"));
    EXPECT_THAT(r.err, HasSubstr("qelctl: script stopped at line 2"));
}

TEST_F(QelctlTest, HelpDescribesEveryCommand) {
    QelctlRun r = run({"--help"});
    EXPECT_EQ(0, r.status);
    for (const char* command :
         {"usage: qelctl [--json] [--embedded] COMMAND", "acquire ACTION|ID", "release HANDLE",
          "notify SRC TYPE", "rule RULE STATUS", "state --path PATH...", "history", "pm MODE",
          "dump NAME", "prop set NAME VALUE", "listen OPCODE...", "thermal notify ID=LEVEL",
          "actions", "build targetload|colocation|gameadp|gameupgrade", "script FILE|-", "demo",
          "Exit status: 0 success, 1"}) {
        EXPECT_THAT(r.out, HasSubstr(command));
    }
    r = run({"listen", "--help"});
    EXPECT_EQ(0, r.status);
    EXPECT_THAT(r.out, HasSubstr("listen OPCODE... | listen --path PATH... [--for SECONDS]"));
    EXPECT_THAT(r.out, ::testing::Not(HasSubstr("acquire")));
    EXPECT_EQ(0, hostbinder::serviceManagerCalls());
}

TEST(QelctlOutput, JsonStringsEscapeQuotesBackslashesAndControlBytes) {
    EXPECT_EQ(R"("a\"b\\c")", qelctl::jsonString("a\"b\\c"));
    EXPECT_EQ(R"("l1\nl2\tx\r")", qelctl::jsonString("l1\nl2\tx\r"));
    EXPECT_EQ(R"("\u0000\u0001\u001f\u007f")",
              qelctl::jsonString(std::string("\0\x01\x1f\x7f", 4)));
    EXPECT_EQ("\"caf\xc3\xa9\"", qelctl::jsonString("caf\xc3\xa9")) << "UTF-8 passes through";
}

TEST(QelctlOutput, ScriptLinesSplitIntoWordsWithQuotesAndComments) {
    EXPECT_EQ(std::vector<std::string>({"notify", "130", "1", "--text", "a b", "it's"}),
              qelctl::splitLine(R"(notify 130 1 --text "a b" "it's"  # comment)"));
    EXPECT_EQ(std::vector<std::string>({"x\"y", "a#b"}), qelctl::splitLine(R"("x\"y" a#b)"));
    EXPECT_EQ("a=b", qelctl::parseResource("0x10=a=b").resValue) << "only the first = separates";
}

}  // namespace
}  // namespace qel_test
