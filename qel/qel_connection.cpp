// The flat API's own connection to the service, its death notification, qelInit, and the
// acquire/release trace marker.

#include <android/binder_manager.h>
#include <cutils/trace.h>

#include <cstdarg>
#include <cstdio>

#include "qel.h"
#include "qel/qel_internal.h"

// Created by static initialisation, destroyed at unload.
std::shared_ptr<::aidl::vendor::quarn::hardware::drel::IDrel> g_qel_hal;
std::shared_timed_mutex g_qel_hal_lock;
// The recipient linked at the last connect. A scoped handle, so that the recipient a reconnect
// replaces is deleted (dropping its link) instead of leaking one per reconnect.
static ndk::ScopedAIBinder_DeathRecipient g_qel_death_recipient;

void qel_hal_died(void* /*cookie*/) {
    qel_internal::resetAfterDeath(qel_internal::kQelConnection);
}

int qel_get_drel_hal_and_link_to_death() {
    {
        std::shared_lock<std::shared_timed_mutex> lock(g_qel_hal_lock);
        if (g_qel_hal != nullptr) return 0;
    }
    // No second look at g_qel_hal once the lock is exclusive: a thread that lost the race to
    // connect connects again and replaces the winner's proxy and recipient. Harmless (both are
    // proxies of the same service) and kept so.
    std::unique_lock<std::shared_timed_mutex> lock(g_qel_hal_lock);
    // checkService never blocks: a declared service that is not running fails the call at once
    // instead of stalling every flat-API caller behind this lock.
    return qel_internal::connectLocked(g_qel_hal, g_qel_death_recipient,
                                       AServiceManager_checkService, qel_hal_died, kQelTag,
                                       "Unable to link to g_qel_hal death notifications!");
}

namespace {

int connectQel() {
    int result = qel_get_drel_hal_and_link_to_death();
    if (result != 0) QEL_LOGE("qel_get_drel_hal_and_link_to_death error:%d", -1);
    return result;
}

}  // namespace

namespace qel_internal {

// The blank before the colon tells the flat API's failure line from the class API's.
const HalConnection kQelConnection{g_qel_hal, g_qel_hal_lock, connectQel, kQelTag,
                                   "%s() failed : drel HAL service not available"};

bool tracing() {
    return (atrace_get_enabled_tags() & ATRACE_TAG_ALWAYS) != 0;
}

void traceMarker(const char* format, ...) {
    // Nothing is formatted while tracing is off: this runs on every acquire and release.
    if (!tracing()) return;
    char text[1024] = {};
    va_list args;
    va_start(args, format);
    vsnprintf(text, sizeof(text), format, args);
    va_end(args);
    // Begun and ended at once: the section marks the moment, it does not span the binder call.
    // Each call looks at the tag again, so a section is ended only while the tag is still set.
    atrace_begin(ATRACE_TAG_ALWAYS, text);
    atrace_end(ATRACE_TAG_ALWAYS);
}

}  // namespace qel_internal

int qelInit() {
    QEL_LOGE("qelInit enter");  // error priority on purpose, unlike the other entry lines
    // A failed init is reported under the class API's operation name, "drel_init".
    qel_internal::GuardedCall call(qel_internal::kQelConnection, "drel_init");
    if (call.connectFailed()) return -1;
    if (!call) {
        QEL_LOGE("g_qel_hal is null");
        return -1;
    }
    return call.finish(call->init()) ? 0 : -2;
}
