// Resource and scene/system-activity control: requests with and without one-shot callbacks, and
// the releases.

#include "halclient.h"
#include "halclient/halclient_internal.h"
#include "halclient/registries.h"
#include "halclient/wire.h"

using ::aidl::vendor::quarn::hardware::drel::DrelRequestData;
using ::aidl::vendor::quarn::hardware::drel::DrelRequestParcel;
using qel_internal::GuardedCall;
using qel_internal::kDrelConnection;

namespace {

// The texts and the request kind that tell the four request forms apart.
struct RequestForm {
    const char* entryLine;
    // The operation's name in the failure line.
    const char* failureName;
    int32_t requestType;
    // Logged when ids and values are not paired (resource control only).
    const char* unmatchedLine;
    // Logged when the one-shot client is parked (callback forms only).
    const char* parkedLine;
};

constexpr RequestForm kResCtl{"drel client drelResCtlRequest", "drelResCtlRequest", 1,
                              "drelResCtlRequest ERROR: size unmatched for id and value ", nullptr};
// Mind the texts: the failure line names the callback object, and the pairing error reuses the
// path form's wording. Both are deliberate; do not "fix" them.
constexpr RequestForm kResCtlWithCallback{
        "drel client drelResCtlRequest with callback",
        "drel client DrelCallbackClient with callback", 1,
        "drel client drel_resctl_request ERROR: size unmatched for id and value ",
        "drel client drelResCtlRequest add to request_callbacks"};
constexpr RequestForm kSACtl{"drel client drelSACtlRequest", "drelSACtlRequest", 2, nullptr,
                             nullptr};
constexpr RequestForm kSACtlWithCallback{"drel client drelSACtlRequest with callback",
                                         "drelSACtlRequest with callback", 2, nullptr,
                                         "drel client drelSACtlRequest add to request_callbacks"};

// One guarded IDrel::request. `resources` is the list of a resource-control request (checked for
// pairing), or null for a scene request, which carries the single id `saId` without a value.
// `cb` is null for the forms without a callback.
int sendRequest(const RequestForm& form, int reqId, int timeout,
                drelHalclient::ResourceList* resources, int saId, int p3, int flag, int p5,
                const std::shared_ptr<IClientCallback>* cb) {
    DREL_LOGI("%s", form.entryLine);
    int32_t result = -1;
    GuardedCall call(kDrelConnection, form.failureName);
    if (!call) return -1;

    DrelRequestParcel parcel;
    if (flag >= 1) parcel.flag = true;
    if (resources != nullptr && !checkResourceList(*resources)) {
        DREL_LOGE("%s", form.unmatchedLine);
        return -1;
    }
    parcel.param3 = p3;
    parcel.param5 = p5;
    parcel.reqId = reqId;
    parcel.timeout = timeout;
    parcel.requestType = form.requestType;
    if (cb != nullptr)
        parcel.callback = qel_internal::parkRequestCallback(*cb, /*byPath=*/false, form.parkedLine);
    if (resources != nullptr) {
        qel_internal::appendToWire(parcel.resources, *resources);
    } else {
        DrelRequestData scene;
        scene.resId = saId;
        parcel.resources.push_back(std::move(scene));
    }

    call.finish(call->request(parcel, &result));
    return result;
}

// One guarded IDrel::release call under the operation's name.
int releaseHandle(const char* name, int handle) {
    int32_t result = -1;
    GuardedCall call(kDrelConnection, name);
    if (!call) return -1;
    call.finish(call->release(handle, &result));
    return result;
}

}  // namespace

int drelHalclient::drelResCtlRequest(int timeout, ResourceList& res, int p5) {
    return drelResCtlRequest(-1, timeout, res, -1, -1, p5);
}

int drelHalclient::drelResCtlRequest(int timeout, ResourceList& res, int flag, int p5) {
    return drelResCtlRequest(-1, timeout, res, -1, flag, p5);
}

int drelHalclient::drelResCtlRequest(int timeout, ResourceList& res, int p3, int flag, int p5) {
    return drelResCtlRequest(-1, timeout, res, p3, flag, p5);
}

int drelHalclient::drelResCtlRequest(int reqId, int timeout, ResourceList& res, int p5) {
    return drelResCtlRequest(reqId, timeout, res, -1, -1, p5);
}

int drelHalclient::drelResCtlRequest(int reqId, int timeout, ResourceList& res, int flag, int p5) {
    return drelResCtlRequest(reqId, timeout, res, -1, flag, p5);
}

int drelHalclient::drelResCtlRequest(int reqId, int timeout, ResourceList& res, int p3, int flag,
                                     int p5) {
    return sendRequest(kResCtl, reqId, timeout, &res, 0, p3, flag, p5, nullptr);
}

int drelHalclient::drelResCtlRequest(int reqId, int timeout, ResourceList& res, int p3, int flag,
                                     int p5, const std::shared_ptr<IClientCallback>& cb) {
    return sendRequest(kResCtlWithCallback, reqId, timeout, &res, 0, p3, flag, p5, &cb);
}

int drelHalclient::drelSACtlRequest(int timeout, int saId, int p5) {
    return drelSACtlRequest(-1, timeout, saId, -1, -1, p5);
}

int drelHalclient::drelSACtlRequest(int reqId, int timeout, int saId, int p3, int flag, int p5) {
    return sendRequest(kSACtl, reqId, timeout, nullptr, saId, p3, flag, p5, nullptr);
}

int drelHalclient::drelSACtlRequest(int reqId, int timeout, int saId, int p3, int flag, int p5,
                                    const std::shared_ptr<IClientCallback>& cb) {
    return sendRequest(kSACtlWithCallback, reqId, timeout, nullptr, saId, p3, flag, p5, &cb);
}

int drelHalclient::drelResCtlRelease(int handle) {
    DREL_LOGI("drel client drelResCtlRelease");
    return releaseHandle("drelResCtlRelease", handle);
}

int drelHalclient::drelSACtlRelease(int handle) {
    DREL_LOGI("drel client drelSACtlRelease");
    return releaseHandle("drelSACtlRelease", handle);
}
