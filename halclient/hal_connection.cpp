// The connect-and-link step and the guarded call shared by the class API and the flat API.

#include "halclient/hal_connection.h"

#include <android/binder_manager.h>
#include <android/log.h>

namespace qel_internal {

int connectLocked(std::shared_ptr<IDrel>& hal, ndk::ScopedAIBinder_DeathRecipient& recipient,
                  AIBinder* (*lookup)(const char*), AIBinder_DeathRecipient_onBinderDied onDied,
                  const char* tag, const char* linkFailMessage) {
    if (!AServiceManager_isDeclared(kDrelInstance)) {
        // Asked again so that the line reports the service manager's current answer.
        bool declared = AServiceManager_isDeclared(kDrelInstance);
        __android_log_print(ANDROID_LOG_ERROR, tag,
                            "Drel is not declared, AServiceManager_isDeclared:%d",
                            declared ? 1 : 0);
        return -1;
    }
    {
        ndk::SpAIBinder binder(lookup(kDrelInstance));
        hal = IDrel::fromBinder(binder);
    }
    if (hal == nullptr) {
        __android_log_print(ANDROID_LOG_ERROR, tag, "Drel HAL Service not found");
        return -1;
    }
    // The cookie is the proxy itself; the death callbacks do not read it.
    recipient = ndk::ScopedAIBinder_DeathRecipient(AIBinder_DeathRecipient_new(onDied));
    binder_status_t status =
            AIBinder_linkToDeath(hal->asBinder().get(), recipient.get(), hal.get());
    if (status != STATUS_OK) {
        hal = nullptr;
        __android_log_print(ANDROID_LOG_ERROR, tag, "%s", linkFailMessage);
        return -1;
    }
    return 0;
}

namespace {

// The library locks this thread holds, innermost first.
thread_local ThreadHold* tlHolds = nullptr;
// Connections whose reset this thread put off while it held a lock: one slot per connection of
// the library (the class API's and the flat API's).
thread_local const HalConnection* tlDeferredResets[2] = {};

bool holds(const void* lock) {
    for (const ThreadHold* hold = tlHolds; hold != nullptr; hold = hold->next) {
        if (hold->lock == lock) return true;
    }
    return false;
}

void pushHold(ThreadHold& hold, const void* lock) {
    hold.lock = lock;
    hold.next = tlHolds;
    tlHolds = &hold;
}

void resetNow(const HalConnection& connection) {
    std::unique_lock<std::shared_timed_mutex> lock(connection.lock);
    connection.hal = nullptr;
}

// Unlinks `hold`; once this thread holds nothing, makes the resets it put off.
void dropHold(ThreadHold& hold) {
    for (ThreadHold** link = &tlHolds; *link != nullptr; link = &(*link)->next) {
        if (*link == &hold) {
            *link = hold.next;
            break;
        }
    }
    if (tlHolds != nullptr) return;
    for (const HalConnection*& deferred : tlDeferredResets) {
        const HalConnection* connection = deferred;
        deferred = nullptr;
        if (connection != nullptr) resetNow(*connection);
    }
}

}  // namespace

void resetAfterFailure(const HalConnection& connection, const char* name) {
    __android_log_print(ANDROID_LOG_ERROR, connection.tag, connection.failFormat, name);
    if (tlHolds == nullptr) {
        resetNow(connection);
        return;
    }
    // Taking the lock exclusively now would wait for this thread's own shared hold, or for a
    // reader that waits for callback_group_mutex held here.
    for (const HalConnection*& deferred : tlDeferredResets) {
        if (deferred == &connection) return;
        if (deferred == nullptr) {
            deferred = &connection;
            return;
        }
    }
}

void resetAfterDeath(const HalConnection& connection) {
    if (!holds(&connection.lock)) {
        std::unique_lock<std::shared_timed_mutex> lock(connection.lock);
        connection.hal = nullptr;
    }
    __android_log_print(ANDROID_LOG_ERROR, connection.tag, "Drel HAL Service died");
}

NestableLock::NestableLock(std::mutex& mutex) : mMutex(mutex) {
    if (holds(&mutex)) return;
    mMutex.lock();
    mOwns = true;
    pushHold(mHold, &mMutex);
}

void NestableLock::unlock() {
    if (!mOwns) return;
    mOwns = false;
    mMutex.unlock();
    dropHold(mHold);
}

GuardedCall::GuardedCall(const HalConnection& connection, const char* name)
    : mConnection(connection), mName(name) {
    if (holds(&connection.lock)) {
        // Called back inside a call of this connection on this thread: its shared hold keeps the
        // proxy set until it returns.
        mHal = connection.hal.get();
        return;
    }
    if (tlHolds != nullptr) {
        // Called back inside a call of the other API. Waiting here for this lock could wait for
        // a writer that waits for a reader that waits for a lock this thread holds, and
        // connecting would take the lock exclusively: only a free, connected connection is used.
        mLock = std::shared_lock<std::shared_timed_mutex>(connection.lock, std::try_to_lock);
        if (!mLock.owns_lock() || connection.hal == nullptr) {
            if (mLock.owns_lock()) mLock.unlock();
            __android_log_print(ANDROID_LOG_ERROR, connection.tag, kBusyFormat, name);
            mConnectFailed = true;
            return;
        }
    } else {
        if (connection.connect() != 0) {
            mConnectFailed = true;
            return;
        }
        mLock = std::shared_lock<std::shared_timed_mutex>(connection.lock);
    }
    pushHold(mHold, &connection.lock);
    mHal = connection.hal.get();
}

GuardedCall::~GuardedCall() {
    unlock();
}

void GuardedCall::unlock() {
    if (!mLock.owns_lock()) return;
    mLock.unlock();
    dropHold(mHold);
}

void GuardedCall::release(const ndk::ScopedAStatus& status) {
    mOk = status.isOk();
    mHal = nullptr;
    unlock();
}

bool GuardedCall::report() {
    if (!mOk) resetAfterFailure(mConnection, mName);
    return mOk;
}

}  // namespace qel_internal
