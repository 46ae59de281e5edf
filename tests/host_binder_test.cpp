// The host stand-in's binder runtime behaves as the device's does where the library depends on
// it: the thread a call into the client runs on, death, reference counts.

#include <aidl/vendor/quarn/hardware/drel/BnDrelCallback.h>
#include <aidl/vendor/quarn/hardware/drel/IDrel.h>
#include <android/binder_manager.h>
#include <gtest/gtest.h>
#include <hostbinder/hostbinder.h>

#include <functional>
#include <thread>

#include "support/service_fixture.h"

namespace qel_test {
namespace {

using ::aidl::vendor::quarn::hardware::drel::BnDrelCallback;
using ::aidl::vendor::quarn::hardware::drel::IDrel;
using ::testing::_;
using ::testing::DoAll;
using ::testing::Invoke;
using ::testing::SaveArg;

// Records the thread and data of each call; `onCall`, when set, runs inside the call.
class RecordingCallback : public BnDrelCallback {
public:
    ::ndk::ScopedAStatus onCallback(const std::vector<DrelRequestData>& data) override {
        threads.push_back(std::this_thread::get_id());
        received.push_back(data);
        if (onCall) onCall();
        return ::ndk::ScopedAStatus::ok();
    }
    std::vector<std::thread::id> threads;
    std::vector<std::vector<DrelRequestData>> received;
    std::function<void()> onCall;
};

std::shared_ptr<IDrel> connect() {
    ::ndk::SpAIBinder binder(AServiceManager_checkService(kInstance));
    return IDrel::fromBinder(binder);
}

class HostBinderTest : public ServiceFixture {};

// From inside the caller's call the service's calls come back to the caller's thread, also one
// level deeper (the callback calls the service, which calls back again); from a thread of the
// service's own they run on a binder thread, and the service waits for them.
TEST_F(HostBinderTest, CallbacksRunOnTheCallingThreadOnlyFromInsideItsCall) {
    std::shared_ptr<IDrel> drel = connect();
    ASSERT_TRUE(drel && drel->isRemote());
    auto callback = ::ndk::SharedRefBase::make<RecordingCallback>();
    std::shared_ptr<IDrelCallback> kept;
    std::thread::id serviceThread;
    EXPECT_CALL(*service, listeningRegister(_, _, _))
            .WillOnce(Invoke([&](const DrelRequestParcel&, const std::shared_ptr<IDrelCallback>& cb,
                                 int32_t* handle) {
                kept = cb;
                DrelRequestData report;
                report.resPath = "/p";
                EXPECT_TRUE(cb->onCallback({report}).isOk());
                std::thread([&] {
                    serviceThread = std::this_thread::get_id();
                    EXPECT_TRUE(cb->onCallback({}).isOk());
                    EXPECT_EQ(3u, callback->received.size()) << "the service waits for the call";
                }).join();
                *handle = 3;
                return ::ndk::ScopedAStatus::ok();
            }));
    EXPECT_CALL(*service, init()).WillOnce(Invoke([&] { return kept->onCallback({}); }));
    callback->onCall = [&] {
        callback->onCall = nullptr;
        EXPECT_TRUE(drel->init().isOk());
    };
    int32_t handle = 0;
    ASSERT_TRUE(drel->listeningRegister(DrelRequestParcel{}, callback, &handle).isOk());
    EXPECT_EQ(3, handle);
    const std::thread::id caller = std::this_thread::get_id();
    ASSERT_EQ(3u, callback->threads.size());
    EXPECT_EQ(caller, callback->threads[0]);
    EXPECT_EQ(caller, callback->threads[1]);
    EXPECT_NE(caller, callback->threads[2]);
    EXPECT_NE(serviceThread, callback->threads[2]);
    EXPECT_EQ(std::optional<std::string>("/p"), callback->received[0].at(0).resPath);
}

struct DeathRecord {
    std::mutex mutex;
    std::vector<void*> cookies;
    std::vector<std::thread::id> threads;
};
DeathRecord* gDeaths = nullptr;
void recordDeath(void* cookie) {
    std::lock_guard<std::mutex> l(gDeaths->mutex);
    gDeaths->cookies.push_back(cookie);
    gDeaths->threads.push_back(std::this_thread::get_id());
}

TEST_F(HostBinderTest, DeathsOfOneProxyRunOnceInLinkOrderOnOneBinderThread) {
    DeathRecord deaths;
    gDeaths = &deaths;
    std::shared_ptr<IDrel> drel = connect();
    AIBinder* binder = drel->asBinder().get();
    ::ndk::ScopedAIBinder_DeathRecipient recipient(AIBinder_DeathRecipient_new(recordDeath));
    AIBinder_DeathRecipient* deleted = AIBinder_DeathRecipient_new(recordDeath);
    int cookies[5] = {};
    std::vector<void*> linked;
    for (int& cookie : cookies) {
        ASSERT_EQ(STATUS_OK, AIBinder_linkToDeath(binder, recipient.get(), &cookie));
        ASSERT_EQ(STATUS_OK, AIBinder_linkToDeath(binder, deleted, &deaths));
        linked.push_back(&cookie);
    }
    EXPECT_EQ(STATUS_NAME_NOT_FOUND, AIBinder_unlinkToDeath(binder, recipient.get(), &deaths));
    AIBinder_DeathRecipient_delete(deleted);  // drops its links

    killService();
    EXPECT_EQ(linked, deaths.cookies);
    ASSERT_EQ(5u, deaths.threads.size());
    EXPECT_EQ(std::vector<std::thread::id>(5, deaths.threads[0]), deaths.threads);
    EXPECT_NE(std::this_thread::get_id(), deaths.threads[0]);
    EXPECT_FALSE(AIBinder_isAlive(binder));
    EXPECT_EQ(STATUS_DEAD_OBJECT, drel->init().getStatus());
    EXPECT_EQ(STATUS_DEAD_OBJECT, AIBinder_linkToDeath(binder, recipient.get(), &cookies[0]));
    EXPECT_EQ(nullptr, AServiceManager_checkService(kInstance));
    EXPECT_TRUE(AServiceManager_isDeclared(kInstance)) << "a dead service stays declared";
    gDeaths = nullptr;
}

// A local binder holds its object and is reused by asBinder; the service's proxy of a client
// object keeps that object alive until the service's process dies.
TEST_F(HostBinderTest, BindersAndProxiesHoldTheirObjectsUntilReleasedOrDead) {
    auto callback = ::ndk::SharedRefBase::make<RecordingCallback>();
    std::weak_ptr<RecordingCallback> weak = callback;
    ::ndk::SpAIBinder local = callback->asBinder();
    EXPECT_EQ(local.get(), callback->asBinder().get()) << "one object, one live binder";
    callback.reset();
    EXPECT_FALSE(weak.expired()) << "the binder holds the object";
    local = nullptr;
    EXPECT_TRUE(weak.expired());

    callback = ::ndk::SharedRefBase::make<RecordingCallback>();
    weak = callback;
    std::shared_ptr<IDrelCallback> kept;
    EXPECT_CALL(*service, thermalListeningRegister(_, _, _))
            .WillOnce(DoAll(SaveArg<1>(&kept), ReturnResult3(1)));
    int32_t handle = 0;
    ASSERT_TRUE(connect()->thermalListeningRegister({1}, callback, &handle).isOk());
    callback.reset();
    EXPECT_FALSE(weak.expired()) << "the service's proxy keeps the client object";
    killService();
    EXPECT_TRUE(weak.expired()) << "a dead process holds no references";
    EXPECT_EQ(STATUS_DEAD_OBJECT, kept->onCallback({}).getStatus());
}

}  // namespace
}  // namespace qel_test
