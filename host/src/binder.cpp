// Host binder runtime: binder objects, proxies, processes, binder threads, death notification,
// the service manager and the test-control calls. See runtime.h for the model.

#include <android/binder_ibinder.h>
#include <android/binder_ibinder_platform.h>
#include <android/binder_manager.h>
#include <android/binder_process.h>
#include <android/binder_shell.h>
#include <android/binder_stability.h>
#include <android/log.h>
#include <hostbinder/hostbinder.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <iterator>
#include <map>
#include <set>
#include <thread>

#include "parcel_internal.h"
#include "runtime.h"

struct AIBinder_Weak {
    AIBinder* binder;
};

struct AIBinder_DeathRecipient {
    AIBinder_DeathRecipient_onBinderDied onDied;
    // Expires with the recipient: a notice still queued for a deleted recipient is dropped.
    std::shared_ptr<bool> alive = std::make_shared<bool>(true);
    std::vector<ABpBinder*> linkedTo;  // one entry per link; guarded by the global mutex

    void forgetOneLink(ABpBinder* proxy) {
        auto it = std::find(linkedTo.begin(), linkedTo.end(), proxy);
        if (it != linkedTo.end()) linkedTo.erase(it);
    }
};

namespace hostbinder {
namespace {

struct ServiceEntry {
    ABBinder* binder;  // strong reference held by the service manager
    std::shared_ptr<Process> process;
};

// The binder thread pool of the main process. Until the process has one (startThreadPool, or a
// thread in joinThreadPool) work waits in the queue, as on a device; once started, threads are
// made as work needs them, up to the maximum (15 unless set) besides the first thread and the
// joined ones.
class BinderThreadPool {
public:
    void post(std::function<void()> fn) {
        std::lock_guard<std::mutex> l(mMutex);
        mQueue.push_back(std::move(fn));
        ++mPending;
        if (!hasThreads() && !mWarned) {
            mWarned = true;
            __android_log_print(ANDROID_LOG_WARN, "hostbinder",
                                "a call into this process waits for a binder thread pool: call "
                                "ABinderProcess_startThreadPool()");
        }
        spawnAsNeeded();
        mWork.notify_one();
    }

    void start() {
        std::lock_guard<std::mutex> l(mMutex);
        if (mStarted) return;
        mStarted = true;
        spawn();
        spawnAsNeeded();
    }

    void setMaxThreads(uint32_t count) {
        std::lock_guard<std::mutex> l(mMutex);
        mMaxThreads = count;
    }

    [[noreturn]] void join() {
        std::unique_lock<std::mutex> l(mMutex);
        ++mJoined;
        serve(l);
    }

    // Waits for the queued and running work; work that waits for a pool the process has not
    // started is left queued.
    void waitIdle() {
        std::unique_lock<std::mutex> l(mMutex);
        mIdleCv.wait(l, [this] { return mPending == 0 || (!hasThreads() && mRunning == 0); });
    }

private:
    bool hasThreads() const { return mStarted || mJoined > 0; }

    void spawn() {
        ++mSpawned;
        ++mStarting;
        std::thread([this] {
            std::unique_lock<std::mutex> l(mMutex);
            --mStarting;
            serve(l);
        }).detach();
    }

    void spawnAsNeeded() {
        while (mStarted && mQueue.size() > static_cast<size_t>(mIdle + mStarting) &&
               static_cast<uint32_t>(mSpawned) < mMaxThreads + 1) {
            spawn();
        }
    }

    [[noreturn]] void serve(std::unique_lock<std::mutex>& l) {
        for (;;) {
            ++mIdle;
            mWork.wait(l, [this] { return !mQueue.empty(); });
            --mIdle;
            std::function<void()> fn = std::move(mQueue.front());
            mQueue.pop_front();
            ++mRunning;
            spawnAsNeeded();
            l.unlock();
            fn();
            fn = nullptr;  // destroy captures before reporting the work done
            l.lock();
            --mRunning;
            if (--mPending == 0 || mRunning == 0) mIdleCv.notify_all();
        }
    }

    std::mutex mMutex;
    std::condition_variable mWork;
    std::condition_variable mIdleCv;
    std::deque<std::function<void()>> mQueue;
    int mIdle = 0;
    int mStarting = 0;
    int mSpawned = 0;
    int mJoined = 0;
    int mRunning = 0;
    int mPending = 0;
    uint32_t mMaxThreads = 15;
    bool mStarted = false;
    bool mWarned = false;
};

// The obituaries of one dead proxy: its links in link order, for its owner process.
struct Obituaries {
    std::shared_ptr<Process> owner;
    std::shared_ptr<Process> dead;  // the process that died
    struct Death {
        std::weak_ptr<bool> alive;
        AIBinder_DeathRecipient_onBinderDied onDied;
        void* cookie;
    };
    std::vector<Death> deaths;
};

struct Runtime {
    std::mutex mutex;  // proxies, links, services, declarations, waiting obituaries
    std::condition_variable serviceAdded;
    std::shared_ptr<Process> main = std::make_shared<Process>();
    std::vector<ABpBinder*> proxies;
    std::map<std::string, ServiceEntry> services;
    std::set<std::string> declared;
    std::set<std::string> dieAtLink;  // services that die at the next link to their binder
    // Set by deliverDeathsInFailingCalls: obituaries wait in `waitingDeaths` for a call that
    // finds their process dead instead of going to the pool.
    bool deathsInCalls = false;
    std::vector<Obituaries> waitingDeaths;
    std::atomic<int> lookups{0};
    BinderThreadPool pool;

    Runtime() { main->name = "main"; }
};

// Never destroyed: binder threads and late reference drops may outlive static destruction.
Runtime& rt() {
    static Runtime* runtime = new Runtime;
    return *runtime;
}

thread_local std::shared_ptr<Process> tlProcess;

// The processes out of which this thread is in a synchronous call that has not returned yet,
// innermost last. A service call into one of them comes back to this thread, as binder sends a
// call from a thread handling a transaction to the thread that sent it (a nested transaction).
thread_local std::vector<const Process*> tlCallsOutOf;

// Records, for the length of one synchronous call, that this thread waits in it.
class CallOutOf {
public:
    explicit CallOutOf(const Process* caller) { tlCallsOutOf.push_back(caller); }
    ~CallOutOf() { tlCallsOutOf.pop_back(); }
    CallOutOf(const CallOutOf&) = delete;
    CallOutOf& operator=(const CallOutOf&) = delete;

    // This thread waits in a call out of `process`.
    static bool waitsIn(const Process* process) {
        return std::find(tlCallsOutOf.begin(), tlCallsOutOf.end(), process) != tlCallsOutOf.end();
    }
};

std::shared_ptr<Process> currentProcessShared() {
    return tlProcess ? tlProcess : rt().main;
}

void runAsShared(const std::shared_ptr<Process>& proc, const std::function<void()>& fn) {
    std::shared_ptr<Process> previous = tlProcess;
    tlProcess = proc;
    fn();
    tlProcess = previous;
}

// A binder handed to `reader`: its own local object, or a proxy (one per reader and target).
// Returns +1. Takes the global mutex.
AIBinder* resolveFor(ABBinder* local, const std::shared_ptr<Process>& reader) {
    std::shared_ptr<Process> home = local->getProcess();
    if (home == reader) {
        local->incStrong();
        return local;
    }
    Runtime& r = rt();
    std::lock_guard<std::mutex> l(r.mutex);
    for (ABpBinder* proxy : r.proxies) {
        if (proxy->owner == reader && proxy->targetProcess == home && !home->dead) {
            std::lock_guard<std::mutex> pl(proxy->mutex);
            if (proxy->target == local && proxy->tryIncStrong()) return proxy;
        }
    }
    local->incStrong();  // the proxy's reference to its target
    auto* proxy = new ABpBinder(local, home, reader);
    if (home->dead) proxy->die();
    r.proxies.push_back(proxy);
    return proxy;
}

std::shared_ptr<bool> lockAlive(const std::weak_ptr<bool>& alive) {
    std::lock_guard<std::mutex> l(rt().mutex);  // against a concurrent delete of the recipient
    return alive.lock();
}

// Calls the recipients of one dead proxy, in link order, on this thread, in their owner process.
void deliver(const Obituaries& dead) {
    runAsShared(dead.owner, [&] {
        for (const auto& death : dead.deaths) {
            std::shared_ptr<bool> alive = lockAlive(death.alive);
            if (alive) death.onDied(death.cookie);
        }
    });
}

// As libbinder sends them: one job per dead proxy, whose recipients are called one after another
// on that one binder thread.
void postToPool(std::vector<Obituaries> obituaries) {
    for (Obituaries& dead : obituaries) {
        rt().pool.post([dead = std::move(dead)] { deliver(dead); });
    }
}

// A call of this thread found `proc` dead: with deaths delivered in failing calls, the
// obituaries of this process's proxies of `proc` that still wait run here, inside the call, as
// an RPC transport runs them on the thread that finds its session gone.
void deliverInFailingCall(const std::shared_ptr<Process>& proc) {
    const std::shared_ptr<Process> caller = currentProcessShared();
    std::vector<Obituaries> mine;
    {
        std::lock_guard<std::mutex> l(rt().mutex);
        auto& waiting = rt().waitingDeaths;
        auto ours = std::stable_partition(waiting.begin(), waiting.end(), [&](const Obituaries& o) {
            return o.owner != caller || o.dead != proc;
        });
        std::move(ours, waiting.end(), std::back_inserter(mine));
        waiting.erase(ours, waiting.end());
    }
    for (const Obituaries& dead : mine) deliver(dead);
}

void killProcess(const std::shared_ptr<Process>& proc) {
    Runtime& r = rt();
    std::vector<ABpBinder*> affected;
    std::vector<Obituaries> obituaries;
    {
        std::lock_guard<std::mutex> l(r.mutex);
        proc->dead = true;
        for (ABpBinder* proxy : r.proxies) {
            bool targetDied = proxy->targetProcess == proc;
            if (!targetDied && proxy->owner != proc) continue;
            if (!proxy->tryIncStrong()) continue;
            affected.push_back(proxy);
            if (!targetDied || proxy->links.empty()) continue;
            Obituaries dead{proxy->owner, proc, {}};
            for (const DeathLink& link : proxy->links) {
                link.recipient->forgetOneLink(proxy);
                dead.deaths.push_back({link.recipient->alive, link.recipient->onDied, link.cookie});
            }
            proxy->links.clear();
            // Queued for the failing calls under the same lock that marks the process dead, so
            // that a call which sees it dead also finds its obituaries waiting.
            (r.deathsInCalls ? r.waitingDeaths : obituaries).push_back(std::move(dead));
        }
    }
    for (ABpBinder* proxy : affected) proxy->die();
    postToPool(std::move(obituaries));
    for (ABpBinder* proxy : affected) proxy->decStrong();
}

}  // namespace

AIBinder* readBinderFor(AIBinder* written) {
    if (written == nullptr) return nullptr;
    if (!written->isRemote()) {
        return resolveFor(static_cast<ABBinder*>(written), currentProcessShared());
    }
    auto* proxy = static_cast<ABpBinder*>(written);
    ABBinder* target = proxy->acquireTarget();
    if (target == nullptr) {  // a dead proxy stays dead wherever it goes
        proxy->incStrong();
        return proxy;
    }
    AIBinder* resolved = resolveFor(target, currentProcessShared());
    target->decStrong();
    return resolved;
}

// ---- test control ----

void declareService(const char* instance) {
    if (instance == nullptr) return;
    std::lock_guard<std::mutex> l(rt().mutex);
    rt().declared.insert(instance);
}

void killService(const char* instance) {
    if (instance == nullptr) return;
    Runtime& r = rt();
    ServiceEntry entry{nullptr, nullptr};
    {
        std::lock_guard<std::mutex> l(r.mutex);
        auto it = r.services.find(instance);
        if (it == r.services.end()) return;
        entry = it->second;
        r.services.erase(it);
    }
    killProcess(entry.process);
    entry.binder->decStrong();
}

void deliverDeathsInFailingCalls(bool enabled) {
    std::vector<Obituaries> waiting;
    {
        std::lock_guard<std::mutex> l(rt().mutex);
        rt().deathsInCalls = enabled;
        if (!enabled) waiting.swap(rt().waitingDeaths);
    }
    postToPool(std::move(waiting));
}

void reset() {
    deliverDeathsInFailingCalls(false);
    std::vector<std::string> names;
    {
        std::lock_guard<std::mutex> l(rt().mutex);
        for (const auto& entry : rt().services) names.push_back(entry.first);
    }
    for (const std::string& name : names) killService(name.c_str());
    waitIdle();
    {
        std::lock_guard<std::mutex> l(rt().mutex);
        rt().declared.clear();
        rt().dieAtLink.clear();
    }
    rt().lookups = 0;
    setTraceTags(0);
    clearTrace();
}

void dieAtNextDeathLink(const char* instance) {
    if (instance == nullptr) return;
    std::lock_guard<std::mutex> l(rt().mutex);
    rt().dieAtLink.insert(instance);
}

int serviceManagerCalls() {
    return rt().lookups.load();
}

// The pid this thread's calls into a service come from, when a test set one.
static thread_local pid_t tlCallingPid = 0;

void setCallingPid(pid_t pid) {
    tlCallingPid = pid;
}

void waitIdle() {
    rt().pool.waitIdle();
}

}  // namespace hostbinder

using hostbinder::rt;

// ---- reference counting ----

void AIBinder::decStrong() {
    if (strong.fetch_sub(1, std::memory_order_acq_rel) == 1) {
        onLastStrongRef();
        decWeak();
    }
}

void AIBinder::decWeak() {
    if (weak.fetch_sub(1, std::memory_order_acq_rel) == 1) delete this;
}

bool AIBinder::tryIncStrong() {
    int32_t current = strong.load(std::memory_order_relaxed);
    while (current > 0) {
        if (strong.compare_exchange_weak(current, current + 1, std::memory_order_acq_rel)) {
            return true;
        }
    }
    return false;
}

void ABBinder::onLastStrongRef() {
    const AIBinder_Class* c = clazz.load();
    if (c != nullptr && c->onDestroy != nullptr) c->onDestroy(userData);
}

ABBinder* ABpBinder::acquireTarget() {
    std::lock_guard<std::mutex> l(mutex);
    if (dead || target == nullptr) return nullptr;
    target->incStrong();
    return target;
}

void ABpBinder::die() {
    ABBinder* old = nullptr;
    {
        std::lock_guard<std::mutex> l(mutex);
        dead = true;
        old = target;
        target = nullptr;
    }
    if (old != nullptr) old->decStrong();
}

void ABpBinder::onLastStrongRef() {
    {
        auto& r = rt();
        std::lock_guard<std::mutex> l(r.mutex);
        auto self = std::find(r.proxies.begin(), r.proxies.end(), this);
        if (self != r.proxies.end()) r.proxies.erase(self);
        for (const DeathLink& link : links) link.recipient->forgetOneLink(this);
        links.clear();
    }
    ABBinder* old = nullptr;
    {
        std::lock_guard<std::mutex> l(mutex);
        old = target;
        target = nullptr;
    }
    if (old != nullptr) old->decStrong();
}

// ---- AIBinder C API ----

extern "C" {

AIBinder_Class* AIBinder_Class_define(const char* interfaceDescriptor,
                                      AIBinder_Class_onCreate onCreate,
                                      AIBinder_Class_onDestroy onDestroy,
                                      AIBinder_Class_onTransact onTransact) {
    if (interfaceDescriptor == nullptr || onCreate == nullptr || onDestroy == nullptr ||
        onTransact == nullptr) {
        return nullptr;
    }
    return new AIBinder_Class{interfaceDescriptor, onCreate, onDestroy, onTransact};
}

void AIBinder_Class_setOnDump(AIBinder_Class* clazz, AIBinder_onDump onDump) {
    if (clazz != nullptr) clazz->onDump = onDump;
}

void AIBinder_Class_setHandleShellCommand(AIBinder_Class* clazz,
                                          AIBinder_handleShellCommand handleShellCommand) {
    if (clazz != nullptr) clazz->handleShellCommand = handleShellCommand;
}

void AIBinder_markVintfStability(AIBinder* /*binder*/) {}
void AIBinder_markVendorStability(AIBinder* /*binder*/) {}
void AIBinder_markSystemStability(AIBinder* /*binder*/) {}

const char* AIBinder_Class_getDescriptor(const AIBinder_Class* clazz) {
    return clazz == nullptr ? nullptr : clazz->descriptor.c_str();
}

AIBinder* AIBinder_new(const AIBinder_Class* clazz, void* args) {
    if (clazz == nullptr) return nullptr;
    void* userData = clazz->onCreate(args);
    return new ABBinder(clazz, userData, hostbinder::currentProcessShared());
}

bool AIBinder_isRemote(const AIBinder* binder) {
    return binder != nullptr && binder->isRemote();
}

bool AIBinder_isAlive(const AIBinder* binder) {
    if (binder == nullptr) return false;
    if (!binder->isRemote()) return true;
    auto* proxy = const_cast<ABpBinder*>(static_cast<const ABpBinder*>(binder));
    std::lock_guard<std::mutex> l(proxy->mutex);
    return !proxy->dead;
}

binder_status_t AIBinder_ping(AIBinder* binder) {
    if (binder == nullptr) return STATUS_UNEXPECTED_NULL;
    return AIBinder_isAlive(binder) ? STATUS_OK : STATUS_DEAD_OBJECT;
}

binder_status_t AIBinder_dump(AIBinder* binder, int fd, const char** args, uint32_t numArgs) {
    if (binder == nullptr) return STATUS_UNEXPECTED_NULL;
    ABBinder* target = nullptr;
    if (binder->isRemote()) {
        target = static_cast<ABpBinder*>(binder)->acquireTarget();
        if (target == nullptr) return STATUS_DEAD_OBJECT;
    } else {
        target = static_cast<ABBinder*>(binder);
        target->incStrong();
    }
    binder_status_t status = STATUS_OK;
    AIBinder_onDump onDump = target->clazz.load()->onDump;
    if (onDump != nullptr) {
        hostbinder::runAsShared(target->getProcess(),
                                [&] { status = onDump(target, fd, args, numArgs); });
    }
    target->decStrong();
    return status;
}

binder_status_t AIBinder_linkToDeath(AIBinder* binder, AIBinder_DeathRecipient* recipient,
                                     void* cookie) {
    if (binder == nullptr || recipient == nullptr) return STATUS_UNEXPECTED_NULL;
    if (!binder->isRemote()) return STATUS_INVALID_OPERATION;
    auto* proxy = static_cast<ABpBinder*>(binder);
    bool dies = false;
    {
        std::lock_guard<std::mutex> l(rt().mutex);
        auto& faults = rt().dieAtLink;
        auto service = rt().services.find(proxy->targetProcess->name);
        dies = faults.erase(proxy->targetProcess->name) != 0 && service != rt().services.end() &&
               service->second.process == proxy->targetProcess;
    }
    if (dies) hostbinder::killService(proxy->targetProcess->name.c_str());
    std::lock_guard<std::mutex> l(rt().mutex);
    {
        std::lock_guard<std::mutex> pl(proxy->mutex);
        if (proxy->dead) return STATUS_DEAD_OBJECT;
    }
    proxy->links.push_back(DeathLink{recipient, cookie});
    recipient->linkedTo.push_back(proxy);
    return STATUS_OK;
}

binder_status_t AIBinder_unlinkToDeath(AIBinder* binder, AIBinder_DeathRecipient* recipient,
                                       void* cookie) {
    if (binder == nullptr || recipient == nullptr) return STATUS_UNEXPECTED_NULL;
    if (!binder->isRemote()) return STATUS_INVALID_OPERATION;
    auto* proxy = static_cast<ABpBinder*>(binder);
    std::lock_guard<std::mutex> l(rt().mutex);
    auto it = std::find_if(proxy->links.begin(), proxy->links.end(), [&](const DeathLink& link) {
        return link.recipient == recipient && link.cookie == cookie;
    });
    if (it == proxy->links.end()) return STATUS_NAME_NOT_FOUND;
    proxy->links.erase(it);
    recipient->forgetOneLink(proxy);
    std::lock_guard<std::mutex> pl(proxy->mutex);
    return proxy->dead ? STATUS_DEAD_OBJECT : STATUS_OK;
}

// Every process of the host is this one, so a call comes from this process's own uid and pid, as
// does the caller outside any call; but inside a call this thread made out of the main process
// into a service, the pid is the one setCallingPid() set for this thread, if any.
uid_t AIBinder_getCallingUid(void) {
    return getuid();
}
pid_t AIBinder_getCallingPid(void) {
    const bool inCallFromMain =
            !hostbinder::tlCallsOutOf.empty() && hostbinder::tlCallsOutOf.back() == rt().main.get();
    return inCallFromMain && hostbinder::tlCallingPid > 0 ? hostbinder::tlCallingPid : getpid();
}

void AIBinder_incStrong(AIBinder* binder) {
    if (binder != nullptr) binder->incStrong();
}

void AIBinder_decStrong(AIBinder* binder) {
    if (binder != nullptr) binder->decStrong();
}

int32_t AIBinder_debugGetRefCount(AIBinder* binder) {
    return binder == nullptr ? -1 : binder->strong.load();
}

bool AIBinder_associateClass(AIBinder* binder, const AIBinder_Class* clazz) {
    if (binder == nullptr || clazz == nullptr) return false;
    const AIBinder_Class* current = binder->clazz.load();
    if (current == clazz) return true;
    if (!binder->isRemote()) return false;
    if (!AIBinder_isAlive(binder)) return false;
    if (current == nullptr || current->descriptor != clazz->descriptor) return false;
    binder->clazz = clazz;
    return true;
}

const AIBinder_Class* AIBinder_getClass(AIBinder* binder) {
    return binder == nullptr ? nullptr : binder->clazz.load();
}

void* AIBinder_getUserData(AIBinder* binder) {
    if (binder == nullptr || binder->isRemote()) return nullptr;
    return static_cast<ABBinder*>(binder)->userData;
}

binder_status_t AIBinder_prepareTransaction(AIBinder* binder, AParcel** in) {
    if (binder == nullptr || in == nullptr) return STATUS_UNEXPECTED_NULL;
    if (binder->clazz.load() == nullptr) return STATUS_INVALID_OPERATION;
    *in = new AParcel;
    return STATUS_OK;
}

binder_status_t AIBinder_transact(AIBinder* binder, transaction_code_t code, AParcel** in,
                                  AParcel** out, binder_flags_t flags) {
    if (in == nullptr || out == nullptr) return STATUS_UNEXPECTED_NULL;
    std::unique_ptr<AParcel> request(*in);
    *in = nullptr;
    if ((flags & ~binder_flags_t{FLAG_ONEWAY | FLAG_CLEAR_BUF | FLAG_PRIVATE_VENDOR}) != 0) {
        return STATUS_BAD_VALUE;
    }
    if (binder == nullptr || request == nullptr) return STATUS_UNEXPECTED_NULL;
    std::unique_ptr<AParcel> reply(new AParcel);
    request->position = 0;

    if (!binder->isRemote()) {
        auto* local = static_cast<ABBinder*>(binder);
        binder_status_t status =
                local->clazz.load()->onTransact(binder, code, request.get(), reply.get());
        if (status == STATUS_OK) *out = reply.release();
        return status;
    }

    auto* proxy = static_cast<ABpBinder*>(binder);
    const std::shared_ptr<hostbinder::Process>& home = proxy->targetProcess;
    ABBinder* target = proxy->acquireTarget();
    if (target == nullptr) {
        hostbinder::deliverInFailingCall(home);
        return STATUS_DEAD_OBJECT;
    }
    binder_status_t status = STATUS_OK;
    auto call = [&] {
        status = target->clazz.load()->onTransact(target, code, request.get(), reply.get());
    };
    // A call into a process out of which this thread is in a synchronous call (a service calling
    // back while it handles that call) runs on this thread, as binder's nested transaction does.
    // Any other call into the main process runs on a binder thread while the caller waits. Calls
    // into a service run on the calling thread, which stands in for the service's binder thread.
    const bool nested = hostbinder::CallOutOf::waitsIn(home.get());
    hostbinder::CallOutOf waiting(hostbinder::currentProcessShared().get());
    if (home == rt().main && !nested) {
        std::mutex m;
        std::condition_variable cv;
        bool done = false;
        rt().pool.post([&] {
            hostbinder::runAsShared(home, call);
            std::lock_guard<std::mutex> l(m);
            done = true;
            cv.notify_one();
        });
        std::unique_lock<std::mutex> l(m);
        cv.wait(l, [&] { return done; });
    } else {
        hostbinder::runAsShared(home, call);
    }
    target->decStrong();
    if (home->dead) {  // the process died before it could reply
        hostbinder::deliverInFailingCall(home);
        return STATUS_DEAD_OBJECT;
    }
    reply->position = 0;
    if (status == STATUS_OK) *out = reply.release();
    return status;
}

AIBinder_Weak* AIBinder_Weak_new(AIBinder* binder) {
    if (binder == nullptr) return nullptr;
    binder->incWeak();
    return new AIBinder_Weak{binder};
}

void AIBinder_Weak_delete(AIBinder_Weak* weakBinder) {
    if (weakBinder == nullptr) return;
    weakBinder->binder->decWeak();
    delete weakBinder;
}

AIBinder* AIBinder_Weak_promote(AIBinder_Weak* weakBinder) {
    if (weakBinder == nullptr) return nullptr;
    return weakBinder->binder->tryIncStrong() ? weakBinder->binder : nullptr;
}

AIBinder_DeathRecipient* AIBinder_DeathRecipient_new(AIBinder_DeathRecipient_onBinderDied onDied) {
    if (onDied == nullptr) return nullptr;
    return new AIBinder_DeathRecipient{onDied, std::make_shared<bool>(true), {}};
}

void AIBinder_DeathRecipient_delete(AIBinder_DeathRecipient* recipient) {
    if (recipient == nullptr) return;
    {
        std::lock_guard<std::mutex> l(rt().mutex);
        for (ABpBinder* proxy : recipient->linkedTo) {
            auto& links = proxy->links;
            links.erase(std::remove_if(
                                links.begin(), links.end(),
                                [&](const DeathLink& link) { return link.recipient == recipient; }),
                        links.end());
        }
    }
    delete recipient;
}

// ---- service manager ----

binder_exception_t AServiceManager_addService(AIBinder* binder, const char* instance) {
    if (binder == nullptr || instance == nullptr || binder->isRemote()) {
        return EX_ILLEGAL_ARGUMENT;
    }
    auto* local = static_cast<ABBinder*>(binder);
    auto process = std::make_shared<hostbinder::Process>();
    process->name = instance;
    {
        std::lock_guard<std::mutex> l(local->processMutex);
        local->process = process;
    }
    local->incStrong();
    ABBinder* replaced = nullptr;
    {
        auto& r = rt();
        std::lock_guard<std::mutex> l(r.mutex);
        auto it = r.services.find(instance);
        if (it != r.services.end()) replaced = it->second.binder;
        r.services[instance] = hostbinder::ServiceEntry{local, process};
        r.declared.insert(instance);
    }
    rt().serviceAdded.notify_all();
    if (replaced != nullptr) replaced->decStrong();
    return EX_NONE;
}

namespace {

// The registered binder of `instance` with a +1 reference, or null.
ABBinder* findService(const char* instance) {
    auto& r = rt();
    std::lock_guard<std::mutex> l(r.mutex);
    auto it = r.services.find(instance);
    if (it == r.services.end()) return nullptr;
    it->second.binder->incStrong();
    return it->second.binder;
}

AIBinder* handOut(ABBinder* local) {
    if (local == nullptr) return nullptr;
    AIBinder* result = hostbinder::resolveFor(local, hostbinder::currentProcessShared());
    local->decStrong();
    return result;
}

ABBinder* waitFor(const char* instance, std::chrono::milliseconds limit, bool forever) {
    auto& r = rt();
    std::unique_lock<std::mutex> l(r.mutex);
    auto found = [&] { return r.services.count(instance) != 0; };
    if (forever) {
        r.serviceAdded.wait(l, found);
    } else if (!r.serviceAdded.wait_for(l, limit, found)) {
        return nullptr;
    }
    ABBinder* binder = r.services[instance].binder;
    binder->incStrong();
    return binder;
}

}  // namespace

AIBinder* AServiceManager_checkService(const char* instance) {
    ++rt().lookups;
    if (instance == nullptr) return nullptr;
    return handOut(findService(instance));
}

AIBinder* AServiceManager_getService(const char* instance) {
    ++rt().lookups;
    if (instance == nullptr) return nullptr;
    return handOut(waitFor(instance, std::chrono::seconds(5), false));
}

AIBinder* AServiceManager_waitForService(const char* instance) {
    ++rt().lookups;
    if (instance == nullptr) return nullptr;
    return handOut(waitFor(instance, std::chrono::milliseconds(0), true));
}

bool AServiceManager_isDeclared(const char* instance) {
    ++rt().lookups;
    if (instance == nullptr) return false;
    std::lock_guard<std::mutex> l(rt().mutex);
    return rt().declared.count(instance) != 0;
}

// ---- thread pool ----

void ABinderProcess_startThreadPool(void) {
    rt().pool.start();
}
bool ABinderProcess_setThreadPoolMaxThreadCount(uint32_t numThreads) {
    rt().pool.setMaxThreads(numThreads);
    return true;
}
void ABinderProcess_joinThreadPool(void) {
    rt().pool.join();
}

}  // extern "C"
