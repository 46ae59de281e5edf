// Class API family: drelResCtlRequest with 5 resources.

#include <benchmark/benchmark.h>

#include "alloc_counter.h"
#include "bench_data.h"
#include "halclient.h"

namespace qel_bench {

namespace {

constexpr int kParam5 = 0;

void floorResCtlRequest(benchmark::State& state) {
    std::shared_ptr<IDrel> proxy = benchProxy();
    // What drelResCtlRequest(timeout, list, p5) sends: no request id, p3 and flag unset.
    DrelRequestParcel parcel;
    parcel.requestType = 1;
    parcel.param3 = -1;
    parcel.param5 = kParam5;
    parcel.reqId = -1;
    parcel.timeout = kDuration;
    parcel.resources = toWire(resources(5));
    floorRequests(state, *proxy, parcel);
}

void libraryResCtlRequest(benchmark::State& state) {
    const std::vector<QelClient::Resource> five = resources(5);
    drelHalclient::ResourceList list(five.begin(), five.end());
    const uint64_t allocations = threadAllocations();
    for (auto _ : state) {
        int handle = drelHalclient::drelResCtlRequest(kDuration, list, kParam5);
        if (handle < 0) {
            state.SkipWithError("drelResCtlRequest failed");
            break;
        }
        benchmark::DoNotOptimize(handle);
    }
    reportAllocations(state, allocations);
}

}  // namespace

void registerClassBenchmarks() {
    benchmark::RegisterBenchmark("floor/drelResCtlRequest/5", floorResCtlRequest);
    benchmark::RegisterBenchmark("library/drelResCtlRequest/5", libraryResCtlRequest);
}

}  // namespace qel_bench
