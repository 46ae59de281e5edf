#include "drel-service/DrelService.h"

#include <android/binder_status.h>
#include <android/log.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <tuple>
#include <utility>

namespace aidl {
namespace vendor {
namespace quarn {
namespace hardware {
namespace drel {

namespace {

using std::chrono::milliseconds;

// The value a request holds a resource at when its record carries no text: "on".
constexpr const char* kNoValueHeld = "1";

// Table names of the diagnostic selectors 0x0 to 0x8, in selector order.
constexpr const char* kDumpNames[] = {"ToDoQueue",  "RunMap",          "ActiveResMap",
                                      "ResRequest", "ResInfo",         "SAInfo",
                                      "PidFdList",  "PidfdMonitorMap", "ResRecordList"};
constexpr int32_t kDumpCount = sizeof(kDumpNames) / sizeof(kDumpNames[0]);

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

std::string orNone(const std::optional<std::string>& text) {
    return text && !text->empty() ? *text : "none";
}

}  // namespace

bool DrelService::Key::operator<(const Key& other) const {
    return std::tie(id, path) < std::tie(other.id, other.path);
}

bool DrelService::Key::operator==(const Key& other) const {
    return id == other.id && path == other.path;
}

DrelService::DrelService() : DrelService(Options{}) {}

DrelService::DrelService(Options options) : options_(std::move(options)) {}

DrelService::~DrelService() {
    {
        std::lock_guard<std::mutex> lock(mutex_);
        stopping_ = true;
    }
    expiryWake_.notify_all();
    if (expiryThread_.joinable()) expiryThread_.join();
}

// ---- resources, keys and values ----

std::optional<DrelService::Key> DrelService::keyOf(const DrelRequestData& record) {
    if (record.resId != 0) return Key{record.resId, {}};
    if (record.resPath && !record.resPath->empty()) return Key{0, *record.resPath};
    return std::nullopt;
}

DrelRequestData DrelService::recordOf(const Key& key, const std::string& value) {
    DrelRequestData record;
    record.resId = key.id;
    if (key.id == 0) record.resPath = key.path;
    record.resValue = value;
    return record;
}

std::string DrelService::describe(const Key& key) {
    if (key.id == 0) return key.path;
    char text[16];
    std::snprintf(text, sizeof(text), "0x%08x", static_cast<uint32_t>(key.id));
    return text;
}

milliseconds DrelService::now() const {
    if (options_.clock) return options_.clock();
    return std::chrono::duration_cast<milliseconds>(
            std::chrono::steady_clock::now().time_since_epoch());
}

int32_t DrelService::allocateHandleLocked() {
    // Handles count up from 1 and are shared by requests and registrations; after INT32_MAX they
    // start again at 1, skipping any still in use.
    for (;;) {
        int32_t handle = nextHandle_;
        nextHandle_ = nextHandle_ == INT32_MAX ? 1 : nextHandle_ + 1;
        if (requests_.count(handle) == 0 && listeners_.count(handle) == 0 &&
            thermalListeners_.count(handle) == 0) {
            return handle;
        }
    }
}

std::string DrelService::valueLocked(const Key& key) const {
    auto found = holders_.find(key);
    if (found == holders_.end() || found->second.empty()) return kDefaultValue;
    return found->second.rbegin()->second.value;
}

void DrelService::snapshotLocked(const std::vector<Held>& held, Snapshot& before) const {
    for (const Held& h : held) before.emplace(h.key, valueLocked(h.key));
}

void DrelService::notifyChangesLocked(const Snapshot& before, Reports& reports) const {
    Snapshot changed;
    for (const auto& [key, oldValue] : before) {
        std::string newValue = valueLocked(key);
        if (newValue != oldValue) changed.emplace(key, std::move(newValue));
    }
    if (changed.empty()) return;
    for (const auto& [handle, listener] : listeners_) {
        Report report{listener.callback, {}, handle, false};
        for (const Key& key : listener.keys) {
            auto found = changed.find(key);
            if (found != changed.end()) report.data.push_back(recordOf(key, found->second));
        }
        if (!report.data.empty()) reports.push_back(std::move(report));
    }
}

// ---- requests ----

int32_t DrelService::addRequestLocked(const DrelRequestParcel& parcel, Reports& reports) {
    Request request;
    request.kind = parcel.requestType;
    request.sequence = nextSequence_++;
    for (const DrelRequestData& record : parcel.resources) {
        std::optional<Key> key = keyOf(record);
        if (!key) continue;  // names no resource
        std::string value =
                record.resValue && !record.resValue->empty() ? *record.resValue : kNoValueHeld;
        // A request that names a resource twice holds it at the later value.
        auto same = std::find_if(request.held.begin(), request.held.end(),
                                 [&](const Held& h) { return h.key == *key; });
        if (same != request.held.end()) {
            same->value = std::move(value);
        } else {
            request.held.push_back(Held{std::move(*key), std::move(value)});
        }
    }

    Snapshot before;
    snapshotLocked(request.held, before);
    const int32_t handle = allocateHandleLocked();
    for (const Held& h : request.held) {
        holders_[h.key][request.sequence] = Holder{handle, h.value};
    }
    if (parcel.timeout > 0) {
        const milliseconds start = now();
        // A timeout too long for the clock never expires.
        if (parcel.timeout <= std::numeric_limits<milliseconds::rep>::max() - start.count()) {
            request.deadline = start + milliseconds(parcel.timeout);
            deadlines_.emplace(*request.deadline, handle);
            expiryWake_.notify_all();
        }
    }
    recordHistoryLocked(handle, parcel, request);

    if (parcel.callback) {
        // The one-shot callback hears once what the request now holds, and is not kept.
        Report applied{parcel.callback, {}, 0, false};
        for (const Held& h : request.held) applied.data.push_back(recordOf(h.key, h.value));
        reports.push_back(std::move(applied));
    }
    requests_.emplace(handle, std::move(request));
    notifyChangesLocked(before, reports);
    return handle;
}

void DrelService::dropRequestLocked(int32_t handle, Reports& reports) {
    auto found = requests_.find(handle);
    if (found == requests_.end()) return;
    const Request& request = found->second;
    Snapshot before;
    snapshotLocked(request.held, before);
    for (const Held& h : request.held) {
        auto holders = holders_.find(h.key);
        if (holders == holders_.end()) continue;
        holders->second.erase(request.sequence);
        if (holders->second.empty()) holders_.erase(holders);
    }
    if (request.deadline) deadlines_.erase({*request.deadline, handle});
    requests_.erase(found);
    notifyChangesLocked(before, reports);
}

int DrelService::expireLocked(Reports& reports) {
    const milliseconds current = now();
    int expired = 0;
    while (!deadlines_.empty() && deadlines_.begin()->first <= current) {
        const int32_t handle = deadlines_.begin()->second;
        __android_log_print(ANDROID_LOG_DEBUG, kLogTag, "request %d expired", handle);
        dropRequestLocked(handle, reports);
        ++expired;
    }
    return expired;
}

void DrelService::recordHistoryLocked(int32_t handle, const DrelRequestParcel& parcel,
                                      const Request& request) {
    if (!historyRecording_ || options_.historyCapacity == 0) return;
    std::string resources;
    for (const Held& h : request.held) {
        if (!resources.empty()) resources += ',';
        resources += describe(h.key) + '=' + h.value;
    }
    if (resources.empty()) resources = "none";
    char head[96];
    std::snprintf(head, sizeof(head), "handle:%d type:%d timeout:%lld", handle, parcel.requestType,
                  static_cast<long long>(parcel.timeout));
    history_.push_back(HistoryEntry{handle, parcel.requestType,
                                    std::string(head) + " pkg:" + orNone(parcel.pkg) +
                                            " identity:" + orNone(parcel.identity) +
                                            " res:" + resources});
    while (history_.size() > options_.historyCapacity) history_.pop_front();
}

int32_t DrelService::thermalNotifyLocked(const DrelRequestParcel& parcel, Reports& reports) {
    for (const DrelRequestData& record : parcel.resources) {
        thermalLevels_[record.resId] = record.resValue.value_or("");
    }
    int32_t reached = 0;
    for (const auto& [handle, listener] : thermalListeners_) {
        Report report{listener.callback, {}, handle, true};
        for (const DrelRequestData& record : parcel.resources) {
            if (std::find(listener.ids.begin(), listener.ids.end(), record.resId) ==
                listener.ids.end()) {
                continue;
            }
            DrelRequestData level;
            level.resId = record.resId;
            level.resValue = record.resValue.value_or("");
            report.data.push_back(std::move(level));
        }
        if (!report.data.empty()) {
            reports.push_back(std::move(report));
            ++reached;
        }
    }
    return reached;
}

int32_t DrelService::diagnosticLocked(const DrelRequestParcel& parcel) {
    if (parcel.resources.empty()) {
        __android_log_print(ANDROID_LOG_WARN, kLogTag, "diagnostic request without a selector");
        return 0;
    }
    const int32_t selector = parcel.resources[0].resId;
    if (selector >= 0 && selector < kDumpCount) {
        dumpLocked(selector);
        return 1;
    }
    if (selector == kHistoryRecordOn || selector == kHistoryRecordOff) {
        historyRecording_ = selector == kHistoryRecordOn;
        __android_log_print(ANDROID_LOG_INFO, kLogTag, "history recording %s",
                            historyRecording_ ? "on" : "off");
        return 1;
    }
    __android_log_print(ANDROID_LOG_WARN, kLogTag, "unknown diagnostic selector %#x", selector);
    return 0;
}

void DrelService::dumpLocked(int32_t selector) const {
    std::vector<std::string> lines;
    char line[160];
    switch (selector) {
        case 0:  // pending expiries, soonest first
            for (const auto& [deadline, handle] : deadlines_) {
                std::snprintf(line, sizeof(line), "handle %d expires in %lld ms", handle,
                              static_cast<long long>((deadline - now()).count()));
                lines.push_back(line);
            }
            break;
        case 1:  // live requests
        case 5:  // live scene requests
            for (const auto& [handle, request] : requests_) {
                if (selector == 5 && request.kind != kKindScene) continue;
                std::snprintf(line, sizeof(line), "handle %d type %d holds", handle, request.kind);
                std::string text = line;
                for (const Held& h : request.held) text += ' ' + describe(h.key) + '=' + h.value;
                lines.push_back(std::move(text));
            }
            break;
        case 2:  // the value in force of each held resource, and whose it is
            for (const auto& [key, holders] : holders_) {
                const Holder& newest = holders.rbegin()->second;
                std::snprintf(line, sizeof(line), " (handle %d)", newest.handle);
                lines.push_back(describe(key) + '=' + newest.value + line);
            }
            break;
        case 3:  // every holder of each held resource, oldest first
            for (const auto& [key, holders] : holders_) {
                std::string text = describe(key) + ':';
                for (const auto& [sequence, holder] : holders) {
                    std::snprintf(line, sizeof(line), " %d=", holder.handle);
                    text += line + holder.value;
                }
                lines.push_back(std::move(text));
            }
            break;
        case 4:  // what the service has been told
            for (const auto& [name, value] : properties_) {
                lines.push_back("property " + name + '=' + value);
            }
            for (const auto& [ruleId, rule] : rules_) {
                std::snprintf(line, sizeof(line), "rule %d status %d records %zu", ruleId,
                              rule.status, rule.data.size());
                lines.push_back(line);
            }
            for (const auto& [type, info] : sysInfo_) {
                std::snprintf(line, sizeof(line), "sysinfo %d=%lld", type,
                              static_cast<long long>(info));
                lines.push_back(line);
            }
            for (const auto& [id, level] : thermalLevels_) {
                std::snprintf(line, sizeof(line), "thermal %d level ", id);
                lines.push_back(line + level);
            }
            break;
        case 6:  // listening registrations
            for (const auto& [handle, listener] : listeners_) {
                std::snprintf(line, sizeof(line), "listener %d:", handle);
                std::string text = line;
                for (const Key& key : listener.keys) text += ' ' + describe(key);
                lines.push_back(std::move(text));
            }
            break;
        case 7:  // thermal listening registrations
            for (const auto& [handle, listener] : thermalListeners_) {
                std::snprintf(line, sizeof(line), "thermal listener %d:", handle);
                std::string text = line;
                for (int32_t id : listener.ids) text += ' ' + std::to_string(id);
                lines.push_back(std::move(text));
            }
            break;
        case 8:  // request history
            for (const HistoryEntry& entry : history_) lines.push_back(entry.text);
            break;
        default:
            break;
    }
    __android_log_print(ANDROID_LOG_INFO, kLogTag, "dump %s: %zu entries", kDumpNames[selector],
                        lines.size());
    for (const std::string& text : lines) {
        __android_log_print(ANDROID_LOG_INFO, kLogTag, "  %s", text.c_str());
    }
}

// ---- delivery ----

void DrelService::deliver(Reports& reports) {
    for (Report& report : reports) {
        ::ndk::ScopedAStatus status = report.callback->onCallback(report.data);
        if (status.isOk()) continue;
        __android_log_print(ANDROID_LOG_WARN, kLogTag, "callback of handle %d failed: status %d",
                            report.handle, static_cast<int>(status.getStatus()));
        if (report.handle == 0 || status.getStatus() != STATUS_DEAD_OBJECT) continue;
        // The client has gone: its registration can never be reached again.
        std::lock_guard<std::mutex> lock(mutex_);
        if (report.thermal) {
            auto found = thermalListeners_.find(report.handle);
            if (found != thermalListeners_.end() && found->second.callback == report.callback) {
                thermalListeners_.erase(found);
            }
        } else {
            auto found = listeners_.find(report.handle);
            if (found != listeners_.end() && found->second.callback == report.callback) {
                listeners_.erase(found);
            }
        }
    }
    // Drop the callback proxies now rather than with the caller's frame.
    reports.clear();
}

// ---- faults ----

void DrelService::setFaultPlan(std::optional<FaultPlan> plan) {
    std::lock_guard<std::mutex> lock(mutex_);
    faultPlan_ = std::move(plan);
    faultCalls_ = 0;
}

uint64_t DrelService::faultsInjected() const {
    std::lock_guard<std::mutex> lock(mutex_);
    return faultsInjected_;
}

std::pair<uint32_t, uint64_t> DrelService::drawFault() {
    std::lock_guard<std::mutex> lock(mutex_);
    if (!faultPlan_) return {0, 0};
    // splitmix64 of the seed and the call's number: the same plan gives the same faults.
    uint64_t r = faultPlan_->seed + 0x9e3779b97f4a7c15ULL * ++faultCalls_;
    r = (r ^ (r >> 30)) * 0xbf58476d1ce4e5b9ULL;
    r = (r ^ (r >> 27)) * 0x94d049bb133111ebULL;
    r ^= r >> 31;
    const uint32_t allowed = faultPlan_->faults & kAnyFault;
    if (allowed == 0 || static_cast<int>(r % 100) >= faultPlan_->percent) return {0, 0};
    // The (r / 100 mod count)-th of the allowed ways.
    int count = 0;
    for (uint32_t bit = 1; bit <= kAnyFault; bit <<= 1) count += (allowed & bit) != 0;
    int pick = static_cast<int>((r / 100) % static_cast<uint64_t>(count));
    uint32_t fault = 1;
    for (; (allowed & fault) == 0 || pick-- > 0; fault <<= 1) {
    }
    ++faultsInjected_;
    const uint64_t lateBy = static_cast<uint64_t>(std::max<int64_t>(0, faultPlan_->lateBy.count()));
    // A late answer's draw is its delay in microseconds.
    return {fault, fault == kLateAnswer ? (r >> 24) % (lateBy + 1) : r >> 24};
}

template <typename Work>
::ndk::ScopedAStatus DrelService::withFaults(Work work) {
    const auto [fault, draw] = drawFault();
    if (fault == kFailedTransaction)
        return ::ndk::ScopedAStatus::fromStatus(STATUS_FAILED_TRANSACTION);
    if (fault == kException) return ::ndk::ScopedAStatus::fromExceptionCode(EX_ILLEGAL_STATE);
    if (fault == kServiceSpecificError) {
        return ::ndk::ScopedAStatus::fromServiceSpecificError(-2 - static_cast<int32_t>(draw % 63));
    }
    if (fault == kLateAnswer) std::this_thread::sleep_for(std::chrono::microseconds(draw));
    ::ndk::ScopedAStatus status = work();
    // The work is done, but the caller never hears of it.
    if (fault == kLostReply) return ::ndk::ScopedAStatus::fromStatus(STATUS_FAILED_TRANSACTION);
    return status;
}

// ---- IDrel ----

::ndk::ScopedAStatus DrelService::init() {
    return withFaults([&] {
        std::lock_guard<std::mutex> lock(mutex_);
        ++initCount_;
        return ::ndk::ScopedAStatus::ok();
    });
}

::ndk::ScopedAStatus DrelService::request(const DrelRequestParcel& parcel, int32_t* _aidl_return) {
    return withFaults([&] {
        Reports reports;
        int32_t result = -1;
        {
            std::lock_guard<std::mutex> lock(mutex_);
            expireLocked(reports);
            if (holdsResources(parcel.requestType)) {
                result = addRequestLocked(parcel, reports);
            } else if (parcel.requestType == kKindDiagnostic) {
                result = diagnosticLocked(parcel);
            } else if (parcel.requestType == kKindThermal) {
                result = thermalNotifyLocked(parcel, reports);
            } else if (parcel.requestType == kKindNotify) {
                if (options_.notificationCapacity > 0) {
                    notifications_.push_back(parcel.resources);
                    while (notifications_.size() > options_.notificationCapacity) {
                        notifications_.pop_front();
                    }
                }
                result = 0;
            } else {
                __android_log_print(ANDROID_LOG_WARN, kLogTag, "request of kind %d is not handled",
                                    parcel.requestType);
            }
        }
        deliver(reports);
        *_aidl_return = result;
        return ::ndk::ScopedAStatus::ok();
    });
}

::ndk::ScopedAStatus DrelService::release(int32_t handle, int32_t* _aidl_return) {
    return withFaults([&] {
        Reports reports;
        int32_t result = -1;
        {
            std::lock_guard<std::mutex> lock(mutex_);
            expireLocked(reports);
            if (requests_.count(handle) != 0) {
                dropRequestLocked(handle, reports);
                result = 0;
            } else {
                __android_log_print(ANDROID_LOG_WARN, kLogTag, "release of unknown handle %d",
                                    handle);
            }
        }
        deliver(reports);
        *_aidl_return = result;
        return ::ndk::ScopedAStatus::ok();
    });
}

::ndk::ScopedAStatus DrelService::stateRequest(const DrelRequestParcel& parcel,
                                               std::vector<DrelRequestData>* _aidl_return) {
    return withFaults([&] {
        Reports reports;
        std::vector<DrelRequestData> reply;
        {
            std::lock_guard<std::mutex> lock(mutex_);
            expireLocked(reports);
            switch (parcel.requestType) {
                case kKindState:
                    for (const DrelRequestData& record : parcel.resources) {
                        std::optional<Key> key = keyOf(record);
                        if (key) reply.push_back(recordOf(*key, valueLocked(*key)));
                    }
                    break;
                case kKindHistory:
                    for (const HistoryEntry& entry : history_) {
                        DrelRequestData record;
                        record.resId = entry.handle;
                        record.resParam = entry.kind;
                        record.resExtra = entry.text;
                        reply.push_back(std::move(record));
                    }
                    break;
                case kKindPowerMode:
                    if (!parcel.resources.empty()) {
                        const int32_t mode = parcel.resources[0].resId;
                        DrelRequestData record;
                        record.resId = mode;
                        record.resValue =
                                std::to_string(leadingInteger(valueLocked(Key{mode, {}})));
                        reply.push_back(std::move(record));
                    }
                    break;
                default:
                    __android_log_print(ANDROID_LOG_WARN, kLogTag,
                                        "query of kind %d is not handled", parcel.requestType);
                    break;
            }
        }
        deliver(reports);
        *_aidl_return = std::move(reply);
        return ::ndk::ScopedAStatus::ok();
    });
}

::ndk::ScopedAStatus DrelService::listeningRegister(const DrelRequestParcel& parcel,
                                                    const std::shared_ptr<IDrelCallback>& callback,
                                                    int32_t* _aidl_return) {
    return withFaults([&] {
        if (!callback) {
            *_aidl_return = -1;
            return ::ndk::ScopedAStatus::ok();
        }
        Listener listener{{}, callback};
        for (const DrelRequestData& record : parcel.resources) {
            std::optional<Key> key = keyOf(record);
            if (key && std::find(listener.keys.begin(), listener.keys.end(), *key) ==
                               listener.keys.end()) {
                listener.keys.push_back(std::move(*key));
            }
        }
        Reports reports;
        {
            std::lock_guard<std::mutex> lock(mutex_);
            // Changes that were due before the registration are not reported to it.
            expireLocked(reports);
            *_aidl_return = allocateHandleLocked();
            listeners_.emplace(*_aidl_return, std::move(listener));
        }
        deliver(reports);
        return ::ndk::ScopedAStatus::ok();
    });
}

::ndk::ScopedAStatus DrelService::listeningUnregister(int32_t handle, int32_t* _aidl_return) {
    return withFaults([&] {
        std::shared_ptr<IDrelCallback> dropped;  // released after the mutex
        {
            std::lock_guard<std::mutex> lock(mutex_);
            auto found = listeners_.find(handle);
            if (found == listeners_.end()) {
                *_aidl_return = -1;
            } else {
                dropped = std::move(found->second.callback);
                listeners_.erase(found);
                *_aidl_return = 0;
            }
        }
        return ::ndk::ScopedAStatus::ok();
    });
}

::ndk::ScopedAStatus DrelService::propertyGet(const std::string& name, std::string* _aidl_return) {
    return withFaults([&] {
        std::lock_guard<std::mutex> lock(mutex_);
        auto found = properties_.find(name);
        *_aidl_return = found == properties_.end() ? std::string() : found->second;
        return ::ndk::ScopedAStatus::ok();
    });
}

::ndk::ScopedAStatus DrelService::propertySet(const std::string& name, const std::string& value,
                                              int32_t* _aidl_return) {
    return withFaults([&] {
        std::lock_guard<std::mutex> lock(mutex_);
        if (name.empty()) {
            *_aidl_return = -1;
        } else {
            properties_[name] = value;
            *_aidl_return = 0;
        }
        return ::ndk::ScopedAStatus::ok();
    });
}

::ndk::ScopedAStatus DrelService::thermalListeningRegister(
        const std::vector<int32_t>& ids, const std::shared_ptr<IDrelCallback>& callback,
        int32_t* _aidl_return) {
    return withFaults([&] {
        std::lock_guard<std::mutex> lock(mutex_);
        if (!callback) {
            *_aidl_return = -1;
        } else {
            *_aidl_return = allocateHandleLocked();
            thermalListeners_.emplace(*_aidl_return, ThermalListener{ids, callback});
        }
        return ::ndk::ScopedAStatus::ok();
    });
}

::ndk::ScopedAStatus DrelService::thermalListeningUnregister(int32_t handle,
                                                             int32_t* _aidl_return) {
    return withFaults([&] {
        std::shared_ptr<IDrelCallback> dropped;  // released after the mutex
        {
            std::lock_guard<std::mutex> lock(mutex_);
            auto found = thermalListeners_.find(handle);
            if (found == thermalListeners_.end()) {
                *_aidl_return = -1;
            } else {
                dropped = std::move(found->second.callback);
                thermalListeners_.erase(found);
                *_aidl_return = 0;
            }
        }
        return ::ndk::ScopedAStatus::ok();
    });
}

::ndk::ScopedAStatus DrelService::reserved11() {
    return ::ndk::ScopedAStatus::fromExceptionCode(EX_UNSUPPORTED_OPERATION);
}

::ndk::ScopedAStatus DrelService::setRelatedSysInfo(int32_t type, int64_t info,
                                                    int32_t* _aidl_return) {
    return withFaults([&] {
        std::lock_guard<std::mutex> lock(mutex_);
        sysInfo_[type] = info;
        *_aidl_return = 0;
        return ::ndk::ScopedAStatus::ok();
    });
}

::ndk::ScopedAStatus DrelService::ruleCtl(int32_t ruleId, int32_t status,
                                          const std::vector<DrelRequestData>& data,
                                          int32_t* _aidl_return) {
    return withFaults([&] {
        std::lock_guard<std::mutex> lock(mutex_);
        rules_[ruleId] = RuleState{status, data};
        *_aidl_return = 0;
        return ::ndk::ScopedAStatus::ok();
    });
}

// ---- expiry ----

void DrelService::startExpiryThread() {
    std::lock_guard<std::mutex> lock(mutex_);
    if (expiryThread_.joinable() || stopping_) return;
    expiryThread_ = std::thread([this] { expiryLoop(); });
}

void DrelService::expiryLoop() {
    std::unique_lock<std::mutex> lock(mutex_);
    while (!stopping_) {
        if (deadlines_.empty()) {
            expiryWake_.wait(lock);
        } else {
            const milliseconds wait = deadlines_.begin()->first - now();
            if (wait.count() > 0) expiryWake_.wait_for(lock, wait);
        }
        if (stopping_) break;
        Reports reports;
        expireLocked(reports);
        if (!reports.empty()) {
            lock.unlock();
            deliver(reports);
            lock.lock();
        }
    }
}

int DrelService::expireDue() {
    Reports reports;
    int expired = 0;
    {
        std::lock_guard<std::mutex> lock(mutex_);
        expired = expireLocked(reports);
    }
    deliver(reports);
    return expired;
}

// ---- observations ----

int DrelService::initCount() const {
    std::lock_guard<std::mutex> lock(mutex_);
    return initCount_;
}

size_t DrelService::liveRequestCount() const {
    std::lock_guard<std::mutex> lock(mutex_);
    return requests_.size();
}

std::optional<DrelService::RuleState> DrelService::ruleState(int32_t ruleId) const {
    std::lock_guard<std::mutex> lock(mutex_);
    auto found = rules_.find(ruleId);
    if (found == rules_.end()) return std::nullopt;
    return found->second;
}

std::optional<int64_t> DrelService::relatedSysInfo(int32_t type) const {
    std::lock_guard<std::mutex> lock(mutex_);
    auto found = sysInfo_.find(type);
    if (found == sysInfo_.end()) return std::nullopt;
    return found->second;
}

std::vector<std::vector<DrelRequestData>> DrelService::notifications() const {
    std::lock_guard<std::mutex> lock(mutex_);
    return {notifications_.begin(), notifications_.end()};
}

std::optional<std::string> DrelService::thermalLevel(int32_t id) const {
    std::lock_guard<std::mutex> lock(mutex_);
    auto found = thermalLevels_.find(id);
    if (found == thermalLevels_.end()) return std::nullopt;
    return found->second;
}

bool DrelService::historyRecording() const {
    std::lock_guard<std::mutex> lock(mutex_);
    return historyRecording_;
}

}  // namespace drel
}  // namespace hardware
}  // namespace quarn
}  // namespace vendor
}  // namespace aidl
