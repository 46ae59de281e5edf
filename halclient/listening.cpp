// Listening registrations by resource id and by thermal subsystem, thermal notification and
// state queries. Registrations live in callback_groups, which keeps their callback objects (and
// so the callers' callbacks) alive until they are unregistered.

#include <utility>

#include "halclient.h"
#include "halclient/halclient_internal.h"
#include "halclient/registries.h"
#include "halclient/wire.h"

using ::aidl::vendor::quarn::hardware::drel::DrelRequestData;
using ::aidl::vendor::quarn::hardware::drel::DrelRequestParcel;
using qel_internal::GuardedCall;
using qel_internal::kDrelConnection;

int drelHalclient::drelResListeningRegister(ResourceList& resources, int param,
                                            const std::shared_ptr<IClientCallback>& callback) {
    DREL_LOGI("drelResListeningRegister");
    // Failures are reported under the path-map registration's name; the text is deliberate.
    GuardedCall call(kDrelConnection, "drel_res_listening_register_map");
    if (!call) return -1;

    DrelRequestParcel parcel;
    parcel.param5 = param;
    qel_internal::appendToWire(parcel.resources, resources);
    std::vector<int> ids;
    ids.reserve(resources.size());
    for (const QelClient::Resource& resource : resources) ids.push_back(resource.resId);

    return qel_internal::registerListening(call, parcel, std::move(ids), &DrelCallbackGroup::ids,
                                           callback);
}

int drelHalclient::drelResListeningUnRegister(int handle) {
    DREL_LOGI("drel client drelResListeningUnRegister");
    int32_t result = -1;
    GuardedCall call(kDrelConnection, "drelResListeningUnRegister");
    if (!call) return -1;
    ndk::ScopedAStatus status = call->listeningUnregister(handle, &result);
    call.release(status);

    // The registration goes whatever the service answered. Removed groups are destroyed only
    // after the mutex is released, so that a caller's callback dying with them runs unlocked.
    std::vector<DrelCallbackGroup> removed;
    {
        qel_internal::NestableLock groupsLock(callback_group_mutex);
        // Compacts the survivors towards the front, keeping their order.
        auto kept = callback_groups.begin();
        for (auto it = callback_groups.begin(); it != callback_groups.end(); ++it) {
            if (it->handle == handle) {
                DREL_LOGI("a callback has been unregistered to Drel HAL handle %d", handle);
                removed.push_back(std::move(*it));
            } else {
                if (kept != it) *kept = std::move(*it);
                ++kept;
            }
        }
        callback_groups.erase(kept, callback_groups.end());
        if (removed.empty()) DREL_LOGE("The callback was not registered before");
    }
    removed.clear();
    // As in drelResListeningRegister, the reset waits until callback_group_mutex is released.
    call.report();
    return result;
}

int drelHalclient::drelResStateRequest(ResourceList& resources, int param, ResourceList& states) {
    DREL_LOGI("drel client drelResStateRequest");
    GuardedCall call(kDrelConnection, "drelResStateRequest");
    if (!call) return -1;

    DrelRequestParcel parcel;
    parcel.param5 = param;
    qel_internal::appendToWire(parcel.resources, resources);
    DREL_LOGI("drel client hal drelResStateRequest");
    std::vector<DrelRequestData> reply;
    if (!call.finish(call->stateRequest(parcel, &reply)) || reply.empty()) return -1;

    // Appended, not replaced: what the caller already had counts in the result. Values come
    // back whole, commas included.
    for (const DrelRequestData& record : reply) states.push_back(qel_internal::fromWire(record));
    int size = static_cast<int>(states.size());
    DREL_LOGI("drel client drelResStateRequest size %d", size);
    return size;
}

int drelHalclient::drelThermalNotify(ResourceList& levels, int param) {
    DREL_LOGI("drel client drelThermalNotify");
    int32_t result = -1;
    GuardedCall call(kDrelConnection, "drelThermalNotify");
    if (!call) return -1;

    DrelRequestParcel parcel;
    parcel.param5 = param;
    if (!checkResourceList(levels)) {
        DREL_LOGE("drelThermalNotify ERROR: size unmatched for id and level ");
        return -1;
    }
    parcel.requestType = 7;
    qel_internal::appendToWire(parcel.resources, levels);
    call.finish(call->request(parcel, &result));
    return result;
}

int drelHalclient::drelThermalListeningRegister(const std::vector<int>& subsysIds,
                                                const std::shared_ptr<IClientCallback>& callback) {
    DREL_LOGI("drelThermalListeningRegister");
    int32_t handle = -1;
    GuardedCall call(kDrelConnection, "drelThermalListeningRegister");
    if (!call) return -1;

    auto client = ndk::SharedRefBase::make<DrelCallbackClient>(callback, /*is_register=*/true,
                                                               /*by_path=*/false);
    ndk::ScopedAStatus status = call->thermalListeningRegister(subsysIds, client, &handle);
    call.release(status);
    if (call.ok()) {
        // Thermal registrations are appended without a duplicate test, and the mutex is held
        // around the append only: other threads read and change callback_groups concurrently.
        {
            qel_internal::NestableLock groupsLock(callback_group_mutex);
            callback_groups.emplace_back(client, subsysIds, handle);
        }
        DREL_LOGI("subsys's callback has been registered to Drel HAL");
    }
    call.report();
    return handle;
}

int drelHalclient::drelThermalListeningUnregister(int handle) {
    DREL_LOGI("drel client drelThermalListeningUnregister");
    int32_t result = -1;
    GuardedCall call(kDrelConnection, "drelThermalListeningUnregister");
    if (!call) return -1;
    // The registration's group is left in callback_groups (drelResListeningUnRegister with the
    // same handle removes it).
    if (call.finish(call->thermalListeningUnregister(handle, &result))) {
        DREL_LOGI("subsys's callback has been unRegistered to Drel HAL");
    }
    return result;
}
