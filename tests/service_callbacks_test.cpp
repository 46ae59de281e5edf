// The example service's reports to clients, through real proxies: listeners by id and by path,
// one-shot request callbacks, thermal fan-out, callbacks that call back in, dead clients and the
// expiry thread. (The chaos stress test runs it from many threads at once.)

#include <android/binder_status.h>
#include <gtest/gtest.h>

#include "support/service_harness.h"

namespace qel_test {
namespace {

using DrelCallbackTest = DrelServiceTest;

TEST_F(DrelCallbackTest, ListenersHearEachChangeOfWhatTheyListenToUntilUnregistered) {
    auto listener = ::ndk::SharedRefBase::make<RecordingCallback>();
    auto byPath = ::ndk::SharedRefBase::make<RecordingCallback>();
    const int32_t kCpuMax = 0x01011050;
    const int32_t listening =
            listen({idRecord(kCpuMin), idRecord(kCpuMax), idRecord(kCpuMin)}, listener);
    ASSERT_GE(listening, 1);
    ASSERT_GE(listen({pathRecord("/sys/a"), pathRecord("/sys/b")}, byPath), 1);

    const int32_t first = send(DrelService::kKindResource,
                               {idRecord(kCpuMax, "2000"), idRecord(kGpuMin, "5"),
                                idRecord(kCpuMin, "1000"), pathRecord("/sys/b", "9")});
    const int32_t same = hold(kCpuMin, "1000");      // no change: same value
    hold(kCpuMax, DrelService::kDefaultValue, 100);  // a change to the default value
    EXPECT_EQ(0, release(same));                     // the older request still holds 1000
    advance(100);
    service->expireDue();
    EXPECT_EQ(0, release(first));

    std::vector<Records> expected = {
            {idRecord(kCpuMin, "1000"), idRecord(kCpuMax, "2000")},  // in the listener's order
            {idRecord(kCpuMax, "0")},
            {idRecord(kCpuMax, "2000")},  // expiry restores the older value
            {idRecord(kCpuMin, "0"), idRecord(kCpuMax, "0")},
    };
    EXPECT_EQ(expected, listener->reports());
    expected = {{pathRecord("/sys/b", "9")}, {pathRecord("/sys/b", "0")}};
    EXPECT_EQ(expected, byPath->reports()) << "path records carry the path and id 0";

    EXPECT_EQ(0, unregister(listening));
    EXPECT_EQ(-1, unregister(listening));
    hold(kCpuMin, "1");
    EXPECT_EQ(4u, listener->reports().size()) << "nothing after unregistering";
    EXPECT_EQ(-1, listen({idRecord(kCpuMin)}, nullptr));
}

TEST_F(DrelCallbackTest, OneShotCallbackHearsTheAppliedRequestOnceAndIsNotKept) {
    auto oneShot = ::ndk::SharedRefBase::make<RecordingCallback>();
    std::weak_ptr<RecordingCallback> watch = oneShot;
    const int32_t handle =
            send(DrelService::kKindResource,
                 {idRecord(kCpuMin, "1400"), pathRecord("/sys/a"), DrelRequestData{}}, 0, oneShot);
    ASSERT_GE(handle, 1);
    EXPECT_EQ(-1, send(DrelService::kKindState, {idRecord(kCpuMin)}, 0, oneShot));
    hold(kCpuMin, "2000");
    release(handle);

    std::vector<Records> expected = {{idRecord(kCpuMin, "1400"), pathRecord("/sys/a", "1")}};
    EXPECT_EQ(expected, oneShot->reports()) << "only requests that hold call it";
    oneShot.reset();
    hostbinder::waitIdle();
    EXPECT_TRUE(watch.expired()) << "the service still holds the one-shot callback";
}

TEST_F(DrelCallbackTest, ThermalLevelsFanOutToTheListenersOfTheirIds) {
    auto both = ::ndk::SharedRefBase::make<RecordingCallback>();
    auto second = ::ndk::SharedRefBase::make<RecordingCallback>();
    auto other = ::ndk::SharedRefBase::make<RecordingCallback>();
    const int32_t bothHandle = listenThermal({0, 2}, both);
    listenThermal({2}, second);
    listenThermal({3}, other);

    EXPECT_EQ(2, send(DrelService::kKindThermal, {idRecord(2, "warm"), idRecord(0, "hot")}))
            << "answers how many listeners it reached";
    EXPECT_EQ((std::vector<Records>{{idRecord(2, "warm"), idRecord(0, "hot")}}), both->reports());
    EXPECT_EQ((std::vector<Records>{{idRecord(2, "warm")}}), second->reports());
    EXPECT_TRUE(other->reports().empty());
    EXPECT_EQ(std::optional<std::string>("hot"), service->thermalLevel(0));
    EXPECT_EQ(DrelService::kDefaultValue, valueOf(2)) << "thermal levels are not resources";

    EXPECT_EQ(-1, unregister(listen({idRecord(1)}, other), true)) << "not a thermal registration";
    EXPECT_EQ(0, unregister(bothHandle, true));
    EXPECT_EQ(1, send(DrelService::kKindThermal, {idRecord(2, "cool")}));
    EXPECT_EQ(1u, both->reports().size());
    EXPECT_EQ(-1, listenThermal({1}, nullptr));
}

TEST_F(DrelCallbackTest, CallbacksMayCallBackIntoTheService) {
    auto listener = ::ndk::SharedRefBase::make<RecordingCallback>();
    auto oneShot = ::ndk::SharedRefBase::make<RecordingCallback>();
    std::vector<std::string> seen;
    listener->onReport = [&, proxy = drel](const std::vector<DrelRequestData>& data) {
        DrelRequestParcel parcel;
        parcel.resources = {idRecord(data[0].resId)};
        Records reply;
        EXPECT_TRUE(proxy->stateRequest(parcel, &reply).isOk());
        seen.push_back(reply.at(0).resValue.value_or("<absent>"));
        return ::ndk::ScopedAStatus::ok();
    };
    oneShot->onReport = listener->onReport;
    listen({idRecord(kCpuMin)}, listener);
    send(DrelService::kKindResource, {idRecord(kCpuMin, "1400")}, 0, oneShot);
    EXPECT_EQ((std::vector<std::string>{"1400", "1400"}), seen)
            << "each callback sees the applied state";
    listener->onReport = oneShot->onReport = nullptr;
}

TEST_F(DrelCallbackTest, ARegistrationWhoseClientHasDiedIsDroppedAndOnlyThat) {
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
    const int32_t deadThermal = listenThermal({1}, dead);

    hold(kCpuMin, "1");
    send(DrelService::kKindThermal, {idRecord(1, "hot")});
    hold(kCpuMin, "2");

    EXPECT_EQ(2u, dead->reports().size()) << "one listener report and one thermal report";
    EXPECT_EQ(2u, failing->reports().size()) << "other failures keep the registration";
    EXPECT_EQ(-1, unregister(deadHandle));
    EXPECT_EQ(-1, unregister(deadThermal, true));
    EXPECT_EQ(0, unregister(failingHandle));
    dead->onReport = failing->onReport = nullptr;
}

TEST_F(DrelCallbackTest, TheExpiryThreadDropsRequestsWithoutAnyCall) {
    auto listener = ::ndk::SharedRefBase::make<RecordingCallback>();
    listen({idRecord(kCpuMin)}, listener);
    hold(kCpuMin, "1400", 20);
    service->startExpiryThread();
    service->startExpiryThread();  // idempotent
    advance(20);
    ASSERT_TRUE(listener->waitForReports(2));
    EXPECT_EQ(Records{idRecord(kCpuMin, "0")}, listener->reports()[1]);
    EXPECT_EQ(0u, service->liveRequestCount());
}

}  // namespace
}  // namespace qel_test
