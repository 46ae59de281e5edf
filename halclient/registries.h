// The two ways the class API hands a callback object to the service and keeps it alive: a
// one-shot client parked in request_callbacks, and a listening registration in callback_groups.
#pragma once

#include <memory>
#include <mutex>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "halclient/halclient_internal.h"

namespace qel_internal {

// Makes the one-shot client of a request and parks it in request_callbacks, where it stays until
// the service reports on it (even when the call then fails). `parkedLine` is logged as it is
// parked.
template <typename Callback>
std::shared_ptr<DrelCallbackClient> parkRequestCallback(const std::shared_ptr<Callback>& cb,
                                                        bool byPath, const char* parkedLine) {
    DREL_LOGI("new std::shared_ptr DrelCallbackClient callback");
    auto client = ndk::SharedRefBase::make<DrelCallbackClient>(cb, /*is_register=*/false, byPath);
    std::lock_guard<std::mutex> lock(request_callback_mutex);
    DREL_LOGI("%s", parkedLine);
    request_callbacks.push_back(client);
    return client;
}

// A registration this thread has in flight: its group, made before the service is called and
// appended once the service has answered.
struct PendingGroup {
    DrelCallbackGroup group;
    PendingGroup* next;
};
// This thread's registrations in flight, innermost first. A report the service sends from inside
// such a call runs on this thread, and a registration made from it sees them as registered.
inline thread_local PendingGroup* tlPendingGroups = nullptr;

// A group listens to `key` (its ids or its paths, selected by `member`) already, or a
// registration of this thread in flight will.
template <typename Key>
bool listensAlready(const std::vector<Key>& key, std::vector<Key> DrelCallbackGroup::*member) {
    for (const DrelCallbackGroup& group : callback_groups) {
        if (group.*member == key) return true;
    }
    for (const PendingGroup* pending = tlPendingGroups; pending != nullptr;
         pending = pending->next) {
        if (pending->group.*member == key) return true;
    }
    return false;
}

// One listening registration through `call`: refused with -1, without calling the service, when
// a group listens to the same `key` already (the ids, or the paths, selected by `member`; the
// callbacks are not compared), or a registration this thread has in flight will. On success the
// group is appended and the service's handle returned; on failure the connection is reset and -1
// returned.
template <typename Key, typename Callback>
int registerListening(GuardedCall& call,
                      const ::aidl::vendor::quarn::hardware::drel::DrelRequestParcel& parcel,
                      std::vector<Key> key, std::vector<Key> DrelCallbackGroup::*member,
                      const std::shared_ptr<Callback>& callback) {
    int32_t handle = -1;
    // Held across the binder call, so that the duplicate test and the append are one step for
    // concurrent registrations. A registration made from inside a report of that call, on this
    // thread, uses this hold.
    NestableLock groupsLock(callback_group_mutex);
    if (listensAlready(key, member)) {
        DREL_LOGE("Same callback interface registered already");
        return -1;
    }
    // Path registrations report in path form.
    constexpr bool byPath = std::is_same_v<Key, std::string>;
    auto client =
            ndk::SharedRefBase::make<DrelCallbackClient>(callback, /*is_register=*/true, byPath);
    PendingGroup pending{DrelCallbackGroup(client, std::move(key), handle), tlPendingGroups};
    tlPendingGroups = &pending;
    call.release(call->listeningRegister(parcel, client, &handle));
    tlPendingGroups = pending.next;
    if (call.ok()) {
        pending.group.handle = handle;
        callback_groups.push_back(std::move(pending.group));
        DREL_LOGI("A callback has been registered to Drel HAL ");
    }
    // The reset after a failure takes the connection lock exclusively. It must wait until
    // callback_group_mutex is released: another registration may hold the connection lock shared
    // while it waits for callback_group_mutex, and neither could go on.
    groupsLock.unlock();
    call.report();
    return handle;
}

}  // namespace qel_internal
