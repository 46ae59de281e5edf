// Reconnect soak: the service is killed and restarted many times, each restart followed by one
// call of the class API, one of the flat API and one of the action wrapper, which must succeed.
// Each reconnect links a new death recipient and replaces the previous one; the replaced recipients
// must be freed, so the heap in use must not grow with the number of cycles.
//
// Parameters (environment): QEL_SOAK_CYCLES (10000), QEL_SOAK_GROWTH_BYTES (the bound on growth
// from the end of the warm-up to the end, 131072), QEL_STRESS_BOUND_S (deadlock bound, 300).
#include <android/binder_process.h>
#include <gtest/gtest.h>
#include <hostbinder/hostbinder.h>
#include <malloc.h>

#include <algorithm>
#include <cstdio>

#include "stress/stress_support.h"

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define QEL_SANITIZER_HEAP 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
#define QEL_SANITIZER_HEAP 1
#endif
#endif
#ifdef QEL_SANITIZER_HEAP
#include <sanitizer/allocator_interface.h>
#endif

namespace qel_stress {
namespace {

// Bytes of heap the process has in use (the sanitizer's allocator when there is one).
size_t heapInUse() {
#ifdef QEL_SANITIZER_HEAP
    return __sanitizer_get_current_allocated_bytes();
#else
    struct mallinfo2 info = mallinfo2();
    return info.uordblks + info.hblkhd;
#endif
}

// Kills the running service (if any), waits for the deaths to be delivered, registers a new one
// and makes one call of each API. The number of calls that failed.
long cycle(std::shared_ptr<DrelService>& service, long i) {
    hostbinder::killService(kInstance);
    hostbinder::waitIdle();
    service = publish(std::nullopt);
    return failedCalls("soak", i);
}

TEST(ReconnectSoakTest, ReconnectingAfterEveryRestartDoesNotGrowTheHeap) {
    const long cycles = std::max(100L, envLong("QEL_SOAK_CYCLES", 10000));
    const long bound = envLong("QEL_SOAK_GROWTH_BYTES", 131072);
    const long warmUp = cycles / 10;
    Watchdog watchdog(std::chrono::seconds(envLong("QEL_STRESS_BOUND_S", 300)));

    ABinderProcess_startThreadPool();
    hostbinder::reset();
    std::shared_ptr<DrelService> service;
    long failed = 0;
    // The warm-up lets the binder thread pool, the allocator's caches and the library's statics
    // reach their working size before the baseline is taken.
    for (long i = 0; i < warmUp; ++i) failed += cycle(service, i);
    hostbinder::waitIdle();
    const size_t baseline = heapInUse();
    for (long i = warmUp; i < cycles; ++i) failed += cycle(service, i);
    hostbinder::waitIdle();
    const long growth = static_cast<long>(heapInUse()) - static_cast<long>(baseline);

    std::printf(
            "soak: %ld kill/restart cycles, heap growth %ld bytes over the last %ld (bound %ld)\n",
            cycles, growth, cycles - warmUp, bound);
    EXPECT_EQ(0, failed) << "calls that failed right after a restart";
    EXPECT_LE(growth, bound);
    service.reset();
    hostbinder::reset();
}

}  // namespace
}  // namespace qel_stress
