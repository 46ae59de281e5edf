#include "FaultInjector.h"

#include <android/binder_status.h>

#include <algorithm>
#include <chrono>
#include <thread>

namespace aidl::vendor::quarn::hardware::drel::example {

void FaultInjector::setPlan(std::optional<FaultPlan> plan) {
    std::lock_guard<std::mutex> lock(mutex_);
    plan_ = std::move(plan);
    calls_ = 0;
}

uint64_t FaultInjector::injected() const {
    std::lock_guard<std::mutex> lock(mutex_);
    return injected_;
}

std::pair<uint32_t, uint64_t> FaultInjector::draw() {
    std::lock_guard<std::mutex> lock(mutex_);
    if (!plan_) return {0, 0};
    // splitmix64 of the seed and the call's number: the same plan gives the same faults.
    uint64_t r = plan_->seed + 0x9e3779b97f4a7c15ULL * ++calls_;
    r = (r ^ (r >> 30)) * 0xbf58476d1ce4e5b9ULL;
    r = (r ^ (r >> 27)) * 0x94d049bb133111ebULL;
    r ^= r >> 31;
    const uint32_t allowed = plan_->faults & DrelService::kAnyFault;
    if (allowed == 0 || static_cast<int>(r % 100) >= plan_->percent) return {0, 0};
    // The (r / 100 mod count)-th of the allowed ways.
    int count = 0;
    for (uint32_t bit = 1; bit <= DrelService::kAnyFault; bit <<= 1) count += (allowed & bit) != 0;
    int pick = static_cast<int>((r / 100) % static_cast<uint64_t>(count));
    uint32_t fault = 1;
    for (; (allowed & fault) == 0 || pick-- > 0; fault <<= 1) {
    }
    ++injected_;
    const uint64_t lateBy = static_cast<uint64_t>(std::max<int64_t>(0, plan_->lateBy.count()));
    // A late answer's draw is its delay in microseconds.
    return {fault, fault == DrelService::kLateAnswer ? (r >> 24) % (lateBy + 1) : r >> 24};
}

::ndk::ScopedAStatus FaultInjector::run(const std::function<::ndk::ScopedAStatus()>& work) {
    const auto [fault, drawn] = draw();
    if (fault == DrelService::kFailedTransaction) {
        return ::ndk::ScopedAStatus::fromStatus(STATUS_FAILED_TRANSACTION);
    }
    if (fault == DrelService::kException) {
        return ::ndk::ScopedAStatus::fromExceptionCode(EX_ILLEGAL_STATE);
    }
    if (fault == DrelService::kServiceSpecificError) {
        return ::ndk::ScopedAStatus::fromServiceSpecificError(-2 -
                                                              static_cast<int32_t>(drawn % 63));
    }
    if (fault == DrelService::kLateAnswer) {
        std::this_thread::sleep_for(std::chrono::microseconds(drawn));
    }
    ::ndk::ScopedAStatus status = work();
    // The work is done, but the caller never hears of it.
    if (fault == DrelService::kLostReply) {
        return ::ndk::ScopedAStatus::fromStatus(STATUS_FAILED_TRANSACTION);
    }
    return status;
}

}  // namespace aidl::vendor::quarn::hardware::drel::example
