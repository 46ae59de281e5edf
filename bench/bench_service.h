// The service the benchmarks call: an IDrel that does nothing but answer, registered in the host
// stand-in under the service's instance name, and the direct proxy that the floor cases use.
#pragma once

#include <aidl/vendor/quarn/hardware/drel/BnDrel.h>
#include <aidl/vendor/quarn/hardware/drel/IDrel.h>

#include <atomic>
#include <chrono>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace qel_bench {

using ::aidl::vendor::quarn::hardware::drel::BnDrel;
using ::aidl::vendor::quarn::hardware::drel::DrelRequestData;
using ::aidl::vendor::quarn::hardware::drel::DrelRequestParcel;
using ::aidl::vendor::quarn::hardware::drel::IDrel;
using ::aidl::vendor::quarn::hardware::drel::IDrelCallback;

inline constexpr const char* kInstance = "vendor.quarn.hardware.drel.IDrel/default";

// Answers every call at once with success: request gives handle 1, stateRequest one record with
// the value "1" per id asked for. With a spin set, each call first busy-waits that long on the
// calling thread, standing in for the latency of a real binder round trip without sleeping.
class BenchDrel : public BnDrel {
public:
    void setSpin(std::chrono::nanoseconds spin) { mSpinNs.store(spin.count()); }

    ::ndk::ScopedAStatus init() override;
    ::ndk::ScopedAStatus request(const DrelRequestParcel& parcel, int32_t* handle) override;
    ::ndk::ScopedAStatus release(int32_t handle, int32_t* result) override;
    ::ndk::ScopedAStatus stateRequest(const DrelRequestParcel& parcel,
                                      std::vector<DrelRequestData>* reply) override;
    ::ndk::ScopedAStatus listeningRegister(const DrelRequestParcel& parcel,
                                           const std::shared_ptr<IDrelCallback>& callback,
                                           int32_t* handle) override;
    ::ndk::ScopedAStatus listeningUnregister(int32_t handle, int32_t* result) override;
    ::ndk::ScopedAStatus propertyGet(const std::string& name, std::string* value) override;
    ::ndk::ScopedAStatus propertySet(const std::string& name, const std::string& value,
                                     int32_t* result) override;
    ::ndk::ScopedAStatus thermalListeningRegister(const std::vector<int32_t>& ids,
                                                  const std::shared_ptr<IDrelCallback>& callback,
                                                  int32_t* handle) override;
    ::ndk::ScopedAStatus thermalListeningUnregister(int32_t handle, int32_t* result) override;
    ::ndk::ScopedAStatus reserved11() override;
    ::ndk::ScopedAStatus setRelatedSysInfo(int32_t type, int64_t info, int32_t* result) override;
    ::ndk::ScopedAStatus ruleCtl(int32_t ruleId, int32_t status,
                                 const std::vector<DrelRequestData>& data,
                                 int32_t* result) override;

private:
    void spin() const;

    std::atomic<int64_t> mSpinNs{0};
};

// Registers the service (once per process) and returns it.
BenchDrel& benchService();

// A proxy of the registered service, as the library holds one: the floor calls it directly.
std::shared_ptr<IDrel> benchProxy();

// A wire record with a present value.
DrelRequestData wireRecord(int32_t id, std::string value);

}  // namespace qel_bench
