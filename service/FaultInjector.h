// The example service's fault plan: which IDrel calls go wrong and how, reproducibly for a seed,
// for callers' tests of their own error handling.
//
// Thread-safe: it has a mutex of its own, never held while a call's work runs.
#pragma once

#include <android/binder_auto_utils.h>

#include <cstdint>
#include <functional>
#include <mutex>
#include <optional>
#include <utility>

#include "drel-service/DrelService.h"

namespace aidl::vendor::quarn::hardware::drel::example {

class FaultInjector {
public:
    using FaultPlan = DrelService::FaultPlan;

    // Calls from the next one on follow `plan`; std::nullopt ends the faults.
    void setPlan(std::optional<FaultPlan> plan);
    // How many calls went wrong (late answers included).
    uint64_t injected() const;

    // Runs `work` (an IDrel call's body) as the plan says: not at all, late, or with its answer
    // replaced.
    ::ndk::ScopedAStatus run(const std::function<::ndk::ScopedAStatus()>& work);

private:
    // The plan's verdict on the next call: one Fault bit (0: none), and its draw (for a late
    // answer, the delay in microseconds).
    std::pair<uint32_t, uint64_t> draw();

    mutable std::mutex mutex_;
    std::optional<FaultPlan> plan_;
    uint64_t calls_ = 0;  // calls drawn since the plan was set
    uint64_t injected_ = 0;
};

}  // namespace aidl::vendor::quarn::hardware::drel::example
