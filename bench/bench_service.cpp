// The benchmarks' no-op service and its registration.

#include "bench_service.h"

#include <android/binder_manager.h>

#include <cstdio>
#include <cstdlib>

namespace qel_bench {

namespace {

::ndk::ScopedAStatus ok() {
    return ::ndk::ScopedAStatus::ok();
}

}  // namespace

void BenchDrel::spin() const {
    int64_t spinNs = mSpinNs.load(std::memory_order_relaxed);
    if (spinNs == 0) return;
    auto end = std::chrono::steady_clock::now() + std::chrono::nanoseconds(spinNs);
    while (std::chrono::steady_clock::now() < end) {
    }
}

::ndk::ScopedAStatus BenchDrel::init() {
    spin();
    return ok();
}

::ndk::ScopedAStatus BenchDrel::request(const DrelRequestParcel& /*parcel*/, int32_t* handle) {
    spin();
    *handle = 1;
    return ok();
}

::ndk::ScopedAStatus BenchDrel::release(int32_t /*handle*/, int32_t* result) {
    spin();
    *result = 0;
    return ok();
}

::ndk::ScopedAStatus BenchDrel::stateRequest(const DrelRequestParcel& parcel,
                                             std::vector<DrelRequestData>* reply) {
    spin();
    reply->reserve(parcel.resources.size());
    for (const DrelRequestData& asked : parcel.resources) {
        reply->push_back(wireRecord(asked.resId, "1"));
    }
    return ok();
}

::ndk::ScopedAStatus BenchDrel::listeningRegister(const DrelRequestParcel& /*parcel*/,
                                                  const std::shared_ptr<IDrelCallback>& /*cb*/,
                                                  int32_t* handle) {
    spin();
    *handle = 1;
    return ok();
}

::ndk::ScopedAStatus BenchDrel::listeningUnregister(int32_t /*handle*/, int32_t* result) {
    spin();
    *result = 0;
    return ok();
}

::ndk::ScopedAStatus BenchDrel::propertyGet(const std::string& /*name*/, std::string* value) {
    spin();
    value->clear();
    return ok();
}

::ndk::ScopedAStatus BenchDrel::propertySet(const std::string& /*name*/,
                                            const std::string& /*value*/, int32_t* result) {
    spin();
    *result = 0;
    return ok();
}

::ndk::ScopedAStatus BenchDrel::thermalListeningRegister(
        const std::vector<int32_t>& /*ids*/, const std::shared_ptr<IDrelCallback>& /*callback*/,
        int32_t* handle) {
    spin();
    *handle = 1;
    return ok();
}

::ndk::ScopedAStatus BenchDrel::thermalListeningUnregister(int32_t /*handle*/, int32_t* result) {
    spin();
    *result = 0;
    return ok();
}

::ndk::ScopedAStatus BenchDrel::reserved11() {
    return ok();
}

::ndk::ScopedAStatus BenchDrel::setRelatedSysInfo(int32_t /*type*/, int64_t /*info*/,
                                                  int32_t* result) {
    spin();
    *result = 0;
    return ok();
}

::ndk::ScopedAStatus BenchDrel::ruleCtl(int32_t /*ruleId*/, int32_t /*status*/,
                                        const std::vector<DrelRequestData>& /*data*/,
                                        int32_t* result) {
    spin();
    *result = 0;
    return ok();
}

BenchDrel& benchService() {
    // Registered on first use and kept for the life of the process, as a HAL service runs.
    static const std::shared_ptr<BenchDrel> service = [] {
        auto made = ::ndk::SharedRefBase::make<BenchDrel>();
        if (AServiceManager_addService(made->asBinder().get(), kInstance) != EX_NONE) {
            std::fprintf(stderr, "qel_bench: cannot register %s\n", kInstance);
            std::abort();
        }
        return made;
    }();
    return *service;
}

std::shared_ptr<IDrel> benchProxy() {
    benchService();
    ::ndk::SpAIBinder binder(AServiceManager_checkService(kInstance));
    std::shared_ptr<IDrel> proxy = IDrel::fromBinder(binder);
    if (proxy == nullptr) {
        std::fprintf(stderr, "qel_bench: no proxy for %s\n", kInstance);
        std::abort();
    }
    return proxy;
}

DrelRequestData wireRecord(int32_t id, std::string value) {
    DrelRequestData data;
    data.resId = id;
    data.resValue = std::move(value);
    return data;
}

}  // namespace qel_bench
