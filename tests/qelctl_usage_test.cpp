// qelctl's usage errors, help, a missing service, and the pieces its output is made of.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "qelctl_internal.h"
#include "support/qelctl_fixture.h"

namespace qel_test {
namespace {

using ::testing::HasSubstr;
using ::testing::IsEmpty;

struct UsageCase {
    std::vector<std::string> args;
    std::string message;
};

void PrintTo(const UsageCase& c, std::ostream* os) {
    for (const std::string& arg : c.args) *os << "'" << arg << "' ";
}

class QelctlUsageTest : public QelctlTest, public ::testing::WithParamInterface<UsageCase> {};

TEST_P(QelctlUsageTest, IsRefusedWithExitTwoBeforeTheServiceIsReached) {
    QelctlRun r = run(GetParam().args);
    EXPECT_EQ(2, r.status);
    EXPECT_THAT(r.err, HasSubstr("qelctl: " + GetParam().message));
    EXPECT_THAT(r.err, HasSubstr("Try 'qelctl --help'."));
    EXPECT_THAT(r.out, IsEmpty());
    EXPECT_EQ(0, hostbinder::serviceManagerCalls()) << "no look-up was made";
    EXPECT_EQ(0u, service->liveRequestCount());
}

INSTANTIATE_TEST_SUITE_P(
        Commands, QelctlUsageTest,
        ::testing::Values(
                UsageCase{{}, "missing command"}, UsageCase{{"--json"}, "missing command"},
                UsageCase{{"frobnicate"}, "unknown command 'frobnicate'"},
                UsageCase{{"--verbose", "history"}, "unknown option '--verbose'"},
                UsageCase{{"acquire"}, "missing ACTION or command id"},
                UsageCase{{"acquire", "ACTION_NOPE"}, "unknown action 'ACTION_NOPE'"},
                UsageCase{{"acquire", "action_cold_launch"}, "unknown action"},
                UsageCase{{"acquire", "1", "--res", "0x01010010"},
                          "invalid resource '0x01010010': expected OPCODE=VALUE"},
                UsageCase{{"acquire", "1", "--res", "0x100000000=1"}, "invalid opcode"},
                UsageCase{{"acquire", "1", "--duration", "5s"}, "invalid duration '5s'"},
                UsageCase{{"acquire", "1", "--duration"}, "option --duration needs a value"},
                UsageCase{{"acquire", "1", "--pkg", "a", "--pkg", "b"}, "option --pkg given twice"},
                UsageCase{{"acquire", "1", "2"}, "unexpected argument '2'"},
                UsageCase{{"release", "abc"}, "invalid handle 'abc'"},
                UsageCase{{"release", "99999999999"}, "invalid handle"},
                UsageCase{{"rule", "130"}, "missing RULE and STATUS"},
                UsageCase{{"state"}, "missing OPCODE"},
                UsageCase{{"state", "--path"}, "missing PATH"},
                UsageCase{{"state", "12x"}, "invalid opcode '12x'"},
                UsageCase{{"history", "now"}, "unexpected argument 'now'"},
                UsageCase{{"pm"}, "missing MODE"},
                UsageCase{{"dump", "everything"}, "unknown dump 'everything'; one of: todoqueue"},
                UsageCase{{"prop", "get"}, "missing NAME"},
                UsageCase{{"prop", "put", "a", "b"}, "prop takes get or set"},
                UsageCase{{"prop", "set", "a", std::string(256, 'x')},
                          "property values are at most 255 bytes"},
                UsageCase{{"listen", "1", "--for", "-1"}, "invalid --for '-1'"},
                UsageCase{{"listen", "1", "--for=soon"}, "invalid --for 'soon'"},
                UsageCase{{"listen", "--json=1", "1"}, "option --json takes no value"},
                UsageCase{{"thermal", "notify", "1"}, "invalid thermal level '1'"},
                UsageCase{{"thermal", "notify", "0=3"}, "thermal id 0 cannot carry a level"},
                UsageCase{{"thermal", "notify", "1="}, "empty level"},
                UsageCase{{"thermal", "watch", "1"}, "thermal takes notify or listen"},
                UsageCase{{"notify", "130"}, "missing SRC and TYPE"},
                UsageCase{{"notify", "130", "x"}, "invalid type 'x'"},
                UsageCase{{"build", "targets", "1"}, "unknown builder 'targets'"},
                UsageCase{{"build", "targetload", "1", "--level", "2"},
                          "--level belongs to gameupgrade"},
                UsageCase{{"script"}, "script takes one FILE"},
                UsageCase{{"demo", "now"}, "demo takes no arguments"}));

TEST_F(QelctlTest, AMissingServiceFailsClearlyWithoutWaiting) {
    hostbinder::reset();
    QelctlRun r = run({"state", "1"});
    EXPECT_EQ(1, r.status);
    EXPECT_EQ(
            "qelctl: state: service not available: vendor.quarn.hardware.drel.IDrel/default is "
            "not declared here (on a host, add --embedded to run the example service in this "
            "process)\n",
            r.err);
    EXPECT_THAT(r.out, IsEmpty());

    // Declared but not running: the class API would wait for it forever.
    hostbinder::declareService(kQelctlInstance);
    r = run({"--json", "prop", "get", "x"});
    EXPECT_EQ(1, r.status);
    EXPECT_THAT(r.err, HasSubstr("is declared but not running"));
    Json line = JsonReader::parse(r.out);
    EXPECT_EQ("prop get", line["command"].string);
    EXPECT_FALSE(line["ok"].boolean);
    EXPECT_THAT(line["error"].string, HasSubstr("service not available"));

    r = run({"script", "-"}, "build targetload 1,2\nlisten 1\nrelease 1\n");
    EXPECT_EQ(1, r.status);
    EXPECT_EQ("0x010108a0=1\n0x010108b0=2\n", r.out) << "lines before the failing one ran";
    EXPECT_THAT(r.err, HasSubstr("qelctl: listen: service not available"));
    EXPECT_THAT(r.err, HasSubstr("qelctl: script stopped at line 2"));
}

TEST_F(QelctlTest, HelpDescribesEveryCommand) {
    QelctlRun r = run({"--help"});
    EXPECT_EQ(0, r.status);
    EXPECT_THAT(r.out, HasSubstr("usage: qelctl [--json] [--embedded] COMMAND"));
    for (const char* command :
         {"acquire ACTION|ID", "release HANDLE", "notify SRC TYPE", "rule RULE STATUS",
          "state OPCODE...", "state --path PATH...", "history", "pm MODE", "dump NAME",
          "prop get NAME", "prop set NAME VALUE", "listen OPCODE...", "thermal notify ID=LEVEL",
          "thermal listen ID...", "actions", "build targetload|colocation|gameadp|gameupgrade",
          "script FILE|-", "demo", "Exit status: 0 success, 1"}) {
        EXPECT_THAT(r.out, HasSubstr(command));
    }
    EXPECT_EQ(0, hostbinder::serviceManagerCalls());

    r = run({"listen", "--help"});
    EXPECT_EQ(0, r.status);
    EXPECT_THAT(r.out, HasSubstr("listen OPCODE... | listen --path PATH... [--for SECONDS]"));
    EXPECT_THAT(r.out, ::testing::Not(HasSubstr("acquire")));
    EXPECT_EQ(0, run({"-h", "acquire"}).status);
}

TEST(QelctlOutput, JsonStringsEscapeQuotesBackslashesAndControlBytes) {
    EXPECT_EQ(R"("plain")", qelctl::jsonString("plain"));
    EXPECT_EQ(R"("a\"b\\c")", qelctl::jsonString("a\"b\\c"));
    EXPECT_EQ(R"("l1\nl2\tx\r")", qelctl::jsonString("l1\nl2\tx\r"));
    EXPECT_EQ(R"("\u0001\u001f\u007f")", qelctl::jsonString("\x01\x1f\x7f"));
    EXPECT_EQ("\"caf\xc3\xa9\"", qelctl::jsonString("caf\xc3\xa9")) << "UTF-8 passes through";
    Json parsed = JsonReader::parse(qelctl::jsonString(std::string("\0x\"\\\n", 5)));
    EXPECT_EQ(std::string("\0x\"\\\n", 5), parsed.string);
}

TEST(QelctlOutput, NumbersAndResourcesParseStrictly) {
    EXPECT_EQ(-1, qelctl::parseOpcode("0xffffffff"));
    EXPECT_EQ(0x01010010, qelctl::parseOpcode("0x01010010"));
    EXPECT_EQ(16, qelctl::parseOpcode("16"));
    EXPECT_EQ(-2, qelctl::parseInt32("-2", "id"));
    EXPECT_THROW(qelctl::parseInt32("0x80000000", "id"), qelctl::UsageError);
    EXPECT_THROW(qelctl::parseInt32(" 1", "id"), qelctl::UsageError);
    EXPECT_THROW(qelctl::parseInt32("", "id"), qelctl::UsageError);
    QelClient::Resource r = qelctl::parseResource("0x10=a=b");
    EXPECT_EQ(0x10, r.resId);
    EXPECT_EQ("a=b", r.resValue) << "only the first = separates";
    EXPECT_EQ(std::vector<std::string>({"notify", "130", "1", "--text", "a b", "it's"}),
              qelctl::splitLine(R"(notify 130 1 --text "a b" "it's"  # comment)"));
    EXPECT_EQ(std::vector<std::string>({"x\"y", "a#b"}), qelctl::splitLine(R"("x\"y" a#b)"));
}

}  // namespace
}  // namespace qel_test
