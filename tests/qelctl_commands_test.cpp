// qelctl's commands against the example service, in-process: one script's results and what the
// service was given, the answers a script tests (exit status, --json fields), and the demo.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cstdlib>

#include "support/qelctl_fixture.h"

namespace qel_test {
namespace {

using ::testing::HasSubstr;

TEST_F(QelctlTest, AScriptRunsEveryServiceCommandInOneProcess) {
    QelctlRun r = run({"script", "-"},
                      "listen 0x01010010  # a boost seen by a listener\n"
                      "acquire ACTION_COLD_LAUNCH --pkg com.example\n"
                      "acquire -2 --identity me --res 0x01010010=7 --duration -5\n"
                      "state 0x01010010 0x01010020\n"
                      "release 3\n"
                      "history\n"
                      "prop set debug.level \"value with \\\"quotes\\\"\"\n"
                      "prop get debug.level\n"
                      "rule 130 1 --res 0x010108a0=85\n"
                      "notify 130 1 --text 85,90,95\n"
                      "dump history-off\n"
                      "thermal listen 1 2\n"
                      "thermal notify 2=hot 3=warm\n");
    ASSERT_EQ(0, r.status) << r.err;
    EXPECT_EQ("", r.err);
    for (const char* result :
         {"acquired ACTION_COLD_LAUNCH (command 1): handle 2\n",
          "report (handle 1): 0x01010010=7\nacquired resources: handle 3\n  0x01010010=7\n"
          "  held until released\n0x01010010=7\n0x01010020=0\n",
          "report (handle 1): 0x01010010=0\nreleased handle 3\nhistory: 2 entries\n",
          "debug.level=value with \"quotes\"\n", "    0x010108c0=95\n",
          "thermal report (handle 4): 2=hot\nthermal levels sent: 2=hot 3=warm (the service "
          "answered 1)\n",
          "stopped listening to 0x01010010 (handle 1): 2 reports\n"}) {
        EXPECT_THAT(r.out, HasSubstr(result));
    }
    EXPECT_EQ(1u, service->liveRequestCount());
    EXPECT_EQ(3u, service->ruleState(130).value().data.size()) << "the notify after the rule";
    EXPECT_FALSE(service->historyRecording());
    EXPECT_EQ("warm", service->thermalLevel(3));
}

TEST_F(QelctlTest, JsonResultsCarryTheFieldsAScriptReads) {
    QelctlRun r = run({"--json", "script", "-"},
                      "listen 0x01010010\n"
                      "acquire PRAXEL_ACTION_TOUCH_BOOST --res 0x01010010=5 --pkg \"a\\\"b\"\n"
                      "release 2\n"
                      "release 2\n"
                      "history\n");
    EXPECT_EQ(1, r.status);
    const std::vector<std::string> out = lines(r.out);
    ASSERT_EQ(7u, out.size()) << r.out;
    const std::vector<std::map<std::string, std::string>> expected = {
            {{"command", "\"listen\""}, {"ok", "true"}, {"handle", "1"}},
            {{"event", "\"report\""}, {"handle", "1"}},
            {{"command", "\"acquire\""}, {"cmdId", "37"}, {"handle", "2"}, {"pkg", R"("a\"b")"}},
            {{"event", "\"report\""}},
            {{"command", "\"release\""}, {"ok", "true"}, {"answer", "0"}},
            {{"command", "\"release\""}, {"ok", "false"}, {"answer", "-1"}},
            {{"event", "\"stopped\""}, {"reports", "2"}, {"unregister", "0"}},
    };
    for (size_t i = 0; i < out.size(); ++i) {
        const auto fields = jsonObject(out[i]);
        for (const auto& [key, value] : expected[i]) EXPECT_EQ(value, fields.at(key)) << out[i];
    }
    EXPECT_THAT(r.err, ::testing::EndsWith("qelctl: script stopped at line 4\n"));
}

TEST_F(QelctlTest, AnswersAScriptTests) {
    struct Case {
        std::vector<std::string> args;
        int status;
        std::string out;
        std::string err = "";
        std::string script = "";  // stdin, for "script -"
    };
    const Case cases[] = {
            {{"actions", "ZZZZ"}, 1, "", "qelctl: actions: no action name holds 'ZZZZ'\n"},
            {{"--json", "actions", "MULTI_SCENE"}, 0, R"("id":162,"name":"ACTION_CAMERA_MULTI_)"},
            // A new service has no history: an empty list, not a failure.
            {{"history"}, 0, "history: 0 entries\n"},
            {{"--json", "history"}, 0, R"({"command":"history","ok":true,"entries":[],"text":""})"},
            {{"script", "-"},
             0,
             "history: 1 entry\n  handle:1 type:8 timeout:0 pkg:none identity:none "
             "res:0x00000001=1\n",
             "",
             "acquire 1\nhistory\n"},
            {{"build", "targetload", "100,-1,300"}, 0, "no resources"},
            // Bytes that are not UTF-8 never reach the JSON.
            {{"--json", "build", "targetload", "85,\xff,95"},
             0,
             R"({"command":"build","ok":true,"builder":"targetload","text":"85,\ufffd,95",)"
             R"("resources":[{"opcode":"0x010108a0","id":16844960,"value":"85"},)"
             R"({"opcode":"0x010108b0","id":16844976,"value":"\ufffd"},)"
             R"({"opcode":"0x010108c0","id":16844992,"value":"95"}]})"
             "\n"},
            // The wrapper answers 0 whether it sent a rule control or not; qelctl says which.
            {{"notify", "999", "1", "--text", "85"},
             0,
             "notified src 999 type 1 param 0 text \"85\"\n"
             "  nothing sent: the wrapper makes no rule control of this scenario\n"},
            {{"--json", "notify", "130", "1", "--text", "85"},
             0,
             R"({"command":"notify","ok":true,"src":130,"type":1,"param":0,"text":"85",)"
             R"("resources":[{"opcode":"0x010108a0","id":16844960,"value":"85"}],)"
             R"("sent":{"rule":130,"status":1,"answer":0}})"
             "\n"},
            {{"notify", "9", "1"},
             0,
             "  sent rule control 9 with status 1\n  the service answered 0\n"},
            {{"acquire", "99999"},
             0,
             "acquired command 99999: handle ",
             "qelctl: warning: command id 99999 names no action in the catalogue (0 to 198, or "
             "-2 and -3 for resources); sent as it is\n"},
            {{"--help"}, 0, "0 (the default) or a negative\n      duration means held until"},
            {{"help"}, 0, "the service's affair. Texts\nsent to the service must be valid UTF-8."},
            {{"help", "prop"}, 0, "prop get\n      cannot tell it from a property set to an empty"},
            {{"build", "--help"}, 0, "groupmigrate:A-B (decimal, A greater than B)"},
            {{"thermal", "--help"}, 0, "answers how many thermal listeners the levels reached"},
    };
    for (const auto& [args, status, out, err, script] : cases) {
        SCOPED_TRACE(args.back());
        QelctlRun r = run(args, script);
        EXPECT_EQ(status, r.status);
        EXPECT_THAT(r.out, HasSubstr(out));
        EXPECT_EQ(err, r.err);
    }
    // The wrapper answers 0 even when its rule control fails; notify does not.
    using ::aidl::vendor::quarn::hardware::drel::DrelService;
    service->setFaultPlan(DrelService::FaultPlan{1, 100, DrelService::kException});
    const QelctlRun failed = run({"notify", "130", "0"});
    EXPECT_EQ(1, failed.status);
    EXPECT_EQ("qelctl: notify: the rule control failed (exception -5, transaction error 0)\n",
              failed.err);
}

TEST(QelctlBinary, TheDemoExitsZero) {
    const std::string command =
            std::string(QELCTL_EMULATOR) + " " + QELCTL_BINARY + " demo >/dev/null";
    const int raw = std::system(command.c_str());
    ASSERT_TRUE(WIFEXITED(raw));
    EXPECT_EQ(0, WEXITSTATUS(raw));
}

}  // namespace
}  // namespace qel_test
