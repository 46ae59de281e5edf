// Process-wide state of the flat API and the helpers its entry points share. Internal: the
// library's sources and its tests include it; callers never do.
#pragma once

#include <android/log.h>

#include <memory>
#include <shared_mutex>

#include "halclient/hal_connection.h"

inline constexpr const char* kQelTag = "[QEL_CLIENT]";

#define QEL_LOGD(...) __android_log_print(ANDROID_LOG_DEBUG, kQelTag, __VA_ARGS__)
#define QEL_LOGI(...) __android_log_print(ANDROID_LOG_INFO, kQelTag, __VA_ARGS__)
#define QEL_LOGE(...) __android_log_print(ANDROID_LOG_ERROR, kQelTag, __VA_ARGS__)

// The flat API's proxy, null when not connected. Never the class API's g_drel_hal.
extern std::shared_ptr<::aidl::vendor::quarn::hardware::drel::IDrel> g_qel_hal;
// Shared for every read of g_qel_hal and every call through it; exclusive for every write.
extern std::shared_timed_mutex g_qel_hal_lock;

// Connects g_qel_hal if the service is declared and running, without ever waiting for it.
// 0 when connected, -1 otherwise.
int qel_get_drel_hal_and_link_to_death();

// Death notification of the service: drops g_qel_hal; the next call reconnects.
void qel_hal_died(void* cookie);

namespace qel_internal {

// The flat API's connection: non-blocking connect that logs its own failure, and
// "%s() failed : ..." on a failed call.
extern const HalConnection kQelConnection;

// True while the always-on trace tag is set.
bool tracing();
// Writes a zero-length trace section named by the formatted text (at most 1023 characters)
// when always-on tracing is enabled.
void traceMarker(const char* format, ...) __attribute__((format(printf, 1, 2)));

}  // namespace qel_internal
