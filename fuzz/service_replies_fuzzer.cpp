// Fuzzes what the service sends back, each shape the library parses through one operation: state
// records (drelResStateRequest), property text (drelPropertyGet, never 256 bytes or more, which
// ends the process on purpose), report records by id (a one-shot callback) and by path (a path
// listener), integer answers and statuses (every call; QelEventAcquire for the flat API). The
// library must take whatever comes without a crash, a hang or a leak.
#include <android/binder_manager.h>
#include <android/binder_process.h>
#include <fuzzer/FuzzedDataProvider.h>
#include <hostbinder/hostbinder.h>

#include <cstdint>
#include <list>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "drel-service/DrelService.h"
#include "halclient.h"
#include "qel.h"

namespace {

using ::aidl::vendor::quarn::hardware::drel::DrelRequestData;
using ::aidl::vendor::quarn::hardware::drel::DrelRequestParcel;
using ::aidl::vendor::quarn::hardware::drel::DrelService;
using ::aidl::vendor::quarn::hardware::drel::IDrelCallback;
using ::ndk::ScopedAStatus;
using Records = std::vector<DrelRequestData>;
constexpr const char* kInstance = "vendor.quarn.hardware.drel.IDrel/default";

void require(bool promise) {  // a broken promise is a finding, as a crash is
    if (!promise) __builtin_trap();
}

std::optional<std::string> text(FuzzedDataProvider& in) {  // absent, huge or odd (NULs too)
    const int kind = in.ConsumeIntegralInRange<int>(0, 5);
    if (kind == 0) return std::nullopt;
    return kind == 1 ? std::string(in.ConsumeIntegral<uint16_t>(), 'x')
                     : in.ConsumeRandomLengthString(80);
}

Records records(FuzzedDataProvider& in) {
    Records list(in.ConsumeIntegralInRange<size_t>(0, 6));
    for (DrelRequestData& r : list) {
        r = {in.ConsumeIntegral<int32_t>(), in.ConsumeIntegral<int32_t>(), text(in), text(in),
             text(in)};
    }
    return list;
}

// Mostly OK; otherwise each kind of failure a service can answer.
ScopedAStatus status(FuzzedDataProvider& in) {
    const int kind = in.ConsumeIntegralInRange<int>(0, 7);
    if (kind == 0) return ScopedAStatus::fromServiceSpecificError(in.ConsumeIntegral<int32_t>());
    if (kind == 1) return ScopedAStatus::fromExceptionCode(EX_ILLEGAL_STATE);
    if (kind == 2) return ScopedAStatus::fromStatus(STATUS_FAILED_TRANSACTION);
    return ScopedAStatus::ok();
}

// The example service, its answers to these calls taken from the input. Its reports reach the
// callers on binder threads or, made inside a call, on the fuzzer's thread.
struct FuzzService : DrelService {
    FuzzedDataProvider* in = nullptr;
    std::vector<std::shared_ptr<IDrelCallback>> unreported, listeners;

    ScopedAStatus request(const DrelRequestParcel& parcel, int32_t* out) override {
        *out = in->ConsumeIntegral<int32_t>();
        const int reports = parcel.callback ? in->ConsumeIntegralInRange<int>(0, 2) : -1;
        for (int i = 0; i < reports; ++i) parcel.callback->onCallback(records(*in));
        if (reports == 0) unreported.push_back(parcel.callback);
        return status(*in);
    }
    ScopedAStatus stateRequest(const DrelRequestParcel&, Records* out) override {
        *out = records(*in);
        return status(*in);
    }
    ScopedAStatus propertyGet(const std::string&, std::string* out) override {
        *out = in->ConsumeRandomLengthString(255);
        return status(*in);
    }
    ScopedAStatus listeningRegister(const DrelRequestParcel&,
                                    const std::shared_ptr<IDrelCallback>& callback,
                                    int32_t* out) override {
        *out = in->ConsumeIntegral<int32_t>();
        if (in->ConsumeBool()) callback->onCallback(records(*in));  // before the call returns
        listeners.push_back(callback);
        return status(*in);
    }
};
std::shared_ptr<FuzzService> service;

struct Caller : IClientCallback, IClientCallbackByPath {
    void onCallback(std::list<QelClient::Resource> resources) override {
        for (const auto& resource : resources) require(resource.resValue.has_value());
    }
    void onCallback(std::vector<std::string> paths, std::vector<std::string> values) override {
        require(paths.size() == values.size());
    }
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    FuzzedDataProvider in(data, size);
    if (!service) ABinderProcess_startThreadPool();
    if (!service || in.ConsumeIntegralInRange<int>(0, 7) == 0) {  // a restart: both reconnect
        hostbinder::killService(kInstance);
        hostbinder::waitIdle();
        service = ::ndk::SharedRefBase::make<FuzzService>();
        if (AServiceManager_addService(service->asBinder().get(), kInstance)) __builtin_trap();
    }
    service->in = &in;
    std::vector<int> registrations;
    for (int step = 0; step < 16 && in.remaining_bytes() > 0; ++step) {
        std::list<QelClient::Resource> ids{{step + 1, "1"}}, states;
        const int pick = in.ConsumeIntegralInRange<int>(0, 4);
        if (pick == 0) {
            const int result = drelHalclient::drelResStateRequest(ids, 0, states);
            require(result == -1 || result == static_cast<int>(states.size()));
        } else if (pick == 1) {
            std::unique_ptr<char[]> value(drelHalclient::drelPropertyGet("fuzz"));
            require(value != nullptr);
        } else if (pick == 2) {
            drelHalclient::drelResCtlRequest(1, 0, ids, 0, 0, 0, std::make_shared<Caller>());
        } else if (pick == 3) {  // a list of its own each time: an equal one is refused first
            registrations.push_back(drelHalclient::drel_res_listening_register_by_path(
                    {"/p" + std::to_string(step)}, 0, std::make_shared<Caller>()));
            auto& listeners = service->listeners;  // a report after a registration
            if (!listeners.empty() && in.ConsumeBool()) listeners.back()->onCallback(records(in));
        } else {
            QelEventAcquire(in.ConsumeIntegral<int>(), "pkg", "id", 0, {{1, "1"}});
        }
    }
    for (int handle : registrations) drelHalclient::drelResListeningUnRegister(handle);
    // Nothing outlives the input: unreported one-shots get an empty report (no caller code runs).
    for (const auto& callback : service->unreported) callback->onCallback({});
    service->unreported.clear();
    service->listeners.clear();
    service->in = nullptr;
    hostbinder::waitIdle();
    return 0;
}
