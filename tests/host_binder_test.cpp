// The host binder runtime does what the device's does where the library and generated code rely
// on it: the threads of calls into the client and the pool, death, references, parcel layout.

#include <aidl/vendor/quarn/hardware/drel/BnDrelCallback.h>
#include <aidl/vendor/quarn/hardware/drel/IDrel.h>
#include <android/binder_parcel_utils.h>

#include <atomic>
#include <cstring>
#include <functional>
#include <thread>

#include "support/service_fixture.h"

namespace qel_test {
namespace {

using ::aidl::vendor::quarn::hardware::drel::BnDrelCallback;
using ::aidl::vendor::quarn::hardware::drel::IDrel;
using ::testing::_;
using ::testing::Invoke;
using Strings = std::optional<std::vector<std::optional<std::string>>>;

// Records the thread and data of each call; `onCall`, when set, runs inside the call.
struct RecordingCallback : BnDrelCallback {
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
    return IDrel::fromBinder(::ndk::SpAIBinder(AServiceManager_checkService(kInstance)));
}

class HostBinderTest : public ServiceFixture {};

std::mutex gDeathMutex;
std::vector<std::pair<void*, std::thread::id>> gDeaths;  // cookie, thread
void recordDeath(void* cookie) {
    std::lock_guard<std::mutex> l(gDeathMutex);
    gDeaths.emplace_back(cookie, std::this_thread::get_id());
}

// Calls into a client object from inside its caller's call run on the caller's thread, also one
// level deeper; from the service's own thread on a binder thread, the service waiting. A death runs
// each live link once (one proxy's in link order, on one binder thread) and drops its references.
TEST_F(HostBinderTest, CallsIntoTheClientAndDeathsRunOnTheirThreadsAndDeathReleasesObjects) {
    std::shared_ptr<IDrel> drel = connect();
    ASSERT_TRUE(drel && drel->isRemote());
    auto callback = ::ndk::SharedRefBase::make<RecordingCallback>();
    std::weak_ptr<RecordingCallback> weak = callback;
    ::ndk::SpAIBinder local = callback->asBinder();
    EXPECT_EQ(local.get(), callback->asBinder().get()) << "one object, one live binder";
    std::shared_ptr<IDrelCallback> kept;
    std::thread::id serviceThread;
    EXPECT_CALL(*service, listeningRegister(_, _, _)).WillOnce(Invoke([&](auto&, auto& cb, auto*) {
        kept = cb;
        DrelRequestData report;
        report.resPath = "/p";
        EXPECT_TRUE(cb->onCallback({report}).isOk());
        std::thread([&] {
            serviceThread = std::this_thread::get_id();
            EXPECT_TRUE(cb->onCallback({}).isOk());
            EXPECT_EQ(3u, callback->received.size()) << "the service waits for the call";
        }).join();
        return ::ndk::ScopedAStatus::ok();
    }));
    EXPECT_CALL(*service, init()).WillOnce(Invoke([&] { return kept->onCallback({}); }));
    callback->onCall = [&] {
        callback->onCall = nullptr;
        EXPECT_TRUE(drel->init().isOk());
    };
    int32_t handle = 0;
    ASSERT_TRUE(drel->listeningRegister(DrelRequestParcel{}, callback, &handle).isOk());
    ASSERT_EQ(3u, callback->threads.size());
    const std::thread::id caller = std::this_thread::get_id(), binderThread = callback->threads[2];
    EXPECT_EQ((std::vector{caller, caller, binderThread}), callback->threads);
    EXPECT_NE(caller, binderThread);
    EXPECT_NE(serviceThread, binderThread);
    EXPECT_EQ(std::optional<std::string>("/p"), callback->received[0].at(0).resPath);
    callback.reset();
    local = nullptr;
    EXPECT_FALSE(weak.expired()) << "the service's proxy keeps the client object";

    gDeaths.clear();
    AIBinder* binder = drel->asBinder().get();
    ::ndk::ScopedAIBinder_DeathRecipient recipient(AIBinder_DeathRecipient_new(recordDeath));
    AIBinder_DeathRecipient* deleted = AIBinder_DeathRecipient_new(recordDeath);
    int cookies[3] = {};
    const std::vector<void*> linked = {&cookies[0], &cookies[1], &cookies[2]};
    for (void* cookie : linked) {
        ASSERT_EQ(STATUS_OK, AIBinder_linkToDeath(binder, recipient.get(), cookie));
        ASSERT_EQ(STATUS_OK, AIBinder_linkToDeath(binder, deleted, &binder));
    }
    EXPECT_EQ(STATUS_NAME_NOT_FOUND, AIBinder_unlinkToDeath(binder, recipient.get(), &binder));
    AIBinder_DeathRecipient_delete(deleted);  // drops its links
    killService();
    ASSERT_EQ(3u, gDeaths.size());
    const std::thread::id deathThread = gDeaths[0].second;
    for (size_t i = 0; i < 3; ++i) EXPECT_EQ(std::make_pair(linked[i], deathThread), gDeaths[i]);
    EXPECT_NE(caller, deathThread);
    EXPECT_TRUE(weak.expired()) << "a dead process holds no references";
    EXPECT_EQ(STATUS_DEAD_OBJECT, kept->onCallback({}).getStatus());
    EXPECT_FALSE(AIBinder_isAlive(binder));
    EXPECT_EQ(STATUS_DEAD_OBJECT, drel->init().getStatus());
    EXPECT_EQ(STATUS_DEAD_OBJECT, AIBinder_linkToDeath(binder, recipient.get(), &cookies[0]));
    EXPECT_EQ(nullptr, AServiceManager_checkService(kInstance));
    EXPECT_TRUE(AServiceManager_isDeclared(kInstance)) << "a dead service stays declared";
}

// Without a binder thread pool a report from the service's own thread waits (one warning says
// why; waitIdle() does not wait for it) and arrives once the pool starts; a nested call needs no
// pool. Run in a fresh process, since every fixture starts this one's pool.
TEST(HostBinderDeathTest, AReportFromTheServicesThreadWaitsForThePoolAndArrivesOnceItStarts) {
#ifdef QEL_EMULATED
    GTEST_SKIP() << "an emulated process cannot exec the fresh process this test needs";
#endif
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    auto child = [] {
        LogCapture log;
        auto service = ::ndk::SharedRefBase::make<::testing::NiceMock<MockDrel>>();
        std::shared_ptr<IDrelCallback> kept;
        EXPECT_CALL(*service, thermalListeningRegister(_, _, _))
                .WillOnce(Invoke([&](auto&, auto& cb, auto*) {
                    kept = cb;
                    return cb->onCallback({});  // nested
                }));
        bool ok = AServiceManager_addService(service->asBinder().get(), kInstance) == EX_NONE;
        auto callback = ::ndk::SharedRefBase::make<RecordingCallback>();
        int32_t handle = 0;
        ok = connect()->thermalListeningRegister({1}, callback, &handle).isOk() && ok;
        std::atomic<bool> answered{false};
        std::thread reporter([&] {
            ok = kept->onCallback({}).isOk() && ok;
            answered = true;
        });
        const LogLine warning{ANDROID_LOG_WARN, "hostbinder",
                              "a call into this process waits for a binder thread pool: call "
                              "ABinderProcess_startThreadPool()"};
        while (!log.contains(warning) && !answered) std::this_thread::yield();
        hostbinder::waitIdle();
        const bool waited = !answered && callback->received.size() == 1;
        ABinderProcess_startThreadPool();
        reporter.join();
        std::_Exit(!ok ? 1 : !waited ? 2 : callback->received.size() != 2 ? 3 : 0);
    };
    EXPECT_EXIT(child(), ::testing::ExitedWithCode(0), "");
}

// Hands out exactly the bytes asked for, so that ASan catches a write past them.
bool exactAllocator(void* data, int32_t length, char** buffer) {
    auto* read = static_cast<std::pair<int32_t, std::unique_ptr<char[]>>*>(data);
    read->first = length;
    if (length > 0) read->second.reset(*buffer = new char[length]);
    return true;
}

TEST(HostParcelTest, StringAllocatorsAreAskedForTheLengthWithTheTerminator) {
    const std::string longText(300, 'x');
    const std::pair<const char*, int32_t> rows[] = {{"", 1},
                                                    {"abc", 4},
                                                    {longText.c_str(), 301},
                                                    {"\u00e9\u20ac\U0001F600", 10},
                                                    {nullptr, -1}};
    for (const auto& [text, asked] : rows) {
        ::ndk::ScopedAParcel parcel(AParcel_create());
        const int32_t length = text ? static_cast<int32_t>(std::strlen(text)) : -1;
        ASSERT_EQ(STATUS_OK, AParcel_writeString(parcel.get(), text, length));
        AParcel_setDataPosition(parcel.get(), 0);
        std::pair<int32_t, std::unique_ptr<char[]>> read;
        ASSERT_EQ(STATUS_OK, AParcel_readString(parcel.get(), &read, exactAllocator));
        EXPECT_EQ(asked, read.first);
        EXPECT_STREQ(text ? text : "", text ? read.second.get() : "");
    }
}

// The parcel's words as a device lays them out (arrays: length or -1, then elements; parcelables:
// present, then size; strings in UTF-16). A write at an earlier position overwrites in place. A
// length of -1 writes a null array whatever the data pointer is (aidl's helpers pass their own
// object's address), without asking for an element.
TEST(HostParcelTest, ValuesLieAtThePositionInTheDevicesLayout) {
    ::ndk::ScopedAParcel parcel(AParcel_create());
    AParcel* p = parcel.get();
    DrelRequestData data;
    data.resId = 8;
    const Strings strings{{"ab", std::nullopt}};
    ASSERT_EQ(STATUS_OK, ::ndk::AParcel_writeVector(p, std::vector<int32_t>{1, 2}));
    ASSERT_EQ(STATUS_OK, ::ndk::AParcel_writeVector(p, std::optional<std::vector<int32_t>>()));
    ASSERT_EQ(STATUS_OK, ::ndk::AParcel_writeVector(p, std::vector<DrelRequestData>{data}));
    ASSERT_EQ(STATUS_OK, ::ndk::AParcel_writeVector(p, strings));
    ASSERT_EQ(STATUS_OK, AParcel_writeBool(p, true));
    auto noString = [](const void*, size_t, int32_t*) -> const char* { return nullptr; };
    auto noRecord = [](AParcel*, const void*, size_t) -> binder_status_t { return STATUS_NO_INIT; };
    ASSERT_EQ(STATUS_OK, AParcel_writeInt32Array(p, &data.resId, -1));
    ASSERT_EQ(STATUS_OK, AParcel_writeStringArray(p, &strings, -1, noString));
    ASSERT_EQ(STATUS_OK, AParcel_writeParcelableArray(p, &data, -1, noRecord));
    const int32_t size = AParcel_getDataSize(p);
    AParcel_setDataPosition(p, 0);
    ASSERT_EQ(STATUS_OK, AParcel_writeInt32(p, 3));
    EXPECT_EQ(4, AParcel_getDataPosition(p));
    EXPECT_EQ(size, AParcel_getDataSize(p));
    AParcel_setDataPosition(p, 0);
    std::vector<int32_t> words(static_cast<size_t>(size) / 4);
    for (int32_t& word : words) ASSERT_EQ(STATUS_OK, AParcel_readInt32(p, &word));
    // clang-format off
    EXPECT_EQ(words, (std::vector<int32_t>{3, 1, 2, -1, 1, 1, 24, 8, 0, -1, -1, -1, 2, 2,
                                           0x00620061, 0, -1, 1, -1, -1, -1}));
    // clang-format on
    EXPECT_EQ(STATUS_OK, AParcel_setDataPosition(p, size + 8)) << "past the end is no error";
    EXPECT_EQ(STATUS_NOT_ENOUGH_DATA, AParcel_readInt32(p, &words[0]));
    EXPECT_EQ(STATUS_BAD_VALUE, AParcel_setDataPosition(p, -1));
    AParcel_setDataPosition(p, 16);
    std::vector<DrelRequestData> readData;
    Strings readStrings;
    EXPECT_EQ(STATUS_OK, ::ndk::AParcel_readVector(p, &readData));
    EXPECT_EQ(STATUS_OK, ::ndk::AParcel_readVector(p, &readStrings));
    EXPECT_EQ(std::vector<DrelRequestData>{data}, readData);
    EXPECT_EQ(strings, readStrings);
    std::optional<std::vector<int32_t>> ints{{1}};
    std::optional<std::vector<DrelRequestData>> records{{data}};
    AParcel_setDataPosition(p, size - 12);
    EXPECT_EQ(STATUS_OK, ::ndk::AParcel_readVector(p, &ints));
    EXPECT_EQ(STATUS_OK, ::ndk::AParcel_readVector(p, &readStrings));
    EXPECT_EQ(STATUS_OK, ::ndk::AParcel_readVector(p, &records));
    EXPECT_FALSE(ints || readStrings || records) << "null arrays read back as null";
}

// A reader takes the fields a record's size covers and moves to its end: an older reader skips a
// newer writer's field, a newer reader leaves the fields an older writer lacks at their defaults.
TEST(HostParcelTest, ReadersSkipOrDefaultTheFieldsOfOtherVersions) {
    DrelRequestData written;
    written.resId = 5;
    written.resPath = "/p";
    for (bool newer : {true, false}) {
        ::ndk::ScopedAParcel parcel(AParcel_create());
        AParcel* p = parcel.get();
        ASSERT_EQ(STATUS_OK, written.writeToParcel(p));
        if (newer) AParcel_writeInt32(p, 99);  // a field this reader does not know
        const int32_t end = newer ? AParcel_getDataPosition(p) : 12;  // older: resId, resParam
        AParcel_setDataPosition(p, 0);
        AParcel_writeInt32(p, end);
        AParcel_setDataPosition(p, end);
        AParcel_writeInt32(p, 42);
        AParcel_setDataPosition(p, 0);
        DrelRequestData read;
        int32_t next = 0;
        ASSERT_EQ(STATUS_OK, read.readFromParcel(p));
        EXPECT_EQ(STATUS_OK, AParcel_readInt32(p, &next));
        EXPECT_EQ(newer ? written.resPath : std::nullopt, read.resPath);
        EXPECT_EQ(std::make_pair(5, 42), std::make_pair(read.resId, next));
    }
}

}  // namespace
}  // namespace qel_test
