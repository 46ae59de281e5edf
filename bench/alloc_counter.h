// Counts the heap allocations made by the calling thread, so that each case can report how many
// a call makes ("allocs" per iteration). The global operator new of the whole process, the
// shared library included, is replaced by a counting one (alloc_counter.cpp).
#pragma once

#include <benchmark/benchmark.h>

#include <cstdint>

namespace qel_bench {

// Allocations made by this thread so far.
uint64_t threadAllocations();

// Reports the allocations made by this thread since `before` as "allocs" per iteration.
inline void reportAllocations(benchmark::State& state, uint64_t before) {
    state.counters["allocs"] = benchmark::Counter(static_cast<double>(threadAllocations() - before),
                                                  benchmark::Counter::kAvgIterations);
}

}  // namespace qel_bench
