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

void resetAfterFailure(const HalConnection& connection, const char* name) {
    __android_log_print(ANDROID_LOG_ERROR, connection.tag, connection.failFormat, name);
    std::unique_lock<std::shared_timed_mutex> lock(connection.lock);
    connection.hal = nullptr;
}

GuardedCall::GuardedCall(const HalConnection& connection, const char* name)
    : mConnection(connection), mName(name) {
    if (connection.connect() != 0) {
        mConnectFailed = true;
        return;
    }
    mLock = std::shared_lock<std::shared_timed_mutex>(connection.lock);
    mHal = connection.hal.get();
}

void GuardedCall::release(const ndk::ScopedAStatus& status) {
    mOk = status.isOk();
    mHal = nullptr;
    if (mLock.owns_lock()) mLock.unlock();
}

bool GuardedCall::report() {
    if (!mOk) resetAfterFailure(mConnection, mName);
    return mOk;
}

}  // namespace qel_internal
