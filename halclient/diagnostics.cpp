// Diagnostics (the service dumps one of its tables to its own log, or switches its request
// history on or off) and service properties.

#include <cstdlib>
#include <cstring>

#include "halclient.h"
#include "halclient/halclient_internal.h"

using ::aidl::vendor::quarn::hardware::drel::DrelRequestData;
using ::aidl::vendor::quarn::hardware::drel::DrelRequestParcel;
using qel_internal::GuardedCall;
using qel_internal::kDrelConnection;

namespace {

// One diagnostic: the service's selector for it, its entry line and its name in failure lines.
struct Diagnostic {
    int32_t selector;
    const char* entryLine;
    const char* name;
};

// Selector 0x9 is the service's, and no operation here sends it.
constexpr Diagnostic kDumpToDoQueue{0x0, "drel client drelDumpToDoQueue", "drelDumpToDoQueue"};
constexpr Diagnostic kDumpRunMap{0x1, "drel client drelDumpRunMap", "drelDumpRunMap"};
constexpr Diagnostic kDumpActiveResMap{0x2, "drel client drelDumpActiveResMap",
                                       "drelDumpActiveResMap"};
constexpr Diagnostic kDumpResRequest{0x3, "drel client drelDumpResRequest", "drelDumpResRequest"};
constexpr Diagnostic kDumpResInfo{0x4, "drel client drelDumpResInfo", "drelDumpResInfo"};
constexpr Diagnostic kDumpSAInfo{0x5, "drel client drelDumpSAInfo", "drelDumpSAInfo"};
constexpr Diagnostic kDumpPidFdList{0x6, "drel client drelDumpPidFdList", "drelDumpPidFdList"};
constexpr Diagnostic kDumpPidfdMonitorMap{0x7, "drel client drelDumpPidfdMonitorMap",
                                          "drelDumpPidfdMonitorMap"};
constexpr Diagnostic kDumpResRecordList{0x8, "drel client drelDumpResRecordList",
                                        "drelDumpResRecordList"};
constexpr Diagnostic kHistoryRecordOn{0xA, "drel client drelHistoryRequestRecordOn",
                                      "drelHistoryRequestRecordOn"};
constexpr Diagnostic kHistoryRecordOff{0xB, "drel client drelHistoryRequestRecordOff",
                                       "drelHistoryRequestRecordOff"};

// Sends the diagnostic request: kind 5, param3 1, one record holding only the selector.
// 0 when the service answers 1 or more, -1 otherwise; its own positive answer is not passed on.
int runDiagnostic(const Diagnostic& diagnostic) {
    DREL_LOGI("%s", diagnostic.entryLine);
    int32_t result = -1;
    {
        GuardedCall call(kDrelConnection, diagnostic.name);
        if (call) {
            DrelRequestParcel parcel;
            parcel.requestType = 5;
            parcel.param3 = 1;
            DrelRequestData record;
            record.resId = diagnostic.selector;
            parcel.resources.push_back(std::move(record));
            call.finish(call->request(parcel, &result));
        }
    }
    return result >= 1 ? 0 : -1;
}

constexpr size_t kPropertyBufferSize = 256;

}  // namespace

int drelHalclient::drelDumpToDoQueue() {
    return runDiagnostic(kDumpToDoQueue);
}
int drelHalclient::drelDumpRunMap() {
    return runDiagnostic(kDumpRunMap);
}
int drelHalclient::drelDumpActiveResMap() {
    return runDiagnostic(kDumpActiveResMap);
}
int drelHalclient::drelDumpResRequest() {
    return runDiagnostic(kDumpResRequest);
}
int drelHalclient::drelDumpResInfo() {
    return runDiagnostic(kDumpResInfo);
}
int drelHalclient::drelDumpSAInfo() {
    return runDiagnostic(kDumpSAInfo);
}
int drelHalclient::drelDumpPidFdList() {
    return runDiagnostic(kDumpPidFdList);
}
int drelHalclient::drelDumpPidfdMonitorMap() {
    return runDiagnostic(kDumpPidfdMonitorMap);
}
int drelHalclient::drelDumpResRecordList() {
    return runDiagnostic(kDumpResRecordList);
}
int drelHalclient::drelHistoryRequestRecordOn() {
    return runDiagnostic(kHistoryRecordOn);
}
int drelHalclient::drelHistoryRequestRecordOff() {
    return runDiagnostic(kHistoryRecordOff);
}

char* drelHalclient::drelPropertyGet(const std::string& name) {
    DREL_LOGI("drel client drelPropertyGet");
    // Zero-filled, so that the buffer holds an empty string when the service cannot be reached.
    char* buffer = new char[kPropertyBufferSize]();
    {
        GuardedCall call(kDrelConnection, "drelPropertyGet");
        if (call) {
            std::string value;
            ndk::ScopedAStatus status = call->propertyGet(name, &value);
            // Copied before the status is looked at: a failed call leaves the empty value.
            if (value.size() >= kPropertyBufferSize) {
                // Callers rely on the whole value; a value that does not fit ends the process
                // rather than being cut.
                DREL_LOGE("drelPropertyGet value of %zu bytes does not fit in %zu bytes",
                          value.size(), kPropertyBufferSize);
                std::abort();
            }
            std::memcpy(buffer, value.c_str(), value.size() + 1);
            call.finish(status);
        }
    }
    DREL_LOGI("drelPropertyGet %s ", buffer);
    return buffer;
}

int drelHalclient::drelPropertySet(const std::string& name, const std::string& value) {
    DREL_LOGI("drel client drelPropertySet");
    int32_t result = -1;
    GuardedCall call(kDrelConnection, "drelPropertySet");
    if (!call) return -1;
    call.finish(call->propertySet(name, value, &result));
    return result;
}
