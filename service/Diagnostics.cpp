#include "Diagnostics.h"

#include <android/log.h>

#include <cstdio>
#include <optional>
#include <utility>

#include "drel-service/DrelService.h"

namespace aidl::vendor::quarn::hardware::drel::example {

namespace {

// Table names of the diagnostic selectors 0x0 to 0x8, in selector order.
constexpr const char* kDumpNames[] = {"ToDoQueue",  "RunMap",          "ActiveResMap",
                                      "ResRequest", "ResInfo",         "SAInfo",
                                      "PidFdList",  "PidfdMonitorMap", "ResRecordList"};
constexpr int32_t kDumpCount = sizeof(kDumpNames) / sizeof(kDumpNames[0]);

std::string orNone(const std::optional<std::string>& text) {
    return text && !text->empty() ? *text : "none";
}

}  // namespace

void Diagnostics::record(int32_t handle, const DrelRequestParcel& parcel,
                         const std::vector<ResourceTable::Held>& held) {
    if (!recording_ || historyCapacity_ == 0) return;
    std::string resources;
    for (const ResourceTable::Held& h : held) {
        if (!resources.empty()) resources += ',';
        resources += describe(h.key) + '=' + h.value;
    }
    if (resources.empty()) resources = "none";
    char head[96];
    std::snprintf(head, sizeof(head), "handle:%d type:%d timeout:%lld", handle, parcel.requestType,
                  static_cast<long long>(parcel.timeout));
    history_.push_back(Entry{handle, parcel.requestType,
                             std::string(head) + " pkg:" + orNone(parcel.pkg) +
                                     " identity:" + orNone(parcel.identity) + " res:" + resources});
    while (history_.size() > historyCapacity_) history_.pop_front();
}

std::vector<DrelRequestData> Diagnostics::history() const {
    std::vector<DrelRequestData> records;
    for (const Entry& entry : history_) {
        DrelRequestData record;
        record.resId = entry.handle;
        record.resParam = entry.kind;
        record.resExtra = entry.text;
        records.push_back(std::move(record));
    }
    return records;
}

int32_t Diagnostics::run(const DrelRequestParcel& parcel, const Sources& sources) {
    if (parcel.resources.empty()) {
        __android_log_print(ANDROID_LOG_WARN, DrelService::kLogTag,
                            "diagnostic request without a selector");
        return 0;
    }
    const int32_t selector = parcel.resources[0].resId;
    if (selector >= 0 && selector < kDumpCount) {
        dump(selector, sources);
        return 1;
    }
    if (selector == DrelService::kHistoryRecordOn || selector == DrelService::kHistoryRecordOff) {
        recording_ = selector == DrelService::kHistoryRecordOn;
        __android_log_print(ANDROID_LOG_INFO, DrelService::kLogTag, "history recording %s",
                            recording_ ? "on" : "off");
        return 1;
    }
    __android_log_print(ANDROID_LOG_WARN, DrelService::kLogTag, "unknown diagnostic selector %#x",
                        selector);
    return 0;
}

void Diagnostics::dump(int32_t selector, const Sources& sources) const {
    std::vector<std::string> lines;
    char line[160];
    switch (selector) {
        case 0:  // pending expiries, soonest first
            for (const auto& [deadline, handle] : sources.resources.deadlines()) {
                std::snprintf(line, sizeof(line), "handle %d expires in %lld ms", handle,
                              static_cast<long long>((deadline - sources.now).count()));
                lines.push_back(line);
            }
            break;
        case 1:  // live requests
        case 5:  // live scene requests
            for (const auto& [handle, request] : sources.resources.requests()) {
                if (selector == 5 && request.kind != DrelService::kKindScene) continue;
                std::snprintf(line, sizeof(line), "handle %d pid %d type %d holds", handle,
                              static_cast<int>(request.owner), request.kind);
                std::string text = line;
                for (const ResourceTable::Held& h : request.held) {
                    text += ' ' + describe(h.key) + '=' + h.value;
                }
                lines.push_back(std::move(text));
            }
            break;
        case 2:  // the value in force of each held resource, and whose it is
            for (const auto& [key, holders] : sources.resources.holders()) {
                const ResourceTable::Holder& newest = holders.rbegin()->second;
                std::snprintf(line, sizeof(line), " (handle %d)", newest.handle);
                lines.push_back(describe(key) + '=' + newest.value + line);
            }
            break;
        case 3:  // every holder of each held resource, oldest first
            for (const auto& [key, holders] : sources.resources.holders()) {
                std::string text = describe(key) + ':';
                for (const auto& [sequence, holder] : holders) {
                    std::snprintf(line, sizeof(line), " %d=", holder.handle);
                    text += line + holder.value;
                }
                lines.push_back(std::move(text));
            }
            break;
        case 4:  // what the service has been told
            for (const auto& [name, value] : sources.records.properties()) {
                lines.push_back("property " + name + '=' + value);
            }
            for (const auto& [ruleId, rule] : sources.records.rules()) {
                std::snprintf(line, sizeof(line), "rule %d status %d records %zu", ruleId,
                              rule.status, rule.data.size());
                lines.push_back(line);
            }
            for (const auto& [type, info] : sources.records.sysInfos()) {
                std::snprintf(line, sizeof(line), "sysinfo %d=%lld", type,
                              static_cast<long long>(info));
                lines.push_back(line);
            }
            for (const auto& [id, level] : sources.listeners.thermalLevels()) {
                std::snprintf(line, sizeof(line), "thermal %d level ", id);
                lines.push_back(line + level);
            }
            break;
        case 6:  // listening registrations
            for (const auto& [handle, listener] : sources.listeners.listeners()) {
                std::snprintf(line, sizeof(line), "listener %d pid %d:", handle,
                              static_cast<int>(listener.owner));
                std::string text = line;
                for (const Key& key : listener.keys) text += ' ' + describe(key);
                lines.push_back(std::move(text));
            }
            break;
        case 7:  // thermal listening registrations
            for (const auto& [handle, listener] : sources.listeners.thermalListeners()) {
                std::snprintf(line, sizeof(line), "thermal listener %d pid %d:", handle,
                              static_cast<int>(listener.owner));
                std::string text = line;
                for (int32_t id : listener.ids) text += ' ' + std::to_string(id);
                lines.push_back(std::move(text));
            }
            break;
        case 8:  // request history
            for (const Entry& entry : history_) lines.push_back(entry.text);
            break;
        default:
            break;
    }
    __android_log_print(ANDROID_LOG_INFO, DrelService::kLogTag, "dump %s: %zu entries",
                        kDumpNames[selector], lines.size());
    for (const std::string& text : lines) {
        __android_log_print(ANDROID_LOG_INFO, DrelService::kLogTag, "  %s", text.c_str());
    }
}

}  // namespace aidl::vendor::quarn::hardware::drel::example
