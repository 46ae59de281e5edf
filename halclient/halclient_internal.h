// Process-wide state of the class API and the helpers its operations share. Internal: the
// library's sources and its tests include it; callers never do.
#pragma once

#include <android/log.h>

#include <memory>
#include <mutex>
#include <shared_mutex>
#include <vector>

#include "halclient/DrelCallbackClient.h"
#include "halclient/hal_connection.h"

inline constexpr const char* kDrelTag = "DRELFramework-lib-vendor";
// The callback object logs under its own tag, spelled differently.
inline constexpr const char* kDrelCallbackTag = "DrelFramework-lib-vendor";

#define DREL_LOGI(...) __android_log_print(ANDROID_LOG_INFO, kDrelTag, __VA_ARGS__)
#define DREL_LOGE(...) __android_log_print(ANDROID_LOG_ERROR, kDrelTag, __VA_ARGS__)

extern std::shared_ptr<::aidl::vendor::quarn::hardware::drel::IDrel> g_drel_hal;
extern std::shared_timed_mutex g_drel_hal_lock;
extern std::mutex callback_group_mutex;
extern std::vector<DrelCallbackGroup> callback_groups;
extern std::mutex request_callback_mutex;
extern std::vector<std::shared_ptr<DrelCallbackClient>> request_callbacks;

namespace qel_internal {
// The class API's connection: blocking connect, "%s() failed: ..." on a failed call.
extern const HalConnection kDrelConnection;
}  // namespace qel_internal
