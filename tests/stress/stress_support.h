// Helpers shared by the stress tests: parameters from the environment, a deadlock watchdog, and
// the example service's (re)start with the calls that must succeed right after it.
#pragma once

#include <android/binder_manager.h>
#include <gtest/gtest.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <future>
#include <memory>
#include <optional>
#include <string>
#include <thread>

#include "QelWrapper.h"
#include "drel-service/DrelService.h"
#include "halclient.h"
#include "qel.h"

namespace qel_stress {

using ::aidl::vendor::quarn::hardware::drel::DrelService;
constexpr const char* kInstance = "vendor.quarn.hardware.drel.IDrel/default";

// A new example service with `plan` already on, registered under the instance name. Its handles
// count from 1, so that a handle can be bounded by the calls the instance was given.
inline std::shared_ptr<DrelService> publish(std::optional<DrelService::FaultPlan> plan) {
    DrelService::Options options;
    options.firstHandle = 1;
    auto service = ::ndk::SharedRefBase::make<DrelService>(options);
    service->setFaultPlan(plan);
    EXPECT_EQ(EX_NONE, AServiceManager_addService(service->asBinder().get(), kInstance));
    return service;
}

// One call of each API (class, flat, action wrapper) tagged `tag` and `i`: the number that failed.
inline int failedCalls(const std::string& tag, long i) {
    const int handle = QelEventAcquireWrapper("PRAXEL_" + gActionList.at(0), tag, "id", 0);
    return (drelHalclient::drelPropertySet(tag, std::to_string(i % 1000)) != 0) +
           (setRelatedSysInfo(1, i) != 0) + (handle <= 0) + (QelReleaseWapper(handle) != 0);
}

// The integer in environment variable `name`, or `fallback` when it is unset or not a number.
inline long envLong(const char* name, long fallback) {
    const char* text = std::getenv(name);
    if (text == nullptr || *text == '\0') return fallback;
    char* end = nullptr;
    long value = std::strtol(text, &end, 10);
    return *end == '\0' ? value : fallback;
}

// Ends the process when it is not destroyed within `bound`: a deadlocked test then fails (the
// process dies with a message) instead of hanging CI.
class Watchdog {
public:
    explicit Watchdog(std::chrono::seconds bound)
        : thread_([done = disarmed_.get_future(), bound] {
              if (done.wait_for(bound) == std::future_status::timeout) {
                  std::fprintf(stderr, "stress: no progress within %lld s, a deadlock\n",
                               static_cast<long long>(bound.count()));
                  std::abort();
              }
          }) {}
    ~Watchdog() {
        disarmed_.set_value();
        thread_.join();
    }

private:
    std::promise<void> disarmed_;  // before thread_: the thread takes its future
    std::thread thread_;
};

}  // namespace qel_stress
