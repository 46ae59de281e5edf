// A process-wide connection to the resource-control service, and the guarded call that every
// operation of the class API and of the flat API makes through one.
//
// Each API keeps its own proxy pointer and reader-writer lock. Calls hold the lock shared, so
// they run in parallel; connecting, resetting after a failed call and the death notification
// hold it exclusively, so they wait for the calls in flight. The exclusive side is only taken
// after the shared side has been released: a death notice that a transport runs inside a call
// on the calling thread (RPC binder does) leaves the reset to that call's failure.
//
// Calls made from inside a call. A service that calls back into this process while it handles
// one of the process's synchronous calls (a report sent from inside listeningRegister or
// request) reaches the very thread that made the call, as binder's nested transaction does. The
// caller's callback then runs on a thread that holds a connection lock shared, and in a
// listening registration callback_group_mutex too. So that it may call any operation from
// there, the library records per thread which of its locks the thread holds:
// - a lock the thread holds already is not taken again: the inner call uses the outer hold (a
//   second shared hold of one std::shared_timed_mutex by one thread is undefined, and deadlocks
//   behind a waiting writer where readers queue behind writers);
// - while it holds any library lock, a thread never waits for a connection lock it does not
//   hold, nor connects: an operation of the other API takes that API's lock only when it is free
//   at once and the API is connected, and otherwise fails at once (kBusyFormat);
// - the reset after a failed call is put off until the thread holds no library lock.
// callback_group_mutex may still be waited for while a connection lock is held: its holders wait
// for nothing that a caller thread holds.
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

// The line of an operation refused because it was called, from inside a call of the other API,
// while its own connection was busy or not connected; %s is the operation's name.
inline constexpr const char* kBusyFormat =
        "%s() failed: called from a report inside a binder call of the other API while this "
        "connection is busy or not connected";

// One library lock held by this thread: a node of the thread's list of holds.
struct ThreadHold {
    const void* lock = nullptr;
    ThreadHold* next = nullptr;
};

// Looks the service up and links to its death, with the connection's lock held exclusively:
// stores the proxy in `hal` (null when the service is not declared or not found) and replaces
// the death recipient in `recipient` (the replaced one is freed, which drops its links).
// Returns 0 when connected, -1 otherwise.
int connectLocked(std::shared_ptr<IDrel>& hal, ndk::ScopedAIBinder_DeathRecipient& recipient,
                  AIBinder* (*lookup)(const char*), AIBinder_DeathRecipient_onBinderDied onDied,
                  const char* tag, const char* linkFailMessage);

// Logs the failure line of `name` and clears the proxy so that the next call reconnects; while
// this thread holds a library lock the reset waits until it holds none.
void resetAfterFailure(const HalConnection& connection, const char* name);

// The death notice of the service: clears the proxy so that the next call reconnects and logs
// "Drel HAL Service died". A transport may run the notice on the thread whose call found the
// service gone, inside that call, which holds this connection's lock shared: there it only logs,
// since taking the lock exclusively would wait for that very hold, and leaves the reset to the
// call's own failure, which makes it once the shared hold is released.
void resetAfterDeath(const HalConnection& connection);

// A mutex of the library that a caller's callback, run on this thread while the mutex is held,
// may ask for again: the inner request uses the outer hold instead of locking twice.
class NestableLock {
public:
    explicit NestableLock(std::mutex& mutex);
    ~NestableLock() { unlock(); }
    NestableLock(const NestableLock&) = delete;
    NestableLock& operator=(const NestableLock&) = delete;

    // Drops this hold (a no-op for an inner one); a reset put off meanwhile is made when this
    // thread holds nothing else.
    void unlock();

private:
    std::mutex& mMutex;
    bool mOwns = false;
    ThreadHold mHold;
};

// One guarded call: connects, holds the lock shared until finish(), then reports a failed
// status by resetting the connection. Inside a call of the same connection on this thread it
// neither connects nor locks: it uses the outer call's hold and proxy.
//
//   GuardedCall call(kConnection, "opName");
//   if (!call) return -1;                       // no proxy: nothing is called
//   call.finish(call->op(args, &result));       // releases the lock, resets on failure
class GuardedCall {
public:
    GuardedCall(const HalConnection& connection, const char* name);
    ~GuardedCall();
    GuardedCall(const GuardedCall&) = delete;
    GuardedCall& operator=(const GuardedCall&) = delete;

    // The connect step failed (the flat API reports this before taking the lock), or the call
    // was refused with kBusyFormat.
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
    // Drops this call's own shared hold, if it has one.
    void unlock();

    const HalConnection& mConnection;
    const char* mName;
    bool mConnectFailed = false;
    bool mOk = false;
    std::shared_lock<std::shared_timed_mutex> mLock;
    ThreadHold mHold;
    IDrel* mHal = nullptr;
};

}  // namespace qel_internal
