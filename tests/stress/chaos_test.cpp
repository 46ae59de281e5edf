// Chaos: T caller threads run a random mix of every operation of the class API, the flat API and
// the action wrapper (kOperations) while the chaos thread kills and restarts the example service
// at random moments and the service fails, errs and stalls at random (FaultyDrel, seeded).
//
// What must hold: nothing crashes or hangs (a watchdog ends the process); every result is -1 or a
// value the service gave (or the one the operation promises); after each restart the next call of
// each API succeeds; one-shot callbacks are called once at most; at the end the registries hold
// no listening registration and only one-shot clients never reported on, each once, and a
// listener whose unregistration the service confirmed hears nothing more. The sanitizer presets
// run it under ASan, LSan and TSan.
//
// Parameters (environment): QEL_STRESS_THREADS (8), QEL_STRESS_KILLS (100),
// QEL_STRESS_INTERVAL_MS (longest wait between kills, 20), QEL_STRESS_SEED (1),
// QEL_STRESS_BOUND_S (deadlock bound, 300).
#include <android/binder_manager.h>
#include <android/binder_process.h>
#include <gtest/gtest.h>
#include <hostbinder/hostbinder.h>

#include <algorithm>
#include <atomic>
#include <deque>
#include <functional>
#include <iterator>
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
using H = drelHalclient;
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
        if (roll % 4 == 0) {
            return ScopedAStatus::fromServiceSpecificError(-static_cast<int32_t>(r % 64));
        }
        if (roll % 4 == 1) return ScopedAStatus::fromExceptionCode(EX_ILLEGAL_STATE);
        return ScopedAStatus::fromStatus(roll % 4 == 2 ? STATUS_FAILED_TRANSACTION
                                                       : STATUS_NO_MEMORY);
    }

    const uint64_t seed_;
    std::atomic<uint64_t> next_{0};
};

// A caller's callback of either form: a one-shot one is called once at most, a dropped listener
// never, and every report holds values the service holds.
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
    std::atomic<bool> dropped{false};

private:
    void called() {
        if (++calls > 1 && oneShot_) finding("a one-shot callback called twice");
        if (dropped) finding("a report to a listener the service had dropped");
    }
    static void check(const std::string& value) {
        if (!isServiceValue(value)) finding("a report of \"", value, "\"");
    }

    const bool oneShot_;
};

std::mutex oneShotMutex;
std::vector<std::shared_ptr<Callback>> oneShots;

// Callers run each step inside a shared hold of `gate`; the chaos thread pauses them by taking
// it whole, holding `turnstile` meanwhile so that no caller starts another step.
std::mutex turnstile;
std::shared_mutex gate;

// What an operation's result must be: a handle to keep (and give back through the same API), a
// listening registration to keep (and unregister), -1 or an answer the service gave, 0, 0 or -1,
// or anything (the operation checks what it got itself).
enum Check { kClass, kFlat, kWrapper, kListening, kThermal, kAnswer, kZero, kZeroOrFailed, kOwn };

// One caller thread: the operations' random arguments, and the handles and registrations it owns
// so that it can give them back.
class Caller {
public:
    Caller(uint64_t seed, int index) : index(index), rng_(seed * 7919 + index) {}

    void step();

    // Gives back every registration and handle (the service is up and faults are off by now).
    // The bound only keeps a broken library from hanging here. Then the listeners whose
    // unregistration the service confirmed must hear nothing more.
    void cleanUp() {
        for (int i = 0; i < 1000 && !registrations_.empty(); ++i) unregisterOldest();
        while (!handles_.empty()) giveBack();
        for (const auto& gone : confirmed_) gone->dropped = true;
    }

    int below(int bound) { return static_cast<int>(rng_() % static_cast<uint64_t>(bound)); }
    int timeout() { return below(2) ? 0 : 1 + below(100); }
    int32_t id() { return 0x01500000 + below(16); }
    std::string path() { return "/stress/res" + std::to_string(below(16)); }
    std::string value() { return std::to_string(1 + below(999)); }
    std::string property() { return "stress.p" + std::to_string(below(4)); }
    Resources& res() { return resources = {{id(), value()}, {id(), value()}}; }
    std::vector<QelClient::Resource> flat() { return {{id(), value()}, {id(), value()}}; }
    // An id or path of its own, so that no two registrations listen to equal lists.
    int ownId() { return 0x02000000 + index * 0x10000 + (++serial_ & 0xffff); }
    std::string ownPath() { return "/stress/own" + std::to_string(ownId()); }
    std::shared_ptr<Callback> oneShot() {
        std::lock_guard<std::mutex> lock(oneShotMutex);
        return oneShots.emplace_back(std::make_shared<Callback>(true));
    }
    std::shared_ptr<Callback> listen() { return listener = std::make_shared<Callback>(false); }

    // A query's result must be -1 (also: no count to check) or the number of values, and each
    // value one the service holds.
    int query(const std::vector<std::string>& values, int result = -1) {
        if (result != -1 && result != static_cast<int>(values.size())) {
            finding(operation, " returned ", result, " for ", values.size(), " values");
        }
        for (const std::string& v : values) {
            if (!isServiceValue(v)) finding(operation, " gave \"", v, "\"");
        }
        return result;
    }

    const int index;
    const char* operation = "";
    Resources resources;
    std::shared_ptr<Callback> listener;

private:
    struct Registration {
        int handle;
        std::shared_ptr<Callback> listener;
        bool thermal;
    };

    void answer(int result) {
        if (result != -1 && !serviceGave(result)) {
            finding(operation, " returned ", result, ", which the service never answered");
        }
    }

    // Past eight handles, gives back the oldest.
    void keep(Check api, int handle) {
        answer(handle);
        if (handle != -1) handles_.push_back({api, handle});
        if (handles_.size() > 8) giveBack();
    }
    void giveBack() {
        if (handles_.empty()) return;
        const auto [api, handle] = handles_.front();
        handles_.pop_front();
        operation = "a release";
        if (api == kClass) {
            answer(below(2) ? H::drelResCtlRelease(handle) : H::drelSACtlRelease(handle));
        } else if (api == kFlat) {
            QelRelease(handle);
        } else if (const int result = QelReleaseWapper(handle); result != 0) {
            finding("QelReleaseWapper answered ", result);
        }
    }

    // Past four registrations, unregisters the oldest.
    void remember(int handle, bool thermal) {
        answer(handle);
        if (handle != -1) registrations_.push_back({handle, listener, thermal});
        if (registrations_.size() > 4) unregisterOldest();
    }
    // A -1 may mean that the call was never made (another thread's failed call reset the
    // connection in between), which leaves the group in place: then the registration is tried
    // again later, until its group is gone.
    void unregisterOldest() {
        if (registrations_.empty()) return;
        const Registration registration = registrations_.front();
        registrations_.pop_front();
        operation = "an unregistration";
        int result = -1;
        if (registration.thermal) {
            result = H::drelThermalListeningUnregister(registration.handle);
            answer(result);
        }
        // Only this drops the group from callback_groups (a thermal one too).
        const int dropped = H::drelResListeningUnRegister(registration.handle);
        answer(dropped);
        if (!registration.thermal) result = dropped;
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
        // Kept alive, as a real caller would, for a report that may still be on its way. A 0 is
        // the service's word that it dropped the listener (a restart drops them all anyway).
        (result == 0 ? confirmed_ : orphans_).push_back(registration.listener);
    }

    std::mt19937_64 rng_;
    int serial_ = 0;
    std::deque<std::pair<Check, int>> handles_;
    std::deque<Registration> registrations_;
    std::vector<std::shared_ptr<Callback>> orphans_, confirmed_;
};

// Every operation of the three APIs with random arguments, and what its result must be.
struct Operation {
    const char* name;
    Check check;
    std::function<int(Caller&)> run;
};
const Operation kOperations[] = {
        {"drelResCtlRequest (with a callback or none)", kClass,
         [](Caller& c) {
             const int t = c.timeout();
             return c.below(2) ? H::drelResCtlRequest(c.index, t, c.res(), 0, 1, 0, c.oneShot())
                               : H::drelResCtlRequest(c.index, t, c.res(), 0, 1, 0);
         }},
        {"drelSACtlRequest (with a callback or none)", kClass,
         [](Caller& c) {
             const int t = c.timeout();
             return c.below(2) ? H::drelSACtlRequest(c.index, t, c.id(), 0, 0, 0, c.oneShot())
                               : H::drelSACtlRequest(c.index, t, c.id(), 0, 0, 0);
         }},
        {"drel_resctl_request_by_path (with a callback or none)", kClass,
         [](Caller& c) {
             const int t = c.timeout();
             return c.below(2) ? H::drel_resctl_request_with_callback_by_path(
                                         c.index, t, {c.path()}, {c.value()}, 0, 0, 0, c.oneShot())
                               : H::drel_resctl_request_by_path(c.index, t, {c.path()}, {c.value()},
                                                                0, 0, 0);
         }},
        {"drelResListeningRegister", kListening,
         [](Caller& c) {
             Resources ids{{c.id(), std::nullopt}, {c.ownId(), std::nullopt}};
             return H::drelResListeningRegister(ids, 0, c.listen());
         }},
        {"drel_res_listening_register_by_path", kListening,
         [](Caller& c) {
             return H::drel_res_listening_register_by_path({c.path(), c.ownPath()}, 0, c.listen());
         }},
        {"drel_res_listening_register_map_by_path", kListening,
         [](Caller& c) {
             return H::drel_res_listening_register_map_by_path({{c.path(), ""}, {c.ownPath(), ""}},
                                                               0, c.listen());
         }},
        {"drelThermalListeningRegister", kThermal,
         [](Caller& c) {
             return H::drelThermalListeningRegister({c.below(4), c.below(4)}, c.listen());
         }},
        {"drelThermalNotify", kAnswer,
         [](Caller& c) {
             Resources levels{{c.below(4), c.value()}};
             return H::drelThermalNotify(levels, 0);
         }},
        {"drelResStateRequest", kOwn,
         [](Caller& c) {
             Resources states;
             const int result = H::drelResStateRequest(c.res(), 0, states);
             std::vector<std::string> values;
             for (const auto& state : states) values.push_back(state.resValue.value_or(""));
             return c.query(values, result);
         }},
        {"drel_res_state_request_by_path", kOwn,
         [](Caller& c) {
             std::vector<std::string> states;
             return c.query(states,
                            H::drel_res_state_request_by_path({c.path(), c.path()}, {}, 0, states));
         }},
        {"drel_res_state_request_map_by_path", kOwn,
         [](Caller& c) {
             const std::string path = c.path();
             std::map<std::string, std::string> states;
             const int result = H::drel_res_state_request_map_by_path({{path, ""}}, 0, states);
             std::vector<std::string> values;
             for (const auto& [statePath, value] : states) {
                 if (statePath != path) finding("a state of an unasked path ", statePath);
                 values.push_back(value);
             }
             return c.query(values, result);
         }},
        {"drelPropertySet", kAnswer,
         [](Caller& c) { return H::drelPropertySet(c.property(), "v" + c.value()); }},
        {"drelPropertyGet", kOwn,
         [](Caller& c) {
             char* value = H::drelPropertyGet(c.property());
             const std::string text(value);
             delete[] value;
             if (!text.empty() && (text[0] != 'v' || !isServiceValue(text.substr(1)))) {
                 finding("drelPropertyGet gave \"", text, "\", which nobody set");
             }
             return 0;
         }},
        {"drel_init", kOwn, [](Caller&) { return H::drel_init(), 0; }},
        {"a diagnostic", kZeroOrFailed,
         [](Caller& c) {
             int (*const diagnostics[])() = {H::drelDumpToDoQueue,
                                             H::drelDumpRunMap,
                                             H::drelDumpActiveResMap,
                                             H::drelDumpResRequest,
                                             H::drelDumpResInfo,
                                             H::drelDumpSAInfo,
                                             H::drelDumpPidFdList,
                                             H::drelDumpPidfdMonitorMap,
                                             H::drelDumpResRecordList,
                                             H::drelHistoryRequestRecordOn,
                                             H::drelHistoryRequestRecordOff};
             return diagnostics[c.below(11)]();
         }},
        {"qelInit", kOwn,
         [](Caller&) {
             const int result = qelInit();
             if (result < -2) finding("qelInit answered ", result);
             return result;
         }},
        {"QelEventAcquire", kFlat,
         [](Caller& c) {
             return QelEventAcquire(c.below(199), "pkg", "id", c.timeout(), c.flat());
         }},
        {"QelResAcquire", kFlat,
         [](Caller& c) { return QelResAcquire(c.flat(), 0, "id", c.timeout()); }},
        {"QelPlatformResAcquire", kFlat,
         [](Caller& c) { return QelPlatformResAcquire(c.flat(), 0, "id", "pkg", c.timeout()); }},
        {"QelNotify", kAnswer,
         [](Caller& c) {
             return QelNotify(c.below(8), 1, {1, 2});
         }},
        {"QelMutiResStateRequest", kOwn,
         [](Caller& c) {
             // Entries the service did not answer keep the caller's "0".
             std::vector<QelClient::Resource> query{{c.id(), "0"}, {c.id(), "0"}};
             const int counted = QelMutiResStateRequest(query);
             if (counted < -1 || counted > 2) finding("QelMutiResStateRequest counted ", counted);
             return c.query({query[0].resValue.value_or(""), query[1].resValue.value_or("")});
         }},
        {"QelResStateRequest", kOwn,
         [](Caller& c) {
             std::string value = "0";
             QelResStateRequest(c.id(), value);
             return c.query({value});
         }},
        {"QelGetHistory", kOwn,
         [](Caller&) {
             std::string history;
             const int result = QelGetHistory(history);
             const bool whole = history.rfind("start:", 0) == 0 &&
                                history.find(";end", history.size() - 4) != std::string::npos;
             if (result == -1 ? !history.empty() : (result != 0 || !whole)) {
                 finding("QelGetHistory gave ", result, " \"", history, "\"");
             }
             return result;
         }},
        {"QelGetPMStatus", kOwn,
         [](Caller& c) {
             const int status = QelGetPMStatus(c.id());
             if (status < -1 || status > 999) finding("QelGetPMStatus gave ", status);
             return status;
         }},
        {"qelRuleCtl", kAnswer,
         [](Caller& c) { return qelRuleCtl(c.below(8), c.below(2), c.flat()); }},
        {"setRelatedSysInfo", kAnswer,
         [](Caller& c) { return setRelatedSysInfo(c.below(8), c.index); }},
        {"QelEventAcquireWrapper", kWrapper,
         [](Caller& c) {
             // A name of the catalogue or, now and then, one that is none.
             const int at = c.below(static_cast<int>(gActionList.size()));
             const std::string name = c.below(10) ? gActionList[at] : "NO";
             return QelEventAcquireWrapper("PRAXEL_" + name, "scene", "id", c.timeout());
         }},
        {"QelNotifyWapper", kZero,
         [](Caller& c) {
             // Every scenario kind of the wrapper, with texts for the rules that take one.
             const int sources[] = {1, 2, 3, 8, 9, 14, 15, 102, 111, 129, 130, 131, 1000, 9000};
             const char* texts[] = {"0-80,1-90", "colocation:1,groupmigrate:95-85", "1,2;3,4", ""};
             return QelNotifyWapper("stress", sources[c.below(14)], c.below(3) - 1, c.below(5), 0,
                                    0, texts[c.below(4)]);
         }},
};

// A random operation, or (one step in eight) a release or an unregistration of the oldest.
void Caller::step() {
    { std::lock_guard<std::mutex> wait(turnstile); }
    std::shared_lock<std::shared_mutex> inside(gate);
    const int pick = below(static_cast<int>(std::size(kOperations)) + 4);
    if (pick >= static_cast<int>(std::size(kOperations))) {
        return pick % 2 ? giveBack() : unregisterOldest();
    }
    const Operation& row = kOperations[pick];
    operation = row.name;
    const int result = row.run(*this);
    if (row.check == kListening || row.check == kThermal) {
        remember(result, row.check == kThermal);
    } else if (row.check == kAnswer) {
        answer(result);
    } else if (row.check == kZero || row.check == kZeroOrFailed) {
        if (result != 0 && (row.check == kZero || result != -1)) {
            finding(operation, " answered ", result);
        }
    } else if (row.check != kOwn) {
        keep(row.check, result);
    }
}

// With the callers paused, the service back and every death delivered, the first call of each
// API must succeed without the caller doing anything first.
void checkNextCallsSucceed(int restart) {
    faultsOn = false;
    EXPECT_EQ(0, H::drelPropertySet("stress.restart", std::to_string(restart)))
            << "class API after restart " << restart;
    EXPECT_EQ(0, setRelatedSysInfo(99, restart)) << "flat API after restart " << restart;
    const int handle = QelEventAcquireWrapper("PRAXEL_" + gActionList.at(0), "stress", "check", 0);
    EXPECT_TRUE(handle != -1 && serviceGave(handle)) << "wrapper after restart " << restart;
    EXPECT_EQ(0, QelReleaseWapper(handle));
    faultsOn = true;
}

// Changes every resource and thermal level a listener may hear of (each twice, so that one
// change at least is a change), for dropped listeners to hear nothing of.
void changeEverything() {
    for (const char* value : {"998", "999"}) {
        for (int i = 0; i < 16; ++i) {
            Resources byId{{0x01500000 + i, value}};
            EXPECT_NE(-1, H::drelResCtlRequest(0, 0, byId, 0, 1, 0));
            const std::string path = "/stress/res" + std::to_string(i);
            EXPECT_NE(-1, H::drel_resctl_request_by_path(0, 0, {path}, {value}, 0, 0, 0));
        }
        Resources levels{{0, value}, {1, value}, {2, value}, {3, value}};
        H::drelThermalNotify(levels, 0);  // -1 when no listener is left to hear it
    }
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

    ABinderProcess_startThreadPool();
    hostbinder::reset();
    Watchdog watchdog(std::chrono::seconds(envLong("QEL_STRESS_BOUND_S", 300)));
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
        // The callers go on; the last service instance too gets its share of traffic.
        paused.unlock();
        stopEntering.unlock();
        std::this_thread::sleep_for(std::chrono::milliseconds(1 + chaos() % intervalMs));
    }

    faultsOn = false;
    stop = true;
    for (std::thread& worker : workers) worker.join();
    hostbinder::waitIdle();
    for (auto& caller : callers) caller->cleanUp();
    hostbinder::waitIdle();
    changeEverything();
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
