// Fuzzes what the service sends back: a service whose every answer comes from the input (result
// values, statuses, stateRequest replies with absent, huge and odd records, and callback data
// delivered to one-shot and listening clients in id form and path form) serves the class API and
// the flat API, which must take whatever comes without a crash, a hang or a leak.
//
// Two deliberate ends of the process are never fed: a property value of 256 bytes or more, and a
// power-mode reply whose first record has no value (QelGetPMStatus lets std::bad_optional_access
// out on purpose).
#include <aidl/vendor/quarn/hardware/drel/BnDrel.h>
#include <android/binder_manager.h>
#include <android/binder_process.h>
#include <fuzzer/FuzzedDataProvider.h>
#include <hostbinder/hostbinder.h>

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <list>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "halclient.h"
#include "qel.h"

namespace {

using ::aidl::vendor::quarn::hardware::drel::BnDrel;
using ::aidl::vendor::quarn::hardware::drel::DrelRequestData;
using ::aidl::vendor::quarn::hardware::drel::DrelRequestParcel;
using ::aidl::vendor::quarn::hardware::drel::IDrelCallback;
using ::ndk::ScopedAStatus;
using Records = std::vector<DrelRequestData>;

constexpr const char* kInstance = "vendor.quarn.hardware.drel.IDrel/default";

// A violated promise of the library is a finding, as a crash is.
void require(bool promise) {
    if (!promise) __builtin_trap();
}

std::optional<std::string> fuzzedText(FuzzedDataProvider& in) {
    const int kind = in.ConsumeIntegralInRange<int>(0, 7);
    if (kind == 0) return std::nullopt;
    if (kind == 1) return std::string();
    if (kind == 2) {  // huge
        return std::string(in.ConsumeIntegralInRange<size_t>(0, 1 << 16),
                           in.ConsumeIntegral<char>());
    }
    if (kind == 3) return std::to_string(in.ConsumeIntegral<int64_t>());  // perhaps out of range
    return in.ConsumeRandomLengthString(80);                              // odd bytes, NULs too
}

DrelRequestData fuzzedRecord(FuzzedDataProvider& in) {
    DrelRequestData record;
    record.resId = in.ConsumeBool() ? in.ConsumeIntegralInRange<int32_t>(0, 3)
                                    : in.ConsumeIntegral<int32_t>();
    record.resParam = in.ConsumeIntegral<int32_t>();
    record.resValue = fuzzedText(in);
    record.resPath = fuzzedText(in);
    record.resExtra = fuzzedText(in);
    return record;
}

Records fuzzedRecords(FuzzedDataProvider& in) {
    const size_t count = in.ConsumeIntegralInRange<size_t>(0, 6);
    if (in.ConsumeIntegralInRange<int>(0, 15) == 0) {
        // Many records that cost no input: the same one again and again, up to about 4 MiB of
        // text per reply (which the host copies several times).
        DrelRequestData record = fuzzedRecord(in);
        const size_t bytes = 16 + record.resValue.value_or("").size() +
                             record.resPath.value_or("").size() +
                             record.resExtra.value_or("").size();
        const size_t most = std::min<size_t>(5000, (size_t{4} << 20) / bytes);
        return Records(in.ConsumeIntegralInRange<size_t>(0, most), record);
    }
    Records records;
    for (size_t i = 0; i < count && in.remaining_bytes() > 0; ++i) {
        records.push_back(fuzzedRecord(in));
    }
    return records;
}

// Mostly OK.
ScopedAStatus fuzzedStatus(FuzzedDataProvider& in) {
    const int kind = in.ConsumeIntegralInRange<int>(0, 11);
    if (kind == 0) return ScopedAStatus::fromServiceSpecificError(in.ConsumeIntegral<int32_t>());
    if (kind == 1) return ScopedAStatus::fromExceptionCode(EX_ILLEGAL_STATE);
    if (kind == 2) return ScopedAStatus::fromStatus(STATUS_FAILED_TRANSACTION);
    return ScopedAStatus::ok();
}

// The service. Its methods run on the fuzzer's thread (the host runs a transaction on the calling
// thread); the client callbacks it calls run on binder threads while it waits.
class FuzzService : public BnDrel {
public:
    FuzzedDataProvider* in = nullptr;
    std::vector<std::shared_ptr<IDrelCallback>> oneShots;  // never reported yet
    std::vector<std::shared_ptr<IDrelCallback>> listeners;

    ScopedAStatus init() override { return fuzzedStatus(*in); }
    ScopedAStatus request(const DrelRequestParcel& parcel, int32_t* out) override {
        *out = in->ConsumeIntegral<int32_t>();
        if (parcel.callback != nullptr) {
            // Never, once, or twice.
            const int reports = in->ConsumeIntegralInRange<int>(0, 2);
            for (int i = 0; i < reports; ++i) parcel.callback->onCallback(fuzzedRecords(*in));
            if (reports == 0) oneShots.push_back(parcel.callback);
        }
        return fuzzedStatus(*in);
    }
    ScopedAStatus release(int32_t, int32_t* out) override { return answer(out); }
    ScopedAStatus stateRequest(const DrelRequestParcel& parcel, Records* out) override {
        *out = fuzzedRecords(*in);
        if (parcel.requestType == 13 && !out->empty() && !out->front().resValue) {
            out->front().resValue = in->ConsumeRandomLengthString(16);  // a power-mode reply
        }
        return fuzzedStatus(*in);
    }
    ScopedAStatus listeningRegister(const DrelRequestParcel&,
                                    const std::shared_ptr<IDrelCallback>& callback,
                                    int32_t* out) override {
        return keepListener(callback, out);
    }
    ScopedAStatus listeningUnregister(int32_t, int32_t* out) override { return answer(out); }
    ScopedAStatus propertyGet(const std::string&, std::string* out) override {
        *out = in->ConsumeRandomLengthString(255);
        return fuzzedStatus(*in);
    }
    ScopedAStatus propertySet(const std::string&, const std::string&, int32_t* out) override {
        return answer(out);
    }
    ScopedAStatus thermalListeningRegister(const std::vector<int32_t>&,
                                           const std::shared_ptr<IDrelCallback>& callback,
                                           int32_t* out) override {
        return keepListener(callback, out);
    }
    ScopedAStatus thermalListeningUnregister(int32_t, int32_t* out) override { return answer(out); }
    ScopedAStatus reserved11() override {
        return ScopedAStatus::fromExceptionCode(EX_UNSUPPORTED_OPERATION);
    }
    ScopedAStatus setRelatedSysInfo(int32_t, int64_t, int32_t* out) override { return answer(out); }
    ScopedAStatus ruleCtl(int32_t, int32_t, const Records&, int32_t* out) override {
        return answer(out);
    }

private:
    ScopedAStatus answer(int32_t* out) {
        *out = in->ConsumeIntegral<int32_t>();
        return fuzzedStatus(*in);
    }
    ScopedAStatus keepListener(const std::shared_ptr<IDrelCallback>& callback, int32_t* out) {
        if (callback != nullptr) {
            // A report may come before the registration call has even returned.
            if (in->ConsumeBool()) callback->onCallback(fuzzedRecords(*in));
            listeners.push_back(callback);
        }
        return answer(out);
    }
};

// A caller's callback of either form: it looks at everything it is given.
class Caller : public IClientCallback, public IClientCallbackByPath {
public:
    void onCallback(std::list<QelClient::Resource> resources) override {
        for (const auto& resource : resources) {
            require(resource.resValue.has_value());  // always present in id form
            seen_ += resource.resValue->size();
        }
    }
    void onCallback(std::vector<std::string> paths, std::vector<std::string> values) override {
        require(paths.size() == values.size());
        for (size_t i = 0; i < paths.size(); ++i) seen_ += paths[i].size() + values[i].size();
    }

private:
    size_t seen_ = 0;
};

std::shared_ptr<FuzzService> service;

void startService() {
    service = ::ndk::SharedRefBase::make<FuzzService>();
    AServiceManager_addService(service->asBinder().get(), kInstance);
}

std::list<QelClient::Resource> resourceList(FuzzedDataProvider& in) {
    std::list<QelClient::Resource> list;
    for (size_t i = in.ConsumeIntegralInRange<size_t>(0, 3); i > 0; --i) {
        list.push_back({in.ConsumeIntegral<int32_t>(), "1"});
    }
    return list;
}

// What one step of an input may do: each reply-carrying operation of both APIs, a report to a
// kept listener, or a restart. The row is picked by the input; the order of the rows is part of
// the corpus's format. Listening registrations are kept, to be dropped at the end of the input.
std::vector<int> registrations;
using Step = void (*)(FuzzedDataProvider& in, int step);
// A count of states is -1 or the number of states given.
void requireCount(int result, size_t states) {
    require(result == -1 || result == static_cast<int>(states));
}

const Step kSteps[] = {
        [](FuzzedDataProvider& in, int) {
            std::list<QelClient::Resource> query = resourceList(in), states;
            const int result = drelHalclient::drelResStateRequest(query, 0, states);
            requireCount(result, states.size());
        },
        [](FuzzedDataProvider&, int) {
            std::vector<std::string> states;
            const int result = drelHalclient::drel_res_state_request_by_path({"/a", "/b"},
                                                                             {"1", "2"}, 0, states);
            requireCount(result, states.size());
        },
        [](FuzzedDataProvider&, int) {
            std::map<std::string, std::string> states;
            const int result =
                    drelHalclient::drel_res_state_request_map_by_path({{"/a", "1"}}, 0, states);
            requireCount(result, states.size());
        },
        [](FuzzedDataProvider&, int) {
            std::vector<QelClient::Resource> resources{{0, "x"}, {1, std::nullopt}, {2, "y"}};
            const int result = QelMutiResStateRequest(resources);
            require(result >= -1 && result <= 3);
        },
        [](FuzzedDataProvider& in, int) {
            std::string value = "unchanged";
            QelResStateRequest(in.ConsumeIntegralInRange<int>(0, 3), value);
        },
        [](FuzzedDataProvider&, int) {
            std::string history;
            const int result = QelGetHistory(history);
            require(result == 0 || (result == -1 && history.empty()));
        },
        [](FuzzedDataProvider& in, int) { QelGetPMStatus(in.ConsumeIntegralInRange<int>(0, 3)); },
        [](FuzzedDataProvider& in, int) {
            std::list<QelClient::Resource> resources = resourceList(in);
            drelHalclient::drelResCtlRequest(1, 0, resources, 0, 0, 0, std::make_shared<Caller>());
        },
        [](FuzzedDataProvider& in, int) {
            drelHalclient::drelSACtlRequest(1, 0, in.ConsumeIntegral<int32_t>(), 0, 0, 0,
                                            std::make_shared<Caller>());
        },
        [](FuzzedDataProvider&, int) {
            drelHalclient::drel_resctl_request_with_callback_by_path(1, 0, {"/a"}, {"1"}, 0, 0, 0,
                                                                     std::make_shared<Caller>());
        },
        [](FuzzedDataProvider&, int step) {
            // A list of its own each time: an equal list would be refused before the call.
            std::list<QelClient::Resource> ids{{step + 1, std::nullopt}};
            registrations.push_back(
                    drelHalclient::drelResListeningRegister(ids, 0, std::make_shared<Caller>()));
        },
        [](FuzzedDataProvider&, int step) {
            registrations.push_back(drelHalclient::drel_res_listening_register_by_path(
                    {"/p" + std::to_string(step)}, 0, std::make_shared<Caller>()));
        },
        [](FuzzedDataProvider&, int) {
            registrations.push_back(drelHalclient::drelThermalListeningRegister(
                    {0, 1}, std::make_shared<Caller>()));
        },
        [](FuzzedDataProvider& in, int) {
            // A report to a listener kept from an earlier registration.
            const auto& listeners = service->listeners;
            if (!listeners.empty()) {
                listeners[in.ConsumeIntegralInRange<size_t>(0, listeners.size() - 1)]->onCallback(
                        fuzzedRecords(in));
            }
        },
        [](FuzzedDataProvider&, int) {
            char* value = drelHalclient::drelPropertyGet("fuzz");
            require(value != nullptr);
            delete[] value;
        },
        [](FuzzedDataProvider& in, int) {
            // A restart: the next calls of both APIs reconnect.
            if (in.ConsumeIntegralInRange<int>(0, 7) != 0) return;
            service->in = nullptr;
            hostbinder::killService(kInstance);
            hostbinder::waitIdle();
            startService();
            service->in = &in;
        },
        [](FuzzedDataProvider& in, int) {
            QelEventAcquire(in.ConsumeIntegral<int>(), "pkg", "id", 0, {{1, "1"}});
            qelInit();
        },
        [](FuzzedDataProvider&, int) {
            drelHalclient::drel_init();
            qelRuleCtl(1, 1, {});
        },
};

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    ABinderProcess_startThreadPool();
    startService();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    FuzzedDataProvider in(data, size);
    service->in = &in;
    for (int step = 0; step < 24 && in.remaining_bytes() > 0; ++step) {
        kSteps[in.ConsumeIntegralInRange<size_t>(0, std::size(kSteps) - 1)](in, step);
    }
    for (int handle : registrations) drelHalclient::drelResListeningUnRegister(handle);
    registrations.clear();
    // What is left of one input is gone before the next: every one-shot callback never reported
    // gets an empty report (which calls no caller code), and every listener is dropped.
    for (const auto& callback : service->oneShots) callback->onCallback({});
    service->oneShots.clear();
    service->listeners.clear();
    service->in = nullptr;
    hostbinder::waitIdle();
    return 0;
}
