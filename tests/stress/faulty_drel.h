// FaultyDrel: an IDrel service that forwards every call to a DrelService and, at random (seeded),
// makes it go wrong the ways a real service does: a failed transaction, an exception, a
// service-specific error, or a slow answer. A failure may come before the call is forwarded
// (the service never saw it) or after it (the service did the work, the reply was lost).
//
// It also keeps a ledger of every integer answer it gave with an OK status, so that a test can
// check that whatever the library returned came from the service.
#pragma once

#include <aidl/vendor/quarn/hardware/drel/BnDrel.h>
#include <android/binder_status.h>

#include <atomic>
#include <chrono>
#include <cstdint>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "drel-service/DrelService.h"

namespace qel_stress {

using ::aidl::vendor::quarn::hardware::drel::BnDrel;
using ::aidl::vendor::quarn::hardware::drel::DrelRequestData;
using ::aidl::vendor::quarn::hardware::drel::DrelRequestParcel;
using ::aidl::vendor::quarn::hardware::drel::DrelService;
using ::aidl::vendor::quarn::hardware::drel::IDrelCallback;

// Integer answers given with an OK status, for every service instance of a run.
class Ledger {
public:
    void record(int32_t answer) {
        std::lock_guard<std::mutex> lock(mutex_);
        answers_.insert(answer);
    }
    bool gave(int32_t answer) const {
        std::lock_guard<std::mutex> lock(mutex_);
        return answers_.count(answer) != 0;
    }

private:
    mutable std::mutex mutex_;
    std::set<int32_t> answers_;
};

// What the faults of a run add up to, over every service instance.
struct FaultCounters {
    std::atomic<uint64_t> calls{0};
    std::atomic<uint64_t> failedStatus{0};     // transaction failure or exception
    std::atomic<uint64_t> serviceSpecific{0};  // EX_SERVICE_SPECIFIC
    std::atomic<uint64_t> afterTheFact{0};     // of those, given after the service did the work
    std::atomic<uint64_t> slow{0};             // answered late
    uint64_t injected() const { return failedStatus + serviceSpecific + slow; }
};

class FaultyDrel : public BnDrel {
public:
    struct Odds {
        int failPercent = 4;             // failed status (transaction error or exception)
        int serviceSpecificPercent = 4;  // service-specific error
        int slowPercent = 4;             // an answer up to slowMaxMicros late
        int slowMaxMicros = 2000;
    };

    FaultyDrel(std::shared_ptr<DrelService> inner, uint64_t seed, Odds odds, Ledger& ledger,
               FaultCounters& counters, const std::atomic<bool>& enabled)
        : inner_(std::move(inner)),
          seed_(seed),
          odds_(odds),
          ledger_(ledger),
          counters_(counters),
          enabled_(enabled) {}

    ::ndk::ScopedAStatus init() override {
        return faulty([&] { return inner_->init(); });
    }
    ::ndk::ScopedAStatus request(const DrelRequestParcel& parcel, int32_t* out) override {
        return faulty([&] { return inner_->request(parcel, out); }, out);
    }
    ::ndk::ScopedAStatus release(int32_t handle, int32_t* out) override {
        return faulty([&] { return inner_->release(handle, out); }, out);
    }
    ::ndk::ScopedAStatus stateRequest(const DrelRequestParcel& parcel,
                                      std::vector<DrelRequestData>* out) override {
        return faulty([&] { return inner_->stateRequest(parcel, out); });
    }
    ::ndk::ScopedAStatus listeningRegister(const DrelRequestParcel& parcel,
                                           const std::shared_ptr<IDrelCallback>& callback,
                                           int32_t* out) override {
        return faulty([&] { return inner_->listeningRegister(parcel, callback, out); }, out);
    }
    ::ndk::ScopedAStatus listeningUnregister(int32_t handle, int32_t* out) override {
        return faulty([&] { return inner_->listeningUnregister(handle, out); }, out);
    }
    ::ndk::ScopedAStatus propertyGet(const std::string& name, std::string* out) override {
        return faulty([&] { return inner_->propertyGet(name, out); });
    }
    ::ndk::ScopedAStatus propertySet(const std::string& name, const std::string& value,
                                     int32_t* out) override {
        return faulty([&] { return inner_->propertySet(name, value, out); }, out);
    }
    ::ndk::ScopedAStatus thermalListeningRegister(const std::vector<int32_t>& ids,
                                                  const std::shared_ptr<IDrelCallback>& callback,
                                                  int32_t* out) override {
        return faulty([&] { return inner_->thermalListeningRegister(ids, callback, out); }, out);
    }
    ::ndk::ScopedAStatus thermalListeningUnregister(int32_t handle, int32_t* out) override {
        return faulty([&] { return inner_->thermalListeningUnregister(handle, out); }, out);
    }
    ::ndk::ScopedAStatus reserved11() override { return inner_->reserved11(); }
    ::ndk::ScopedAStatus setRelatedSysInfo(int32_t type, int64_t info, int32_t* out) override {
        return faulty([&] { return inner_->setRelatedSysInfo(type, info, out); }, out);
    }
    ::ndk::ScopedAStatus ruleCtl(int32_t ruleId, int32_t status,
                                 const std::vector<DrelRequestData>& data, int32_t* out) override {
        return faulty([&] { return inner_->ruleCtl(ruleId, status, data, out); }, out);
    }

private:
    enum class Fault { kNone, kFailed, kServiceSpecific, kSlow };

    // splitmix64 over a per-instance call counter: cheap, lock-free and reproducible for a seed
    // (the interleaving of threads is not).
    uint64_t draw() {
        uint64_t z = seed_ + 0x9e3779b97f4a7c15ULL * (next_.fetch_add(1) + 1);
        z = (z ^ (z >> 30)) * 0xbf58476d1ce4e5b9ULL;
        z = (z ^ (z >> 27)) * 0x94d049bb133111ebULL;
        return z ^ (z >> 31);
    }

    Fault pick(uint64_t r) const {
        int roll = static_cast<int>(r % 100);
        if (roll < odds_.failPercent) return Fault::kFailed;
        roll -= odds_.failPercent;
        if (roll < odds_.serviceSpecificPercent) return Fault::kServiceSpecific;
        roll -= odds_.serviceSpecificPercent;
        if (roll < odds_.slowPercent) return Fault::kSlow;
        return Fault::kNone;
    }

    ::ndk::ScopedAStatus failure(Fault fault, uint64_t r) {
        if (fault == Fault::kServiceSpecific) {
            ++counters_.serviceSpecific;
            return ::ndk::ScopedAStatus::fromServiceSpecificError(-static_cast<int32_t>(r % 64));
        }
        ++counters_.failedStatus;
        switch ((r >> 8) % 3) {
            case 0:
                return ::ndk::ScopedAStatus::fromStatus(STATUS_FAILED_TRANSACTION);
            case 1:
                return ::ndk::ScopedAStatus::fromExceptionCode(EX_ILLEGAL_STATE);
            default:
                return ::ndk::ScopedAStatus::fromStatus(STATUS_NO_MEMORY);
        }
    }

    template <typename Forward>
    ::ndk::ScopedAStatus faulty(Forward forward, int32_t* out = nullptr) {
        ++counters_.calls;
        uint64_t r = draw();
        Fault fault = enabled_ ? pick(r) : Fault::kNone;
        if (fault == Fault::kSlow) {
            ++counters_.slow;
            std::this_thread::sleep_for(
                    std::chrono::microseconds(static_cast<int>((r >> 16) % odds_.slowMaxMicros)));
        }
        bool fails = fault == Fault::kFailed || fault == Fault::kServiceSpecific;
        // Half of the failures come after the service has done the work.
        if (fails && ((r >> 40) & 1) == 0) return failure(fault, r);
        ::ndk::ScopedAStatus status = forward();
        if (fails) {
            ++counters_.afterTheFact;
            return failure(fault, r);
        }
        if (status.isOk() && out != nullptr) ledger_.record(*out);
        return status;
    }

    const std::shared_ptr<DrelService> inner_;
    const uint64_t seed_;
    const Odds odds_;
    Ledger& ledger_;
    FaultCounters& counters_;
    const std::atomic<bool>& enabled_;
    std::atomic<uint64_t> next_{0};
};

}  // namespace qel_stress
