// Event acquire, release and notify: the flat API's calls of IDrel::request and IDrel::release.

#include <string>
#include <vector>

#include "halclient/wire.h"
#include "qel.h"
#include "qel/qel_internal.h"

using ::aidl::vendor::quarn::hardware::drel::DrelRequestData;
using ::aidl::vendor::quarn::hardware::drel::DrelRequestParcel;
using qel_internal::GuardedCall;
using qel_internal::kQelConnection;

namespace {

// Command ids that select a plain resource request instead of naming an event.
constexpr int kCmdResources = -2;
constexpr int kCmdPlatformResources = -3;

constexpr int32_t kTypeResources = 1;
constexpr int32_t kTypeEvent = 8;
constexpr int32_t kTypeNotify = 10;
constexpr int32_t kTypePlatformResources = 12;

// Empty texts are shown as "none" in log lines and trace markers (never on the wire).
const char* orNone(const std::string& text) {
    return text.empty() ? "none" : text.c_str();
}

DrelRequestParcel eventParcel(int cmdId, const std::string& pkg, const std::string& identity,
                              int duration, const std::vector<QelClient::Resource>& resources) {
    DrelRequestParcel parcel;
    parcel.requestType = kTypeEvent;
    // Both texts are always sent, an empty one as a present empty string.
    parcel.identity = identity;
    parcel.timeout = duration;
    parcel.pkg = pkg;
    if (cmdId == kCmdPlatformResources) {
        parcel.requestType = kTypePlatformResources;
    } else if (cmdId == kCmdResources) {
        parcel.requestType = kTypeResources;
    } else {
        // Any other id, negative ones included, leads the records as an event. Room for the
        // caller's records is made at once, so that they do not move the vector again.
        parcel.resources.reserve(1 + resources.size());
        parcel.resources.emplace_back().resId = cmdId;
    }
    // Not validated: the flat API sends whatever pairs the caller gives.
    qel_internal::appendToWire(parcel.resources, resources);
    return parcel;
}

}  // namespace

int QelEventAcquire(int cmdId, const std::string& pkg, const std::string& identity, int duration,
                    const std::vector<QelClient::Resource>& resources) {
    // "QelEventAcquire " followed by the description " cmd_id:... duration:...", which begins
    // with a blank, hence two after the function name. Formatted in one go, and only when
    // tracing is on.
    if (qel_internal::tracing()) {
        // The description begins with a blank, hence two after the function name. Built only
        // while tracing is on: this runs on every acquire.
        std::string description = " cmd_id:" + std::to_string(cmdId) + " pkg:" + orNone(pkg) +
                                  " identity:" + orNone(identity) +
                                  " duration:" + std::to_string(duration);
        qel_internal::traceMarker("QelEventAcquire %s", description.c_str());
    }
    QEL_LOGI("QelEventAcquire, cmdid:%d, pkg:%s, identity:%s", cmdId, orNone(pkg),
             orNone(identity));

    int32_t handle = -1;
    GuardedCall call(kQelConnection, "QelEventAcquire");
    if (!call) return -1;
    DrelRequestParcel parcel = eventParcel(cmdId, pkg, identity, duration, resources);
    if (!call.finish(call->request(parcel, &handle))) {
        QEL_LOGE("drelResCtlRequest error:%d", handle);
        return -1;
    }
    return handle;
}

int QelResAcquire(const std::vector<QelClient::Resource>& resources, long /*unused*/,
                  const std::string& identity, int duration) {
    QEL_LOGI("QelResAcquire");
    return QelEventAcquire(kCmdResources, std::string(), identity, duration, resources);
}

int QelPlatformResAcquire(const std::vector<QelClient::Resource>& resources, long /*unused*/,
                          const std::string& identity, const std::string& pkg, int duration) {
    QEL_LOGI("QelPlatformResAcquire");
    return QelEventAcquire(kCmdPlatformResources, pkg, identity, duration, resources);
}

void QelRelease(int handle) {
    qel_internal::traceMarker("QelRelease: %d", handle);
    QEL_LOGI("QelRelease, handle:%d", handle);

    // A failed release is reported under the class API's operation name, "drelResCtlRelease".
    GuardedCall call(kQelConnection, "drelResCtlRelease");
    if (call.connectFailed()) return;
    if (!call) {
        QEL_LOGE("QelRelease g_qel_hal is null");
        return;
    }
    int32_t ignored = -1;
    call.finish(call->release(handle, &ignored));
}

int QelNotify(int id, int param, const std::vector<int>& values) {
    QEL_LOGI("QelNotify enter");

    int32_t result = -1;
    GuardedCall call(kQelConnection, "QelNotify");
    if (!call) return -1;
    DrelRequestParcel parcel;
    parcel.requestType = kTypeNotify;
    DrelRequestData record;
    record.resId = id;
    record.resParam = param;
    if (values.empty()) {
        parcel.resources.push_back(record);
    } else {
        // One identical record per value. The values' texts are formed but never attached to
        // the parcel: tags stays absent, so the service sees only how many values there were.
        std::vector<std::optional<std::string>> valueTexts;
        for (int value : values) {
            parcel.resources.push_back(record);
            valueTexts.emplace_back(std::to_string(value));
        }
    }
    if (!call.finish(call->request(parcel, &result))) return -1;
    return result;
}
