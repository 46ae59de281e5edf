// DrelService: a small example implementation of vendor.quarn.hardware.drel.IDrel.
//
// It keeps everything in memory and touches no hardware: requests hold resources (named by a
// 32-bit id or by a path) at text values until they are released or time out, state queries
// answer the values in force, listeners hear about changes, thermal levels fan out to the
// listeners of their ids, and rules, properties, notifications and related system information
// are recorded. service/README.md states the rules exactly.
//
// Thread safety: every IDrel operation and every accessor may be called from any thread at any
// time. One mutex guards the state; client callbacks (listeners, one-shot request callbacks,
// thermal listeners) are always called after that mutex has been released, so a callback may call
// back into the service.
//
// Handles and owners: each instance numbers its handles from the boot-time clock, so that a
// handle of an instance that died names nothing in the next one (Options::firstHandle fixes the
// first handle for tests), and only the process that made a request or registration
// (AIBinder_getCallingPid() in the call) may end it: another process is answered -1, as for an
// unknown handle.
//
// Time: timeouts are in milliseconds on the clock given in Options (a monotonic clock by
// default). Expired requests are dropped at the start of every IDrel operation that reads or
// changes resource state, by expireDue(), and by the expiry thread once startExpiryThread() has
// been called (the service binary does; tests drive a manual clock and call expireDue()).
//
// Faults: for callers' tests of their own error handling, setFaultPlan() makes the service go
// wrong at random as a real one does (a failed transaction, an exception, a service-specific
// error, a reply lost after the work was done, a late answer), reproducibly for a seed.
#pragma once

#include <aidl/vendor/quarn/hardware/drel/BnDrel.h>

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace aidl {
namespace vendor {
namespace quarn {
namespace hardware {
namespace drel {

class DrelService : public BnDrel {
public:
    // Milliseconds on a monotonic clock; only differences matter.
    using Clock = std::function<std::chrono::milliseconds()>;

    struct Options {
        Clock clock;                       // empty: std::chrono::steady_clock
        size_t historyCapacity = 32;       // request history entries kept (oldest dropped)
        size_t notificationCapacity = 32;  // kind-10 notifications kept (oldest dropped)
        // The first handle. 0 or less: a number read off the boot-time clock, so that a
        // restarted service gives out no handle an earlier instance gave (service/README.md,
        // Handles); a test that counts on fixed handles sets one.
        int32_t firstHandle = 0;
    };

    // What ruleCtl last set for a rule.
    struct RuleState {
        int32_t status = 0;
        std::vector<DrelRequestData> data;
    };

    // Request kinds (DrelRequestParcel::requestType) the service understands.
    static constexpr int32_t kKindState = 0;
    static constexpr int32_t kKindResource = 1;
    static constexpr int32_t kKindScene = 2;
    static constexpr int32_t kKindDiagnostic = 5;
    static constexpr int32_t kKindThermal = 7;
    static constexpr int32_t kKindEvent = 8;
    static constexpr int32_t kKindNotify = 10;
    static constexpr int32_t kKindHistory = 11;
    static constexpr int32_t kKindPlatform = 12;
    static constexpr int32_t kKindPowerMode = 13;

    // Diagnostic selectors (resId of the one record of a kind-5 request).
    static constexpr int32_t kHistoryRecordOn = 0xA;
    static constexpr int32_t kHistoryRecordOff = 0xB;

    // The value of a resource that no live request holds.
    static constexpr const char* kDefaultValue = "0";
    static constexpr const char* kLogTag = "DrelService";

    // The ways a call can go wrong under a fault plan (bits of FaultPlan::faults).
    enum Fault : uint32_t {
        kFailedTransaction = 1u << 0,     // STATUS_FAILED_TRANSACTION; nothing was done
        kException = 1u << 1,             // exception EX_ILLEGAL_STATE; nothing was done
        kServiceSpecificError = 1u << 2,  // EX_SERVICE_SPECIFIC, a code below -1; nothing done
        kLostReply = 1u << 3,             // done as usual, then STATUS_FAILED_TRANSACTION
        kLateAnswer = 1u << 4,            // done and answered as usual, up to `lateBy` late
        kAnyFault = (1u << 5) - 1,
    };
    // Which calls go wrong and how: `percent` calls in 100, each in one of the ways `faults`
    // allows. The n-th call after setFaultPlan() goes wrong or not, and how, as a function of
    // `seed` and n alone, so a test that makes its calls in one order sees the same faults on
    // every run.
    struct FaultPlan {
        uint64_t seed = 1;
        int percent = 10;
        uint32_t faults = kAnyFault;
        std::chrono::microseconds lateBy{2000};  // the longest delay of a late answer
    };

    DrelService();
    explicit DrelService(Options options);
    ~DrelService() override;

    // IDrel.
    ::ndk::ScopedAStatus init() override;
    ::ndk::ScopedAStatus request(const DrelRequestParcel& parcel, int32_t* _aidl_return) override;
    ::ndk::ScopedAStatus release(int32_t handle, int32_t* _aidl_return) override;
    ::ndk::ScopedAStatus stateRequest(const DrelRequestParcel& parcel,
                                      std::vector<DrelRequestData>* _aidl_return) override;
    ::ndk::ScopedAStatus listeningRegister(const DrelRequestParcel& parcel,
                                           const std::shared_ptr<IDrelCallback>& callback,
                                           int32_t* _aidl_return) override;
    ::ndk::ScopedAStatus listeningUnregister(int32_t handle, int32_t* _aidl_return) override;
    ::ndk::ScopedAStatus propertyGet(const std::string& name, std::string* _aidl_return) override;
    ::ndk::ScopedAStatus propertySet(const std::string& name, const std::string& value,
                                     int32_t* _aidl_return) override;
    ::ndk::ScopedAStatus thermalListeningRegister(const std::vector<int32_t>& ids,
                                                  const std::shared_ptr<IDrelCallback>& callback,
                                                  int32_t* _aidl_return) override;
    ::ndk::ScopedAStatus thermalListeningUnregister(int32_t handle, int32_t* _aidl_return) override;
    ::ndk::ScopedAStatus reserved11() override;
    ::ndk::ScopedAStatus setRelatedSysInfo(int32_t type, int64_t info,
                                           int32_t* _aidl_return) override;
    ::ndk::ScopedAStatus ruleCtl(int32_t ruleId, int32_t status,
                                 const std::vector<DrelRequestData>& data,
                                 int32_t* _aidl_return) override;

    // Every IDrel call but reserved11 follows `plan` from the next call on; std::nullopt ends
    // the faults. Callable from any thread at any time.
    void setFaultPlan(std::optional<FaultPlan> plan);
    // How many calls went wrong (late answers included) since the service was made.
    uint64_t faultsInjected() const;

    // Starts the thread that drops requests when their timeouts expire. Idempotent; the thread
    // stops in the destructor.
    void startExpiryThread();
    // Drops every request whose timeout has expired by the clock's current time, notifies the
    // listeners of what changed, and returns how many requests were dropped.
    int expireDue();

    // Observations for the service's owner and for tests.
    int initCount() const;
    size_t liveRequestCount() const;
    std::optional<RuleState> ruleState(int32_t ruleId) const;
    std::optional<int64_t> relatedSysInfo(int32_t type) const;
    // The records of the kept kind-10 notifications, oldest first.
    std::vector<std::vector<DrelRequestData>> notifications() const;
    // The level last notified for a thermal id.
    std::optional<std::string> thermalLevel(int32_t id) const;
    bool historyRecording() const;

private:
    // The service's parts (resource table, listeners, records, diagnostics, fault plan), the
    // mutex that guards them and the expiry thread; DrelService.cpp.
    struct State;
    std::unique_ptr<State> state_;
};

}  // namespace drel
}  // namespace hardware
}  // namespace quarn
}  // namespace vendor
}  // namespace aidl
