// A fixture that runs the example DrelService under the service's instance name on a manual
// clock, and reaches it only through a proxy of the host stand-in, as a client does; plus a
// recording IDrelCallback and record builders.
#pragma once

#include <aidl/vendor/quarn/hardware/drel/BnDrelCallback.h>
#include <aidl/vendor/quarn/hardware/drel/IDrel.h>
#include <android/binder_manager.h>
#include <gtest/gtest.h>
#include <hostbinder/hostbinder.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "drel-service/DrelService.h"

namespace aidl::vendor::quarn::hardware::drel {
// Readable records in test failures.
inline void PrintTo(const DrelRequestData& record, std::ostream* os) {
    *os << record.toString();
}
}  // namespace aidl::vendor::quarn::hardware::drel

namespace qel_test {

using ::aidl::vendor::quarn::hardware::drel::BnDrelCallback;
using ::aidl::vendor::quarn::hardware::drel::DrelRequestData;
using ::aidl::vendor::quarn::hardware::drel::DrelRequestParcel;
using ::aidl::vendor::quarn::hardware::drel::DrelService;
using ::aidl::vendor::quarn::hardware::drel::IDrel;
using ::aidl::vendor::quarn::hardware::drel::IDrelCallback;
using Records = std::vector<DrelRequestData>;

inline DrelRequestData idRecord(int32_t id, std::optional<std::string> value = std::nullopt) {
    DrelRequestData record;
    record.resId = id;
    record.resValue = std::move(value);
    return record;
}

inline DrelRequestData pathRecord(const std::string& path,
                                  std::optional<std::string> value = std::nullopt) {
    DrelRequestData record;
    record.resPath = path;
    record.resValue = std::move(value);
    return record;
}

// Records every report it is given (on binder threads). `onReport`, when set, runs inside
// onCallback after the report is recorded, and its status is returned.
class RecordingCallback : public BnDrelCallback {
public:
    ::ndk::ScopedAStatus onCallback(const std::vector<DrelRequestData>& data) override {
        {
            std::lock_guard<std::mutex> lock(mutex_);
            reports_.push_back(data);
        }
        changed_.notify_all();
        return onReport ? onReport(data) : ::ndk::ScopedAStatus::ok();
    }

    std::vector<Records> reports() const {
        std::lock_guard<std::mutex> lock(mutex_);
        return reports_;
    }
    // For reports sent from the service's own expiry thread rather than from inside a call: true
    // once `count` reports have arrived (false after a generous bound, so a hang fails).
    bool waitForReports(size_t count) {
        std::unique_lock<std::mutex> lock(mutex_);
        return changed_.wait_for(lock, std::chrono::seconds(10),
                                 [&] { return reports_.size() >= count; });
    }

    std::function<::ndk::ScopedAStatus(const std::vector<DrelRequestData>&)> onReport;

private:
    mutable std::mutex mutex_;
    std::condition_variable changed_;
    std::vector<Records> reports_;
};

class DrelServiceTest : public ::testing::Test {
protected:
    static constexpr size_t kHistoryCapacity = 3;
    static constexpr int32_t kCpuMin = 0x01011040;
    static constexpr int32_t kGpuMin = 0x01021000;

    void SetUp() override {
        hostbinder::reset();
        DrelService::Options options;
        options.clock = [this] { return std::chrono::milliseconds(clockMs_.load()); };
        options.historyCapacity = kHistoryCapacity;
        service = ::ndk::SharedRefBase::make<DrelService>(options);
        const char* instance = "vendor.quarn.hardware.drel.IDrel/default";
        ASSERT_EQ(EX_NONE, AServiceManager_addService(service->asBinder().get(), instance));
        drel = IDrel::fromBinder(::ndk::SpAIBinder(AServiceManager_checkService(instance)));
        ASSERT_NE(nullptr, drel);
        ASSERT_TRUE(drel->isRemote());
    }
    void TearDown() override {
        drel.reset();
        hostbinder::reset();
    }

    void advance(int64_t ms) { clockMs_ += ms; }

    // request() of the given kind and records; returns the service's answer.
    int32_t send(int32_t kind, Records records, int64_t timeout = 0,
                 std::shared_ptr<IDrelCallback> callback = nullptr) {
        DrelRequestParcel parcel;
        parcel.requestType = kind;
        parcel.resources = std::move(records);
        parcel.timeout = timeout;
        parcel.callback = std::move(callback);
        int32_t result = -100;
        EXPECT_TRUE(drel->request(parcel, &result).isOk());
        return result;
    }
    int32_t hold(int32_t id, const std::string& value, int64_t timeout = 0) {
        return send(DrelService::kKindResource, {idRecord(id, value)}, timeout);
    }
    // Calls one of the service's int-answering methods and returns the answer.
    template <typename Call>
    int32_t answer(Call call) {
        int32_t result = -100;
        EXPECT_TRUE(call(&result).isOk());
        return result;
    }
    int32_t release(int32_t handle) {
        return answer([&](int32_t* out) { return drel->release(handle, out); });
    }
    Records query(int32_t kind, Records records) {
        DrelRequestParcel parcel;
        parcel.requestType = kind;
        parcel.resources = std::move(records);
        Records reply;
        EXPECT_TRUE(drel->stateRequest(parcel, &reply).isOk());
        return reply;
    }
    // The value in force of one resource, as a state query answers it.
    std::string valueOf(int32_t id) {
        Records reply = query(DrelService::kKindState, {idRecord(id)});
        return reply.size() == 1 && reply[0].resValue ? *reply[0].resValue : "<no answer>";
    }
    int32_t listen(Records records, const std::shared_ptr<IDrelCallback>& callback) {
        DrelRequestParcel parcel;
        parcel.resources = std::move(records);
        return answer([&](int32_t* out) { return drel->listeningRegister(parcel, callback, out); });
    }
    int32_t listenThermal(std::vector<int32_t> ids,
                          const std::shared_ptr<IDrelCallback>& callback) {
        return answer(
                [&](int32_t* out) { return drel->thermalListeningRegister(ids, callback, out); });
    }
    int32_t unregister(int32_t handle, bool thermal = false) {
        return answer([&](int32_t* out) {
            return thermal ? drel->thermalListeningUnregister(handle, out)
                           : drel->listeningUnregister(handle, out);
        });
    }

    std::shared_ptr<DrelService> service;  // for the service's own accessors
    std::shared_ptr<IDrel> drel;           // how clients reach it

private:
    std::atomic<int64_t> clockMs_{1000};
};

}  // namespace qel_test
