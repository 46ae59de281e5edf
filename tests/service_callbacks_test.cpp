// The example service's reports to clients, through real proxies: listeners by id and by path,
// one-shot request callbacks, thermal fan-out, callbacks that call back in, dead clients, the
// expiry thread and many threads at once.

#include <android/binder_status.h>
#include <gtest/gtest.h>

#include <thread>

#include "support/service_harness.h"

namespace qel_test {
namespace {

using std::chrono::milliseconds;

constexpr int32_t kCpuMin = 0x01011040;
constexpr int32_t kCpuMax = 0x01011050;
constexpr int32_t kGpuMin = 0x01021000;

using DrelCallbackTest = DrelServiceTest;

TEST_F(DrelCallbackTest, ListenersHearOnlyChangesAndOnlyOfWhatTheyListenTo) {
    auto listener = ::ndk::SharedRefBase::make<RecordingCallback>();
    ASSERT_GE(listen({idRecord(kCpuMin), idRecord(kCpuMax)}, listener), 1);

    const int32_t first =
            send(DrelService::kKindResource,
                 {idRecord(kCpuMax, "2000"), idRecord(kGpuMin, "5"), idRecord(kCpuMin, "1000")});
    const int32_t same = hold(kCpuMin, "1000");      // no change: same value
    hold(kCpuMax, DrelService::kDefaultValue, 100);  // a change to the default value
    EXPECT_EQ(0, release(same));                     // the older request still holds 1000
    advance(milliseconds(100));
    service->expireDue();
    EXPECT_EQ(0, release(first));

    std::vector<Records> expected = {
            {idRecord(kCpuMin, "1000"), idRecord(kCpuMax, "2000")},  // in the listener's order
            {idRecord(kCpuMax, "0")},
            {idRecord(kCpuMax, "2000")},  // expiry restores the older value
            {idRecord(kCpuMin, "0"), idRecord(kCpuMax, "0")},
    };
    EXPECT_EQ(expected, listener->reports());
}

TEST_F(DrelCallbackTest, PathListenersGetTheirRecordsWithThePath) {
    auto byPath = ::ndk::SharedRefBase::make<RecordingCallback>();
    auto byId = ::ndk::SharedRefBase::make<RecordingCallback>();
    listen({pathRecord("/sys/a"), pathRecord("/sys/b")}, byPath);
    listen({idRecord(kCpuMin)}, byId);

    const int32_t handle =
            send(DrelService::kKindResource, {pathRecord("/sys/b", "9"), idRecord(kCpuMin, "1")});
    release(handle);

    std::vector<Records> expected = {{pathRecord("/sys/b", "9")}, {pathRecord("/sys/b", "0")}};
    EXPECT_EQ(expected, byPath->reports());
    EXPECT_EQ(2u, byId->reports().size());
    EXPECT_EQ(0, byPath->reports()[0][0].resId);
}

TEST_F(DrelCallbackTest, OneShotCallbackHearsTheAppliedRequestOnceAndIsNotKept) {
    auto oneShot = ::ndk::SharedRefBase::make<RecordingCallback>();
    std::weak_ptr<RecordingCallback> watch = oneShot;
    const int32_t handle =
            send(DrelService::kKindResource,
                 {idRecord(kCpuMin, "1400"), pathRecord("/sys/a"), DrelRequestData{}}, 0, oneShot);
    ASSERT_GE(handle, 1);
    hold(kCpuMin, "2000");
    release(handle);

    std::vector<Records> expected = {{idRecord(kCpuMin, "1400"), pathRecord("/sys/a", "1")}};
    EXPECT_EQ(expected, oneShot->reports());

    oneShot.reset();
    hostbinder::waitIdle();
    EXPECT_TRUE(watch.expired()) << "the service still holds the one-shot callback";
}

TEST_F(DrelCallbackTest, UnregisteredListenersHearNothingAndAreNotKept) {
    auto listener = ::ndk::SharedRefBase::make<RecordingCallback>();
    std::weak_ptr<RecordingCallback> watch = listener;
    const int32_t handle = listen({idRecord(kCpuMin)}, listener);
    int32_t result = -100;
    ASSERT_TRUE(drel->listeningUnregister(handle, &result).isOk());
    EXPECT_EQ(0, result);
    ASSERT_TRUE(drel->listeningUnregister(handle, &result).isOk());
    EXPECT_EQ(-1, result);
    ASSERT_TRUE(drel->thermalListeningUnregister(handle, &result).isOk());
    EXPECT_EQ(-1, result) << "not a thermal registration";

    hold(kCpuMin, "1");
    EXPECT_TRUE(listener->reports().empty());
    listener.reset();
    hostbinder::waitIdle();
    EXPECT_TRUE(watch.expired());
}

TEST_F(DrelCallbackTest, NullCallbacksAreRefused) {
    int32_t handle = -100;
    ASSERT_TRUE(drel->listeningRegister(DrelRequestParcel{}, nullptr, &handle).isOk());
    EXPECT_EQ(-1, handle);
    ASSERT_TRUE(drel->thermalListeningRegister({1}, nullptr, &handle).isOk());
    EXPECT_EQ(-1, handle);
}

TEST_F(DrelCallbackTest, ThermalLevelsFanOutToTheListenersOfTheirIds) {
    auto both = ::ndk::SharedRefBase::make<RecordingCallback>();
    auto second = ::ndk::SharedRefBase::make<RecordingCallback>();
    auto other = ::ndk::SharedRefBase::make<RecordingCallback>();
    int32_t bothHandle = 0, handle = 0;
    ASSERT_TRUE(drel->thermalListeningRegister({0, 2}, both, &bothHandle).isOk());
    ASSERT_TRUE(drel->thermalListeningRegister({2}, second, &handle).isOk());
    ASSERT_TRUE(drel->thermalListeningRegister({3}, other, &handle).isOk());

    EXPECT_EQ(2, send(DrelService::kKindThermal, {idRecord(2, "warm"), idRecord(0, "hot")}))
            << "answers how many listeners it reached";
    std::vector<Records> bothExpected = {{idRecord(2, "warm"), idRecord(0, "hot")}};
    std::vector<Records> secondExpected = {{idRecord(2, "warm")}};
    EXPECT_EQ(bothExpected, both->reports());
    EXPECT_EQ(secondExpected, second->reports());
    EXPECT_TRUE(other->reports().empty());
    EXPECT_EQ(std::optional<std::string>("hot"), service->thermalLevel(0));
    EXPECT_EQ(DrelService::kDefaultValue, valueOf(2)) << "thermal levels are not resources";

    int32_t result = -100;
    ASSERT_TRUE(drel->thermalListeningUnregister(bothHandle, &result).isOk());
    EXPECT_EQ(0, result);
    EXPECT_EQ(1, send(DrelService::kKindThermal, {idRecord(2, "cool")}));
    EXPECT_EQ(1u, both->reports().size());
    EXPECT_EQ(2u, second->reports().size());
}

TEST_F(DrelCallbackTest, CallbacksMayCallBackIntoTheService) {
    auto listener = ::ndk::SharedRefBase::make<RecordingCallback>();
    std::vector<std::string> seen;
    std::shared_ptr<IDrel> proxy = drel;
    listener->onReport = [&](const std::vector<DrelRequestData>& data) {
        DrelRequestParcel parcel;
        parcel.resources = {idRecord(data[0].resId)};
        Records reply;
        EXPECT_TRUE(proxy->stateRequest(parcel, &reply).isOk());
        seen.push_back(reply.at(0).resValue.value_or("<absent>"));
        return ::ndk::ScopedAStatus::ok();
    };
    listen({idRecord(kCpuMin)}, listener);
    auto oneShot = ::ndk::SharedRefBase::make<RecordingCallback>();
    oneShot->onReport = listener->onReport;

    send(DrelService::kKindResource, {idRecord(kCpuMin, "1400")}, 0, oneShot);

    EXPECT_EQ((std::vector<std::string>{"1400", "1400"}), seen)
            << "each callback sees the applied state";
    listener->onReport = nullptr;
    oneShot->onReport = nullptr;
}

TEST_F(DrelCallbackTest, ARegistrationWhoseClientHasDiedIsDropped) {
    auto dead = ::ndk::SharedRefBase::make<RecordingCallback>();
    dead->onReport = [](const std::vector<DrelRequestData>&) {
        return ::ndk::ScopedAStatus::fromStatus(STATUS_DEAD_OBJECT);
    };
    auto failing = ::ndk::SharedRefBase::make<RecordingCallback>();
    failing->onReport = [](const std::vector<DrelRequestData>&) {
        return ::ndk::ScopedAStatus::fromServiceSpecificError(5);
    };
    const int32_t deadHandle = listen({idRecord(kCpuMin)}, dead);
    const int32_t failingHandle = listen({idRecord(kCpuMin)}, failing);
    int32_t deadThermal = 0;
    ASSERT_TRUE(drel->thermalListeningRegister({1}, dead, &deadThermal).isOk());

    hold(kCpuMin, "1");
    send(DrelService::kKindThermal, {idRecord(1, "hot")});
    hold(kCpuMin, "2");

    EXPECT_EQ(2u, dead->reports().size()) << "one listener report and one thermal report";
    EXPECT_EQ(2u, failing->reports().size()) << "other failures keep the registration";
    int32_t result = -100;
    ASSERT_TRUE(drel->listeningUnregister(deadHandle, &result).isOk());
    EXPECT_EQ(-1, result);
    ASSERT_TRUE(drel->thermalListeningUnregister(deadThermal, &result).isOk());
    EXPECT_EQ(-1, result);
    ASSERT_TRUE(drel->listeningUnregister(failingHandle, &result).isOk());
    EXPECT_EQ(0, result);
    dead->onReport = nullptr;
    failing->onReport = nullptr;
}

TEST_F(DrelCallbackTest, TheExpiryThreadDropsRequestsWithoutAnyCall) {
    auto listener = ::ndk::SharedRefBase::make<RecordingCallback>();
    listen({idRecord(kCpuMin)}, listener);
    hold(kCpuMin, "1400", 20);
    ASSERT_EQ(1u, listener->reports().size());
    service->startExpiryThread();
    service->startExpiryThread();  // idempotent

    advance(milliseconds(20));
    ASSERT_TRUE(listener->waitForReports(2));
    EXPECT_EQ(Records{idRecord(kCpuMin, "0")}, listener->reports()[1]);
    EXPECT_EQ(0u, service->liveRequestCount());
}

TEST_F(DrelCallbackTest, ConcurrentRequestsReleasesAndQueriesLeaveAConsistentState) {
    auto listener = ::ndk::SharedRefBase::make<RecordingCallback>();
    listen({idRecord(kCpuMin), idRecord(kGpuMin)}, listener);
    service->startExpiryThread();

    constexpr int kThreads = 4;
    constexpr int kRounds = 40;
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t) {
        threads.emplace_back([this, t] {
            for (int i = 0; i < kRounds; ++i) {
                const int32_t handle =
                        send(DrelService::kKindResource,
                             {idRecord(t % 2 ? kCpuMin : kGpuMin, std::to_string(t * 1000 + i))},
                             i % 3 == 0 ? 1 : 0);
                valueOf(kCpuMin);
                if (i % 3 != 0) {
                    EXPECT_EQ(0, release(handle));
                }
                advance(milliseconds(1));
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
    advance(milliseconds(10));
    service->expireDue();

    EXPECT_EQ(0u, service->liveRequestCount());
    EXPECT_EQ(DrelService::kDefaultValue, valueOf(kCpuMin));
    EXPECT_EQ(DrelService::kDefaultValue, valueOf(kGpuMin));
    // Reports of concurrent calls may reach the listener in either order, so only their content
    // is checked: each holds a value some thread asked for on that resource, or the default.
    size_t records = 0;
    for (const Records& report : listener->reports()) {
        for (const DrelRequestData& record : report) {
            ++records;
            ASSERT_TRUE(record.resId == kCpuMin || record.resId == kGpuMin);
            const std::string value = record.resValue.value_or("<absent>");
            if (value == DrelService::kDefaultValue) continue;
            const int thread = std::stoi(value) / 1000;
            EXPECT_EQ(record.resId == kCpuMin, thread % 2 == 1) << value;
        }
    }
    EXPECT_GE(records, 2u);
}

}  // namespace
}  // namespace qel_test
