// Fuzzes the wrapper entry points QelNotifyWapper and QelEventAcquireWrapper (and
// QelReleaseWapper) with arbitrary arguments against a recording service: each report makes at
// most one rule control, each event at most one request, and an event id that does not begin
// with the event prefix makes none.
#include <android/binder_manager.h>
#include <android/binder_process.h>
#include <fuzzer/FuzzedDataProvider.h>

#include <atomic>
#include <cstdint>
#include <iterator>
#include <string>
#include <vector>

#include "QelWrapper.h"
#include "drel-service/DrelService.h"

namespace {

using ::aidl::vendor::quarn::hardware::drel::DrelRequestData;
using ::aidl::vendor::quarn::hardware::drel::DrelRequestParcel;
using ::aidl::vendor::quarn::hardware::drel::DrelService;
using ::ndk::ScopedAStatus;

constexpr const char* kInstance = "vendor.quarn.hardware.drel.IDrel/default";

void require(bool promise) {
    if (!promise) __builtin_trap();
}

// The example service, counting the rule controls and requests it is given; a request is
// answered without being held, so that none outlives its input.
struct RecordingService : DrelService {
    std::atomic<int> ruleControls{0};
    std::atomic<int> requests{0};

    ScopedAStatus request(const DrelRequestParcel& parcel, int32_t* out) override {
        ++requests;
        // An event names its command by a leading record within the catalogue.
        require(!parcel.resources.empty() && parcel.resources[0].resId >= 0 &&
                static_cast<size_t>(parcel.resources[0].resId) < gActionList.size());
        *out = 1;
        return ScopedAStatus::ok();
    }
    ScopedAStatus ruleCtl(int32_t ruleId, int32_t status, const std::vector<DrelRequestData>& data,
                          int32_t* out) override {
        ++ruleControls;
        for (const DrelRequestData& record : data) require(record.resValue.has_value());
        return DrelService::ruleCtl(ruleId, status, data, out);
    }
};

std::shared_ptr<RecordingService> service;

// The sources the wrapper knows, so that most inputs reach a scenario.
constexpr int kSources[] = {1,  2,  3,   5,   6,   8,   9,   10,  11,   12,  14,
                            15, 16, 102, 110, 111, 129, 130, 131, 1000, 9000};

// The entry points, in the order the corpus picks them by.
using Entry = void (*)(FuzzedDataProvider& in);
const Entry kEntries[] = {
        [](FuzzedDataProvider& in) {
            int src = in.ConsumeBool() ? in.PickValueInArray(kSources) : in.ConsumeIntegral<int>();
            int type = in.ConsumeBool() ? in.ConsumeIntegralInRange<int>(-1, 2)
                                        : in.ConsumeIntegral<int>();
            int param = in.ConsumeIntegral<int>();
            std::string name = in.ConsumeRandomLengthString(32);
            std::string text = in.ConsumeRemainingBytesAsString();
            int before = service->ruleControls;
            require(QelNotifyWapper(name, src, type, param, 0, 0, text) == 0);
            require(service->ruleControls - before <= 1);
        },
        [](FuzzedDataProvider& in) {
            std::string eventId;
            if (in.ConsumeBool() && !gActionList.empty()) {
                size_t at = in.ConsumeIntegralInRange<size_t>(0, gActionList.size() - 1);
                eventId = in.ConsumeBytesAsString(7) + gActionList[at] +
                          in.ConsumeRandomLengthString(4);
            } else {
                eventId = in.ConsumeRandomLengthString(64);
            }
            int timeout = in.ConsumeIntegral<int>();
            std::string scene = in.ConsumeRandomLengthString(32);
            std::string identity = in.ConsumeRemainingBytesAsString();
            int before = service->requests;
            int handle = QelEventAcquireWrapper(eventId, scene, identity, timeout);
            int made = service->requests - before;
            require(made <= 1 && (handle == -1 || made == 1));
            if (eventId.rfind("PRAXEL_", 0) != 0) require(handle == -1 && made == 0);
        },
        [](FuzzedDataProvider& in) { require(QelReleaseWapper(in.ConsumeIntegral<int>()) == 0); },
};

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    ABinderProcess_startThreadPool();
    service = ::ndk::SharedRefBase::make<RecordingService>();
    if (AServiceManager_addService(service->asBinder().get(), kInstance)) __builtin_trap();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    FuzzedDataProvider in(data, size);
    kEntries[in.ConsumeIntegralInRange<size_t>(0, std::size(kEntries) - 1)](in);
    return 0;
}
