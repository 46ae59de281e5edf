// Internal model of the host binder runtime.
//
// Every service registered with the service manager runs in a "process" of its own; everything
// else belongs to the main process (the test or tool itself). A binder object belongs to the
// process that made it (a registered service's binder moves to the service's process). A proxy
// is owned by the process that received it and points to a local binder of another process.
//
// Transactions into a service process run on the calling thread, which stands in for the
// service's binder thread for the length of the call (its current process is switched). A call
// into a process out of which the calling thread is itself in a synchronous call (a service
// calling back into the client while it handles the client's call) runs on that same thread, as
// binder's nested transaction does. Any other call into the main process (a service reporting
// from a thread of its own) and death notifications run on the main process's binder thread
// pool, and wait until the process has started one. The death notifications of one dead proxy are
// one job: its recipients are called in link order, one after another, on one binder thread. A
// test may have them delivered as an RPC transport does instead (deliverDeathsInFailingCalls):
// on the thread of the next call of their process that finds the dead process gone, inside it.
#pragma once

#include <android/binder_ibinder.h>

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

struct AIBinder_Class {
    std::string descriptor;
    AIBinder_Class_onCreate onCreate;
    AIBinder_Class_onDestroy onDestroy;
    AIBinder_Class_onTransact onTransact;
    AIBinder_onDump onDump = nullptr;
    binder_status_t (*handleShellCommand)(AIBinder*, int, int, int, const char**,
                                          uint32_t) = nullptr;
};

namespace hostbinder {

struct Process {
    std::string name;  // the service instance, or "main"
    std::atomic<bool> dead{false};
};

// A binder read from a parcel by the calling thread's current process: the local object in its
// own process, a proxy (one per reading process and target) elsewhere. Returns +1, or null.
AIBinder* readBinderFor(AIBinder* written);

}  // namespace hostbinder

struct ABpBinder;

struct AIBinder {
    explicit AIBinder(const AIBinder_Class* clazz) : clazz(clazz) {}
    virtual ~AIBinder() = default;
    AIBinder(const AIBinder&) = delete;
    AIBinder& operator=(const AIBinder&) = delete;

    virtual bool isRemote() const = 0;
    virtual void onLastStrongRef() = 0;

    void incStrong() { strong.fetch_add(1, std::memory_order_relaxed); }
    void decStrong();
    void incWeak() { weak.fetch_add(1, std::memory_order_relaxed); }
    void decWeak();
    bool tryIncStrong();

    std::atomic<int32_t> strong{1};
    std::atomic<int32_t> weak{1};  // one for all strong references together
    std::atomic<const AIBinder_Class*> clazz;
};

// A local binder: the object lives in this binder's process.
struct ABBinder : AIBinder {
    ABBinder(const AIBinder_Class* clazz, void* userData, std::shared_ptr<hostbinder::Process> proc)
        : AIBinder(clazz), userData(userData), process(std::move(proc)) {}
    bool isRemote() const override { return false; }
    void onLastStrongRef() override;

    void* userData;
    std::mutex processMutex;
    std::shared_ptr<hostbinder::Process> process;  // guarded by processMutex

    std::shared_ptr<hostbinder::Process> getProcess() {
        std::lock_guard<std::mutex> l(processMutex);
        return process;
    }
};

struct DeathLink {
    AIBinder_DeathRecipient* recipient;
    void* cookie;
};

// A proxy: held by `owner`, pointing to `target` in `targetProcess`.
struct ABpBinder : AIBinder {
    ABpBinder(ABBinder* target, std::shared_ptr<hostbinder::Process> targetProcess,
              std::shared_ptr<hostbinder::Process> owner)
        : AIBinder(target->clazz.load()),
          target(target),
          targetProcess(std::move(targetProcess)),
          owner(std::move(owner)) {}
    bool isRemote() const override { return true; }
    void onLastStrongRef() override;

    // Returns the target with a +1 reference, or null when the proxy is dead.
    ABBinder* acquireTarget();
    // Marks the proxy dead and drops its reference to the target.
    void die();

    std::mutex mutex;
    ABBinder* target;   // strong reference; null once dead (guarded by mutex)
    bool dead = false;  // guarded by mutex
    const std::shared_ptr<hostbinder::Process> targetProcess;
    const std::shared_ptr<hostbinder::Process> owner;
    std::vector<DeathLink> links;  // guarded by the runtime's global mutex
};
