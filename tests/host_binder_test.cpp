// The host stand-in's binder runtime behaves as the device's does where the library depends on
// it: proxies, copies, binder threads, death, reference counts, statuses.

#include <aidl/vendor/quarn/hardware/drel/BnDrelCallback.h>
#include <aidl/vendor/quarn/hardware/drel/IDrel.h>
#include <android/binder_manager.h>
#include <gtest/gtest.h>
#include <hostbinder/hostbinder.h>

#include <atomic>
#include <future>
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

class RecordingCallback : public BnDrelCallback {
public:
    ::ndk::ScopedAStatus onCallback(const std::vector<DrelRequestData>& data) override {
        thread = std::this_thread::get_id();
        received = data;
        return ::ndk::ScopedAStatus::ok();
    }
    std::thread::id thread;
    std::vector<DrelRequestData> received;
};

std::shared_ptr<IDrel> connect() {
    ::ndk::SpAIBinder binder(AServiceManager_checkService(kInstance));
    return IDrel::fromBinder(binder);
}

class HostBinderTest : public ServiceFixture {};

TEST_F(HostBinderTest, ClientsGetAProxyAndArgumentsAreCopied) {
    std::shared_ptr<IDrel> drel = connect();
    ASSERT_NE(nullptr, drel);
    EXPECT_TRUE(drel->isRemote());
    EXPECT_NE(static_cast<void*>(drel.get()), static_cast<void*>(service.get()));

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
                            ReturnResult(42)));
    int32_t handle = 0;
    ASSERT_TRUE(drel->request(sent, &handle).isOk());
    EXPECT_EQ(42, handle);
    EXPECT_EQ(sent, seen);
    EXPECT_NE(&sent, seenAddress) << "the service must see a copy";
}

TEST_F(HostBinderTest, ServiceErrorsReachTheCallerUnchanged) {
    std::shared_ptr<IDrel> drel = connect();
    EXPECT_CALL(*service, release(_, _))
            .WillOnce(ReturnServiceError(77))
            .WillOnce(ReturnStatus(STATUS_BAD_VALUE))
            .WillOnce(Invoke([](int32_t, int32_t*) {
                return ::ndk::ScopedAStatus::fromExceptionCode(EX_ILLEGAL_STATE);
            }));
    int32_t out = -1;
    ::ndk::ScopedAStatus specific = drel->release(1, &out);
    EXPECT_EQ(EX_SERVICE_SPECIFIC, specific.getExceptionCode());
    EXPECT_EQ(77, specific.getServiceSpecificError());
    ::ndk::ScopedAStatus transport = drel->release(1, &out);
    EXPECT_EQ(EX_TRANSACTION_FAILED, transport.getExceptionCode());
    EXPECT_EQ(STATUS_BAD_VALUE, transport.getStatus());
    EXPECT_EQ(EX_ILLEGAL_STATE, drel->release(1, &out).getExceptionCode());
    EXPECT_EQ(-1, out) << "out-values are written only on success";
}

TEST_F(HostBinderTest, CallbacksRunOnABinderThreadWhileTheServiceWaits) {
    std::shared_ptr<IDrel> drel = connect();
    auto callback = ::ndk::SharedRefBase::make<RecordingCallback>();
    std::thread::id serviceThread;
    bool remoteInService = false;
    EXPECT_CALL(*service, listeningRegister(_, _, _))
            .WillOnce(Invoke([&](const DrelRequestParcel&, const std::shared_ptr<IDrelCallback>& cb,
                                 int32_t* handle) {
                serviceThread = std::this_thread::get_id();
                remoteInService = cb->isRemote();
                DrelRequestData report;
                report.resId = 7;
                report.resPath = "/p";
                EXPECT_TRUE(cb->onCallback({report}).isOk());
                // A non-oneway call: the report has been handled before onCallback returned.
                EXPECT_EQ(1u, callback->received.size());
                *handle = 3;
                return ::ndk::ScopedAStatus::ok();
            }));
    int32_t handle = 0;
    ASSERT_TRUE(drel->listeningRegister(DrelRequestParcel{}, callback, &handle).isOk());
    EXPECT_TRUE(remoteInService) << "a callback reaches the service as a proxy";
    EXPECT_NE(std::this_thread::get_id(), callback->thread);
    EXPECT_NE(serviceThread, callback->thread);
    ASSERT_EQ(1u, callback->received.size());
    EXPECT_EQ(7, callback->received[0].resId);
    EXPECT_EQ(std::optional<std::string>("/p"), callback->received[0].resPath);
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

TEST_F(HostBinderTest, DeathIsDeliveredOnceWithItsCookieAndLaterCallsFail) {
    DeathRecord deaths;
    gDeaths = &deaths;
    std::shared_ptr<IDrel> drel = connect();
    ::ndk::ScopedAIBinder_DeathRecipient recipient(AIBinder_DeathRecipient_new(recordDeath));
    int cookieA = 0, cookieB = 0;
    ASSERT_EQ(STATUS_OK, AIBinder_linkToDeath(drel->asBinder().get(), recipient.get(), &cookieA));
    ASSERT_EQ(STATUS_OK, AIBinder_linkToDeath(drel->asBinder().get(), recipient.get(), &cookieB));
    EXPECT_TRUE(AIBinder_isAlive(drel->asBinder().get()));

    killService();
    EXPECT_EQ((std::vector<void*>{&cookieA, &cookieB}), deaths.cookies);
    for (auto id : deaths.threads) EXPECT_NE(std::this_thread::get_id(), id);
    EXPECT_FALSE(AIBinder_isAlive(drel->asBinder().get()));
    EXPECT_EQ(STATUS_DEAD_OBJECT, drel->init().getStatus());
    EXPECT_EQ(STATUS_DEAD_OBJECT,
              AIBinder_linkToDeath(drel->asBinder().get(), recipient.get(), &cookieA));
    EXPECT_EQ(nullptr, AServiceManager_checkService(kInstance));
    EXPECT_TRUE(AServiceManager_isDeclared(kInstance)) << "a dead service stays declared";
    gDeaths = nullptr;
}

TEST_F(HostBinderTest, DeletingARecipientDropsItsLinks) {
    DeathRecord deaths;
    gDeaths = &deaths;
    std::shared_ptr<IDrel> drel = connect();
    AIBinder_DeathRecipient* recipient = AIBinder_DeathRecipient_new(recordDeath);
    ASSERT_EQ(STATUS_OK, AIBinder_linkToDeath(drel->asBinder().get(), recipient, nullptr));
    EXPECT_EQ(STATUS_NAME_NOT_FOUND,
              AIBinder_unlinkToDeath(drel->asBinder().get(), recipient, &deaths));
    AIBinder_DeathRecipient_delete(recipient);
    killService();
    EXPECT_TRUE(deaths.cookies.empty());
    gDeaths = nullptr;
}

TEST_F(HostBinderTest, LinkToDeathRefusesLocalBindersAndNullArguments) {
    auto callback = ::ndk::SharedRefBase::make<RecordingCallback>();
    ::ndk::ScopedAIBinder_DeathRecipient recipient(AIBinder_DeathRecipient_new(recordDeath));
    ::ndk::SpAIBinder local = callback->asBinder();
    EXPECT_FALSE(AIBinder_isRemote(local.get()));
    EXPECT_EQ(STATUS_INVALID_OPERATION,
              AIBinder_linkToDeath(local.get(), recipient.get(), nullptr));
    EXPECT_EQ(STATUS_UNEXPECTED_NULL, AIBinder_linkToDeath(nullptr, recipient.get(), nullptr));
    EXPECT_EQ(STATUS_UNEXPECTED_NULL, AIBinder_linkToDeath(local.get(), nullptr, nullptr));
    EXPECT_EQ(nullptr, AIBinder_DeathRecipient_new(nullptr));
}

TEST_F(HostBinderTest, WaitForServiceBlocksUntilTheServiceIsAdded) {
    hostbinder::reset();
    hostbinder::declareService(kInstance);
    EXPECT_EQ(nullptr, AServiceManager_checkService(kInstance)) << "checkService never blocks";
    auto waited = std::async(std::launch::async, [] {
        return ::ndk::SpAIBinder(AServiceManager_waitForService(kInstance));
    });
    EXPECT_EQ(std::future_status::timeout, waited.wait_for(std::chrono::milliseconds(100)));
    startService();
    ::ndk::SpAIBinder binder = waited.get();
    ASSERT_NE(nullptr, binder.get());
    EXPECT_TRUE(AIBinder_isRemote(binder.get()));
}

TEST_F(HostBinderTest, LookupsAreCountedAndResetClearsEverything) {
    hostbinder::reset();
    EXPECT_EQ(0, hostbinder::serviceManagerCalls());
    hostbinder::declareService("a/x");
    EXPECT_TRUE(AServiceManager_isDeclared("a/x"));
    EXPECT_FALSE(AServiceManager_isDeclared("b/x"));
    EXPECT_EQ(nullptr, AServiceManager_checkService("a/x"));
    EXPECT_EQ(3, hostbinder::serviceManagerCalls());
    hostbinder::reset();
    EXPECT_EQ(0, hostbinder::serviceManagerCalls());
    EXPECT_FALSE(AServiceManager_isDeclared("a/x"));
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
    EXPECT_TRUE(::ndk::ScopedAStatus::fromStatus(STATUS_OK).isOk());
    ::ndk::ScopedAStatus dead = ::ndk::ScopedAStatus::fromStatus(STATUS_DEAD_OBJECT);
    EXPECT_EQ(EX_TRANSACTION_FAILED, dead.getExceptionCode());
    EXPECT_EQ(-32, dead.getStatus());
    EXPECT_EQ(0, dead.getServiceSpecificError());
    EXPECT_EQ(STATUS_UNKNOWN_ERROR, ::ndk::ScopedAStatus::fromStatus(-12345).getStatus());
    ::ndk::ScopedAStatus specific = ::ndk::ScopedAStatus::fromServiceSpecificError(9);
    EXPECT_EQ(-8, specific.getExceptionCode());
    EXPECT_EQ(0, specific.getStatus());
    EXPECT_EQ(EX_TRANSACTION_FAILED,
              ::ndk::ScopedAStatus::fromExceptionCode(-1000).getExceptionCode());
    EXPECT_EQ("Status(-8, EX_SERVICE_SPECIFIC): '9: '", specific.getDescription());
}

}  // namespace
}  // namespace qel_test
