// The example service's resource table: the live requests, the resources each holds and at what
// value, the value in force of every resource, and the requests' deadlines.
//
// Not thread-safe: DrelService calls it under its own mutex.
#pragma once

#include <aidl/vendor/quarn/hardware/drel/DrelRequestData.h>
#include <aidl/vendor/quarn/hardware/drel/DrelRequestParcel.h>
#include <sys/types.h>

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace aidl::vendor::quarn::hardware::drel::example {

// A resource: by id when the id is not 0, otherwise by path.
struct Key {
    int32_t id = 0;
    std::string path;
    bool operator<(const Key& other) const;
    bool operator==(const Key& other) const;
};

// The resource a record names: its id when not 0, else its path when present and not empty.
std::optional<Key> keyOf(const DrelRequestData& record);
// A record of a resource at a value: {resId, resValue} by id, {0, resPath, resValue} by path.
DrelRequestData recordOf(const Key& key, const std::string& value);
// A resource as dumps and the history write it: "0x%08x" for an id, the path itself for a path.
std::string describe(const Key& key);

// The new values in force of the resources a change touched, for those whose value changed.
using Changes = std::map<Key, std::string>;

class ResourceTable {
public:
    using milliseconds = std::chrono::milliseconds;

    struct Held {
        Key key;
        std::string value;
    };
    struct Request {
        int32_t kind = 0;
        pid_t owner = 0;        // the process that made it, the only one that may release it
        uint64_t sequence = 0;  // order of arrival; never wraps, unlike handles
        std::vector<Held> held;
        std::optional<milliseconds> deadline;
    };
    struct Holder {
        int32_t handle;
        std::string value;
    };
    // For every held resource, each live request that holds it and at what value, in order of
    // arrival: the newest is in force.
    using Holders = std::map<Key, std::map<uint64_t, Holder>>;
    // Pending expiries, soonest first.
    using Deadlines = std::set<std::pair<milliseconds, int32_t>>;

    // Holds the resources `parcel` names under `handle` for the process `owner`, from `now` until
    // it is dropped or its timeout (if any) has passed; returns what that changed.
    Changes add(int32_t handle, const DrelRequestParcel& parcel, pid_t owner, milliseconds now);
    // Drops a live request; returns what that changed (nothing for a handle that is none).
    Changes drop(int32_t handle);
    // The live request whose deadline passed first, if one has by `now`.
    std::optional<int32_t> due(milliseconds now) const;
    std::optional<milliseconds> nextDeadline() const;

    const Request* find(int32_t handle) const;
    // The value in force: the newest live holder's, or DrelService::kDefaultValue.
    std::string valueOf(const Key& key) const;
    size_t size() const { return requests_.size(); }

    const std::map<int32_t, Request>& requests() const { return requests_; }
    const Holders& holders() const { return holders_; }
    const Deadlines& deadlines() const { return deadlines_; }

private:
    using Values = std::map<Key, std::string>;
    Values valuesOf(const std::vector<Held>& held) const;
    Changes changedSince(const Values& before) const;

    uint64_t nextSequence_ = 1;
    std::map<int32_t, Request> requests_;
    Holders holders_;
    Deadlines deadlines_;
};

}  // namespace aidl::vendor::quarn::hardware::drel::example
