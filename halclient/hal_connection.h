// A process-wide connection to the resource-control service, and the guarded call that every
// operation of the class API and of the flat API makes through one.
//
// Each API keeps its own proxy pointer and reader-writer lock. Calls hold the lock shared, so
// they run in parallel; connecting, resetting after a failed call and the death notification
// hold it exclusively, so they wait for the calls in flight. The exclusive side is only taken
// after the shared side has been released.
#pragma once

#include <aidl/vendor/quarn/hardware/drel/IDrel.h>
#include <android/binder_auto_utils.h>

#include <memory>
#include <mutex>
#include <shared_mutex>

namespace qel_internal {

using ::aidl::vendor::quarn::hardware::drel::IDrel;

inline constexpr const char* kDrelInstance = "vendor.quarn.hardware.drel.IDrel/default";

struct HalConnection {
    std::shared_ptr<IDrel>& hal;
    std::shared_timed_mutex& lock;
    // Connects if needed; 0 when connected. Logs its own failures.
    int (*connect)();
    const char* tag;
    // The failure line of a call, with the operation's name for %s.
    const char* failFormat;
};

// Looks the service up and links to its death, with the connection's lock held exclusively:
// stores the proxy in `hal` (null when the service is not declared or not found) and replaces
// the death recipient in `recipient` (the replaced one is freed, which drops its links).
// Returns 0 when connected, -1 otherwise.
int connectLocked(std::shared_ptr<IDrel>& hal, ndk::ScopedAIBinder_DeathRecipient& recipient,
                  AIBinder* (*lookup)(const char*), AIBinder_DeathRecipient_onBinderDied onDied,
                  const char* tag, const char* linkFailMessage);

// Logs the failure line of `name` and clears the proxy so that the next call reconnects.
void resetAfterFailure(const HalConnection& connection, const char* name);

// One guarded call: connects, holds the lock shared until finish(), then reports a failed
// status by resetting the connection.
//
//   GuardedCall call(kConnection, "opName");
//   if (!call) return -1;                       // no proxy: nothing is called
//   call.finish(call->op(args, &result));       // releases the lock, resets on failure
class GuardedCall {
public:
    GuardedCall(const HalConnection& connection, const char* name);

    // The connect step failed (the flat API reports this before taking the lock).
    bool connectFailed() const { return mConnectFailed; }
    // A proxy is there to call.
    explicit operator bool() const { return mHal != nullptr; }
    IDrel* operator->() const { return mHal; }

    // Releases the shared lock and keeps the status's outcome; reports nothing yet.
    void release(const ndk::ScopedAStatus& status);
    // After release(): on a failed status, the failure line and the reset. Returns ok().
    bool report();
    // release() then report().
    bool finish(const ndk::ScopedAStatus& status) {
        release(status);
        return report();
    }
    // The call was made and its status was OK.
    bool ok() const { return mOk; }

private:
    const HalConnection& mConnection;
    const char* mName;
    bool mConnectFailed = false;
    bool mOk = false;
    std::shared_lock<std::shared_timed_mutex> mLock;
    IDrel* mHal = nullptr;
};

}  // namespace qel_internal
