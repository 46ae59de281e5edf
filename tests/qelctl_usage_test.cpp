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
    const std::string notUtf8 = " is not valid UTF-8 (byte ";
    const std::string utf8Only = "); the service takes UTF-8 text only";
    const Case cases[] = {
            {{}, "missing command"},
            {{"frobnicate"}, "unknown command 'frobnicate'"},
            {{"help", "frobnicate"}, "help takes one command name, not 'frobnicate'"},
            {{"--verbose", "history"}, "unknown option '--verbose'"},
            {{"acquire", "action_cold_launch"},
             "unknown action 'action_cold_launch' (qelctl actions lists them)"},
            {{"acquire", "1", "--res", "0x01010010"},
             "invalid resource '0x01010010': expected OPCODE=VALUE"},
            {{"--json", "acquire", "1", "--duration", "5s"},
             "invalid duration '5s': expected a 32-bit integer"},
            {{"acquire", "1", "--pkg", "a", "--pkg", "b"}, "option --pkg given twice"},
            // A forgotten value: the next option is not taken for it.
            {{"--json", "acquire", "1", "--pkg", "--res", "0x1=1"},
             "option --pkg needs a value, not the option '--res' (write --pkg=VALUE for such a "
             "value)"},
            // Text the parcel could not carry is named before any call.
            {{"acquire", "1", "--pkg", "a\xff"}, "--pkg" + notUtf8 + "0xff at offset 1" + utf8Only},
            {{"--json", "acquire", "1", "--identity", "\xc3("},
             "--identity" + notUtf8 + "0xc3 at offset 0" + utf8Only},
            {{"rule", "130", "1", "--res", "0x010108a0=8\xed\xa0\x80"},
             "the value of --res 0x010108a0" + notUtf8 + "0xed at offset 1" + utf8Only},
            {{"prop", "set", "name", "\xf4\x90\x80\x80"},
             "the property VALUE" + notUtf8 + "0xf4 at offset 0" + utf8Only},
            {{"release", "1", "2"}, "unexpected argument '2'"},
            {{"state", "12x", "--json"},
             "invalid opcode '12x': expected a number such as 0x01010010"},
            {{"prop", "set", "a", std::string(256, 'x')},
             "property values are at most 255 bytes (prop get could not read a longer one back)"},
            {{"listen", "--json=1", "1"}, "option --json takes no value"},
            {{"thermal", "notify", "0=3"}, "thermal id 0 cannot carry a level"},
            {{"build", "targetload", "1", "--level", "2"}, "--level belongs to gameupgrade"},
            {{"--json", "demo"}, "demo prints a narrated text only; run it without --json"},
            {{"script", "/nonexistent/qelctl.script"},
             "cannot read script '/nonexistent/qelctl.script': No such file or directory"},
            {{"script", "/"}, "cannot read script '/': Is a directory"},
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
        EXPECT_EQ("", r.out);
        // Under --json stderr holds one object that says it, and nothing else.
        if (std::find(args.begin(), args.end(), "--json") != args.end()) {
            EXPECT_EQ(R"({"ok":false,"error":)" + qelctl::jsonString(message) +
                              R"(,"exit":2})"
                              "\n",
                      r.err);
            jsonObject(lines(r.err).at(0));
        } else {
            EXPECT_THAT(r.err, ::testing::StartsWith("qelctl: " + message + "\n"));
        }
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

TEST(QelctlOutput, JsonStringsEscapeQuotesBackslashesAndControlBytesAndReplaceNonUtf8) {
    // After the control bytes: valid two- and four-byte sequences, then a stray byte, a cut
    // sequence, an overlong form, a surrogate and a code point above U+10FFFF.
    const char raw[] =
            "q\"b\\n\nr\rt\t\0\x01\x1f\x7f caf\xc3\xa9\xf0\x9f\x98\x80"
            "|\xff|\xe2\x82|\xc0\xaf|\xed\xa0\x80|\xf4\x90\x80\x80";
    const std::string text(raw, sizeof(raw) - 1);
    EXPECT_EQ(R"("q\"b\\n\nr\rt\t\u0000\u0001\u001f\u007f caf)"
              "\xc3\xa9\xf0\x9f\x98\x80"
              R"(|\ufffd|\ufffd\ufffd|\ufffd\ufffd|\ufffd\ufffd\ufffd|\ufffd\ufffd\ufffd\ufffd")",
              qelctl::jsonString(text));
    size_t end = 0;
    readJson(qelctl::jsonString(text), end);
}

}  // namespace
}  // namespace qel_test
