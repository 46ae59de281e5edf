// Chaos: T caller threads run a bounded random mix of every operation of the class API, the flat
// API and the action wrapper against the example service, while a chaos thread kills and restarts
// the service at random moments and the service itself fails, errs and stalls at random
// (FaultyDrel).
//
// What must hold: nothing crashes; the run ends within its bound (a watchdog ends the process
// otherwise); every result is -1 or a value the service gave; after each restart the next call
// of each API succeeds without any action of the caller; at the end the registries hold exactly
// what they should (no registration left after its unregistration, and only one-shot clients
// whose service never reported, each once). The sanitizer presets run it under ASan, LSan and
// TSan.
//
// Parameters (environment): QEL_STRESS_THREADS (8), QEL_STRESS_KILLS (100),
// QEL_STRESS_INTERVAL_MS (longest wait between kills, 20), QEL_STRESS_SEED (1),
// QEL_STRESS_BOUND_S (deadlock bound, 300).
#include <android/binder_manager.h>
#include <gtest/gtest.h>
#include <hostbinder/hostbinder.h>

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <cstdio>
#include <deque>
#include <iterator>
#include <list>
#include <map>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "QelWrapper.h"
#include "halclient.h"
#include "halclient/halclient_internal.h"
#include "qel.h"
#include "stress/faulty_drel.h"
#include "stress/stress_support.h"

namespace qel_stress {
namespace {

constexpr const char* kInstance = "vendor.quarn.hardware.drel.IDrel/default";
constexpr int kPoolSize = 16;
constexpr int kThermalIds = 4;
constexpr int kMaxHeldHandles = 8;
constexpr int kMaxRegistrations = 4;

int32_t poolId(int i) {
    return 0x01500000 + i;
}
std::string poolPath(int i) {
    return "/stress/res" + std::to_string(i);
}

// Values the callers request are "1".."999"; a resource nobody holds reads "0".
std::string valueText(Rng& rng) {
    return std::to_string(1 + rng.below(999));
}
bool isServiceValue(const std::string& text) {
    if (text == "0") return true;
    if (text.empty() || text.size() > 3 || text[0] == '0') return false;
    return std::all_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; });
}

// Violations seen by any thread; the first few are kept for the failure message.
class Findings {
public:
    void add(const std::string& what) {
        std::lock_guard<std::mutex> lock(mutex_);
        if (first_.size() < 20) first_.push_back(what);
        ++count_;
    }
    size_t count() const {
        std::lock_guard<std::mutex> lock(mutex_);
        return count_;
    }
    std::string summary() const {
        std::lock_guard<std::mutex> lock(mutex_);
        std::string text;
        for (const std::string& line : first_) text += "  " + line + "\n";
        return text;
    }

private:
    mutable std::mutex mutex_;
    std::vector<std::string> first_;
    size_t count_ = 0;
};

// A caller's one-shot callback: may be called once at most.
class OneShot : public IClientCallback {
public:
    explicit OneShot(Findings& findings) : findings_(findings) {}
    void onCallback(std::list<QelClient::Resource> resources) override {
        if (++calls > 1) findings_.add("one-shot callback called twice");
        for (const QelClient::Resource& resource : resources) {
            if (!resource.resValue || !isServiceValue(*resource.resValue)) {
                findings_.add("one-shot report with a value the service never holds");
            }
        }
    }
    std::atomic<int> calls{0};

private:
    Findings& findings_;
};

class OneShotByPath : public IClientCallbackByPath {
public:
    explicit OneShotByPath(Findings& findings) : findings_(findings) {}
    void onCallback(std::vector<std::string> paths, std::vector<std::string> values) override {
        if (++calls > 1) findings_.add("path one-shot callback called twice");
        if (paths.size() != values.size()) findings_.add("path report of unequal lengths");
    }
    std::atomic<int> calls{0};

private:
    Findings& findings_;
};

// A listener of either form; counts its reports.
class Listener : public IClientCallback, public IClientCallbackByPath {
public:
    explicit Listener(std::atomic<uint64_t>& reports) : reports_(reports) {}
    void onCallback(std::list<QelClient::Resource> /*resources*/) override { ++reports_; }
    void onCallback(std::vector<std::string> /*paths*/,
                    std::vector<std::string> /*values*/) override {
        ++reports_;
    }

private:
    std::atomic<uint64_t>& reports_;
};

struct Registration {
    int handle;
    bool thermal;
    std::shared_ptr<Listener> listener;
};

// Everything the threads of one run share.
class ChaosRun {
public:
    explicit ChaosRun(uint64_t seed) : seed_(seed) {}

    // Registers a new service instance (the first start or a restart).
    void startService() {
        auto inner = ::ndk::SharedRefBase::make<DrelService>();
        std::lock_guard<std::mutex> lock(serviceMutex_);
        service_ = ::ndk::SharedRefBase::make<FaultyDrel>(
                inner, seed_ + ++generation_, FaultyDrel::Odds{}, ledger, faults, faultsOn);
        ASSERT_EQ(EX_NONE, AServiceManager_addService(service_->asBinder().get(), kInstance));
    }

    // Callers wait here while the chaos thread has paused them.
    void enter() {
        std::unique_lock<std::mutex> lock(gateMutex_);
        gate_.wait(lock, [this] { return !paused_; });
        ++active_;
    }
    void leave() {
        std::lock_guard<std::mutex> lock(gateMutex_);
        if (--active_ == 0) gate_.notify_all();
    }
    // Returns once no caller is inside an operation; no caller enters one until resume().
    void pause() {
        std::unique_lock<std::mutex> lock(gateMutex_);
        paused_ = true;
        gate_.wait(lock, [this] { return active_ == 0; });
    }
    void resume() {
        {
            std::lock_guard<std::mutex> lock(gateMutex_);
            paused_ = false;
        }
        gate_.notify_all();
    }

    std::shared_ptr<OneShot> newOneShot() {
        auto callback = std::make_shared<OneShot>(findings);
        std::lock_guard<std::mutex> lock(oneShotMutex_);
        oneShots_.push_back(callback);
        return callback;
    }
    std::shared_ptr<OneShotByPath> newOneShotByPath() {
        auto callback = std::make_shared<OneShotByPath>(findings);
        std::lock_guard<std::mutex> lock(oneShotMutex_);
        oneShotsByPath_.push_back(callback);
        return callback;
    }
    // The caller callbacks of one-shot requests that were never reported.
    std::set<const void*> unreportedOneShots() const {
        std::lock_guard<std::mutex> lock(oneShotMutex_);
        std::set<const void*> unreported;
        for (const auto& callback : oneShots_) {
            if (callback->calls == 0) unreported.insert(callback.get());
        }
        for (const auto& callback : oneShotsByPath_) {
            if (callback->calls == 0) unreported.insert(callback.get());
        }
        return unreported;
    }
    size_t oneShotCount() const {
        std::lock_guard<std::mutex> lock(oneShotMutex_);
        return oneShots_.size() + oneShotsByPath_.size();
    }

    // A result must be -1 or an answer the service gave.
    void checkAnswer(const char* operation, int result) {
        ++operations;
        if (result == -1) {
            ++failedOperations;
            return;
        }
        if (!ledger.gave(result)) {
            findings.add(std::string(operation) + " returned " + std::to_string(result) +
                         ", which the service never answered");
        }
    }
    // A query result must be -1 or the size of what it appended.
    void checkSize(const char* operation, int result, size_t size) {
        ++operations;
        if (result == -1) {
            ++failedOperations;
        } else if (result < 0 || static_cast<size_t>(result) != size) {
            findings.add(std::string(operation) + " returned " + std::to_string(result) + " for " +
                         std::to_string(size) + " entries");
        }
    }
    void checkValue(const char* operation, const std::string& value) {
        if (!isServiceValue(value)) {
            findings.add(std::string(operation) + " gave value \"" + value +
                         "\", which the service never holds");
        }
    }

    Ledger ledger;
    FaultCounters faults;
    std::atomic<bool> faultsOn{true};
    Findings findings;
    std::atomic<uint64_t> operations{0};
    std::atomic<uint64_t> failedOperations{0};
    std::atomic<uint64_t> listenerReports{0};

private:
    const uint64_t seed_;
    std::mutex serviceMutex_;
    std::shared_ptr<FaultyDrel> service_;
    uint64_t generation_ = 0;

    std::mutex gateMutex_;
    std::condition_variable gate_;
    bool paused_ = false;
    int active_ = 0;

    mutable std::mutex oneShotMutex_;
    std::vector<std::shared_ptr<OneShot>> oneShots_;
    std::vector<std::shared_ptr<OneShotByPath>> oneShotsByPath_;
};

// One caller thread: a random operation per step, remembering the handles and registrations it
// owns so that it can give them back.
class Caller {
public:
    Caller(ChaosRun& run, int index, uint64_t seed)
        : run_(run), index_(index), rng_(seed * 7919 + static_cast<uint64_t>(index)) {}

    void step() {
        run_.enter();
        switch (rng_.below(29)) {
            case 0:
                resCtl(false);
                break;
            case 1:
                resCtl(true);
                break;
            case 2:
                saCtl(false);
                break;
            case 3:
                saCtl(true);
                break;
            case 4:
                releaseClassHandle();
                break;
            case 5:
                listen();
                break;
            case 6:
                unregisterOldest();
                break;
            case 7:
                thermalNotify();
                break;
            case 8:
                thermalListen();
                break;
            case 9:
                classState();
                break;
            case 10:
                requestByPath(false);
                break;
            case 11:
                requestByPath(true);
                break;
            case 12:
                stateByPath();
                break;
            case 13:
                stateMapByPath();
                break;
            case 14:
                listenByPath();
                break;
            case 15:
                diagnostics();
                break;
            case 16:
                properties();
                break;
            case 17:
                drelHalclient::drel_init();
                ++run_.operations;
                break;
            case 18:
                qelInitOnce();
                break;
            case 19:
                flatAcquire();
                break;
            case 20:
                flatRelease();
                break;
            case 21:
                run_.checkAnswer("QelNotify", QelNotify(rng_.below(8), 1, {1, 2}));
                break;
            case 22:
                flatState();
                break;
            case 23:
                flatHistory();
                break;
            case 24:
                powerMode();
                break;
            case 25:
                ruleControl();
                break;
            case 26:
                wrapperAcquire();
                break;
            case 27:
                wrapperRelease();
                break;
            default:
                wrapperNotify();
                break;
        }
        run_.leave();
    }

    // Gives back every registration (faults are off by now, the service up) and every handle.
    void cleanUp() {
        // With the service up and no faults, each registration goes at the first attempt; the
        // bound only keeps a broken library from hanging here.
        for (int attempt = 0; attempt < 1000 && !registrations_.empty(); ++attempt) {
            unregisterOldest();
        }
        for (int handle : classHandles_) drelHalclient::drelResCtlRelease(handle);
        for (int handle : flatHandles_) QelRelease(handle);
        for (int handle : wrapperHandles_) QelReleaseWapper(handle);
        wrapperHandles_.clear();
        classHandles_.clear();
        flatHandles_.clear();
    }

private:
    using Resources = std::list<QelClient::Resource>;

    int timeout() { return rng_.percent(50) ? 0 : 1 + rng_.below(100); }

    Resources someResources() {
        Resources resources;
        int count = 1 + rng_.below(3);
        for (int i = 0; i < count; ++i) {
            resources.push_back({poolId(rng_.below(kPoolSize)), valueText(rng_)});
        }
        return resources;
    }

    void keep(std::deque<int>& handles, int handle, bool classApi) {
        if (handle == -1) return;
        handles.push_back(handle);
        if (handles.size() <= kMaxHeldHandles) return;
        int oldest = handles.front();
        handles.pop_front();
        if (classApi) {
            run_.checkAnswer("drelResCtlRelease", drelHalclient::drelResCtlRelease(oldest));
        } else {
            QelRelease(oldest);
            ++run_.operations;
        }
    }

    void resCtl(bool withCallback) {
        Resources resources = someResources();
        int handle;
        if (withCallback) {
            handle = drelHalclient::drelResCtlRequest(index_, timeout(), resources, 0, 1, 0,
                                                      run_.newOneShot());
        } else {
            handle = drelHalclient::drelResCtlRequest(index_, timeout(), resources, 0, 1, 0);
        }
        run_.checkAnswer("drelResCtlRequest", handle);
        keep(classHandles_, handle, true);
    }

    void saCtl(bool withCallback) {
        int scene = poolId(rng_.below(kPoolSize));
        int handle;
        if (withCallback) {
            handle = drelHalclient::drelSACtlRequest(index_, timeout(), scene, 0, 0, 0,
                                                     run_.newOneShot());
        } else {
            handle = drelHalclient::drelSACtlRequest(index_, timeout(), scene, 0, 0, 0);
        }
        run_.checkAnswer("drelSACtlRequest", handle);
        keep(classHandles_, handle, true);
    }

    void releaseClassHandle() {
        if (classHandles_.empty()) return;
        int handle = classHandles_.front();
        classHandles_.pop_front();
        run_.checkAnswer("drelSACtlRelease", drelHalclient::drelSACtlRelease(handle));
    }

    // Each registration listens to a list no other registration has: a pool resource and one of
    // its own.
    int uniqueId() { return 0x02000000 + index_ * 0x10000 + (++serial_ & 0xffff); }

    void remember(int handle, bool thermal, std::shared_ptr<Listener> listener) {
        if (handle == -1) return;
        registrations_.push_back({handle, thermal, std::move(listener)});
        if (registrations_.size() > kMaxRegistrations) unregisterOldest();
    }

    void listen() {
        auto listener = std::make_shared<Listener>(run_.listenerReports);
        Resources resources{{poolId(rng_.below(kPoolSize)), std::nullopt},
                            {uniqueId(), std::nullopt}};
        int handle = drelHalclient::drelResListeningRegister(resources, 0, listener);
        run_.checkAnswer("drelResListeningRegister", handle);
        remember(handle, false, listener);
    }

    void thermalListen() {
        auto listener = std::make_shared<Listener>(run_.listenerReports);
        int handle = drelHalclient::drelThermalListeningRegister(
                {rng_.below(kThermalIds), rng_.below(kThermalIds)}, listener);
        run_.checkAnswer("drelThermalListeningRegister", handle);
        remember(handle, true, listener);
    }

    void listenByPath() {
        auto listener = std::make_shared<Listener>(run_.listenerReports);
        std::string own = "/stress/own" + std::to_string(uniqueId());
        int handle;
        if (rng_.percent(50)) {
            handle = drelHalclient::drel_res_listening_register_by_path(
                    {poolPath(rng_.below(kPoolSize)), own}, 0, listener);
        } else {
            handle = drelHalclient::drel_res_listening_register_map_by_path(
                    {{poolPath(rng_.below(kPoolSize)), ""}, {own, ""}}, 0, listener);
        }
        run_.checkAnswer("drel_res_listening_register_by_path", handle);
        remember(handle, false, listener);
    }

    // Unregisters the oldest registration. A -1 may mean that the call was never made (the
    // connection was reset by another thread's failed call in between), which leaves the group
    // in place, so the registration is kept to be tried again until its group is gone.
    void unregisterOldest() {
        if (registrations_.empty()) return;
        Registration registration = registrations_.front();
        registrations_.pop_front();
        if (registration.thermal) {
            run_.checkAnswer("drelThermalListeningUnregister",
                             drelHalclient::drelThermalListeningUnregister(registration.handle));
        }
        // Only this drops the group from callback_groups (thermal ones too).
        run_.checkAnswer("drelResListeningUnRegister",
                         drelHalclient::drelResListeningUnRegister(registration.handle));
        if (stillRegistered(registration.listener.get())) {
            registrations_.push_back(registration);
        } else {
            orphans_.push_back(registration.listener);
        }
    }

    static bool stillRegistered(const Listener* listener) {
        std::lock_guard<std::mutex> lock(callback_group_mutex);
        for (const DrelCallbackGroup& group : callback_groups) {
            const DrelCallbackClient& client = *group.client;
            if (client.clientCallback.get() == listener ||
                client.clientCallbackByPath.get() == listener) {
                return true;
            }
        }
        return false;
    }

    void thermalNotify() {
        Resources levels{{rng_.below(kThermalIds), valueText(rng_)}};
        run_.checkAnswer("drelThermalNotify", drelHalclient::drelThermalNotify(levels, 0));
    }

    void classState() {
        Resources query{{poolId(rng_.below(kPoolSize)), std::nullopt},
                        {poolId(rng_.below(kPoolSize)), std::nullopt}};
        Resources states;
        int result = drelHalclient::drelResStateRequest(query, 0, states);
        run_.checkSize("drelResStateRequest", result, states.size());
        for (const QelClient::Resource& state : states) {
            run_.checkValue("drelResStateRequest", state.resValue.value_or("<absent>"));
        }
    }

    void requestByPath(bool withCallback) {
        std::vector<std::string> paths{poolPath(rng_.below(kPoolSize))};
        std::vector<std::string> values{valueText(rng_)};
        int handle;
        if (withCallback) {
            handle = drelHalclient::drel_resctl_request_with_callback_by_path(
                    index_, timeout(), paths, values, 0, 0, 0, run_.newOneShotByPath());
        } else {
            handle = drelHalclient::drel_resctl_request_by_path(index_, timeout(), paths, values, 0,
                                                                0, 0);
        }
        run_.checkAnswer("drel_resctl_request_by_path", handle);
        keep(classHandles_, handle, true);
    }

    void stateByPath() {
        std::vector<std::string> states;
        int result = drelHalclient::drel_res_state_request_by_path(
                {poolPath(rng_.below(kPoolSize)), poolPath(rng_.below(kPoolSize))}, {}, 0, states);
        run_.checkSize("drel_res_state_request_by_path", result, states.size());
        for (const std::string& state : states) {
            run_.checkValue("drel_res_state_request_by_path", state);
        }
    }

    void stateMapByPath() {
        std::map<std::string, std::string> states;
        std::string path = poolPath(rng_.below(kPoolSize));
        int result = drelHalclient::drel_res_state_request_map_by_path({{path, ""}}, 0, states);
        run_.checkSize("drel_res_state_request_map_by_path", result, states.size());
        for (const auto& [statePath, value] : states) {
            if (statePath != path) run_.findings.add("state map answered an unasked path");
            run_.checkValue("drel_res_state_request_map_by_path", value);
        }
    }

    void diagnostics() {
        int result = rng_.percent(50) ? drelHalclient::drelDumpActiveResMap()
                                      : drelHalclient::drelHistoryRequestRecordOn();
        ++run_.operations;
        if (result != 0 && result != -1) run_.findings.add("a dump answered neither 0 nor -1");
    }

    void properties() {
        std::string name = "stress.p" + std::to_string(rng_.below(4));
        if (rng_.percent(50)) {
            run_.checkAnswer("drelPropertySet",
                             drelHalclient::drelPropertySet(name, "v" + valueText(rng_)));
            return;
        }
        char* value = drelHalclient::drelPropertyGet(name);
        ++run_.operations;
        std::string text(value);
        delete[] value;
        if (!text.empty() && (text[0] != 'v' || !isServiceValue(text.substr(1)))) {
            run_.findings.add("drelPropertyGet gave \"" + text + "\", which nobody set");
        }
    }

    void qelInitOnce() {
        int result = qelInit();
        ++run_.operations;
        if (result != 0 && result != -1 && result != -2) {
            run_.findings.add("qelInit returned " + std::to_string(result));
        }
    }

    std::vector<QelClient::Resource> flatResources() {
        std::vector<QelClient::Resource> resources;
        for (const QelClient::Resource& resource : someResources()) resources.push_back(resource);
        return resources;
    }

    void flatAcquire() {
        int handle;
        switch (rng_.below(3)) {
            case 0:
                handle = QelEventAcquire(rng_.below(199), "stress.pkg", "caller", timeout(),
                                         flatResources());
                break;
            case 1:
                handle = QelResAcquire(flatResources(), 0, "caller", timeout());
                break;
            default:
                handle = QelPlatformResAcquire(flatResources(), 0, "caller", "stress.pkg",
                                               timeout());
                break;
        }
        run_.checkAnswer("QelEventAcquire", handle);
        keep(flatHandles_, handle, false);
    }

    void flatRelease() {
        if (flatHandles_.empty()) return;
        QelRelease(flatHandles_.front());
        flatHandles_.pop_front();
        ++run_.operations;
    }

    void flatState() {
        if (rng_.percent(50)) {
            std::vector<QelClient::Resource> resources{{poolId(rng_.below(kPoolSize)), "x"},
                                                       {poolId(rng_.below(kPoolSize)), "x"}};
            int result = QelMutiResStateRequest(resources);
            ++run_.operations;
            if (result < -1 || result > 2) {
                run_.findings.add("QelMutiResStateRequest counted " + std::to_string(result));
            }
            if (result == -1) ++run_.failedOperations;
            for (const QelClient::Resource& resource : resources) {
                // Untouched entries keep the caller's "x".
                if (resource.resValue != "x") {
                    run_.checkValue("QelMutiResStateRequest", resource.resValue.value_or(""));
                }
            }
            return;
        }
        std::string value = "x";
        QelResStateRequest(poolId(rng_.below(kPoolSize)), value);
        ++run_.operations;
        if (value != "x") run_.checkValue("QelResStateRequest", value);
    }

    void flatHistory() {
        std::string history;
        int result = QelGetHistory(history);
        ++run_.operations;
        if (result == -1) {
            ++run_.failedOperations;
            if (!history.empty()) run_.findings.add("a failed QelGetHistory wrote its output");
        } else if (result != 0 || history.rfind("start:", 0) != 0 || history.size() < 10 ||
                   history.substr(history.size() - 4) != ";end") {
            run_.findings.add("QelGetHistory gave " + std::to_string(result) + " \"" + history +
                              "\"");
        }
    }

    void powerMode() {
        int result = QelGetPMStatus(poolId(rng_.below(kPoolSize)));
        ++run_.operations;
        if (result < -1 || result > 999) {
            run_.findings.add("QelGetPMStatus gave " + std::to_string(result));
        }
    }

    void ruleControl() {
        if (rng_.percent(50)) {
            run_.checkAnswer("qelRuleCtl",
                             qelRuleCtl(rng_.below(8), rng_.below(2), flatResources()));
        } else {
            run_.checkAnswer("setRelatedSysInfo", setRelatedSysInfo(rng_.below(8), index_));
        }
    }

    // An event of the catalogue (or, now and then, a name that is none) through the wrapper.
    void wrapperAcquire() {
        std::string name = rng_.percent(90) && !gActionList.empty()
                                   ? gActionList[rng_.below(static_cast<int>(gActionList.size()))]
                                   : "NO_SUCH_ACTION";
        int handle = QelEventAcquireWrapper("PRAXEL_" + name, "stress.scene", "caller", timeout());
        run_.checkAnswer("QelEventAcquireWrapper", handle);
        keep(wrapperHandles_, handle, false);
    }

    void wrapperRelease() {
        if (wrapperHandles_.empty()) return;
        ++run_.operations;
        if (QelReleaseWapper(wrapperHandles_.front()) != 0) {
            run_.findings.add("QelReleaseWapper answered other than 0");
        }
        wrapperHandles_.pop_front();
    }

    // A scenario report of every kind the wrapper knows, with texts for the rules that take one.
    void wrapperNotify() {
        static constexpr int kSources[] = {1,   2,   3,   8,   9,   14,   15,
                                           102, 111, 129, 130, 131, 1000, 9000};
        static const char* const kTexts[] = {"0-80,1-90", "colocation:1,groupmigrate:95-85",
                                             "1,2;3,4", ""};
        int src = kSources[rng_.below(static_cast<int>(std::size(kSources)))];
        int result = QelNotifyWapper("stress", src, rng_.below(3) - 1, rng_.below(5), 0, 0,
                                     kTexts[rng_.below(4)]);
        ++run_.operations;
        if (result != 0) run_.findings.add("QelNotifyWapper answered other than 0");
    }

    ChaosRun& run_;
    const int index_;
    Rng rng_;
    int serial_ = 0;
    std::deque<int> classHandles_;
    std::deque<int> flatHandles_;
    std::deque<int> wrapperHandles_;
    std::deque<Registration> registrations_;
    // Listeners of dropped registrations, kept so that a late report finds its caller alive as
    // a real caller would keep it.
    std::vector<std::shared_ptr<Listener>> orphans_;
};

// With the callers paused, the service back and every death delivered, the first call of each
// API must succeed without the caller doing anything first.
void checkNextCallsSucceed(ChaosRun& run, int restart, uint64_t& checked) {
    run.faultsOn = false;
    EXPECT_EQ(0, drelHalclient::drelPropertySet("stress.restart", std::to_string(restart)))
            << "class API after restart " << restart;
    EXPECT_EQ(0, setRelatedSysInfo(99, restart)) << "flat API after restart " << restart;
    int handle = QelEventAcquireWrapper("PRAXEL_" + gActionList.at(0), "stress", "check", 0);
    EXPECT_TRUE(handle != -1 && run.ledger.gave(handle)) << "wrapper after restart " << restart;
    EXPECT_EQ(0, QelReleaseWapper(handle));
    run.faultsOn = true;
    ++checked;
}

// Every group left in callback_groups, and every parked one-shot client that is not waiting for a
// report that never came, is a registry entry that should not be there.
void checkRegistries(ChaosRun& run) {
    {
        std::lock_guard<std::mutex> lock(callback_group_mutex);
        EXPECT_TRUE(callback_groups.empty())
                << callback_groups.size() << " listening registrations left after unregistering";
    }
    std::set<const void*> unreported = run.unreportedOneShots();
    std::lock_guard<std::mutex> lock(request_callback_mutex);
    std::set<const DrelCallbackClient*> seen;
    for (const auto& client : request_callbacks) {
        ASSERT_NE(nullptr, client);
        EXPECT_FALSE(client->is_register) << "a registration in request_callbacks";
        EXPECT_TRUE(seen.insert(client.get()).second) << "a one-shot client parked twice";
        const void* caller = client->by_path
                                     ? static_cast<const void*>(client->clientCallbackByPath.get())
                                     : static_cast<const void*>(client->clientCallback.get());
        EXPECT_EQ(1u, unreported.count(caller))
                << "a one-shot client whose service reported is still parked";
    }
    EXPECT_LE(request_callbacks.size(), unreported.size());
    std::printf("stress: %zu one-shot requests, %zu never reported, %zu of them parked\n",
                run.oneShotCount(), unreported.size(), request_callbacks.size());
}

TEST(ChaosTest, SurvivesKillsRestartsAndInjectedFaultsOnEveryOperation) {
    const int threads = static_cast<int>(envLong("QEL_STRESS_THREADS", 8));
    const int kills = static_cast<int>(envLong("QEL_STRESS_KILLS", 100));
    const int intervalMs = static_cast<int>(std::max(1L, envLong("QEL_STRESS_INTERVAL_MS", 20)));
    const uint64_t seed = static_cast<uint64_t>(envLong("QEL_STRESS_SEED", 1));
    const long boundSeconds = envLong("QEL_STRESS_BOUND_S", 300);
    std::printf("stress: %d threads, %d kills, seed %llu\n", threads, kills,
                static_cast<unsigned long long>(seed));

    hostbinder::reset();
    ChaosRun run(seed);
    Watchdog watchdog(std::chrono::seconds(boundSeconds), [&run] {
        std::fprintf(stderr, "stress: %llu operations done before the hang\n",
                     static_cast<unsigned long long>(run.operations.load()));
    });
    run.startService();

    std::atomic<bool> stop{false};
    std::vector<std::unique_ptr<Caller>> callers;
    for (int i = 0; i < threads; ++i) callers.push_back(std::make_unique<Caller>(run, i, seed));
    std::vector<std::thread> workers;
    for (int i = 0; i < threads; ++i) {
        workers.emplace_back([&, i] {
            while (!stop) callers[i]->step();
        });
    }

    Rng chaos(seed * 31 + 17);
    uint64_t killed = 0;
    uint64_t restartChecks = 0;
    for (int k = 1; k <= kills; ++k) {
        std::this_thread::sleep_for(std::chrono::milliseconds(1 + chaos.below(intervalMs)));
        // Half of the kills land in the middle of traffic; the other half in a quiet moment, so
        // that the call checked afterwards is truly the first one after the restart.
        bool quiet = chaos.percent(50);
        if (quiet) run.pause();
        hostbinder::killService(kInstance);
        ++killed;
        if (!quiet) std::this_thread::sleep_for(std::chrono::milliseconds(chaos.below(5)));
        run.startService();
        if (!quiet) run.pause();
        hostbinder::waitIdle();
        checkNextCallsSucceed(run, k, restartChecks);
        run.resume();
    }

    run.faultsOn = false;
    stop = true;
    for (std::thread& worker : workers) worker.join();
    for (auto& caller : callers) caller->cleanUp();
    hostbinder::waitIdle();

    checkRegistries(run);
    EXPECT_EQ(0u, run.findings.count()) << run.findings.summary();
    EXPECT_EQ(static_cast<uint64_t>(kills), restartChecks);
    EXPECT_GT(run.operations.load(), 0u);

    std::printf(
            "stress: %llu operations (%llu answered -1), %llu kills survived, "
            "%llu listener reports\n",
            static_cast<unsigned long long>(run.operations.load()),
            static_cast<unsigned long long>(run.failedOperations.load()),
            static_cast<unsigned long long>(killed),
            static_cast<unsigned long long>(run.listenerReports.load()));
    std::printf(
            "stress: %llu service calls, %llu failures injected (%llu failed statuses, "
            "%llu service-specific errors, %llu of them after the work was done), "
            "%llu slow answers\n",
            static_cast<unsigned long long>(run.faults.calls.load()),
            static_cast<unsigned long long>(run.faults.injected()),
            static_cast<unsigned long long>(run.faults.failedStatus.load()),
            static_cast<unsigned long long>(run.faults.serviceSpecific.load()),
            static_cast<unsigned long long>(run.faults.afterTheFact.load()),
            static_cast<unsigned long long>(run.faults.slow.load()));
    hostbinder::reset();
}

}  // namespace
}  // namespace qel_stress
