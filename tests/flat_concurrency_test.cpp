// Concurrency of the flat API: calls run in parallel under the shared side of the connection
// lock, and a reset after a failed call waits for the calls in flight.

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>
#include <vector>

#include "qel.h"
#include "support/flat_fixture.h"

namespace qel_test {
namespace {

using ::testing::_;

// Bounds every wait of these tests, so that a serialising or deadlocking implementation fails
// instead of hanging. No result depends on how long anything takes.
constexpr std::chrono::seconds kBound{5};

class FlatConcurrencyTest : public FlatFixture {
protected:
    std::mutex m;
    std::condition_variable cv;
};

TEST_F(FlatConcurrencyTest, EightAcquiresAreInFlightTogether) {
    constexpr int kThreads = 8;
    int arrived = 0;
    bool gaveUp = false;  // after one timeout the others fail at once
    ON_CALL(*service, request(_, _))
            .WillByDefault([&](const DrelRequestParcel& parcel, int32_t* handle) {
                std::unique_lock<std::mutex> l(m);
                ++arrived;
                cv.notify_all();
                // Each call returns only once all of them are inside the service.
                if (gaveUp || !cv.wait_for(l, kBound, [&] { return arrived >= kThreads; })) {
                    gaveUp = true;
                    return ndk::ScopedAStatus::fromServiceSpecificError(1);
                }
                *handle = 100 + parcel.resources.at(0).resId;
                return ndk::ScopedAStatus::ok();
            });

    std::vector<int> handles(kThreads, 0);
    std::vector<std::thread> threads;
    for (int i = 0; i < kThreads; ++i) {
        threads.emplace_back([&, i] { handles[i] = QelEventAcquire(i, "pkg", "id", 10, {}); });
    }
    for (auto& t : threads) t.join();
    for (int i = 0; i < kThreads; ++i) EXPECT_EQ(100 + i, handles[i]) << "thread " << i;
}

TEST_F(FlatConcurrencyTest, AResetAfterAFailureWaitsForTheCallInFlight) {
    bool acquireInside = false;
    bool notifyReturned = false;
    bool notifyFailedWhileAcquireInside = false;
    bool notifyReturnedWhileAcquireInside = false;
    const std::string failureLine = "QelNotify() failed : drel HAL service not available";
    ON_CALL(*service, request(_, _))
            .WillByDefault([&](const DrelRequestParcel& parcel, int32_t* handle) {
                if (parcel.requestType == 10)
                    return ndk::ScopedAStatus::fromServiceSpecificError(1);
                {
                    std::lock_guard<std::mutex> l(m);
                    acquireInside = true;
                }
                cv.notify_all();
                // Held until the failing notify has logged and gone for the exclusive lock, and
                // then a while longer: its reset must not get through while we are here.
                auto end = std::chrono::steady_clock::now() + kBound;
                while (log.count(failureLine) == 0 && std::chrono::steady_clock::now() < end) {
                    std::this_thread::yield();
                }
                notifyFailedWhileAcquireInside = log.count(failureLine) == 1;
                std::unique_lock<std::mutex> l(m);
                cv.wait_for(l, std::chrono::milliseconds(200), [&] { return notifyReturned; });
                notifyReturnedWhileAcquireInside = notifyReturned;
                *handle = 5;
                return ndk::ScopedAStatus::ok();
            });

    int acquired = 0;
    std::thread acquirer([&] { acquired = QelEventAcquire(1, "pkg", "id", 10, {}); });
    {
        std::unique_lock<std::mutex> l(m);
        ASSERT_TRUE(cv.wait_for(l, kBound, [&] { return acquireInside; }));
    }
    std::thread notifier([&] {
        EXPECT_EQ(-1, QelNotify(2, 2, {}));
        std::lock_guard<std::mutex> l(m);
        notifyReturned = true;
        cv.notify_all();
    });
    acquirer.join();
    notifier.join();

    EXPECT_EQ(5, acquired) << "the call in flight completes normally";
    EXPECT_TRUE(notifyFailedWhileAcquireInside);
    EXPECT_FALSE(notifyReturnedWhileAcquireInside) << "the reset did not wait for the call";
    EXPECT_FALSE(qelConnected()) << "the reset happened after the call";
}

}  // namespace
}  // namespace qel_test
