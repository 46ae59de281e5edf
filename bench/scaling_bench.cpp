// Throughput with one and two caller threads against a service that spins 20 µs per call, as a
// stand-in for binder latency: calls must proceed in parallel, so two threads should come close
// to twice the calls per second of one.

#include <benchmark/benchmark.h>

#include <chrono>

#include "alloc_counter.h"
#include "bench_data.h"
#include "halclient.h"
#include "qel.h"

namespace qel_bench {

namespace {

constexpr std::chrono::microseconds kServiceLatency{20};

void spinService(const benchmark::State& /*state*/) {
    benchService().setSpin(kServiceLatency);
}

void stopSpinning(const benchmark::State& /*state*/) {
    benchService().setSpin(std::chrono::nanoseconds(0));
}

// The control: the same request straight through the proxy. What it reaches is what the
// machine allows at the moment of the run, and the bar for the library's cases.
void scalingFloor(benchmark::State& state) {
    std::shared_ptr<IDrel> proxy = benchProxy();
    const DrelRequestParcel parcel = eventParcel(1, kPkg, kIdentity, kDuration, resources(5));
    floorRequests(state, *proxy, parcel);
    state.SetItemsProcessed(state.iterations());
}

void scalingFlat(benchmark::State& state) {
    const std::vector<QelClient::Resource> list = resources(5);
    const uint64_t allocations = threadAllocations();
    for (auto _ : state) {
        int handle = QelEventAcquire(1, kPkg, kIdentity, kDuration, list);
        if (handle < 0) {
            state.SkipWithError("QelEventAcquire failed");
            break;
        }
        benchmark::DoNotOptimize(handle);
    }
    reportAllocations(state, allocations);
    state.SetItemsProcessed(state.iterations());
}

void scalingClass(benchmark::State& state) {
    const std::vector<QelClient::Resource> five = resources(5);
    drelHalclient::ResourceList list(five.begin(), five.end());
    const uint64_t allocations = threadAllocations();
    for (auto _ : state) {
        int handle = drelHalclient::drelResCtlRequest(kDuration, list, 0);
        if (handle < 0) {
            state.SkipWithError("drelResCtlRequest failed");
            break;
        }
        benchmark::DoNotOptimize(handle);
    }
    reportAllocations(state, allocations);
    state.SetItemsProcessed(state.iterations());
}

}  // namespace

void registerScalingBenchmarks() {
    for (auto [name, fn] :
         {std::pair{"scaling/floor", scalingFloor}, std::pair{"scaling/flat", scalingFlat},
          std::pair{"scaling/class", scalingClass}}) {
        benchmark::RegisterBenchmark(name, fn)
                ->Setup(spinService)
                ->Teardown(stopSpinning)
                ->Threads(1)
                ->Threads(2)
                ->UseRealTime();
    }
}

}  // namespace qel_bench
