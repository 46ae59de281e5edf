// qelctl's commands end to end, in-process, against the example service: output, --json and
// exit codes.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <thread>

#include "halclient.h"
#include "qel.h"
#include "support/qelctl_fixture.h"

namespace qel_test {
namespace {

using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;

constexpr int32_t kCpuBoost = 0x01010010;

std::string valueOf(int32_t opcode) {
    std::string value = "<none>";
    QelResStateRequest(opcode, value);
    return value;
}

TEST_F(QelctlTest, AcquireByActionNameHoldsItsResourcesAndPrintsTheHandle) {
    QelctlRun r = run({"acquire", "ACTION_COLD_LAUNCH", "--pkg", "com.example", "--identity",
                       "demo", "--res", "0x01010010=1800000"});
    ASSERT_EQ(0, r.status) << r.err;
    EXPECT_THAT(r.out, HasSubstr("acquired ACTION_COLD_LAUNCH (command 1): handle 1\n"));
    EXPECT_THAT(r.out, HasSubstr("  0x01010010=1800000\n  held until released\n"));
    EXPECT_THAT(r.err, IsEmpty());
    EXPECT_EQ("1800000", valueOf(kCpuBoost));
    EXPECT_EQ("1", valueOf(1)) << "the command id travels as the leading record";

    r = run({"--json", "acquire", "PRAXEL_ACTION_TOUCH_BOOST", "--duration", "60000"});
    ASSERT_EQ(0, r.status) << r.err;
    std::vector<Json> lines = jsonLines(r.out);
    ASSERT_EQ(1u, lines.size());
    EXPECT_EQ("acquire", lines[0]["command"].string);
    EXPECT_TRUE(lines[0]["ok"].boolean);
    EXPECT_EQ("ACTION_TOUCH_BOOST", lines[0]["action"].string);
    EXPECT_EQ(37, lines[0]["cmdId"].number);
    EXPECT_EQ(2, lines[0]["handle"].number);
    EXPECT_EQ(60000, lines[0]["duration"].number);
    EXPECT_EQ(0u, lines[0]["resources"].array.size());
    EXPECT_EQ(2u, service->liveRequestCount());
}

TEST_F(QelctlTest, AcquireByCommandIdChoosesTheRequestKind) {
    ASSERT_EQ(0, run({"acquire", "5", "--pkg", "p"}).status);
    QelctlRun r = run({"acquire", "-2", "--identity", "me", "--res", "0x01010010=7"});
    ASSERT_EQ(0, r.status) << r.err;
    EXPECT_THAT(r.out, HasSubstr("acquired resources: handle 2"));
    ASSERT_EQ(0, run({"acquire", "-3", "--res", "0x01010010=8"}).status);

    std::string history;
    ASSERT_EQ(0, QelGetHistory(history));
    EXPECT_THAT(history, HasSubstr("handle:1 type:8 timeout:0 pkg:p identity:none"));
    EXPECT_THAT(history, HasSubstr("handle:2 type:1 timeout:0 pkg:none identity:me "
                                   "res:0x01010010=7"));
    EXPECT_THAT(history, HasSubstr("handle:3 type:12"));
}

TEST_F(QelctlTest, ReleaseGivesTheHandleBackAndFailsForAnUnknownOne) {
    ASSERT_EQ(0, run({"acquire", "-2", "--res", "0x01010010=9"}).status);
    QelctlRun r = run({"release", "1"});
    ASSERT_EQ(0, r.status) << r.err;
    EXPECT_EQ("released handle 1\n", r.out);
    EXPECT_EQ("0", valueOf(kCpuBoost));

    r = run({"release", "1"});
    EXPECT_EQ(1, r.status);
    EXPECT_THAT(r.err, HasSubstr("qelctl: release: the service answered -1"));
    EXPECT_THAT(r.out, IsEmpty());

    r = run({"release", "1", "--json"});
    EXPECT_EQ(1, r.status);
    Json line = JsonReader::parse(r.out);
    EXPECT_FALSE(line["ok"].boolean);
    EXPECT_EQ(-1, line["answer"].number);
    EXPECT_THAT(line["error"].string, HasSubstr("answered -1"));
}

TEST_F(QelctlTest, RuleSendsTheStatusAndResourcesToTheService) {
    QelctlRun r = run({"rule", "130", "1", "--res", "0x010108a0=85", "--res", "0x010108b0="});
    ASSERT_EQ(0, r.status) << r.err;
    EXPECT_THAT(r.out, HasSubstr("rule 130 set to status 1 (the service answered 0)"));
    auto rule = service->ruleState(130);
    ASSERT_TRUE(rule.has_value());
    EXPECT_EQ(1, rule->status);
    ASSERT_EQ(2u, rule->data.size());
    EXPECT_EQ(0x010108a0, rule->data[0].resId);
    EXPECT_EQ("85", rule->data[0].resValue);
    EXPECT_EQ("", rule->data[1].resValue) << "an empty value is sent present";
}

TEST_F(QelctlTest, StateReportsValuesInForceByOpcodeAndByPath) {
    ASSERT_EQ(0, run({"acquire", "-2", "--res", "0x01010010=1800000"}).status);
    ASSERT_LE(1,
              drelHalclient::drel_resctl_request_by_path(0, 0, {"/sys/gpu/min"}, {"500"}, 0, 0, 0));
    QelctlRun r = run({"state", "0x01010010", "0x01010020"});
    ASSERT_EQ(0, r.status) << r.err;
    EXPECT_EQ("0x01010010=1800000\n0x01010020=0\n", r.out);

    r = run({"state", "--path", "/sys/gpu/min", "/sys/gpu/max"});
    ASSERT_EQ(0, r.status) << r.err;
    EXPECT_EQ("/sys/gpu/min=500\n/sys/gpu/max=0\n", r.out);

    r = run({"state", "0xffffffff", "--json"});
    ASSERT_EQ(0, r.status) << r.err;
    Json line = JsonReader::parse(r.out);
    ASSERT_EQ(1u, line["resources"].array.size());
    EXPECT_EQ("0xffffffff", line["resources"].array[0]["opcode"].string);
    EXPECT_EQ(-1, line["resources"].array[0]["id"].number);
    EXPECT_EQ("0", line["resources"].array[0]["value"].string);
}

TEST_F(QelctlTest, HistoryListsEveryRecordedRequest) {
    QelctlRun r = run({"history"});
    EXPECT_EQ(1, r.status) << "an empty history is no answer";
    EXPECT_THAT(r.err, HasSubstr("qelctl: history: no history"));

    ASSERT_EQ(0, run({"acquire", "ACTION_LAUNCH", "--pkg", "a;b"}).status);
    ASSERT_EQ(0, run({"acquire", "-2", "--res", "0x01010010=1"}).status);
    r = run({"history"});
    ASSERT_EQ(0, r.status) << r.err;
    EXPECT_THAT(r.out, HasSubstr("history: 3 entries\n  handle:1 type:8 timeout:0 pkg:a\n"))
            << "the history text is cut at ';', so a ';' in a package splits its entry";

    r = run({"history", "--json"});
    ASSERT_EQ(0, r.status);
    Json line = JsonReader::parse(r.out);
    EXPECT_EQ(3u, line["entries"].array.size());
    EXPECT_THAT(line["text"].string, HasSubstr("start:handle:1"));
}

TEST_F(QelctlTest, PowerModeIsTheLeadingNumberOfTheModesValue) {
    ASSERT_EQ(0, run({"acquire", "-2", "--res", "3=2 (saver)"}).status);
    QelctlRun r = run({"pm", "3"});
    ASSERT_EQ(0, r.status) << r.err;
    EXPECT_EQ("power mode 3: status 2\n", r.out);
    r = run({"--json", "pm", "4"});
    ASSERT_EQ(0, r.status);
    EXPECT_EQ(0, JsonReader::parse(r.out)["status"].number);
}

TEST_F(QelctlTest, EveryDumpNameReachesTheService) {
    for (const char* name : {"todoqueue", "runmap", "activeresmap", "resrequest", "resinfo",
                             "sainfo", "pidfdlist", "pidfdmonitormap", "resrecordlist"}) {
        QelctlRun r = run({"dump", name});
        EXPECT_EQ(0, r.status) << name << ": " << r.err;
        EXPECT_THAT(r.out, HasSubstr(std::string("dump ") + name + ": done")) << name;
    }
    ASSERT_EQ(0, run({"dump", "history-off"}).status);
    EXPECT_FALSE(service->historyRecording());
    ASSERT_EQ(0, run({"dump", "history-on", "--json"}).status);
    EXPECT_TRUE(service->historyRecording());
}

TEST_F(QelctlTest, PropertiesRoundTrip) {
    QelctlRun r = run({"prop", "set", "debug.level", "value with \"quotes\""});
    ASSERT_EQ(0, r.status) << r.err;
    r = run({"prop", "get", "debug.level"});
    ASSERT_EQ(0, r.status) << r.err;
    EXPECT_EQ("debug.level=value with \"quotes\"\n", r.out);
    r = run({"--json", "prop", "get", "debug.level"});
    EXPECT_EQ("value with \"quotes\"", JsonReader::parse(r.out)["value"].string);
    EXPECT_EQ("unset=\n", run({"prop", "get", "unset"}).out);
}

TEST_F(QelctlTest, ListenForAWhileRegistersAndUnregisters) {
    QelctlRun r = run({"listen", "0x01010010", "0x01010020", "--for", "0"});
    ASSERT_EQ(0, r.status) << r.err;
    EXPECT_EQ(
            "listening to 0x01010010 0x01010020 (handle 1)\n"
            "stopped listening to 0x01010010 0x01010020 (handle 1): 0 reports\n",
            r.out);
    // Unregistered: the same opcodes may be registered again.
    r = run({"--json", "listen", "0x01010010", "0x01010020", "--for", "0"});
    ASSERT_EQ(0, r.status) << r.err;
    std::vector<Json> lines = jsonLines(r.out);
    ASSERT_EQ(2u, lines.size());
    EXPECT_EQ(2, lines[0]["handle"].number);
    EXPECT_EQ("0x01010020", lines[0]["opcodes"].array[1].string);
    EXPECT_EQ("stopped", lines[1]["event"].string);
    EXPECT_EQ(0, lines[1]["unregister"].number);
}

TEST_F(QelctlTest, ListenUntilStoppedPrintsEachReportAsItArrives) {
    LockedBuffer outBuffer;
    std::ostream out(&outBuffer);
    std::ostringstream err;
    std::istringstream in;
    int status = -1;
    std::thread listener([&] {
        status = qelctl::runQelctl({"listen", "--path", "/sys/gpu/min"}, out, err, in);
    });
    auto waitForText = [&](const std::string& text) {
        for (int i = 0; i < 1000 && outBuffer.text().find(text) == std::string::npos; ++i) {
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        }
        return outBuffer.text().find(text) != std::string::npos;
    };
    ASSERT_TRUE(waitForText("(handle 1); Ctrl-C stops\n")) << outBuffer.text();
    EXPECT_LE(0,
              drelHalclient::drel_resctl_request_by_path(0, 0, {"/sys/gpu/min"}, {"600"}, 0, 0, 0));
    EXPECT_TRUE(waitForText("report (handle 1): /sys/gpu/min=600\n")) << outBuffer.text();
    qelctl::requestStop();
    listener.join();
    EXPECT_EQ(0, status) << err.str();
    EXPECT_THAT(outBuffer.text(), HasSubstr("stopped listening to /sys/gpu/min (handle 1): 1 "
                                            "report\n"));
}

TEST_F(QelctlTest, ThermalNotifyReachesThermalListenersInAScript) {
    QelctlRun r = run({"script", "-"},
                      "thermal listen 1 2\n"
                      "thermal notify 2=hot 1=warm\n"
                      "thermal notify 3=cold --json\n");
    ASSERT_EQ(0, r.status) << r.err;
    EXPECT_EQ(
            "listening to thermal 1 2 (handle 1)\n"
            "thermal report (handle 1): 2=hot 1=warm\n"
            "thermal levels sent: 2=hot 1=warm (the service answered 1)\n"
            "{\"command\":\"thermal notify\",\"ok\":true,\"levels\":[{\"id\":3,\"level\":\"cold\"}],"
            "\"answer\":0}\n"
            "stopped listening to thermal 1 2 (handle 1): 1 report\n",
            r.out);
    EXPECT_EQ("cold", service->thermalLevel(3));
}

TEST_F(QelctlTest, AScriptAcquiresListensAndReleasesInOneProcess) {
    QelctlRun r = run({"script", "-"},
                      "# a boost seen by a listener\n"
                      "listen 0x01010010\n"
                      "acquire ACTION_COLD_LAUNCH --res 0x01010010=1800000  # boost\n"
                      "state 0x01010010\n"
                      "release 2\n");
    ASSERT_EQ(0, r.status) << r.err;
    EXPECT_EQ(
            "listening to 0x01010010 (handle 1)\n"
            "report (handle 1): 0x01010010=1800000\n"
            "acquired ACTION_COLD_LAUNCH (command 1): handle 2\n"
            "  0x01010010=1800000\n"
            "  held until released\n"
            "0x01010010=1800000\n"
            "report (handle 1): 0x01010010=0\n"
            "released handle 2\n"
            "stopped listening to 0x01010010 (handle 1): 2 reports\n",
            r.out);

    r = run({"--json", "script", "-"}, "listen 0x01010010\nacquire -2 --res 0x01010010=5\n");
    ASSERT_EQ(0, r.status) << r.err;
    std::vector<Json> lines = jsonLines(r.out);
    ASSERT_EQ(4u, lines.size());
    EXPECT_EQ("report", lines[1]["event"].string);
    EXPECT_EQ("5", lines[1]["resources"].array[0]["value"].string);
    EXPECT_EQ("acquire", lines[2]["command"].string);
    EXPECT_EQ(1, lines[3]["reports"].number);
}

TEST_F(QelctlTest, AScriptIsCheckedWholeBeforeItsFirstLineRuns) {
    QelctlRun r = run({"script", "-"}, "acquire -2 --res 0x01010010=1\nacquire 'unterminated\n");
    EXPECT_EQ(2, r.status);
    EXPECT_THAT(r.err, HasSubstr("qelctl: script line 2: unterminated ' quote"));
    EXPECT_EQ(0u, service->liveRequestCount());
    EXPECT_EQ(0, hostbinder::serviceManagerCalls());

    r = run({"script", "-"}, "acquire -2 --res 0x01010010=1\nrelease 42\nrelease 1\n");
    EXPECT_EQ(1, r.status);
    EXPECT_THAT(r.err, HasSubstr("qelctl: script stopped at line 2"));
    EXPECT_EQ(1u, service->liveRequestCount()) << "the line after the failure did not run";

    EXPECT_EQ(2, run({"script", "-"}, "script -\n").status);
    EXPECT_EQ(2, run({"script", "/nonexistent/qelctl.script"}).status);
}

TEST_F(QelctlTest, NotifyTurnsAScenarioTextIntoResources) {
    QelctlRun r = run({"notify", "130", "1", "--text", "85,90,95"});
    ASSERT_EQ(0, r.status) << r.err;
    EXPECT_EQ(
            "notified src 130 type 1 param 0 text \"85,90,95\"\n"
            "  resources made from it:\n"
            "    0x010108a0=85\n"
            "    0x010108b0=90\n"
            "    0x010108c0=95\n",
            r.out);
    auto rule = service->ruleState(130);
    ASSERT_TRUE(rule.has_value());
    EXPECT_EQ(1, rule->status);
    ASSERT_EQ(3u, rule->data.size());
    EXPECT_EQ("95", rule->data[2].resValue);

    r = run({"--json", "notify", "15", "1", "--param", "2"});
    ASSERT_EQ(0, r.status);
    Json line = JsonReader::parse(r.out);
    EXPECT_FALSE(line.has("resources"));
    EXPECT_EQ(0x201, service->ruleState(15)->status);
}

TEST_F(QelctlTest, ActionsListTheCatalogueWithIdsAndRepeats) {
    hostbinder::reset();  // no service is needed
    QelctlRun r = run({"actions"});
    ASSERT_EQ(0, r.status) << r.err;
    std::vector<std::string> lines = linesOf(r.out);
    ASSERT_EQ(199u, lines.size());
    EXPECT_EQ("0\tACTION_LAUNCH", lines[0]);
    EXPECT_EQ("1\tACTION_COLD_LAUNCH", lines[1]);
    EXPECT_EQ(
            "106\tACTION_CAMERA_APS_CAPTURE_L1\t(a repeat of 91, which is what the name acquires)",
            lines[106]);

    r = run({"--json", "actions", "MULTI_SCENE"});
    ASSERT_EQ(0, r.status);
    Json line = JsonReader::parse(r.out);
    ASSERT_EQ(2u, line["actions"].array.size());
    EXPECT_EQ(102, line["actions"].array[0]["id"].number);
    EXPECT_EQ(102, line["actions"].array[1]["sameAs"].number);
}

TEST_F(QelctlTest, BuildPrintsWhatEachBuilderMakesWithoutAService) {
    hostbinder::reset();
    EXPECT_EQ("0x010108a0=100\n0x010108b0=200\n0x010108c0=300\n",
              run({"build", "targetload", "100,200,300"}).out);
    EXPECT_EQ("0x01010fb0=6\n0x01010fc0=3\n", run({"build", "colocation", "groupmigrate:6-3"}).out);
    EXPECT_EQ("0x01010b10=1\n0x01010b90=5\n", run({"build", "gameadp", "1,;5,"}).out);
    EXPECT_EQ("0x01011040=2\n0x010115b0=abc\n",
              run({"build", "gameupgrade", "abc", "--level", "2"}).out);
    QelctlRun r = run({"build", "targetload", "100,-1,300"});
    EXPECT_EQ(0, r.status);
    EXPECT_EQ("no resources (the text holds no usable item)\n", r.out);

    r = run({"--json", "build", "colocation", "colocation:1"});
    ASSERT_EQ(0, r.status);
    Json line = JsonReader::parse(r.out);
    EXPECT_EQ("colocation", line["builder"].string);
    ASSERT_EQ(1u, line["resources"].array.size());
    EXPECT_EQ("0x01011040", line["resources"].array[0]["opcode"].string);
    EXPECT_EQ("1", line["resources"].array[0]["value"].string);
    EXPECT_EQ(0, hostbinder::serviceManagerCalls());
}

TEST_F(QelctlTest, EmbeddedRunsTheExampleServiceForTheCommandOnly) {
    hostbinder::reset();
    QelctlRun r = run({"--embedded", "acquire", "ACTION_COLD_LAUNCH"});
    ASSERT_EQ(0, r.status) << r.err;
    EXPECT_THAT(r.out, HasSubstr("handle 1"));
    r = run({"state", "1", "--embedded"});
    ASSERT_EQ(0, r.status) << r.err;
    EXPECT_EQ("0x00000001=0\n", r.out) << "each run has a new service";
    ::ndk::SpAIBinder left(AServiceManager_checkService(kQelctlInstance));
    EXPECT_EQ(nullptr, left.get()) << "the embedded service ends with the run";
}

TEST_F(QelctlTest, TheDemoRunsEveryStepAndSucceeds) {
    hostbinder::reset();
    QelctlRun r = run({"demo"});
    ASSERT_EQ(0, r.status) << r.out << r.err;
    EXPECT_THAT(r.err, IsEmpty());
    EXPECT_THAT(r.out, HasSubstr("[1/8] "));
    EXPECT_THAT(r.out, HasSubstr("[8/8] "));
    EXPECT_THAT(r.out, HasSubstr("report (handle 1): 0x01010010=1800000\n"));
    EXPECT_THAT(r.out, HasSubstr("the service now holds rule 130 at status 1 with 0x010108a0=85 "
                                 "0x010108b0=90 0x010108c0=95\n"));
    EXPECT_THAT(r.out, HasSubstr("-- registering a new example service under the same name\n"));
    EXPECT_THAT(r.out, HasSubstr("demo: every step behaved as expected\n"));
}

}  // namespace
}  // namespace qel_test
