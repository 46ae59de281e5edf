// Callbacks end to end through the service: reports reach the caller on a binder thread with no
// library lock held, one-shot clients leave request_callbacks and die with the service's last
// reference, registrations keep the caller's callback alive until they are unregistered, and
// many threads registering, requesting and receiving reports at once leave the registries
// exactly as their operations should.

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <thread>

#include "support/class_fixture.h"

namespace qel_test {
namespace {

using ::testing::_;

// A callback object the service kept, for reports it sends later.
class KeptCallback {
public:
    void keep(const std::shared_ptr<IDrelCallback>& callback) {
        std::lock_guard<std::mutex> lock(mMutex);
        mCallback = callback;
    }
    std::shared_ptr<IDrelCallback> get() {
        std::lock_guard<std::mutex> lock(mMutex);
        return mCallback;
    }
    // The service drops its reference.
    void drop() { keep(nullptr); }
    void report(const std::vector<DrelRequestData>& data) {
        std::shared_ptr<IDrelCallback> callback = get();
        ASSERT_NE(nullptr, callback);
        EXPECT_TRUE(callback->onCallback(data).isOk());
    }

private:
    std::mutex mMutex;
    std::shared_ptr<IDrelCallback> mCallback;
};

class CallbackTest : public ClassApiFixture {
protected:
    void TearDown() override {
        kept.drop();
        ClassApiFixture::TearDown();
    }
    // The service keeps the callback of each request and answers with `handle`.
    void keepRequestCallbacks(int32_t handle) {
        ON_CALL(*service, request(_, _))
                .WillByDefault([this, handle](const DrelRequestParcel& parcel, int32_t* result) {
                    if (parcel.callback != nullptr) kept.keep(parcel.callback);
                    *result = handle;
                    return ::ndk::ScopedAStatus::ok();
                });
    }

    KeptCallback kept;
    std::shared_ptr<RecordingCallback> callback = std::make_shared<RecordingCallback>();
};

TEST_F(CallbackTest, AOneShotReportReachesTheCallerOnABinderThreadAndTheClientDiesAfterIt) {
    keepRequestCallbacks(5);
    std::atomic<bool> onCallerThread{false};
    const std::thread::id caller = std::this_thread::get_id();
    callback->onReport = [&] { onCallerThread = std::this_thread::get_id() == caller; };
    ResourceList list{res(0x10, "1")};
    ASSERT_EQ(5, drelHalclient::drelResCtlRequest(1, 500, list, -1, 0, 0, callback));
    ASSERT_EQ(1u, parkedCount());

    kept.report({wireRes(0x10, "2"), wireRes(0x20, "")});

    ASSERT_EQ(1u, callback->reports().size());
    EXPECT_EQ((ResourcePairs{{0x10, "2"}, {0x20, ""}}), asPairs(callback->reports()[0]));
    EXPECT_FALSE(onCallerThread);
    EXPECT_EQ(0u, parkedCount());
    bool transactionLogged = false;
    for (const LogLine& line : log.lines()) {
        transactionLogged |= !line.tag && line.message.rfind(
                                                  "BnDrelCallback::logFunc NDK BACKEND "
                                                  "method_name onCallback ",
                                                  0) == 0;
    }
    EXPECT_TRUE(transactionLogged) << "the stub's transaction log goes through printLog";
    const LogLine destroyed = cbInfo("ndk backend ~DrelCallbackClient");
    EXPECT_EQ(0, log.count(destroyed.message)) << "the service still holds the client";

    kept.drop();
    hostbinder::waitIdle();
    EXPECT_EQ(1, log.count(destroyed.message));
    EXPECT_TRUE(log.contains(destroyed));
}

TEST_F(CallbackTest, APathReportReachesThePathCallbackAndUnparksItsClient) {
    keepRequestCallbacks(6);
    auto pathCallback = std::make_shared<RecordingPathCallback>();
    ASSERT_EQ(6, drelHalclient::drel_resctl_request_with_callback_by_path(1, 500, {"/a"}, {"1"}, 0,
                                                                          0, 0, pathCallback));
    kept.report({wirePath("/a", "3")});

    auto reports = pathCallback->reports();
    ASSERT_EQ(1u, reports.size());
    EXPECT_EQ((std::vector<std::string>{"/a"}), reports[0].paths);
    EXPECT_EQ((std::vector<std::string>{"3"}), reports[0].values);
    EXPECT_EQ(0u, parkedCount());
}

// The caller's callback requests and registers from inside a report; both complete.
void callTheLibraryFromTheCallback(RecordingCallback& callback, std::atomic<int>& requested,
                                   std::atomic<int>& registered) {
    callback.onReport = [&] {
        ResourceList list{res(0x30, "1")};
        requested = drelHalclient::drelResCtlRequest(500, list, 0);
        ResourceList listened{res(0x40, "1")};
        registered = drelHalclient::drelResListeningRegister(listened, 0,
                                                             std::make_shared<RecordingCallback>());
    };
}

TEST_F(CallbackTest, ACallerCallbackMayCallTheLibraryFromAReportSentDuringAnotherRequest) {
    EXPECT_CALL(*service, request(_, _))
            .WillOnce([&](const DrelRequestParcel& parcel, int32_t* result) {
                kept.keep(parcel.callback);
                *result = 1;
                return ::ndk::ScopedAStatus::ok();
            })
            .WillOnce([&](const DrelRequestParcel&, int32_t* result) {
                // Reported while this request holds the connection lock.
                kept.report({wireRes(0x10, "1")});
                *result = 2;
                return ::ndk::ScopedAStatus::ok();
            })
            .WillOnce(ReturnResult(3));
    EXPECT_CALL(*service, listeningRegister(_, _, _)).WillOnce(ReturnResult3(9));
    std::atomic<int> requested{0};
    std::atomic<int> registered{0};
    callTheLibraryFromTheCallback(*callback, requested, registered);
    ResourceList list{res(0x10, "1")};
    ASSERT_EQ(1, drelHalclient::drelResCtlRequest(1, 500, list, -1, 0, 0, callback));

    ResourceList other{res(0x20, "1")};
    EXPECT_EQ(2, drelHalclient::drelResCtlRequest(500, other, 0));

    EXPECT_EQ(3, requested);
    EXPECT_EQ(9, registered);
    EXPECT_EQ(1u, callback->reports().size());
    EXPECT_EQ((std::vector<int>{9}), groupHandles());
    EXPECT_EQ(0u, parkedCount());
}

TEST_F(CallbackTest, ACallerCallbackMayCallTheLibraryFromAReportSentByTheServiceItself) {
    EXPECT_CALL(*service, listeningRegister(_, _, _))
            .WillOnce([&](const DrelRequestParcel&, const std::shared_ptr<IDrelCallback>& cb,
                          int32_t* handle) {
                kept.keep(cb);
                *handle = 8;
                return ::ndk::ScopedAStatus::ok();
            })
            .WillOnce(ReturnResult3(9));
    EXPECT_CALL(*service, request(_, _)).WillOnce(ReturnResult(3));
    std::atomic<int> requested{0};
    std::atomic<int> registered{0};
    callTheLibraryFromTheCallback(*callback, requested, registered);
    ResourceList listened{res(0x10, "1")};
    ASSERT_EQ(8, drelHalclient::drelResListeningRegister(listened, 0, callback));

    std::thread serviceThread([&] { kept.report({wireRes(0x10, "5")}); });
    serviceThread.join();

    EXPECT_EQ(3, requested);
    EXPECT_EQ(9, registered);
    EXPECT_EQ((std::vector<int>{8, 9}), groupHandles());
}

TEST_F(CallbackTest, ARegistrationKeepsTheCallerCallbackAliveUntilItIsUnregistered) {
    EXPECT_CALL(*service, listeningRegister(_, _, _))
            .WillOnce([&](const DrelRequestParcel&, const std::shared_ptr<IDrelCallback>& cb,
                          int32_t* handle) {
                kept.keep(cb);
                *handle = 4;
                return ::ndk::ScopedAStatus::ok();
            });
    EXPECT_CALL(*service, listeningUnregister(4, _)).WillOnce(ReturnResult(0));
    std::weak_ptr<RecordingCallback> weak = callback;
    ResourceList listened{res(0x10, "1")};
    ASSERT_EQ(4, drelHalclient::drelResListeningRegister(listened, 0, callback));
    callback.reset();

    kept.report({wireRes(0x10, "1")});
    kept.report({wireRes(0x10, "2")});
    hostbinder::waitIdle();
    std::shared_ptr<RecordingCallback> alive = weak.lock();
    ASSERT_NE(nullptr, alive) << "the registration keeps the caller's callback";
    EXPECT_EQ(2u, alive->reports().size());
    alive.reset();
    EXPECT_EQ((std::vector<int>{4}), groupHandles()) << "reports do not end a registration";

    EXPECT_EQ(0, drelHalclient::drelResListeningUnRegister(4));
    kept.drop();
    hostbinder::waitIdle();
    EXPECT_TRUE(weak.expired());
    EXPECT_TRUE(groupHandles().empty());
    EXPECT_TRUE(log.contains(cbInfo("ndk backend ~DrelCallbackClient")));
}

TEST_F(CallbackTest, ManyThreadsRegisteringRequestingAndReceivingLeaveExactlyWhatTheyShould) {
    constexpr int kThreads = 8;
    constexpr int kRounds = 20;
    std::atomic<int32_t> nextHandle{100};
    // The service reports on each registration and on each request whose id is not a multiple
    // of 5, while the caller's call is in progress.
    ON_CALL(*service, listeningRegister(_, _, _))
            .WillByDefault([&](const DrelRequestParcel&, const std::shared_ptr<IDrelCallback>& cb,
                               int32_t* handle) {
                cb->onCallback({wireRes(1, "registered")});
                *handle = nextHandle++;
                return ::ndk::ScopedAStatus::ok();
            });
    ON_CALL(*service, request(_, _))
            .WillByDefault([&](const DrelRequestParcel& parcel, int32_t* result) {
                if (parcel.reqId % 5 != 0) parcel.callback->onCallback({wireRes(2, "done")});
                *result = nextHandle++;
                return ::ndk::ScopedAStatus::ok();
            });
    ON_CALL(*service, thermalListeningRegister(_, _, _))
            .WillByDefault([&](const std::vector<int32_t>&, const std::shared_ptr<IDrelCallback>&,
                               int32_t* handle) {
                *handle = nextHandle++;
                return ::ndk::ScopedAStatus::ok();
            });
    ON_CALL(*service, listeningUnregister(_, _)).WillByDefault(ReturnResult(0));
    ON_CALL(*service, thermalListeningUnregister(_, _)).WillByDefault(ReturnResult(0));

    std::vector<std::shared_ptr<RecordingCallback>> callbacks;
    for (int t = 0; t < kThreads; ++t) callbacks.push_back(std::make_shared<RecordingCallback>());
    std::vector<std::vector<int>> keptHandles(kThreads);
    std::atomic<int> ready{0};
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t) {
        threads.emplace_back([&, t] {
            ++ready;
            while (ready < kThreads) std::this_thread::yield();
            for (int r = 0; r < kRounds; ++r) {
                int reqId = t * 1000 + r;
                ResourceList listened{res(reqId + 1, "1")};
                int handle = drelHalclient::drelResListeningRegister(listened, 0, callbacks[t]);
                ResourceList none;
                drelHalclient::drelResCtlRequest(reqId, 100, none, -1, 0, 0, callbacks[t]);
                if (r % 2 == 0) {
                    drelHalclient::drelResListeningUnRegister(handle);
                } else {
                    keptHandles[t].push_back(handle);
                }
                if (r % 4 == 1) {
                    // Thermal groups stay after their unregister. Their id lists are compared
                    // by id registrations too, so they must differ from every listened list.
                    int thermal =
                            drelHalclient::drelThermalListeningRegister({100000 + t}, callbacks[t]);
                    drelHalclient::drelThermalListeningUnregister(thermal);
                    keptHandles[t].push_back(thermal);
                }
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
    hostbinder::waitIdle();

    std::vector<int> expected;
    for (const auto& handles : keptHandles)
        expected.insert(expected.end(), handles.begin(), handles.end());
    std::vector<int> actual = groupHandles();
    std::sort(expected.begin(), expected.end());
    std::sort(actual.begin(), actual.end());
    EXPECT_EQ(static_cast<size_t>(kThreads * (kRounds / 2 + kRounds / 4)), actual.size());
    EXPECT_EQ(expected, actual);
    // Requests with an id that is a multiple of 5 were never reported: their clients stay.
    EXPECT_EQ(static_cast<size_t>(kThreads * (kRounds / 5)), parkedCount());
    for (const auto& cb : callbacks) {
        EXPECT_EQ(static_cast<size_t>(kRounds + kRounds - kRounds / 5), cb->reports().size());
    }
    EXPECT_EQ(0, log.count("callback not found in request_callbacks"));
    EXPECT_EQ(0, log.count("Same callback interface registered already"));
}

}  // namespace
}  // namespace qel_test
