// `qelctl demo`: a short tour of the library against the example service in this process. Each
// step runs real qelctl commands in one session and checks what the service then holds, so the
// demo fails (exit 1) when the library or the service misbehaves.

#include <chrono>
#include <thread>

#include "drel-service/DrelService.h"
#include "qel.h"
#include "qelctl.h"
#include "qelctl_internal.h"

namespace qelctl {
namespace {

constexpr const char* kCpuBoost = "0x01010010";  // CPU frequency boost, first cluster
constexpr int32_t kCpuBoostId = 0x01010010;
constexpr int kSteps = 8;

class Demo {
public:
    explicit Demo(Session& session) : session_(session) {}

    int run() {
        say("qelctl demo: the example service runs inside this process; every step below is a");
        say("qelctl command run in one session, as `qelctl script` would run it.");

        step("Listen to the CPU boost opcode: reports print as the service sends them");
        if (!command("listen " + std::string(kCpuBoost))) return kExitFailure;
        const int listener = session_.lastHandle;

        step("Acquire by action name, with a CPU boost for the cold launch");
        if (!command("acquire ACTION_COLD_LAUNCH --pkg com.example.launcher --identity demo "
                     "--res " +
                     std::string(kCpuBoost) + "=1800000")) {
            return kExitFailure;
        }
        const int launch = session_.lastHandle;
        if (!expectReports(listener, 1)) return kExitFailure;

        step("A state query sees the boost (and the action's command id, held at 1)");
        if (!command("state " + std::string(kCpuBoost) + " 1")) return kExitFailure;
        if (!expectValue("1800000")) return kExitFailure;

        step("A scenario text turned into resources: target loads for rule 130");
        if (!command("build targetload 85,90,95")) return kExitFailure;
        if (!command("notify 130 1 --text 85,90,95")) return kExitFailure;
        if (!showRule(130, 3)) return kExitFailure;

        step("Release: the listener hears the boost fall back to the default, 0");
        if (!command("release " + std::to_string(launch))) return kExitFailure;
        if (!expectReports(listener, 2) || !expectValue("0")) return kExitFailure;

        step("A boost of 300 ms ends by itself: the service's expiry thread drops it");
        if (!command("acquire -2 --identity demo --duration 300 --res " + std::string(kCpuBoost) +
                     "=1200000")) {
            return kExitFailure;
        }
        say("(waiting for the expiry)");
        if (!waitForReports(listener, 4)) return kExitFailure;
        session_.dropKept();

        step("The service dies and a new one is registered; the next calls reconnect by "
             "themselves");
        say("-- killing the service's process");
        session_.killEmbedded();
        say("-- registering a new example service under the same name");
        session_.startEmbedded();
        if (!command("listen " + std::string(kCpuBoost))) return kExitFailure;
        const int newListener = session_.lastHandle;
        if (!command("acquire ACTION_TOUCH_BOOST --pkg com.example.launcher --identity demo "
                     "--res " +
                     std::string(kCpuBoost) + "=1400000")) {
            return kExitFailure;
        }
        if (!expectReports(newListener, 1)) return kExitFailure;
        if (!command("state " + std::string(kCpuBoost))) return kExitFailure;
        if (!expectValue("1400000")) return kExitFailure;

        step("The history of the new service");
        if (!command("history")) return kExitFailure;

        session_.finish();
        say("");
        say("demo: every step behaved as expected");
        return kExitOk;
    }

private:
    void say(const std::string& text) { session_.out().line(text); }

    void step(const std::string& title) {
        say("");
        say("[" + std::to_string(++step_) + "/" + std::to_string(kSteps) + "] " + title);
    }

    bool command(const std::string& line) {
        say("$ qelctl " + line);
        try {
            const int status = runPrepared(session_, prepare(splitLine(line), true));
            if (status == kExitOk) return true;
            session_.out().error("demo: '" + line + "' exited with " + std::to_string(status));
        } catch (const UsageError& e) {
            session_.out().error(std::string("demo: ") + e.what());
        }
        return false;
    }

    bool problem(const std::string& text) {
        session_.out().error("demo: " + text);
        return false;
    }

    // The value in force of the CPU boost, asked through the flat API.
    bool expectValue(const std::string& expected) {
        std::string value = "<no answer>";
        QelResStateRequest(kCpuBoostId, value);
        if (value == expected) return true;
        return problem("the CPU boost is " + value + ", expected " + expected);
    }

    // Reports arrive before the call that caused them returns, except those of expiries.
    bool expectReports(int handle, int count) {
        const int got = session_.reportsOf(handle);
        if (got == count) return true;
        return problem("the listener got " + std::to_string(got) + " reports, expected " +
                       std::to_string(count));
    }

    bool waitForReports(int handle, int count) {
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
        while (session_.reportsOf(handle) < count) {
            if (std::chrono::steady_clock::now() > deadline) {
                return problem("no report of the expiry within 10 s");
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(20));
        }
        return true;
    }

    // What the wrapper's rule control left in the service, read from the service object.
    bool showRule(int32_t rule, size_t records) {
        auto state = session_.embedded()->ruleState(rule);
        if (!state) return problem("the service holds no rule " + std::to_string(rule));
        std::string text = "the service now holds rule " + std::to_string(rule) + " at status " +
                           std::to_string(state->status) + " with";
        for (const auto& record : state->data) {
            text += " " + hexOpcode(record.resId) + "=" + record.resValue.value_or("");
        }
        say(text);
        if (state->status != 1 || state->data.size() != records) {
            return problem("rule " + std::to_string(rule) + " is not as the text asked");
        }
        return true;
    }

    Session& session_;
    int step_ = 0;
};

}  // namespace

int runDemo(Session& session) {
    session.keepListens = true;
    session.startEmbedded();
    return Demo(session).run();
}

}  // namespace qelctl
