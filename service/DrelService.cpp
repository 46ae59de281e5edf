// DrelService: the IDrel adapter over the service's parts. Each call takes the one mutex, asks
// the parts, gathers the reports its work makes, and delivers them once the mutex is released.

#include "drel-service/DrelService.h"

#include <android/binder_ibinder.h>
#include <android/binder_status.h>
#include <android/log.h>

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <utility>

#include "Diagnostics.h"
#include "FaultInjector.h"
#include "Handles.h"
#include "Listeners.h"
#include "Records.h"
#include "ResourceTable.h"

namespace aidl {
namespace vendor {
namespace quarn {
namespace hardware {
namespace drel {

namespace {

using example::Reports;
using std::chrono::milliseconds;

bool holdsResources(int32_t kind) {
    return kind == DrelService::kKindResource || kind == DrelService::kKindScene ||
           kind == DrelService::kKindEvent || kind == DrelService::kKindPlatform;
}

// The leading decimal integer of a text (leading blanks and a sign allowed), or 0 when the text
// does not start with one or it does not fit in 32 bits.
int32_t leadingInteger(const std::string& text) {
    errno = 0;
    char* end = nullptr;
    long long value = std::strtoll(text.c_str(), &end, 10);
    if (end == text.c_str() || errno == ERANGE || value < INT32_MIN || value > INT32_MAX) {
        return 0;
    }
    return static_cast<int32_t>(value);
}

// Whether the process `caller` may end what `handle` names, made by the process `owner` (null: the
// handle names nothing of the kind). Only its maker may: another process is answered as for an
// unknown handle, so that a handle a client holds by mistake ends nothing of another client's.
bool mayEnd(const char* operation, int32_t handle, const pid_t* owner, pid_t caller) {
    if (owner != nullptr && *owner == caller) return true;
    if (owner == nullptr) {
        __android_log_print(ANDROID_LOG_WARN, DrelService::kLogTag, "%s of unknown handle %d",
                            operation, handle);
    } else {
        __android_log_print(ANDROID_LOG_WARN, DrelService::kLogTag,
                            "%s of handle %d refused: pid %d did not make it", operation, handle,
                            static_cast<int>(caller));
    }
    return false;
}

}  // namespace

struct DrelService::State {
    explicit State(Options options)
        : options(std::move(options)),
          handles(this->options.firstHandle),
          records(this->options.notificationCapacity),
          diagnostics(this->options.historyCapacity) {}

    milliseconds now() const {
        if (options.clock) return options.clock();
        return std::chrono::duration_cast<milliseconds>(
                std::chrono::steady_clock::now().time_since_epoch());
    }

    // One numbering for requests and registrations.
    int32_t newHandleLocked() {
        return handles.next([this](int32_t handle) {
            return resources.find(handle) != nullptr || listeners.find(handle) != nullptr ||
                   listeners.findThermal(handle) != nullptr;
        });
    }

    // Drops every request whose deadline has passed; listeners hear of each as of a release.
    int expireLocked(Reports& reports) {
        const milliseconds current = now();
        int expired = 0;
        while (std::optional<int32_t> handle = resources.due(current)) {
            __android_log_print(ANDROID_LOG_DEBUG, kLogTag, "request %d expired", *handle);
            listeners.reportChanges(resources.drop(*handle), reports);
            ++expired;
        }
        return expired;
    }

    int32_t addRequestLocked(const DrelRequestParcel& parcel, pid_t owner, Reports& reports) {
        const int32_t handle = newHandleLocked();
        const example::Changes changes = resources.add(handle, parcel, owner, now());
        const example::ResourceTable::Request& request = *resources.find(handle);
        if (request.deadline) expiryWake.notify_all();
        diagnostics.record(handle, parcel, request.held);
        if (parcel.callback) {
            // The one-shot callback hears once what the request now holds, and is not kept.
            example::Report applied{parcel.callback, {}, 0, false};
            for (const auto& h : request.held)
                applied.data.push_back(example::recordOf(h.key, h.value));
            reports.push_back(std::move(applied));
        }
        listeners.reportChanges(changes, reports);
        return handle;
    }

    void deliver(Reports& reports) { listeners.deliver(reports, mutex); }

    const Options options;
    example::FaultInjector faults;  // locks by itself

    mutable std::mutex mutex;  // guards everything below
    example::HandleCounter handles;
    example::ResourceTable resources;
    example::Listeners listeners;
    example::Records records;
    example::Diagnostics diagnostics;

    std::condition_variable expiryWake;
    bool stopping = false;
    std::thread expiryThread;
};

DrelService::DrelService() : DrelService(Options{}) {}

DrelService::DrelService(Options options) : state_(std::make_unique<State>(std::move(options))) {}

DrelService::~DrelService() {
    {
        std::lock_guard<std::mutex> lock(state_->mutex);
        state_->stopping = true;
    }
    state_->expiryWake.notify_all();
    if (state_->expiryThread.joinable()) state_->expiryThread.join();
}

// ---- IDrel ----

::ndk::ScopedAStatus DrelService::init() {
    return state_->faults.run([&] {
        std::lock_guard<std::mutex> lock(state_->mutex);
        state_->records.countInit();
        return ::ndk::ScopedAStatus::ok();
    });
}

::ndk::ScopedAStatus DrelService::request(const DrelRequestParcel& parcel, int32_t* _aidl_return) {
    return state_->faults.run([&] {
        State& s = *state_;
        const pid_t caller = AIBinder_getCallingPid();
        Reports reports;
        int32_t result = -1;
        {
            std::lock_guard<std::mutex> lock(s.mutex);
            s.expireLocked(reports);
            if (holdsResources(parcel.requestType)) {
                result = s.addRequestLocked(parcel, caller, reports);
            } else if (parcel.requestType == kKindDiagnostic) {
                result = s.diagnostics.run(parcel, {s.resources, s.listeners, s.records, s.now()});
            } else if (parcel.requestType == kKindThermal) {
                result = s.listeners.notifyThermal(parcel.resources, reports);
            } else if (parcel.requestType == kKindNotify) {
                s.records.notify(parcel.resources);
                result = 0;
            } else {
                __android_log_print(ANDROID_LOG_WARN, kLogTag, "request of kind %d is not handled",
                                    parcel.requestType);
            }
        }
        s.deliver(reports);
        *_aidl_return = result;
        return ::ndk::ScopedAStatus::ok();
    });
}

::ndk::ScopedAStatus DrelService::release(int32_t handle, int32_t* _aidl_return) {
    return state_->faults.run([&] {
        State& s = *state_;
        const pid_t caller = AIBinder_getCallingPid();
        Reports reports;
        int32_t result = -1;
        {
            std::lock_guard<std::mutex> lock(s.mutex);
            s.expireLocked(reports);
            const example::ResourceTable::Request* request = s.resources.find(handle);
            if (mayEnd("release", handle, request ? &request->owner : nullptr, caller)) {
                s.listeners.reportChanges(s.resources.drop(handle), reports);
                result = 0;
            }
        }
        s.deliver(reports);
        *_aidl_return = result;
        return ::ndk::ScopedAStatus::ok();
    });
}

::ndk::ScopedAStatus DrelService::stateRequest(const DrelRequestParcel& parcel,
                                               std::vector<DrelRequestData>* _aidl_return) {
    return state_->faults.run([&] {
        State& s = *state_;
        Reports reports;
        std::vector<DrelRequestData> reply;
        {
            std::lock_guard<std::mutex> lock(s.mutex);
            s.expireLocked(reports);
            switch (parcel.requestType) {
                case kKindState:
                    for (const DrelRequestData& record : parcel.resources) {
                        std::optional<example::Key> key = example::keyOf(record);
                        if (key)
                            reply.push_back(example::recordOf(*key, s.resources.valueOf(*key)));
                    }
                    break;
                case kKindHistory:
                    reply = s.diagnostics.history();
                    break;
                case kKindPowerMode:
                    if (!parcel.resources.empty()) {
                        const int32_t mode = parcel.resources[0].resId;
                        DrelRequestData record;
                        record.resId = mode;
                        record.resValue = std::to_string(
                                leadingInteger(s.resources.valueOf(example::Key{mode, {}})));
                        reply.push_back(std::move(record));
                    }
                    break;
                default:
                    __android_log_print(ANDROID_LOG_WARN, kLogTag,
                                        "query of kind %d is not handled", parcel.requestType);
                    break;
            }
        }
        s.deliver(reports);
        *_aidl_return = std::move(reply);
        return ::ndk::ScopedAStatus::ok();
    });
}

::ndk::ScopedAStatus DrelService::listeningRegister(const DrelRequestParcel& parcel,
                                                    const std::shared_ptr<IDrelCallback>& callback,
                                                    int32_t* _aidl_return) {
    return state_->faults.run([&] {
        State& s = *state_;
        const pid_t caller = AIBinder_getCallingPid();
        if (!callback) {
            *_aidl_return = -1;
            return ::ndk::ScopedAStatus::ok();
        }
        Reports reports;
        {
            std::lock_guard<std::mutex> lock(s.mutex);
            // Changes that were due before the registration are not reported to it.
            s.expireLocked(reports);
            *_aidl_return = s.newHandleLocked();
            s.listeners.add(*_aidl_return, parcel.resources, callback, caller);
        }
        s.deliver(reports);
        return ::ndk::ScopedAStatus::ok();
    });
}

::ndk::ScopedAStatus DrelService::listeningUnregister(int32_t handle, int32_t* _aidl_return) {
    return state_->faults.run([&] {
        const pid_t caller = AIBinder_getCallingPid();
        std::shared_ptr<IDrelCallback> dropped;  // let go of after the mutex
        {
            std::lock_guard<std::mutex> lock(state_->mutex);
            const example::Listeners::Listener* listener = state_->listeners.find(handle);
            if (mayEnd("listeningUnregister", handle, listener ? &listener->owner : nullptr,
                       caller)) {
                dropped = state_->listeners.remove(handle);
            }
        }
        *_aidl_return = dropped ? 0 : -1;
        return ::ndk::ScopedAStatus::ok();
    });
}

::ndk::ScopedAStatus DrelService::propertyGet(const std::string& name, std::string* _aidl_return) {
    return state_->faults.run([&] {
        std::lock_guard<std::mutex> lock(state_->mutex);
        *_aidl_return = state_->records.property(name);
        return ::ndk::ScopedAStatus::ok();
    });
}

::ndk::ScopedAStatus DrelService::propertySet(const std::string& name, const std::string& value,
                                              int32_t* _aidl_return) {
    return state_->faults.run([&] {
        std::lock_guard<std::mutex> lock(state_->mutex);
        *_aidl_return = state_->records.setProperty(name, value) ? 0 : -1;
        return ::ndk::ScopedAStatus::ok();
    });
}

::ndk::ScopedAStatus DrelService::thermalListeningRegister(
        const std::vector<int32_t>& ids, const std::shared_ptr<IDrelCallback>& callback,
        int32_t* _aidl_return) {
    return state_->faults.run([&] {
        const pid_t caller = AIBinder_getCallingPid();
        std::lock_guard<std::mutex> lock(state_->mutex);
        if (!callback) {
            *_aidl_return = -1;
        } else {
            *_aidl_return = state_->newHandleLocked();
            state_->listeners.addThermal(*_aidl_return, ids, callback, caller);
        }
        return ::ndk::ScopedAStatus::ok();
    });
}

::ndk::ScopedAStatus DrelService::thermalListeningUnregister(int32_t handle,
                                                             int32_t* _aidl_return) {
    return state_->faults.run([&] {
        const pid_t caller = AIBinder_getCallingPid();
        std::shared_ptr<IDrelCallback> dropped;  // let go of after the mutex
        {
            std::lock_guard<std::mutex> lock(state_->mutex);
            const example::Listeners::ThermalListener* listener =
                    state_->listeners.findThermal(handle);
            if (mayEnd("thermalListeningUnregister", handle, listener ? &listener->owner : nullptr,
                       caller)) {
                dropped = state_->listeners.removeThermal(handle);
            }
        }
        *_aidl_return = dropped ? 0 : -1;
        return ::ndk::ScopedAStatus::ok();
    });
}

::ndk::ScopedAStatus DrelService::reserved11() {
    return ::ndk::ScopedAStatus::fromExceptionCode(EX_UNSUPPORTED_OPERATION);
}

::ndk::ScopedAStatus DrelService::setRelatedSysInfo(int32_t type, int64_t info,
                                                    int32_t* _aidl_return) {
    return state_->faults.run([&] {
        std::lock_guard<std::mutex> lock(state_->mutex);
        state_->records.setSysInfo(type, info);
        *_aidl_return = 0;
        return ::ndk::ScopedAStatus::ok();
    });
}

::ndk::ScopedAStatus DrelService::ruleCtl(int32_t ruleId, int32_t status,
                                          const std::vector<DrelRequestData>& data,
                                          int32_t* _aidl_return) {
    return state_->faults.run([&] {
        std::lock_guard<std::mutex> lock(state_->mutex);
        state_->records.setRule(ruleId, status, data);
        *_aidl_return = 0;
        return ::ndk::ScopedAStatus::ok();
    });
}

// ---- faults ----

void DrelService::setFaultPlan(std::optional<FaultPlan> plan) {
    state_->faults.setPlan(std::move(plan));
}

uint64_t DrelService::faultsInjected() const {
    return state_->faults.injected();
}

// ---- expiry ----

void DrelService::startExpiryThread() {
    State& s = *state_;
    std::lock_guard<std::mutex> lock(s.mutex);
    if (s.expiryThread.joinable() || s.stopping) return;
    s.expiryThread = std::thread([&s] {
        std::unique_lock<std::mutex> lock(s.mutex);
        while (!s.stopping) {
            if (std::optional<milliseconds> next = s.resources.nextDeadline()) {
                const milliseconds wait = *next - s.now();
                if (wait.count() > 0) s.expiryWake.wait_for(lock, wait);
            } else {
                s.expiryWake.wait(lock);
            }
            if (s.stopping) break;
            Reports reports;
            s.expireLocked(reports);
            if (!reports.empty()) {
                lock.unlock();
                s.deliver(reports);
                lock.lock();
            }
        }
    });
}

int DrelService::expireDue() {
    Reports reports;
    int expired = 0;
    {
        std::lock_guard<std::mutex> lock(state_->mutex);
        expired = state_->expireLocked(reports);
    }
    state_->deliver(reports);
    return expired;
}

// ---- observations ----

int DrelService::initCount() const {
    std::lock_guard<std::mutex> lock(state_->mutex);
    return state_->records.initCount();
}

size_t DrelService::liveRequestCount() const {
    std::lock_guard<std::mutex> lock(state_->mutex);
    return state_->resources.size();
}

std::optional<DrelService::RuleState> DrelService::ruleState(int32_t ruleId) const {
    std::lock_guard<std::mutex> lock(state_->mutex);
    return state_->records.rule(ruleId);
}

std::optional<int64_t> DrelService::relatedSysInfo(int32_t type) const {
    std::lock_guard<std::mutex> lock(state_->mutex);
    return state_->records.sysInfo(type);
}

std::vector<std::vector<DrelRequestData>> DrelService::notifications() const {
    std::lock_guard<std::mutex> lock(state_->mutex);
    return state_->records.notifications();
}

std::optional<std::string> DrelService::thermalLevel(int32_t id) const {
    std::lock_guard<std::mutex> lock(state_->mutex);
    return state_->listeners.thermalLevel(id);
}

bool DrelService::historyRecording() const {
    std::lock_guard<std::mutex> lock(state_->mutex);
    return state_->diagnostics.recording();
}

}  // namespace drel
}  // namespace hardware
}  // namespace quarn
}  // namespace vendor
}  // namespace aidl
