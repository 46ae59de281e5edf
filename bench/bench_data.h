// Inputs shared by the benchmarks: realistic resources, package and identity, and the wire
// records the library builds from them, made beforehand for the floor cases.
#pragma once

#include <benchmark/benchmark.h>

#include <list>
#include <string>
#include <vector>

#include "alloc_counter.h"
#include "bench_service.h"
#include "qel.h"

namespace qel_bench {

inline const std::string kPkg = "com.android.launcher3";
inline const std::string kIdentity = "launcher_touch";
constexpr int kDuration = 3000;

// n resources as a caller asks for them: CPU and GPU frequency opcodes with kHz values.
inline std::vector<QelClient::Resource> resources(int n) {
    std::vector<QelClient::Resource> list;
    for (int i = 0; i < n; ++i) {
        list.push_back({0x01010010 + 0x10 * i, std::to_string(1200000 + 100000 * i)});
    }
    return list;
}

inline std::vector<DrelRequestData> toWire(const std::vector<QelClient::Resource>& list) {
    std::vector<DrelRequestData> records;
    for (const QelClient::Resource& resource : list) {
        records.push_back(wireRecord(resource.resId, resource.resValue.value_or("")));
    }
    return records;
}

// The parcel of QelEventAcquire(cmdId, pkg, identity, duration, list) for cmdId >= 0.
inline DrelRequestParcel eventParcel(int cmdId, const std::string& pkg, const std::string& identity,
                                     int duration, const std::vector<QelClient::Resource>& list) {
    DrelRequestParcel parcel;
    parcel.requestType = 8;
    parcel.timeout = duration;
    parcel.pkg = pkg;
    parcel.identity = identity;
    DrelRequestData command;
    command.resId = cmdId;
    parcel.resources.push_back(command);
    for (DrelRequestData& record : toWire(list)) parcel.resources.push_back(std::move(record));
    return parcel;
}

// Stops the run when the floor's call fails, so that a broken setup never passes for a figure.
inline bool checkOk(benchmark::State& state, const ::ndk::ScopedAStatus& status) {
    if (status.isOk()) return true;
    state.SkipWithError("the service call failed");
    return false;
}

// The floor of a request family: the prepared parcel straight through the proxy, each call.
inline void floorRequests(benchmark::State& state, IDrel& proxy, const DrelRequestParcel& parcel) {
    const uint64_t allocations = threadAllocations();
    for (auto _ : state) {
        int32_t handle = -1;
        if (!checkOk(state, proxy.request(parcel, &handle))) break;
        benchmark::DoNotOptimize(handle);
    }
    reportAllocations(state, allocations);
}

void registerFlatBenchmarks();
void registerClassBenchmarks();
void registerScalingBenchmarks();
void registerWrapperBenchmarks();

}  // namespace qel_bench
