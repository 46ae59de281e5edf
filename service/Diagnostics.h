// The example service's diagnostics: the request history (kind 11 answers it) with its recording
// switch, and the kind-5 requests that dump a table of the service's state to its log.
//
// Not thread-safe: DrelService calls it under its own mutex.
#pragma once

#include <aidl/vendor/quarn/hardware/drel/DrelRequestData.h>
#include <aidl/vendor/quarn/hardware/drel/DrelRequestParcel.h>

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <string>
#include <vector>

#include "Listeners.h"
#include "Records.h"
#include "ResourceTable.h"

namespace aidl::vendor::quarn::hardware::drel::example {

class Diagnostics {
public:
    // What the dumps read, and the time their expiries are counted from.
    struct Sources {
        const ResourceTable& resources;
        const Listeners& listeners;
        const Records& records;
        std::chrono::milliseconds now;
    };

    // Keeps at most `historyCapacity` requests in the history, dropping the oldest.
    explicit Diagnostics(size_t historyCapacity) : historyCapacity_(historyCapacity) {}

    // Adds a resource request to the history, while recording is on.
    void record(int32_t handle, const DrelRequestParcel& parcel,
                const std::vector<ResourceTable::Held>& held);
    // The history as kind 11 answers it, oldest first.
    std::vector<DrelRequestData> history() const;
    bool recording() const { return recording_; }

    // A kind-5 request: dumps the table its first record selects, or switches recording on or
    // off; returns the service's answer (1, or 0 for no or an unknown selector).
    int32_t run(const DrelRequestParcel& parcel, const Sources& sources);

private:
    struct Entry {
        int32_t handle;
        int32_t kind;
        std::string text;
    };
    void dump(int32_t selector, const Sources& sources) const;

    const size_t historyCapacity_;
    std::deque<Entry> history_;
    bool recording_ = true;
};

}  // namespace aidl::vendor::quarn::hardware::drel::example
