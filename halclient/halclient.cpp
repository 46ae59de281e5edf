// The class API's connection to the service and its process-wide state.

#include "halclient.h"

#include <android/binder_manager.h>

#include "halclient/halclient_internal.h"

// Created by static initialisation in this order, destroyed in reverse order at unload.
std::shared_ptr<::aidl::vendor::quarn::hardware::drel::IDrel> g_drel_hal;
std::shared_timed_mutex g_drel_hal_lock;
std::mutex callback_group_mutex;
std::vector<DrelCallbackGroup> callback_groups;
std::mutex request_callback_mutex;
std::vector<std::shared_ptr<DrelCallbackClient>> request_callbacks;
static ndk::ScopedAIBinder_DeathRecipient g_drel_death_recipient;

namespace {

void drel_hal_died(void* /*cookie*/) {
    qel_internal::resetAfterDeath(qel_internal::kDrelConnection);
}

// Connects g_drel_hal if the service can be reached. Waits for a declared service to start,
// with the lock held exclusively: every other class-API call waits meanwhile.
void get_drel_hal_and_link_to_death() {
    {
        std::shared_lock<std::shared_timed_mutex> lock(g_drel_hal_lock);
        if (g_drel_hal != nullptr) return;
    }
    std::unique_lock<std::shared_timed_mutex> lock(g_drel_hal_lock);
    if (g_drel_hal != nullptr) return;  // another thread connected meanwhile
    qel_internal::connectLocked(g_drel_hal, g_drel_death_recipient, AServiceManager_waitForService,
                                drel_hal_died, kDrelTag,
                                "Unable to link to g_drel_hal death notifications!");
}

int connectDrel() {
    get_drel_hal_and_link_to_death();
    return 0;  // callers learn the outcome from g_drel_hal
}

}  // namespace

namespace qel_internal {
const HalConnection kDrelConnection{g_drel_hal, g_drel_hal_lock, connectDrel, kDrelTag,
                                    "%s() failed: drel HAL service not available"};
}  // namespace qel_internal

void drelHalclient::drel_init() {
    DREL_LOGI("drel client drel_init");
    qel_internal::GuardedCall call(qel_internal::kDrelConnection, "drel_init");
    if (!call) return;
    call.finish(call->init());
}
