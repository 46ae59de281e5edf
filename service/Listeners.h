// The example service's listeners: listening registrations (resources by id or path), thermal
// listening registrations (thermal ids) with the levels last notified, and the delivery of their
// reports to the clients' callbacks.
//
// Not thread-safe, except deliver(): DrelService gathers reports under its own mutex and delivers
// them after releasing it.
#pragma once

#include <aidl/vendor/quarn/hardware/drel/IDrelCallback.h>
#include <sys/types.h>

#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "ResourceTable.h"

namespace aidl::vendor::quarn::hardware::drel::example {

// A call to a client's callback, made once the service's mutex has been released. `handle` names
// the registration it belongs to (0 for a one-shot request callback), so that a registration
// whose client has died can be dropped.
struct Report {
    std::shared_ptr<IDrelCallback> callback;
    std::vector<DrelRequestData> data;
    int32_t handle = 0;
    bool thermal = false;
};
using Reports = std::vector<Report>;

class Listeners {
public:
    // Each registration remembers the process that made it, the only one that may end it.
    struct Listener {
        pid_t owner;
        std::vector<Key> keys;  // in the order registered, each once
        std::shared_ptr<IDrelCallback> callback;
    };
    struct ThermalListener {
        pid_t owner;
        std::vector<int32_t> ids;
        std::shared_ptr<IDrelCallback> callback;
    };

    // Registers `callback` of the process `owner` under `handle` for the resources the records
    // name.
    void add(int32_t handle, const std::vector<DrelRequestData>& records,
             std::shared_ptr<IDrelCallback> callback, pid_t owner);
    void addThermal(int32_t handle, std::vector<int32_t> ids,
                    std::shared_ptr<IDrelCallback> callback, pid_t owner);
    // Ends a registration and returns its callback, for the caller to let go of once the mutex
    // has been released; null when there was none.
    std::shared_ptr<IDrelCallback> remove(int32_t handle);
    std::shared_ptr<IDrelCallback> removeThermal(int32_t handle);
    const Listener* find(int32_t handle) const;
    const ThermalListener* findThermal(int32_t handle) const;

    // One report to each listener of any changed resource, with the resources it listens to in
    // its own order.
    void reportChanges(const Changes& changes, Reports& reports) const;
    // Remembers each record's level for its thermal id and reports to each thermal listener the
    // levels of its ids, in the records' order; returns how many listeners got a report.
    int32_t notifyThermal(const std::vector<DrelRequestData>& levels, Reports& reports);
    std::optional<std::string> thermalLevel(int32_t id) const;

    const std::map<int32_t, Listener>& listeners() const { return listeners_; }
    const std::map<int32_t, ThermalListener>& thermalListeners() const { return thermalListeners_; }
    const std::map<int32_t, std::string>& thermalLevels() const { return thermalLevels_; }

    // Calls every report's callback, in order, with no lock held. A registration whose client has
    // gone (STATUS_DEAD_OBJECT) is dropped, under `mutex`; any other failure is logged. Empties
    // `reports`.
    void deliver(Reports& reports, std::mutex& mutex);

private:
    std::map<int32_t, Listener> listeners_;
    std::map<int32_t, ThermalListener> thermalListeners_;
    std::map<int32_t, std::string> thermalLevels_;
};

}  // namespace aidl::vendor::quarn::hardware::drel::example
