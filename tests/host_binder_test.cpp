// The host stand-in's binder runtime behaves as the device's does where the library depends on
// it: proxies, copies, the thread a call into the client runs on, death, reference counts,
// statuses.

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

TEST_F(HostBinderTest, ClientsGetAProxyArgumentsAreCopiedAndStatusesComeBackUnchanged) {
    std::shared_ptr<IDrel> drel = connect();
    ASSERT_NE(nullptr, drel);
    EXPECT_TRUE(drel->isRemote());
    DrelRequestParcel sent;
    sent.requestType = 8;
    sent.resources.resize(2);
    sent.resources[1].resValue = "v";
    sent.tags = std::vector<std::optional<std::string>>{std::nullopt, "t"};
    sent.timeout = -5;
    const DrelRequestParcel* seenAddress = nullptr;
    DrelRequestParcel seen;
    EXPECT_CALL(*service, request(_, _))
            .WillOnce(DoAll(Invoke([&](const DrelRequestParcel& p, int32_t*) {
                                seenAddress = &p;
                                seen = p;
                            }),
                            ReturnResult(42)))
            .WillOnce(ReturnServiceError(77))
            .WillOnce(ReturnStatus(STATUS_BAD_VALUE));
    int32_t handle = 0;
    ASSERT_TRUE(drel->request(sent, &handle).isOk());
    EXPECT_EQ(42, handle);
    EXPECT_EQ(sent, seen);
    EXPECT_NE(&sent, seenAddress) << "the service must see a copy";
    ::ndk::ScopedAStatus specific = drel->request(sent, &handle);
    EXPECT_EQ(EX_SERVICE_SPECIFIC, specific.getExceptionCode());
    EXPECT_EQ(77, specific.getServiceSpecificError());
    EXPECT_EQ(STATUS_BAD_VALUE, drel->request(sent, &handle).getStatus());
    EXPECT_EQ(42, handle) << "out-values are written only on success";
}

// From inside the caller's call the service's calls come back to the caller's thread, also one
// level deeper (the callback calls the service, which calls back again); from a thread of the
// service's own they run on a binder thread, and the service waits for them.
TEST_F(HostBinderTest, CallbacksRunOnTheCallingThreadOnlyFromInsideItsCall) {
    std::shared_ptr<IDrel> drel = connect();
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

TEST_F(HostBinderTest, LinkToDeathRefusesLocalBindersAndNullBinders) {
    auto callback = ::ndk::SharedRefBase::make<RecordingCallback>();
    ::ndk::ScopedAIBinder_DeathRecipient recipient(AIBinder_DeathRecipient_new(recordDeath));
    ::ndk::SpAIBinder local = callback->asBinder();
    EXPECT_FALSE(AIBinder_isRemote(local.get()));
    EXPECT_EQ(STATUS_INVALID_OPERATION,
              AIBinder_linkToDeath(local.get(), recipient.get(), nullptr));
    EXPECT_EQ(STATUS_UNEXPECTED_NULL, AIBinder_linkToDeath(nullptr, recipient.get(), nullptr));
}

TEST_F(HostBinderTest, ALocalBinderKeepsItsObjectAliveAndAsBinderReusesIt) {
    auto callback = ::ndk::SharedRefBase::make<RecordingCallback>();
    std::weak_ptr<RecordingCallback> weak = callback;
    ::ndk::SpAIBinder first = callback->asBinder();
    EXPECT_EQ(first.get(), callback->asBinder().get()) << "one object, one live binder";
    callback.reset();
    EXPECT_FALSE(weak.expired()) << "the binder holds the object";
    first = nullptr;
    EXPECT_TRUE(weak.expired());
}

TEST_F(HostBinderTest, TheServiceDropsItsCallbackProxiesWhenItDies) {
    std::shared_ptr<IDrel> drel = connect();
    auto callback = ::ndk::SharedRefBase::make<RecordingCallback>();
    std::weak_ptr<RecordingCallback> weak = callback;
    std::shared_ptr<IDrelCallback> kept;
    EXPECT_CALL(*service, thermalListeningRegister(_, _, _))
            .WillOnce(DoAll(SaveArg<1>(&kept), ReturnResult3(1)));
    int32_t handle = 0;
    ASSERT_TRUE(drel->thermalListeningRegister({1}, callback, &handle).isOk());
    callback.reset();
    EXPECT_FALSE(weak.expired()) << "the service's proxy keeps the client object";
    killService();
    EXPECT_TRUE(weak.expired()) << "a dead process holds no references";
    EXPECT_EQ(STATUS_DEAD_OBJECT, kept->onCallback({}).getStatus());
}

TEST(HostStatusTest, StatusesKeepTheNdkSemantics) {
    EXPECT_FALSE(::ndk::ScopedAStatus().isOk()) << "an empty status is not ok";
    EXPECT_TRUE(::ndk::ScopedAStatus::ok().isOk());
    ::ndk::ScopedAStatus dead = ::ndk::ScopedAStatus::fromStatus(STATUS_DEAD_OBJECT);
    EXPECT_EQ(EX_TRANSACTION_FAILED, dead.getExceptionCode());
    EXPECT_EQ(-32, dead.getStatus());
    EXPECT_EQ(0, dead.getServiceSpecificError());
    EXPECT_EQ(STATUS_UNKNOWN_ERROR, ::ndk::ScopedAStatus::fromStatus(-12345).getStatus());
    ::ndk::ScopedAStatus specific = ::ndk::ScopedAStatus::fromServiceSpecificError(9);
    EXPECT_EQ(-8, specific.getExceptionCode());
    EXPECT_EQ(0, specific.getStatus());
    EXPECT_EQ("Status(-8, EX_SERVICE_SPECIFIC): '9: '", specific.getDescription());
}

}  // namespace
}  // namespace qel_test
