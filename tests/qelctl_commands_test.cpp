// qelctl's commands end to end, in-process, against the example service: output, --json and
// exit codes.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <condition_variable>
#include <mutex>
#include <streambuf>
#include <thread>

#include "halclient.h"
#include "support/qelctl_fixture.h"

namespace qel_test {
namespace {

using ::testing::HasSubstr;

TEST_F(QelctlTest, AScriptRunsEveryServiceCommandInOneProcess) {
    QelctlRun r = run({"script", "-"},
                      "# a boost seen by a listener\n"
                      "listen 0x01010010\n"
                      "acquire ACTION_COLD_LAUNCH --pkg com.example --identity demo "
                      "--res 0x01010010=1800000  # boost\n"
                      "acquire -2 --identity me --res 0x01010010=7 --duration 60000\n"
                      "acquire -3 --res \"3=2 (saver)\"\n"
                      "state 0x01010010 0x01010020\n"
                      "release 3\n"
                      "release 2\n"
                      "pm 3\n"
                      "history\n"
                      "prop set debug.level \"value with \\\"quotes\\\"\"\n"
                      "prop get debug.level\n"
                      "rule 130 1 --res 0x010108a0=85 --res 0x010108b0=\n"
                      "notify 130 1 --text 85,90,95\n"
                      "dump runmap\n"
                      "dump history-off\n"
                      "thermal listen 1 2\n"
                      "thermal notify 2=hot 1=warm\n");
    ASSERT_EQ(0, r.status) << r.err;
    EXPECT_EQ("", r.err);
    EXPECT_EQ(
            "listening to 0x01010010 (handle 1)\n"
            "report (handle 1): 0x01010010=1800000\n"
            "acquired ACTION_COLD_LAUNCH (command 1): handle 2\n"
            "  0x01010010=1800000\n"
            "  held until released\n"
            "report (handle 1): 0x01010010=7\n"
            "acquired resources: handle 3\n"
            "  0x01010010=7\n"
            "  expires after 60000 ms\n"
            "acquired platform resources: handle 4\n"
            "  0x00000003=2 (saver)\n"
            "  held until released\n"
            "0x01010010=7\n"
            "0x01010020=0\n"
            "report (handle 1): 0x01010010=1800000\n"
            "released handle 3\n"
            "report (handle 1): 0x01010010=0\n"
            "released handle 2\n"
            "power mode 3: status 2\n"
            "history: 3 entries\n"
            "  handle:2 type:8 timeout:0 pkg:com.example identity:demo "
            "res:0x00000001=1,0x01010010=1800000\n"
            "  handle:3 type:1 timeout:60000 pkg:none identity:me res:0x01010010=7\n"
            "  handle:4 type:12 timeout:0 pkg:none identity:none res:0x00000003=2 (saver)\n"
            "set debug.level=value with \"quotes\"\n"
            "debug.level=value with \"quotes\"\n"
            "rule 130 set to status 1 (the service answered 0)\n"
            "  0x010108a0=85\n"
            "  0x010108b0=\n"
            "notified src 130 type 1 param 0 text \"85,90,95\"\n"
            "  resources made from it:\n"
            "    0x010108a0=85\n"
            "    0x010108b0=90\n"
            "    0x010108c0=95\n"
            "dump runmap: done (the service logged its live requests)\n"
            "dump history-off: done (switches history recording off)\n"
            "listening to thermal 1 2 (handle 5)\n"
            "thermal report (handle 5): 2=hot 1=warm\n"
            "thermal levels sent: 2=hot 1=warm (the service answered 1)\n"
            "stopped listening to 0x01010010 (handle 1): 4 reports\n"
            "stopped listening to thermal 1 2 (handle 5): 1 report\n",
            r.out);
    // What the service was given.
    EXPECT_EQ(1u, service->liveRequestCount());
    ASSERT_TRUE(service->ruleState(130).has_value());
    EXPECT_EQ(3u, service->ruleState(130)->data.size()) << "the notify after the rule";
    EXPECT_FALSE(service->historyRecording());
    EXPECT_EQ("hot", service->thermalLevel(2));
}

TEST_F(QelctlTest, JsonPrintsOneObjectPerResultOrReportAndAFailureStopsTheScript) {
    QelctlRun r = run({"--json", "script", "-"},
                      "listen 0x01010010\n"
                      "acquire PRAXEL_ACTION_TOUCH_BOOST --duration 60000 --res 0x01010010=5\n"
                      "release 2\n"
                      "release 2\n"
                      "history\n");
    EXPECT_EQ(1, r.status);
    EXPECT_EQ(
            R"({"command":"listen","ok":true,"handle":1,"opcodes":["0x01010010"]})"
            "\n"
            R"({"command":"listen","event":"report","handle":1,"resources":[{"opcode":"0x01010010","id":16842768,"value":"5"}]})"
            "\n"
            R"({"command":"acquire","ok":true,"action":"ACTION_TOUCH_BOOST","cmdId":37,"pkg":"","identity":"","duration":60000,"resources":[{"opcode":"0x01010010","id":16842768,"value":"5"}],"handle":2})"
            "\n"
            R"({"command":"listen","event":"report","handle":1,"resources":[{"opcode":"0x01010010","id":16842768,"value":"0"}]})"
            "\n"
            R"({"command":"release","ok":true,"handle":2,"answer":0})"
            "\n"
            R"j({"command":"release","ok":false,"error":"the service answered -1 (no live request has handle 2)","handle":2,"answer":-1})j"
            "\n"
            R"({"command":"listen","event":"stopped","handle":1,"reports":2,"unregister":0})"
            "\n",
            r.out);
    EXPECT_EQ(
            "qelctl: release: the service answered -1 (no live request has handle 2)\n"
            "qelctl: script stopped at line 4\n",
            r.err)
            << "the line after the failure did not run";
}

TEST_F(QelctlTest, AnEmptyHistoryFailsAndASemicolonInAPackageSplitsItsEntry) {
    EXPECT_EQ(
            R"j({"command":"history","ok":false,"error":"no history (the service answered none)"})j"
            "\n",
            run({"--json", "history"}).out);
    QelctlRun r = run({"script", "-"}, "acquire ACTION_LAUNCH --pkg \"a;b\"\nhistory --json\n");
    ASSERT_EQ(0, r.status) << r.err;
    EXPECT_THAT(r.out,
                HasSubstr(R"({"command":"history","ok":true,"entries":["handle:1 type:8 )"
                          R"(timeout:0 pkg:a","b identity:none res:none"],"text":"start:)"
                          R"(handle:1 type:8 timeout:0 pkg:a;b identity:none res:none;end"})"))
            << "the history text is cut at ';', so a ';' in a package splits its entry";
}

// Reports are written from binder threads while the test waits for them: an unbuffered stream
// buffer sees every character as it is written.
struct WatchedOutput : std::streambuf {
    bool waitFor(const std::string& part) {
        std::unique_lock<std::mutex> lock(mutex);
        return written.wait_for(lock, std::chrono::seconds(10),
                                [&] { return text.find(part) != std::string::npos; });
    }
    int_type overflow(int_type c) override {
        if (c == traits_type::eof()) return traits_type::not_eof(c);
        std::lock_guard<std::mutex> lock(mutex);
        text += traits_type::to_char_type(c);
        written.notify_all();
        return c;
    }
    std::mutex mutex;
    std::condition_variable written;
    std::string text;  // read without the lock once the writers have stopped
};

TEST_F(QelctlTest, ListenUntilStoppedPrintsEachReportAsItArrives) {
    WatchedOutput buffer;
    std::ostream out(&buffer);
    std::ostringstream err;
    std::istringstream in;
    int status = -1;
    std::thread listener([&] {
        status = qelctl::runQelctl({"listen", "--path", "/sys/gpu/min"}, out, err, in);
    });
    EXPECT_TRUE(buffer.waitFor("listening to /sys/gpu/min (handle 1); Ctrl-C stops\n"));
    EXPECT_LE(1,
              drelHalclient::drel_resctl_request_by_path(0, 0, {"/sys/gpu/min"}, {"600"}, 0, 0, 0));
    EXPECT_TRUE(buffer.waitFor("report (handle 1): /sys/gpu/min=600\n"));
    qelctl::requestStop();
    listener.join();
    EXPECT_EQ(0, status) << err.str();
    EXPECT_THAT(buffer.text, HasSubstr("stopped listening to /sys/gpu/min (handle 1): 1 report\n"));
}

TEST_F(QelctlTest, ActionsAndBuildNeedNoService) {
    hostbinder::reset();
    QelctlRun r = run({"actions"});
    ASSERT_EQ(0, r.status) << r.err;
    EXPECT_EQ(199, std::count(r.out.begin(), r.out.end(), '\n'));
    EXPECT_EQ(0u, r.out.find("0\tACTION_LAUNCH\n1\tACTION_COLD_LAUNCH\n"));
    EXPECT_THAT(r.out, HasSubstr("\n106\tACTION_CAMERA_APS_CAPTURE_L1\t(a repeat of 91, which is "
                                 "what the name acquires)\n"));
    EXPECT_EQ(
            R"({"command":"actions","ok":true,"actions":[{"id":102,"name":"ACTION_CAMERA_MULTI_SCENE"},{"id":162,"name":"ACTION_CAMERA_MULTI_SCENE","sameAs":102}]})"
            "\n",
            run({"--json", "actions", "MULTI_SCENE"}).out);

    EXPECT_EQ("0x01011040=2\n0x010115b0=abc\n",
              run({"build", "gameupgrade", "abc", "--level", "2"}).out);
    EXPECT_EQ("no resources (the text holds no usable item)\n",
              run({"build", "targetload", "100,-1,300"}).out);
    EXPECT_EQ(
            R"({"command":"build","ok":true,"builder":"colocation","text":"colocation:1","resources":[{"opcode":"0x01011040","id":16846912,"value":"1"}]})"
            "\n",
            run({"--json", "build", "colocation", "colocation:1"}).out);
    EXPECT_EQ(0, hostbinder::serviceManagerCalls());
}

TEST_F(QelctlTest, EmbeddedRunsANewExampleServiceForTheRunOnly) {
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
    EXPECT_EQ("", r.err);
    EXPECT_THAT(r.out, HasSubstr("[8/8] "));
    EXPECT_THAT(r.out, HasSubstr("-- registering a new example service under the same name\n"));
    EXPECT_THAT(r.out, ::testing::EndsWith("demo: every step behaved as expected\n"));
}

}  // namespace
}  // namespace qel_test
