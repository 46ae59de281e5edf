// Chaos: callers take the library's distinct paths at random while the example service is
// killed, restarted and failed by its seeded fault plan. Nothing may crash or hang (a watchdog);
// every result is -1 or a service's answer; the first call of each API after a restart succeeds;
// one-shots are called once at most; at the end no registration is left, only one-shot clients
// never reported on are parked (once), and listeners the service confirmed dropped hear nothing.
// Environment: QEL_STRESS_THREADS (8), QEL_STRESS_KILLS (100), QEL_STRESS_INTERVAL_MS (longest
// wait between kills, 20), QEL_STRESS_SEED (1), QEL_STRESS_BOUND_S (deadlock bound, 300).
#include <android/binder_process.h>
#include <hostbinder/hostbinder.h>

#include <algorithm>
#include <atomic>
#include <deque>
#include <list>
#include <memory>
#include <mutex>
#include <optional>
#include <random>
#include <set>
#include <shared_mutex>
#include <string>
#include <thread>
#include <tuple>
#include <vector>

#include "halclient/halclient_internal.h"
#include "stress/stress_support.h"

namespace qel_stress {
namespace {

using H = drelHalclient;
using Resources = std::list<QelClient::Resource>;

// A violation, seen on any thread; only the first few are reported.
std::atomic<int> findings{0};
void finding(const std::string& what) {
    if (findings++ < 20) ADD_FAILURE() << what;
}

// Callers hold values "1".."999"; a resource nobody holds reads "0".
void check(const std::string& value) {
    const long held = std::strtol(value.c_str(), nullptr, 10);
    if (held < 0 || held > 999 || std::to_string(held) != value) finding("held: \"" + value + "\"");
}

// The example service answers -1, 0, 1, a count of listeners or a handle, and a handle is never
// above the number of calls its instance was given (a step makes four at most).
std::atomic<int> steps{0};
void answer(const char* operation, int result) {
    if (result < -1 || result > 4 * steps) finding(operation + (" gave " + std::to_string(result)));
}

// A caller's callback of either form: a one-shot one is called once at most, a dropped listener
// never, and every report holds values the service holds.
struct Callback : IClientCallback, IClientCallbackByPath {
    explicit Callback(bool oneShot) : oneShot(oneShot) {}
    void onCallback(std::list<QelClient::Resource> resources) override {
        std::vector<std::string> values;
        for (const auto& r : resources) values.push_back(r.resValue.value_or("<absent>"));
        onCallback(values, values);
    }
    void onCallback(std::vector<std::string> paths, std::vector<std::string> values) override {
        if (++calls > 1 && oneShot) finding("a one-shot callback called twice");
        if (dropped) finding("a report to a listener the service had dropped");
        if (paths.size() != values.size()) finding("a path report of unequal lengths");
        for (const std::string& v : values) check(v);
    }
    const bool oneShot;
    std::atomic<int> calls{0};
    std::atomic<bool> dropped{false};
};

// Callers run each step inside a shared hold of `gate`; the chaos thread pauses them by taking
// it whole, holding `turnstile` meanwhile so that no caller starts another step, until `stop`.
std::mutex turnstile;
std::shared_mutex gate;
std::atomic<bool> stop{false};

enum Api { kClass, kFlat, kWrapper };

// One caller thread: random arguments, and the handles and registrations it owns, given back
// through the API that made them.
struct Caller {
    Caller(uint64_t seed, int index) : index(index), rng(seed * 7919 + index) {}
    int below(int bound) { return static_cast<int>(rng() % static_cast<uint64_t>(bound)); }
    int timeout() { return below(2) ? 0 : 1 + below(100); }
    int32_t id() { return 0x01500000 + below(16); }
    std::string path() { return "/stress/res" + std::to_string(below(16)); }
    std::string value() { return std::to_string(1 + below(999)); }
    // An id of its own, so that no two registrations listen to equal lists.
    int ownId() { return 0x02000000 + index * 0x10000 + (++serial & 0xffff); }
    std::shared_ptr<Callback> listen() { return listener = std::make_shared<Callback>(false); }
    std::shared_ptr<Callback> oneShot() { return oneShots.emplace_back(new Callback(true)); }

    void keep(Api api, int handle) {
        answer("a request", handle);
        if (handle != -1) handles.push_back({api, handle});
        if (handles.size() > 8) giveBack();
    }
    void giveBack() {
        const auto [api, handle] = handles.front();
        handles.pop_front();
        if (api == kClass) answer("a release", H::drelResCtlRelease(handle));
        if (api == kFlat) QelRelease(handle);
        if (api == kWrapper && QelReleaseWapper(handle) != 0) finding("QelReleaseWapper failed");
    }
    void remember(int handle, bool thermal = false) {
        answer("a registration", handle);
        if (handle != -1) registrations.push_back({handle, listener, thermal});
        if (registrations.size() > 4) unregisterOldest();
    }
    // A -1 may mean that the call was never made (another thread's failed call reset the
    // connection in between), which leaves the group in place: then it is tried again later.
    void unregisterOldest() {
        if (registrations.empty()) return;
        const auto [handle, gone, thermal] = registrations.front();
        registrations.pop_front();
        const int result = thermal ? H::drelThermalListeningUnregister(handle) : 0;
        const int dropped = H::drelResListeningUnRegister(handle);  // drops the group
        answer("an unregistration", result), answer("an unregistration", dropped);
        std::lock_guard<std::mutex> lock(callback_group_mutex);
        for (const DrelCallbackGroup& group : callback_groups) {
            if (group.client->clientCallback == gone || group.client->clientCallbackByPath == gone)
                return registrations.push_back({handle, gone, thermal});
        }
        // Kept alive, as a real caller would, for a report that may still be on its way. A 0 is
        // the service's word that it dropped the listener.
        (thermal ? result : dropped) == 0 ? confirmed.push_back(gone) : orphans.push_back(gone);
    }
    void step();
    // Gives back everything (the service is up without faults by now; the bound only keeps a
    // broken library from hanging); then confirmed-dropped listeners must hear nothing more.
    void cleanUp() {
        for (int i = 0; i < 1000 && !registrations.empty(); ++i) unregisterOldest();
        while (!handles.empty()) giveBack();
        for (const auto& gone : confirmed) gone->dropped = true;
    }

    const int index;
    std::mt19937_64 rng;
    int serial = 0;
    std::shared_ptr<Callback> listener;
    std::deque<std::pair<Api, int>> handles;
    std::deque<std::tuple<int, std::shared_ptr<Callback>, bool>> registrations;
    std::vector<std::shared_ptr<Callback>> orphans, confirmed, oneShots;
};

// One row per distinct path through the library; each checks its own result.
void (*const kRows[])(Caller&) = {
        [](Caller& c) {  // the class API's guarded call, with a one-shot callback or none
            Resources r{{c.id(), c.value()}, {c.id(), c.value()}};
            c.keep(kClass, c.below(2) ? H::drelResCtlRequest(c.index, c.timeout(), r, 0, 1, 0)
                                      : H::drelResCtlRequest(c.index, 0, r, 0, 1, 0, c.oneShot()));
        },
        [](Caller& c) {  // a path request
            c.keep(kClass, H::drel_resctl_request_by_path(c.index, c.timeout(), {c.path()},
                                                          {c.value()}, 0, 0, 0));
        },
        [](Caller& c) {  // the flat API's guarded call
            c.keep(kFlat, QelResAcquire({{c.id(), c.value()}}, 0, "id", c.timeout()));
        },
        [](Caller& c) {  // a registration by id or by path
            Resources ids{{c.id(), std::nullopt}, {c.ownId(), std::nullopt}};
            const std::string own = "/stress/own" + std::to_string(c.ownId());
            c.remember(c.below(2) ? H::drelResListeningRegister(ids, 0, c.listen())
                                  : H::drel_res_listening_register_by_path({c.path(), own}, 0,
                                                                           c.listen()));
        },
        [](Caller& c) {  // a thermal registration, or levels for the thermal listeners
            Resources levels{{c.below(4), c.value()}};
            if (c.below(2)) return answer("drelThermalNotify", H::drelThermalNotify(levels, 0));
            c.remember(H::drelThermalListeningRegister({c.below(4)}, c.listen()), true);
        },
        [](Caller& c) {  // a state query: -1, or one held value per resource
            Resources query{{c.id(), std::nullopt}, {c.id(), std::nullopt}}, states;
            const int result = H::drelResStateRequest(query, 0, states);
            for (const auto& state : states) check(state.resValue.value_or(""));
            if (result != -1 && result != static_cast<int>(states.size())) finding("a count");
        },
        [](Caller& c) {  // the wrapper: acquire (released by giveBack) and notify; a diagnostic
            const std::string name = gActionList[c.below(static_cast<int>(gActionList.size()))];
            c.keep(kWrapper, QelEventAcquireWrapper("PRAXEL_" + name, "scene", "id", c.timeout()));
            answer("QelNotifyWapper", QelNotifyWapper("stress", 130, 1, c.below(5), 0, 0, "0-80"));
            answer("drelDumpRunMap", H::drelDumpRunMap());
        },
};

// A random row, or a release or an unregistration of the oldest.
void Caller::step() {
    { std::lock_guard<std::mutex> wait(turnstile); }
    std::shared_lock<std::shared_mutex> inside(gate);
    const int pick = below(static_cast<int>(std::size(kRows)) + 2);
    if (++steps, pick < static_cast<int>(std::size(kRows))) return kRows[pick](*this);
    return pick % 2 && !handles.empty() ? giveBack() : unregisterOldest();
}

// No registration is left; only one-shot clients never reported on are parked, each once.
void checkRegistries(const std::deque<Caller>& callers) {
    std::set<const IClientCallback*> unreported;
    for (const Caller& caller : callers)
        for (const auto& callback : caller.oneShots)
            if (callback->calls == 0) unreported.insert(callback.get());
    std::scoped_lock lock(callback_group_mutex, request_callback_mutex);
    EXPECT_TRUE(callback_groups.empty()) << callback_groups.size() << " registrations left";
    for (const auto& client : request_callbacks) {
        ASSERT_FALSE(client->is_register) << "a registration in request_callbacks";
        EXPECT_EQ(1u, unreported.erase(client->clientCallback.get()))
                << "a one-shot client parked twice, or parked after it was reported on";
    }
}

TEST(ChaosTest, SurvivesKillsRestartsAndTheServicesFaultsOnEveryPath) {
    const int kills = static_cast<int>(envLong("QEL_STRESS_KILLS", 100));
    const auto pause = static_cast<uint64_t>(std::max(1L, envLong("QEL_STRESS_INTERVAL_MS", 20)));
    const auto seed = static_cast<uint64_t>(envLong("QEL_STRESS_SEED", 1));
    ABinderProcess_startThreadPool();
    hostbinder::reset();
    Watchdog watchdog(std::chrono::seconds(envLong("QEL_STRESS_BOUND_S", 300)));
    DrelService::FaultPlan plan;  // 10 calls in 100 go wrong, in every way
    plan.seed = seed * 1000;
    std::shared_ptr<DrelService> service = publish(plan);
    uint64_t faults = 0;

    std::deque<Caller> callers;  // a deque: its elements stay where they are
    std::vector<std::thread> workers;
    for (int i = 0; i < envLong("QEL_STRESS_THREADS", 8); ++i)
        workers.emplace_back([c = &callers.emplace_back(seed, i)] {
            while (!stop) c->step();
        });
    std::mt19937_64 chaos(seed * 31 + 17);
    for (int k = 1; k <= kills; ++k) {
        // Half of the kills land in the middle of traffic; the other half in a quiet moment, so
        // that the call checked afterwards is truly the first one after the restart.
        const bool quiet = chaos() % 2 == 0;
        if (quiet) turnstile.lock(), gate.lock();
        hostbinder::killService(kInstance);
        if (!quiet) std::this_thread::sleep_for(std::chrono::milliseconds(chaos() % 5));
        faults += service->faultsInjected();
        plan.seed = seed * 1000 + k;
        service = publish(plan);
        if (!quiet) turnstile.lock(), gate.lock();
        hostbinder::waitIdle();
        // With the callers paused and the service back, the first call of each API succeeds.
        service->setFaultPlan(std::nullopt);
        EXPECT_EQ(0, failedCalls("stress", k)) << "calls that failed after restart " << k;
        service->setFaultPlan(plan);
        gate.unlock(), turnstile.unlock();
        std::this_thread::sleep_for(std::chrono::milliseconds(1 + chaos() % pause));
    }

    service->setFaultPlan(std::nullopt);  // for the clean-up
    stop = true;
    for (std::thread& worker : workers) worker.join();
    hostbinder::waitIdle();
    for (Caller& caller : callers) caller.cleanUp();
    hostbinder::waitIdle();
    // Every resource and level a listener may hear of changes (twice: one at least is a change).
    for (int i = 0; i < 32; ++i) {
        const std::string value = std::to_string(998 + i / 16), path = "/stress/res";
        Resources byId{{0x01500000 + i % 16, value}}, levels{{i % 4, value}};
        EXPECT_NE(-1, H::drelResCtlRequest(0, 0, byId, 0, 1, 0));
        EXPECT_NE(-1, H::drel_resctl_request_by_path(0, 0, {path + std::to_string(i % 16)}, {value},
                                                     0, 0, 0));
        H::drelThermalNotify(levels, 0);  // -1 when no listener is left to hear it
    }
    hostbinder::waitIdle();
    checkRegistries(callers);
    EXPECT_EQ(0, findings.load()) << "violations (the first 20 are reported above)";
    EXPECT_GT(faults + service->faultsInjected(), 0u) << "no fault was injected: no chaos";
    hostbinder::reset();
}

}  // namespace
}  // namespace qel_stress
