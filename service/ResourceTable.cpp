#include "ResourceTable.h"

#include <algorithm>
#include <cstdio>
#include <limits>
#include <tuple>

#include "drel-service/DrelService.h"

namespace aidl::vendor::quarn::hardware::drel::example {

namespace {

// The value a request holds a resource at when its record carries no text: "on".
constexpr const char* kNoValueHeld = "1";

}  // namespace

bool Key::operator<(const Key& other) const {
    return std::tie(id, path) < std::tie(other.id, other.path);
}

bool Key::operator==(const Key& other) const {
    return id == other.id && path == other.path;
}

std::optional<Key> keyOf(const DrelRequestData& record) {
    if (record.resId != 0) return Key{record.resId, {}};
    if (record.resPath && !record.resPath->empty()) return Key{0, *record.resPath};
    return std::nullopt;
}

DrelRequestData recordOf(const Key& key, const std::string& value) {
    DrelRequestData record;
    record.resId = key.id;
    if (key.id == 0) record.resPath = key.path;
    record.resValue = value;
    return record;
}

std::string describe(const Key& key) {
    if (key.id == 0) return key.path;
    char text[16];
    std::snprintf(text, sizeof(text), "0x%08x", static_cast<uint32_t>(key.id));
    return text;
}

Changes ResourceTable::add(int32_t handle, const DrelRequestParcel& parcel, pid_t owner,
                           milliseconds now) {
    Request request;
    request.kind = parcel.requestType;
    request.owner = owner;
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

    const Values before = valuesOf(request.held);
    for (const Held& h : request.held) {
        holders_[h.key][request.sequence] = Holder{handle, h.value};
    }
    // A timeout too long for the clock never expires.
    if (parcel.timeout > 0 &&
        parcel.timeout <= std::numeric_limits<milliseconds::rep>::max() - now.count()) {
        request.deadline = now + milliseconds(parcel.timeout);
        deadlines_.emplace(*request.deadline, handle);
    }
    requests_.emplace(handle, std::move(request));
    return changedSince(before);
}

Changes ResourceTable::drop(int32_t handle) {
    auto found = requests_.find(handle);
    if (found == requests_.end()) return {};
    const Request& request = found->second;
    const Values before = valuesOf(request.held);
    for (const Held& h : request.held) {
        auto holders = holders_.find(h.key);
        if (holders == holders_.end()) continue;
        holders->second.erase(request.sequence);
        if (holders->second.empty()) holders_.erase(holders);
    }
    if (request.deadline) deadlines_.erase({*request.deadline, handle});
    requests_.erase(found);
    return changedSince(before);
}

std::optional<int32_t> ResourceTable::due(milliseconds now) const {
    if (deadlines_.empty() || deadlines_.begin()->first > now) return std::nullopt;
    return deadlines_.begin()->second;
}

std::optional<ResourceTable::milliseconds> ResourceTable::nextDeadline() const {
    if (deadlines_.empty()) return std::nullopt;
    return deadlines_.begin()->first;
}

const ResourceTable::Request* ResourceTable::find(int32_t handle) const {
    auto found = requests_.find(handle);
    return found == requests_.end() ? nullptr : &found->second;
}

std::string ResourceTable::valueOf(const Key& key) const {
    auto found = holders_.find(key);
    if (found == holders_.end() || found->second.empty()) return DrelService::kDefaultValue;
    return found->second.rbegin()->second.value;
}

ResourceTable::Values ResourceTable::valuesOf(const std::vector<Held>& held) const {
    Values values;
    for (const Held& h : held) values.emplace(h.key, valueOf(h.key));
    return values;
}

Changes ResourceTable::changedSince(const Values& before) const {
    Changes changed;
    for (const auto& [key, oldValue] : before) {
        std::string newValue = valueOf(key);
        if (newValue != oldValue) changed.emplace(key, std::move(newValue));
    }
    return changed;
}

}  // namespace aidl::vendor::quarn::hardware::drel::example
