// State, history and power-mode queries: the flat API's calls of IDrel::stateRequest.

#include <iostream>
#include <stdexcept>
#include <string>
#include <vector>

#include "qel.h"
#include "qel/qel_internal.h"

using ::aidl::vendor::quarn::hardware::drel::DrelRequestData;
using ::aidl::vendor::quarn::hardware::drel::DrelRequestParcel;
using qel_internal::GuardedCall;
using qel_internal::kQelConnection;

namespace {

constexpr int32_t kTypeHistory = 11;
constexpr int32_t kTypePowerMode = 13;

DrelRequestData idRecord(int32_t id) {
    DrelRequestData record;
    record.resId = id;
    return record;
}

// The first record of the reply for `id`, or null. Later duplicates are never used.
const DrelRequestData* findRecord(const std::vector<DrelRequestData>& reply, int32_t id) {
    for (const DrelRequestData& record : reply) {
        if (record.resId == id) return &record;
    }
    return nullptr;
}

}  // namespace

int QelMutiResStateRequest(std::vector<QelClient::Resource>& resources) {
    QEL_LOGI("QelMutiResStateRequest enter");

    GuardedCall call(kQelConnection, "QelMutiResStateRequest");
    if (call.connectFailed()) return -1;
    // Checked before the proxy, so an empty query is reported even when disconnected.
    if (resources.empty()) {
        QEL_LOGE("input resource is empty, return");
        return -1;
    }
    if (!call) return -1;
    DrelRequestParcel parcel;  // request type 0: a state query
    // Only the ids are sent; the values the caller holds are what gets overwritten.
    parcel.resources.reserve(resources.size());
    for (const QelClient::Resource& resource : resources) {
        parcel.resources.push_back(idRecord(resource.resId));
    }
    std::vector<DrelRequestData> reply;
    if (!call.finish(call->stateRequest(parcel, &reply))) return -1;

    if (reply.empty()) {
        QEL_LOGE("failed to get resource value");
        return -1;
    }
    int count = 0;
    for (QelClient::Resource& resource : resources) {
        const DrelRequestData* record = findRecord(reply, resource.resId);
        if (record == nullptr) {
            QEL_LOGI("not match any opcode in qelcore");
            continue;
        }
        // A record without a value leaves the resource as it was, silently and uncounted.
        if (!record->resValue) continue;
        resource.resValue = *record->resValue;
        QEL_LOGD("get resource value, opcode 0x%08x, value %s", resource.resId,
                 resource.resValue->c_str());
        ++count;
    }
    return count;
}

void QelResStateRequest(int opcode, std::string& value) {
    QEL_LOGI("QelResStateRequest enter");
    std::vector<QelClient::Resource> resources{{opcode, std::string()}};
    // Anything but exactly one value leaves `value` alone, failures included.
    if (QelMutiResStateRequest(resources) != 1) return;
    value = resources.front().resValue->c_str();  // an embedded NUL ends the text
}

int QelGetHistory(std::string& history) {
    QEL_LOGI("qel client QelGetHistory");

    GuardedCall call(kQelConnection, "QelGetHistory");
    if (!call) return -1;
    DrelRequestParcel parcel;
    parcel.requestType = kTypeHistory;
    QEL_LOGI("qel client hal QelGetHistory");
    std::vector<DrelRequestData> reply;
    bool ok = call.finish(call->stateRequest(parcel, &reply));
    if (!ok || reply.empty()) {
        QEL_LOGE("failed to get history or return vector empty, data vector size %d",
                 static_cast<int>(reply.size()));
        return -1;
    }

    // "start:" a ";" b ";" ... ";end", a record without a text counting as "none".
    std::string text = "start:";
    for (size_t i = 0; i < reply.size(); ++i) {
        if (i > 0) text += ";";
        text += reply[i].resExtra.value_or("none");
    }
    text += ";end";
    history = text;
    QEL_LOGD("get history successful: %s", history.c_str());
    return 0;
}

int QelGetPMStatus(int mode) {
    QEL_LOGI("qel client QelGetPMStatus");

    GuardedCall call(kQelConnection, "QelGetPMStatus");
    // A failed connect has logged its error and returned -1, which is passed on.
    if (!call) return -1;
    DrelRequestParcel parcel;
    parcel.requestType = kTypePowerMode;
    parcel.resources.push_back(idRecord(mode));
    QEL_LOGI("qel client hal QelGetPMStatus");
    std::vector<DrelRequestData> reply;
    bool ok = call.finish(call->stateRequest(parcel, &reply));
    if (!ok || reply.empty()) {
        QEL_LOGE("failed to get power mode status, mode %d, data vector size %d", mode,
                 static_cast<int>(reply.size()));
        return -1;
    }

    // A first record without a value throws std::bad_optional_access to the caller: the only
    // exception the flat API lets out, kept deliberately. Only the conversion errors are caught.
    const std::string& text = reply.front().resValue.value();
    try {
        return std::stoi(text);
    } catch (const std::invalid_argument& e) {
        std::cout << "Invalid argument exception: " << e.what() << std::endl;
    } catch (const std::out_of_range& e) {
        std::cout << "Out of range exception: " << e.what() << std::endl;
    }
    return -1;
}
