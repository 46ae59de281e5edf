#include "Listeners.h"

#include <android/binder_status.h>
#include <android/log.h>

#include <algorithm>
#include <utility>

#include "drel-service/DrelService.h"

namespace aidl::vendor::quarn::hardware::drel::example {

namespace {

// Erases the registration `handle` of either kind and hands back its callback, or nullptr when
// there is none.
template <typename Registrations>
std::shared_ptr<IDrelCallback> takeCallback(Registrations& registrations, int32_t handle) {
    auto found = registrations.find(handle);
    if (found == registrations.end()) return nullptr;
    std::shared_ptr<IDrelCallback> callback = std::move(found->second.callback);
    registrations.erase(found);
    return callback;
}

}  // namespace

void Listeners::add(int32_t handle, const std::vector<DrelRequestData>& records,
                    std::shared_ptr<IDrelCallback> callback, pid_t owner) {
    Listener listener{owner, {}, std::move(callback)};
    for (const DrelRequestData& record : records) {
        std::optional<Key> key = keyOf(record);
        if (key &&
            std::find(listener.keys.begin(), listener.keys.end(), *key) == listener.keys.end()) {
            listener.keys.push_back(std::move(*key));
        }
    }
    listeners_.emplace(handle, std::move(listener));
}

void Listeners::addThermal(int32_t handle, std::vector<int32_t> ids,
                           std::shared_ptr<IDrelCallback> callback, pid_t owner) {
    thermalListeners_.emplace(handle, ThermalListener{owner, std::move(ids), std::move(callback)});
}

std::shared_ptr<IDrelCallback> Listeners::remove(int32_t handle) {
    return takeCallback(listeners_, handle);
}

std::shared_ptr<IDrelCallback> Listeners::removeThermal(int32_t handle) {
    return takeCallback(thermalListeners_, handle);
}

const Listeners::Listener* Listeners::find(int32_t handle) const {
    auto found = listeners_.find(handle);
    return found == listeners_.end() ? nullptr : &found->second;
}

const Listeners::ThermalListener* Listeners::findThermal(int32_t handle) const {
    auto found = thermalListeners_.find(handle);
    return found == thermalListeners_.end() ? nullptr : &found->second;
}

void Listeners::reportChanges(const Changes& changes, Reports& reports) const {
    if (changes.empty()) return;
    for (const auto& [handle, listener] : listeners_) {
        Report report{listener.callback, {}, handle, false};
        for (const Key& key : listener.keys) {
            auto found = changes.find(key);
            if (found != changes.end()) report.data.push_back(recordOf(key, found->second));
        }
        if (!report.data.empty()) reports.push_back(std::move(report));
    }
}

int32_t Listeners::notifyThermal(const std::vector<DrelRequestData>& levels, Reports& reports) {
    for (const DrelRequestData& record : levels) {
        thermalLevels_[record.resId] = record.resValue.value_or("");
    }
    int32_t reached = 0;
    for (const auto& [handle, listener] : thermalListeners_) {
        Report report{listener.callback, {}, handle, true};
        for (const DrelRequestData& record : levels) {
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

std::optional<std::string> Listeners::thermalLevel(int32_t id) const {
    auto found = thermalLevels_.find(id);
    if (found == thermalLevels_.end()) return std::nullopt;
    return found->second;
}

void Listeners::deliver(Reports& reports, std::mutex& mutex) {
    for (Report& report : reports) {
        ::ndk::ScopedAStatus status = report.callback->onCallback(report.data);
        if (status.isOk()) continue;
        __android_log_print(ANDROID_LOG_WARN, DrelService::kLogTag,
                            "callback of handle %d failed: status %d", report.handle,
                            static_cast<int>(status.getStatus()));
        if (report.handle == 0 || status.getStatus() != STATUS_DEAD_OBJECT) continue;
        // The client has gone: its registration can never be reached again. The handle may have
        // been ended and given out again meanwhile, so only this callback's registration goes.
        std::lock_guard<std::mutex> lock(mutex);
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

}  // namespace aidl::vendor::quarn::hardware::drel::example
