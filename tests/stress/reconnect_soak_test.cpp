// Reconnect soak: the service is killed and restarted many times, each restart followed by one
// call of the class API and one of the flat API, which must succeed. Each reconnect links a new
// death recipient and replaces the previous one; the replaced recipients must be freed, so the
// heap in use must not grow with the number of cycles.
//
// Parameters (environment): QEL_SOAK_CYCLES (10000), QEL_SOAK_GROWTH_BYTES (the bound on growth
// from the end of the warm-up to the end, 131072).
#include <android/binder_manager.h>
#include <gtest/gtest.h>
#include <hostbinder/hostbinder.h>

#include <cstdio>
#include <string>

#include "drel-service/DrelService.h"
#include "halclient.h"
#include "qel.h"
#include "stress/stress_support.h"

namespace qel_stress {
namespace {

using ::aidl::vendor::quarn::hardware::drel::DrelService;

constexpr const char* kInstance = "vendor.quarn.hardware.drel.IDrel/default";

// Kills the running service (if any), waits for the deaths to be delivered and registers a new
// one. The service manager and the test's own reference keep it alive until the next cycle.
void restart(std::shared_ptr<DrelService>& service) {
    hostbinder::killService(kInstance);
    hostbinder::waitIdle();
    service = ::ndk::SharedRefBase::make<DrelService>();
    ASSERT_EQ(EX_NONE, AServiceManager_addService(service->asBinder().get(), kInstance));
}

// One cycle: a restart, then one call of each API. False when a call failed.
bool cycle(std::shared_ptr<DrelService>& service, long i) {
    restart(service);
    bool classOk = drelHalclient::drelPropertySet("soak", std::to_string(i % 1000)) == 0;
    bool flatOk = setRelatedSysInfo(1, i) == 0;
    return classOk && flatOk;
}

TEST(ReconnectSoakTest, ReconnectingAfterEveryRestartDoesNotGrowTheHeap) {
    const long cycles = std::max(100L, envLong("QEL_SOAK_CYCLES", 10000));
    const long bound = envLong("QEL_SOAK_GROWTH_BYTES", 131072);
    const long warmUp = cycles / 10;
    Watchdog watchdog(std::chrono::seconds(envLong("QEL_STRESS_BOUND_S", 300)), nullptr);

    hostbinder::reset();
    std::shared_ptr<DrelService> service;
    long failed = 0;
    // The warm-up lets the binder thread pool, the allocator's caches and the library's statics
    // reach their working size before the baseline is taken.
    for (long i = 0; i < warmUp; ++i) failed += cycle(service, i) ? 0 : 1;
    hostbinder::waitIdle();
    const size_t baseline = heapInUse();
    for (long i = warmUp; i < cycles; ++i) failed += cycle(service, i) ? 0 : 1;
    hostbinder::waitIdle();
    const size_t end = heapInUse();

    const long growth = static_cast<long>(end) - static_cast<long>(baseline);
    std::printf(
            "soak: %ld kill/restart cycles, heap in use %zu bytes after %ld cycles, %zu at "
            "the end: growth %ld bytes over %ld cycles (%.2f bytes a cycle; bound %ld)\n",
            cycles, baseline, warmUp, end, growth, cycles - warmUp,
            static_cast<double>(growth) / static_cast<double>(cycles - warmUp), bound);
    EXPECT_EQ(0, failed) << "calls that failed right after a restart";
    EXPECT_LE(growth, bound);

    service.reset();
    hostbinder::reset();
}

}  // namespace
}  // namespace qel_stress
