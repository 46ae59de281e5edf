// Flat API families: QelEventAcquire with 0, 5 and 32 resources, QelRelease,
// QelMutiResStateRequest with 16 ids, qelRuleCtl.

#include <benchmark/benchmark.h>

#include <string>
#include <vector>

#include "alloc_counter.h"
#include "bench_data.h"
#include "qel.h"

namespace qel_bench {

namespace {

constexpr int kCmdColdLaunch = 1;

void floorEventAcquire(benchmark::State& state, int count) {
    std::shared_ptr<IDrel> proxy = benchProxy();
    const DrelRequestParcel parcel =
            eventParcel(kCmdColdLaunch, kPkg, kIdentity, kDuration, resources(count));
    floorRequests(state, *proxy, parcel);
}

void libraryEventAcquire(benchmark::State& state, int count) {
    const std::vector<QelClient::Resource> list = resources(count);
    const uint64_t allocations = threadAllocations();
    for (auto _ : state) {
        int handle = QelEventAcquire(kCmdColdLaunch, kPkg, kIdentity, kDuration, list);
        if (handle < 0) {
            state.SkipWithError("QelEventAcquire failed");
            break;
        }
        benchmark::DoNotOptimize(handle);
    }
    reportAllocations(state, allocations);
}

void floorRelease(benchmark::State& state) {
    std::shared_ptr<IDrel> proxy = benchProxy();
    const uint64_t allocations = threadAllocations();
    for (auto _ : state) {
        int32_t result = -1;
        if (!checkOk(state, proxy->release(1, &result))) break;
        benchmark::DoNotOptimize(result);
    }
    reportAllocations(state, allocations);
}

void libraryRelease(benchmark::State& state) {
    const uint64_t allocations = threadAllocations();
    for (auto _ : state) QelRelease(1);
    reportAllocations(state, allocations);
}

// 16 ids to read; the service answers each with a value.
std::vector<QelClient::Resource> stateIds() {
    std::vector<QelClient::Resource> ids;
    for (int i = 0; i < 16; ++i) ids.push_back({0x01010010 + 0x10 * i, std::string()});
    return ids;
}

void floorStateRequest(benchmark::State& state) {
    std::shared_ptr<IDrel> proxy = benchProxy();
    DrelRequestParcel parcel;
    for (const QelClient::Resource& id : stateIds()) {
        DrelRequestData record;
        record.resId = id.resId;
        parcel.resources.push_back(record);
    }
    const uint64_t allocations = threadAllocations();
    for (auto _ : state) {
        std::vector<DrelRequestData> reply;
        if (!checkOk(state, proxy->stateRequest(parcel, &reply))) break;
        benchmark::DoNotOptimize(reply.data());
    }
    reportAllocations(state, allocations);
}

void libraryStateRequest(benchmark::State& state) {
    std::vector<QelClient::Resource> ids = stateIds();
    const uint64_t allocations = threadAllocations();
    for (auto _ : state) {
        int found = QelMutiResStateRequest(ids);
        if (found != 16) {
            state.SkipWithError("QelMutiResStateRequest failed");
            break;
        }
        benchmark::DoNotOptimize(found);
    }
    reportAllocations(state, allocations);
}

// A target-load rule with three loads, as QelNotifyWapper sends for src 130.
constexpr int kRuleTargetLoad = 130;
const std::vector<QelClient::Resource> kTargetLoads{
        {0x010108A0, "85"}, {0x010108B0, "90"}, {0x010108C0, "95"}};

void floorRuleCtl(benchmark::State& state) {
    std::shared_ptr<IDrel> proxy = benchProxy();
    const std::vector<DrelRequestData> records = toWire(kTargetLoads);
    const uint64_t allocations = threadAllocations();
    for (auto _ : state) {
        int32_t answer = -1;
        if (!checkOk(state, proxy->ruleCtl(kRuleTargetLoad, 1, records, &answer))) break;
        benchmark::DoNotOptimize(answer);
    }
    reportAllocations(state, allocations);
}

void libraryRuleCtl(benchmark::State& state) {
    const uint64_t allocations = threadAllocations();
    for (auto _ : state) {
        int answer = qelRuleCtl(kRuleTargetLoad, 1, kTargetLoads);
        if (answer < 0) {
            state.SkipWithError("qelRuleCtl failed");
            break;
        }
        benchmark::DoNotOptimize(answer);
    }
    reportAllocations(state, allocations);
}

}  // namespace

void registerFlatBenchmarks() {
    for (int count : {0, 5, 32}) {
        std::string family = "QelEventAcquire/" + std::to_string(count);
        benchmark::RegisterBenchmark(("floor/" + family).c_str(), floorEventAcquire, count);
        benchmark::RegisterBenchmark(("library/" + family).c_str(), libraryEventAcquire, count);
    }
    benchmark::RegisterBenchmark("floor/QelRelease", floorRelease);
    benchmark::RegisterBenchmark("library/QelRelease", libraryRelease);
    benchmark::RegisterBenchmark("floor/QelMutiResStateRequest/16", floorStateRequest);
    benchmark::RegisterBenchmark("library/QelMutiResStateRequest/16", libraryStateRequest);
    benchmark::RegisterBenchmark("floor/qelRuleCtl", floorRuleCtl);
    benchmark::RegisterBenchmark("library/qelRuleCtl", libraryRuleCtl);
}

}  // namespace qel_bench
