// Chaos: T caller threads run a bounded random mix of the operations of the class API, the flat
// API and the action wrapper against the example service, while the chaos thread kills and
// restarts the service at random moments and the service itself fails, errs and stalls at random
// (FaultyDrel, seeded).
//
// What must hold: nothing crashes; the run ends within its bound (a watchdog ends the process
// otherwise); every result is -1 or a value the service gave; after each restart the next call
// of each API succeeds without any action of the caller; at the end the registries hold no
// listening registration and only one-shot clients whose service never reported, each once. The
// sanitizer presets run it under ASan, LSan and TSan.
//
// Parameters (environment): QEL_STRESS_THREADS (8), QEL_STRESS_KILLS (100),
// QEL_STRESS_INTERVAL_MS (longest wait between kills, 20), QEL_STRESS_SEED (1),
// QEL_STRESS_BOUND_S (deadlock bound, 300).
#include <android/binder_manager.h>
#include <gtest/gtest.h>
#include <hostbinder/hostbinder.h>

#include <algorithm>
#include <atomic>
#include <deque>
#include <list>
#include <map>
#include <memory>
#include <mutex>
#include <random>
#include <set>
#include <shared_mutex>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "QelWrapper.h"
#include "drel-service/DrelService.h"
#include "halclient.h"
#include "halclient/halclient_internal.h"
#include "qel.h"
#include "stress/stress_support.h"

namespace qel_stress {
namespace {

using ::aidl::vendor::quarn::hardware::drel::DrelRequestData;
using ::aidl::vendor::quarn::hardware::drel::DrelRequestParcel;
using ::aidl::vendor::quarn::hardware::drel::DrelService;
using ::aidl::vendor::quarn::hardware::drel::IDrelCallback;
using ::ndk::ScopedAStatus;
using Resources = std::list<QelClient::Resource>;

constexpr const char* kInstance = "vendor.quarn.hardware.drel.IDrel/default";

// A violation, seen on any thread. Only the first few are reported, so that a broken library
// does not flood the log.
std::atomic<int> findings{0};
template <typename... Parts>
void finding(const Parts&... parts) {
    if (findings++ >= 20) return;
    std::ostringstream text;
    (text << ... << parts);
    ADD_FAILURE() << text.str();
}

// Callers hold values "1".."999"; a resource nobody holds reads "0".
bool isServiceValue(const std::string& text) {
    return text == "0" ||
           (!text.empty() && text.size() <= 3 && text[0] != '0' &&
            std::all_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; }));
}

// Integer answers given with an OK status, by every service instance of a run.
std::mutex ledgerMutex;
std::set<int32_t> ledger;
bool serviceGave(int32_t answer) {
    std::lock_guard<std::mutex> lock(ledgerMutex);
    return ledger.count(answer) != 0;
}

std::atomic<bool> faultsOn{true};
std::atomic<uint64_t> faultsInjected{0};

// The example service, going wrong at random as a real one does: a failed transaction, an
// exception or a service-specific error (half of them after the service did the work: the reply
// was lost), or a late answer. The faults of an instance follow from its seed; the interleaving
// of threads does not. Integer answers given OK go to the ledger.
class FaultyDrel : public DrelService {
public:
    explicit FaultyDrel(uint64_t seed) : seed_(seed) {}

    ScopedAStatus init() override {
        return faulty([&] { return DrelService::init(); });
    }
    ScopedAStatus request(const DrelRequestParcel& parcel, int32_t* out) override {
        return faulty([&] { return DrelService::request(parcel, out); }, out);
    }
    ScopedAStatus release(int32_t handle, int32_t* out) override {
        return faulty([&] { return DrelService::release(handle, out); }, out);
    }
    ScopedAStatus stateRequest(const DrelRequestParcel& parcel,
                               std::vector<DrelRequestData>* out) override {
        return faulty([&] { return DrelService::stateRequest(parcel, out); });
    }
    ScopedAStatus listeningRegister(const DrelRequestParcel& parcel,
                                    const std::shared_ptr<IDrelCallback>& callback,
                                    int32_t* out) override {
        return faulty([&] { return DrelService::listeningRegister(parcel, callback, out); }, out);
    }
    ScopedAStatus listeningUnregister(int32_t handle, int32_t* out) override {
        return faulty([&] { return DrelService::listeningUnregister(handle, out); }, out);
    }
    ScopedAStatus propertyGet(const std::string& name, std::string* out) override {
        return faulty([&] { return DrelService::propertyGet(name, out); });
    }
    ScopedAStatus propertySet(const std::string& name, const std::string& value,
                              int32_t* out) override {
        return faulty([&] { return DrelService::propertySet(name, value, out); }, out);
    }
    ScopedAStatus thermalListeningRegister(const std::vector<int32_t>& ids,
                                           const std::shared_ptr<IDrelCallback>& callback,
                                           int32_t* out) override {
        return faulty([&] { return DrelService::thermalListeningRegister(ids, callback, out); },
                      out);
    }
    ScopedAStatus thermalListeningUnregister(int32_t handle, int32_t* out) override {
        return faulty([&] { return DrelService::thermalListeningUnregister(handle, out); }, out);
    }
    ScopedAStatus setRelatedSysInfo(int32_t type, int64_t info, int32_t* out) override {
        return faulty([&] { return DrelService::setRelatedSysInfo(type, info, out); }, out);
    }
    ScopedAStatus ruleCtl(int32_t ruleId, int32_t status, const std::vector<DrelRequestData>& data,
                          int32_t* out) override {
        return faulty([&] { return DrelService::ruleCtl(ruleId, status, data, out); }, out);
    }

private:
    template <typename Forward>
    ScopedAStatus faulty(Forward forward, int32_t* out = nullptr) {
        // splitmix64 over a per-instance call counter: lock-free and reproducible for a seed.
        uint64_t r = seed_ + 0x9e3779b97f4a7c15ULL * (next_.fetch_add(1) + 1);
        r = (r ^ (r >> 30)) * 0xbf58476d1ce4e5b9ULL;
        r = (r ^ (r >> 27)) * 0x94d049bb133111ebULL;
        r ^= r >> 31;
        const int roll = faultsOn ? static_cast<int>(r % 100) : 100;  // 12 in 100 go wrong
        if (roll < 12) ++faultsInjected;
        if (roll >= 8 && roll < 12)
            std::this_thread::sleep_for(std::chrono::microseconds(r % 2000));
        const bool fails = roll < 8;
        if (fails && (r >> 40) % 2 == 0) return failure(roll, r);  // the service never saw it
        ScopedAStatus status = forward();
        if (fails) return failure(roll, r);
        if (status.isOk() && out != nullptr) {
            std::lock_guard<std::mutex> lock(ledgerMutex);
            ledger.insert(*out);
        }
        return status;
    }
    static ScopedAStatus failure(int roll, uint64_t r) {
        switch (roll % 4) {
            case 0:
                return ScopedAStatus::fromServiceSpecificError(-static_cast<int32_t>(r % 64));
            case 1:
                return ScopedAStatus::fromStatus(STATUS_FAILED_TRANSACTION);
            case 2:
                return ScopedAStatus::fromExceptionCode(EX_ILLEGAL_STATE);
            default:
                return ScopedAStatus::fromStatus(STATUS_NO_MEMORY);
        }
    }

    const uint64_t seed_;
    std::atomic<uint64_t> next_{0};
};

// A caller's callback of either form: a one-shot one is called once at most, and every report
// holds values the service holds.
class Callback : public IClientCallback, public IClientCallbackByPath {
public:
    explicit Callback(bool oneShot) : oneShot_(oneShot) {}
    void onCallback(std::list<QelClient::Resource> resources) override {
        called();
        for (const auto& r : resources) check(r.resValue.value_or("<absent>"));
    }
    void onCallback(std::vector<std::string> paths, std::vector<std::string> values) override {
        called();
        if (paths.size() != values.size()) finding("a path report of unequal lengths");
        for (const std::string& value : values) check(value);
    }
    std::atomic<int> calls{0};

private:
    void called() {
        if (++calls > 1 && oneShot_) finding("a one-shot callback called twice");
    }
    static void check(const std::string& value) {
        if (!isServiceValue(value)) finding("a report of \"", value, "\"");
    }

    const bool oneShot_;
};

std::mutex oneShotMutex;
std::vector<std::shared_ptr<Callback>> oneShots;

std::shared_ptr<Callback> newOneShot() {
    std::lock_guard<std::mutex> lock(oneShotMutex);
    return oneShots.emplace_back(std::make_shared<Callback>(true));
}

// A result must be -1 or an answer the service gave.
void checkAnswer(const char* operation, int result) {
    if (result != -1 && !serviceGave(result)) {
        finding(operation, " returned ", result, ", which the service never answered");
    }
}

// A query's result must be -1 (also: no count to check) or the number of values, and each value
// one the service holds.
void checkQuery(const char* operation, const std::vector<std::string>& values, int result = -1) {
    if (result != -1 && result != static_cast<int>(values.size())) {
        finding(operation, " returned ", result, " for ", values.size(), " values");
    }
    for (const std::string& value : values) {
        if (!isServiceValue(value)) finding(operation, " gave \"", value, "\"");
    }
}

// Callers run each step inside a shared hold of `gate`; the chaos thread pauses them by taking
// it whole, holding `turnstile` meanwhile so that no caller starts another step.
std::mutex turnstile;
std::shared_mutex gate;

// One caller thread: a random operation per step, keeping the handles and registrations it owns
// so that it can give them back.
class Caller {
public:
    Caller(uint64_t seed, int index) : index_(index), rng_(seed * 7919 + index) {}

    void step() {
        { std::lock_guard<std::mutex> wait(turnstile); }
        std::shared_lock<std::shared_mutex> inside(gate);
        const int timeout = coin() ? 0 : 1 + below(100);
        Resources resources{{poolId(), valueText()}, {poolId(), valueText()}};
        std::vector<QelClient::Resource> flat(resources.begin(), resources.end());
        auto listener = std::make_shared<Callback>(false);
        std::vector<std::string> values;
        switch (below(17)) {
            case 0:
                keep(kClass, coin() ? drelHalclient::drelResCtlRequest(index_, timeout, resources,
                                                                       0, 1, 0, newOneShot())
                                    : drelHalclient::drelResCtlRequest(index_, timeout, resources,
                                                                       0, 1, 0));
                break;
            case 1:
                keep(kClass,
                     coin() ? drelHalclient::drelSACtlRequest(index_, timeout, poolId(), 0, 0, 0,
                                                              newOneShot())
                            : drelHalclient::drelSACtlRequest(index_, timeout, poolId(), 0, 0, 0));
                break;
            case 2:
                keep(kClass,
                     coin() ? drelHalclient::drel_resctl_request_with_callback_by_path(
                                      index_, timeout, {poolPath()}, {valueText()}, 0, 0, 0,
                                      newOneShot())
                            : drelHalclient::drel_resctl_request_by_path(
                                      index_, timeout, {poolPath()}, {valueText()}, 0, 0, 0));
                break;
            case 3:
                giveBack();
                break;
            case 4: {
                // Each registration also listens to an id of its own, so no two lists are equal.
                Resources ids{{poolId(), std::nullopt}, {ownId(), std::nullopt}};
                remember(drelHalclient::drelResListeningRegister(ids, 0, listener), listener);
                break;
            }
            case 5: {
                const std::string own = "/stress/own" + std::to_string(ownId());
                remember(coin() ? drelHalclient::drel_res_listening_register_by_path(
                                          {poolPath(), own}, 0, listener)
                                : drelHalclient::drel_res_listening_register_map_by_path(
                                          {{poolPath(), ""}, {own, ""}}, 0, listener),
                         listener);
                break;
            }
            case 6: {
                remember(
                        drelHalclient::drelThermalListeningRegister({below(4), below(4)}, listener),
                        listener, true);
                Resources levels{{below(4), valueText()}};
                checkAnswer("drelThermalNotify", drelHalclient::drelThermalNotify(levels, 0));
                break;
            }
            case 7:
                unregisterOldest();
                break;
            case 8: {
                Resources states;
                const int result = drelHalclient::drelResStateRequest(resources, 0, states);
                for (const auto& state : states) values.push_back(state.resValue.value_or(""));
                checkQuery("drelResStateRequest", values, result);
                break;
            }
            case 9: {
                const std::string path = poolPath();
                std::map<std::string, std::string> states;
                const int result =
                        drelHalclient::drel_res_state_request_map_by_path({{path, ""}}, 0, states);
                for (const auto& [statePath, value] : states) {
                    if (statePath != path) finding("a state of an unasked path ", statePath);
                    values.push_back(value);
                }
                checkQuery("drel_res_state_request_map_by_path", values, result);
                std::vector<std::string> byPath;
                checkQuery("drel_res_state_request_by_path", byPath,
                           drelHalclient::drel_res_state_request_by_path({poolPath(), poolPath()},
                                                                         {}, 0, byPath));
                break;
            }
            case 10: {
                const std::string name = "stress.p" + std::to_string(below(4));
                checkAnswer("drelPropertySet",
                            drelHalclient::drelPropertySet(name, "v" + valueText()));
                char* value = drelHalclient::drelPropertyGet(name);
                const std::string text(value);
                delete[] value;
                if (!text.empty() && (text[0] != 'v' || !isServiceValue(text.substr(1)))) {
                    finding("drelPropertyGet gave \"", text, "\", which nobody set");
                }
                drelHalclient::drel_init();
                const int dumped = drelHalclient::drelDumpActiveResMap();
                if (dumped != 0 && dumped != -1) finding("a dump answered ", dumped);
                break;
            }
            case 11: {
                const int kind = below(3);
                keep(kFlat, kind == 0   ? QelEventAcquire(below(199), "pkg", "id", timeout, flat)
                            : kind == 1 ? QelResAcquire(flat, 0, "id", timeout)
                                        : QelPlatformResAcquire(flat, 0, "id", "pkg", timeout));
                break;
            }
            case 12: {
                // Entries the service did not answer keep the caller's "0".
                std::vector<QelClient::Resource> query{{poolId(), "0"}, {poolId(), "0"}};
                const int counted = QelMutiResStateRequest(query);
                if (counted < -1 || counted > 2) finding("QelMutiResStateRequest: ", counted);
                std::string value = "0";
                QelResStateRequest(poolId(), value);
                checkQuery("QelMutiResStateRequest or QelResStateRequest",
                           {query[0].resValue.value_or(""), query[1].resValue.value_or(""), value});
                break;
            }
            case 13: {
                std::string history;
                const int result = QelGetHistory(history);
                const bool whole = history.rfind("start:", 0) == 0 &&
                                   history.find(";end", history.size() - 4) != std::string::npos;
                if (result == -1 ? !history.empty() : (result != 0 || !whole)) {
                    finding("QelGetHistory gave ", result, " \"", history, "\"");
                }
                const int status = QelGetPMStatus(poolId());
                if (status < -1 || status > 999) finding("QelGetPMStatus gave ", status);
                if (qelInit() < -2) finding("qelInit answered below -2");
                break;
            }
            case 14:
                checkAnswer("qelRuleCtl", qelRuleCtl(below(8), below(2), flat));
                checkAnswer("setRelatedSysInfo", setRelatedSysInfo(below(8), index_));
                checkAnswer("QelNotify", QelNotify(below(8), 1, {1, 2}));
                break;
            case 15: {
                // A name of the catalogue or, now and then, one that is none.
                const std::string name =
                        below(10) ? gActionList[below(static_cast<int>(gActionList.size()))] : "NO";
                keep(kWrapper, QelEventAcquireWrapper("PRAXEL_" + name, "scene", "id", timeout));
                break;
            }
            default: {
                // Every scenario kind of the wrapper, with texts for the rules that take one.
                const int sources[] = {1, 2, 3, 8, 9, 14, 15, 102, 111, 129, 130, 131, 1000, 9000};
                const char* texts[] = {"0-80,1-90", "colocation:1,groupmigrate:95-85", "1,2;3,4",
                                       ""};
                if (QelNotifyWapper("stress", sources[below(14)], below(3) - 1, below(5), 0, 0,
                                    texts[below(4)]) != 0) {
                    finding("QelNotifyWapper answered other than 0");
                }
                break;
            }
        }
    }

    // Gives back every registration and handle (the service is up and faults are off by now).
    // The bound only keeps a broken library from hanging here.
    void cleanUp() {
        for (int i = 0; i < 1000 && !registrations_.empty(); ++i) unregisterOldest();
        while (!handles_.empty()) giveBack();
    }

private:
    enum Api { kClass, kFlat, kWrapper };
    struct Registration {
        int handle;
        std::shared_ptr<Callback> listener;
        bool thermal;
    };

    int below(int bound) { return static_cast<int>(rng_() % static_cast<uint64_t>(bound)); }
    bool coin() { return rng_() % 2 == 0; }
    int32_t poolId() { return 0x01500000 + below(16); }
    std::string poolPath() { return "/stress/res" + std::to_string(below(16)); }
    std::string valueText() { return std::to_string(1 + below(999)); }
    int ownId() { return 0x02000000 + index_ * 0x10000 + (++serial_ & 0xffff); }

    // Keeps a handle the service gave; past eight, gives back the oldest.
    void keep(Api api, int handle) {
        checkAnswer("an acquire", handle);
        if (handle != -1) handles_.push_back({api, handle});
        if (handles_.size() > 8) giveBack();
    }

    void giveBack() {
        if (handles_.empty()) return;
        const auto [api, handle] = handles_.front();
        handles_.pop_front();
        if (api == kClass) {
            checkAnswer("drelResCtlRelease", coin() ? drelHalclient::drelResCtlRelease(handle)
                                                    : drelHalclient::drelSACtlRelease(handle));
        } else if (api == kFlat) {
            QelRelease(handle);
        } else if (QelReleaseWapper(handle) != 0) {
            finding("QelReleaseWapper answered other than 0");
        }
    }

    void remember(int handle, std::shared_ptr<Callback> listener, bool thermal = false) {
        checkAnswer("a listening registration", handle);
        if (handle != -1) registrations_.push_back({handle, std::move(listener), thermal});
        if (registrations_.size() > 4) unregisterOldest();
    }

    // A -1 may mean that the call was never made (another thread's failed call reset the
    // connection in between), which leaves the group in place: then the registration is tried
    // again later, until its group is gone.
    void unregisterOldest() {
        if (registrations_.empty()) return;
        const Registration registration = registrations_.front();
        registrations_.pop_front();
        if (registration.thermal) {
            checkAnswer("drelThermalListeningUnregister",
                        drelHalclient::drelThermalListeningUnregister(registration.handle));
        }
        // Only this drops the group from callback_groups (a thermal one too).
        checkAnswer("drelResListeningUnRegister",
                    drelHalclient::drelResListeningUnRegister(registration.handle));
        std::lock_guard<std::mutex> lock(callback_group_mutex);
        for (const DrelCallbackGroup& group : callback_groups) {
            if (dynamic_cast<const void*>(group.client->clientCallback.get()) ==
                        registration.listener.get() ||
                dynamic_cast<const void*>(group.client->clientCallbackByPath.get()) ==
                        registration.listener.get()) {
                registrations_.push_back(registration);
                return;
            }
        }
        // Kept alive, as a real caller would, for a report that may still be on its way.
        orphans_.push_back(registration.listener);
    }

    const int index_;
    std::mt19937_64 rng_;
    int serial_ = 0;
    std::deque<std::pair<Api, int>> handles_;
    std::deque<Registration> registrations_;
    std::vector<std::shared_ptr<Callback>> orphans_;
};

// With the callers paused, the service back and every death delivered, the first call of each
// API must succeed without the caller doing anything first.
void checkNextCallsSucceed(int restart) {
    faultsOn = false;
    EXPECT_EQ(0, drelHalclient::drelPropertySet("stress.restart", std::to_string(restart)))
            << "class API after restart " << restart;
    EXPECT_EQ(0, setRelatedSysInfo(99, restart)) << "flat API after restart " << restart;
    const int handle = QelEventAcquireWrapper("PRAXEL_" + gActionList.at(0), "stress", "check", 0);
    EXPECT_TRUE(handle != -1 && serviceGave(handle)) << "wrapper after restart " << restart;
    EXPECT_EQ(0, QelReleaseWapper(handle));
    faultsOn = true;
}

// No listening registration is left after its unregistration, and only one-shot clients whose
// service never reported are parked, each once.
void checkRegistries() {
    std::set<const void*> unreported;
    for (const auto& callback : oneShots) {
        if (callback->calls == 0) unreported.insert(callback.get());
    }
    std::lock_guard<std::mutex> groupLock(callback_group_mutex);
    EXPECT_TRUE(callback_groups.empty())
            << callback_groups.size() << " listening registrations left after unregistering";
    std::lock_guard<std::mutex> lock(request_callback_mutex);
    std::set<const DrelCallbackClient*> seen;
    for (const auto& client : request_callbacks) {
        ASSERT_NE(nullptr, client);
        EXPECT_FALSE(client->is_register) << "a registration in request_callbacks";
        EXPECT_TRUE(seen.insert(client.get()).second) << "a one-shot client parked twice";
        const void* caller = client->by_path
                                     ? dynamic_cast<const void*>(client->clientCallbackByPath.get())
                                     : dynamic_cast<const void*>(client->clientCallback.get());
        EXPECT_EQ(1u, unreported.count(caller))
                << "a one-shot client whose service reported is still parked";
    }
    std::printf("stress: %zu one-shot requests, %zu never reported, %zu of them parked\n",
                oneShots.size(), unreported.size(), request_callbacks.size());
}

TEST(ChaosTest, SurvivesKillsRestartsAndInjectedFaultsOnEveryOperation) {
    const int threads = static_cast<int>(envLong("QEL_STRESS_THREADS", 8));
    const int kills = static_cast<int>(envLong("QEL_STRESS_KILLS", 100));
    const int intervalMs = static_cast<int>(std::max(1L, envLong("QEL_STRESS_INTERVAL_MS", 20)));
    const uint64_t seed = static_cast<uint64_t>(envLong("QEL_STRESS_SEED", 1));
    std::printf("stress: %d threads, %d kills, seed %llu\n", threads, kills,
                static_cast<unsigned long long>(seed));

    hostbinder::reset();
    Watchdog watchdog(std::chrono::seconds(envLong("QEL_STRESS_BOUND_S", 300)), nullptr);
    uint64_t generation = seed;
    std::shared_ptr<FaultyDrel> service;
    auto startService = [&] {
        service = ::ndk::SharedRefBase::make<FaultyDrel>(++generation);
        ASSERT_EQ(EX_NONE, AServiceManager_addService(service->asBinder().get(), kInstance));
    };
    startService();

    std::atomic<bool> stop{false};
    std::vector<std::unique_ptr<Caller>> callers;
    std::vector<std::thread> workers;
    for (int i = 0; i < threads; ++i) {
        callers.push_back(std::make_unique<Caller>(seed, i));
        workers.emplace_back([&stop, caller = callers.back().get()] {
            while (!stop) caller->step();
        });
    }

    std::mt19937_64 chaos(seed * 31 + 17);
    for (int k = 1; k <= kills; ++k) {
        std::this_thread::sleep_for(std::chrono::milliseconds(1 + chaos() % intervalMs));
        // Half of the kills land in the middle of traffic; the other half in a quiet moment, so
        // that the call checked afterwards is truly the first one after the restart.
        const bool quiet = chaos() % 2 == 0;
        std::unique_lock<std::mutex> stopEntering(turnstile, std::defer_lock);
        std::unique_lock<std::shared_mutex> paused(gate, std::defer_lock);
        auto pause = [&] {
            stopEntering.lock();
            paused.lock();
        };
        if (quiet) pause();
        hostbinder::killService(kInstance);
        if (!quiet) std::this_thread::sleep_for(std::chrono::milliseconds(chaos() % 5));
        startService();
        if (!quiet) pause();
        hostbinder::waitIdle();
        checkNextCallsSucceed(k);
    }

    faultsOn = false;
    stop = true;
    for (std::thread& worker : workers) worker.join();
    for (auto& caller : callers) caller->cleanUp();
    hostbinder::waitIdle();

    checkRegistries();
    EXPECT_EQ(0, findings.load()) << "violations (the first 20 are reported above)";
    EXPECT_GT(faultsInjected.load(), 0u) << "no fault was injected: the run was no chaos";
    std::printf("stress: %d kills survived, %llu faults injected\n", kills,
                static_cast<unsigned long long>(faultsInjected.load()));
    hostbinder::reset();
}

}  // namespace
}  // namespace qel_stress
