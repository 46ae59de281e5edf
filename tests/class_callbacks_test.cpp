// Callbacks end to end through the service: a caller's callback may call any operation of the
// library from inside a report, also one the service sends from inside the caller's own call
// (which binder runs on the caller's thread, holding the library's locks); one-shot clients leave
// request_callbacks and die with the service's last reference; registrations keep the caller's
// callback alive until they are unregistered. (Many threads at once, with the service reporting
// from inside their calls, are the chaos stress test's.)

#include <gtest/gtest.h>

#include <algorithm>
#include <ostream>
#include <thread>

#include "qel.h"
#include "support/class_fixture.h"

namespace qel_test {
namespace {

using ::testing::_;

class CallbackTest : public ClassApiFixture {
protected:
    void TearDown() override {
        keep(nullptr);  // the service drops the callback it kept
        ClassApiFixture::TearDown();
    }
    // The service keeps a callback, to report on it later from a thread of its own.
    void keep(const std::shared_ptr<IDrelCallback>& callback) {
        std::lock_guard<std::mutex> lock(mKeptMutex);
        mKept = callback;
    }
    void report(const std::vector<DrelRequestData>& data) {
        std::shared_ptr<IDrelCallback> kept;
        {
            std::lock_guard<std::mutex> lock(mKeptMutex);
            kept = mKept;
        }
        ASSERT_NE(nullptr, kept);
        std::thread([&] { EXPECT_TRUE(kept->onCallback(data).isOk()); }).join();
    }

    std::shared_ptr<RecordingCallback> callback = std::make_shared<RecordingCallback>();

private:
    std::mutex mKeptMutex;
    std::shared_ptr<IDrelCallback> mKept;
};

// How a report reaches the caller's callback, and what another thread does meanwhile: a reset
// after its failed call, which waits for the caller's hold of the connection lock, the service's
// death, or nothing.
enum class Arrival { InsideRegister, InsideRequest, FromAServiceThreadLater };
enum class Writer { Reset, Death, None };

struct ReentryCase {
    const char* name;
    Arrival arrival;
    Writer writer;
    bool flatConnected;  // the flat API was connected before the report
    // The outer call's result, then those of the calls from inside the report: a request, a
    // registration, a registration of the outer call's ids, an unregistration, a flat acquire.
    std::vector<int> results;
    std::vector<int> groups;  // the handles in callback_groups at the end
};

void PrintTo(const ReentryCase& c, std::ostream* os) {
    *os << c.name;
}

class ReentryTest : public CallbackTest, public ::testing::WithParamInterface<ReentryCase> {
protected:
    // Id 0x10 registers as 8, any other id as 9; a request with a callback answers 8, any other
    // 3; the outer call reports from inside itself when the case says so; release and
    // propertySet fail.
    void serve() {
        const Arrival arrival = GetParam().arrival;
        ON_CALL(*service, listeningRegister(_, _, _))
                .WillByDefault([this, arrival](const DrelRequestParcel& parcel,
                                               const std::shared_ptr<IDrelCallback>& cb,
                                               int32_t* handle) {
                    bool outer = parcel.resources.at(0).resId == 0x10;
                    if (outer && arrival == Arrival::FromAServiceThreadLater) keep(cb);
                    if (outer && arrival == Arrival::InsideRegister) {
                        EXPECT_TRUE(cb->onCallback({wireRecord(0x10, 0, "1")}).isOk());
                    }
                    *handle = outer ? 8 : 9;
                    return ::ndk::ScopedAStatus::ok();
                });
        ON_CALL(*service, request(_, _))
                .WillByDefault([arrival](const DrelRequestParcel& parcel, int32_t* result) {
                    if (parcel.callback != nullptr && arrival == Arrival::InsideRequest) {
                        EXPECT_TRUE(parcel.callback->onCallback({wireRecord(0x10, 0, "1")}).isOk());
                    }
                    *result = parcel.callback != nullptr ? 8 : 3;
                    return ::ndk::ScopedAStatus::ok();
                });
        ON_CALL(*service, listeningUnregister(9, _)).WillByDefault(ReturnResult(0));
        ON_CALL(*service, release(_, _)).WillByDefault(ReturnServiceError(1));
        ON_CALL(*service, propertySet(_, _, _)).WillByDefault(ReturnServiceError(1));
    }
    // Returns once the writer waits for the connection lock, or the service is dead.
    void startWriter() {
        if (GetParam().writer == Writer::None) return;
        if (GetParam().writer == Writer::Death) {
            std::thread([] { hostbinder::killService(kInstance); }).join();
            return;
        }
        writer = std::thread([] { drelHalclient::drelResCtlRelease(77); });
        while (log.count("drelResCtlRelease() failed: drel HAL service not available") == 0)
            std::this_thread::yield();
    }

    std::thread writer;
};

TEST_P(ReentryTest, ACallerCallbackMayCallAnyOperationFromInsideAReport) {
    const ReentryCase& c = GetParam();
    serve();
    if (c.flatConnected) {
        ASSERT_EQ(3, QelEventAcquire(1, "p", "i", 100, {}));
    }
    std::vector<int> results;
    int failed = 0;
    callback->onReport = [&] {
        startWriter();
        ResourceList list{Resource{0x30, "1"}}, ids{Resource{0x40, std::nullopt}},
                outerIds{Resource{0x10, std::nullopt}};
        auto other = std::make_shared<RecordingCallback>();
        results.push_back(drelHalclient::drelResCtlRequest(500, list, 0));
        results.push_back(drelHalclient::drelResListeningRegister(ids, 0, other));
        results.push_back(drelHalclient::drelResListeningRegister(outerIds, 0, other));
        results.push_back(drelHalclient::drelResListeningUnRegister(9));
        results.push_back(QelEventAcquire(1, "p", "i", 100, {}));
        failed = drelHalclient::drelPropertySet("p", "v");  // its reset waits for the outer call
    };
    ResourceList listened{Resource{0x10, "1"}};
    results.push_back(
            c.arrival == Arrival::InsideRequest
                    ? drelHalclient::drelResCtlRequest(1, 500, listened, -1, 0, 0, callback)
                    : drelHalclient::drelResListeningRegister(listened, 0, callback));
    std::rotate(results.begin(), results.end() - 1, results.end());  // the outer result first
    if (c.arrival == Arrival::FromAServiceThreadLater) report({wireRecord(0x10, 0, "5")});
    if (writer.joinable()) writer.join();
    if (c.writer == Writer::None) {
        EXPECT_FALSE(classConnected()) << "the nested failure's reset is made once the call ends";
    }

    EXPECT_EQ(c.results, results);
    EXPECT_EQ(-1, failed);
    EXPECT_EQ(1, log.count("drelPropertySet() failed: drel HAL service not available"));
    EXPECT_EQ(c.groups, groupHandles());
    EXPECT_EQ(1u, callback->reports().size());
    EXPECT_EQ(0u, parked().size()) << "a one-shot client answered inside its request is not lost";
    EXPECT_EQ(0, log.count("callback not found in request_callbacks"));
    // After a death the flat call fails dead or finds its proxy cleared, as its own death
    // notification has run or not.
    if (c.writer == Writer::Reset) {
        EXPECT_EQ(!c.flatConnected && c.arrival != Arrival::FromAServiceThreadLater,
                  log.contains({ANDROID_LOG_ERROR, std::string("[QEL_CLIENT]"),
                                "QelEventAcquire() failed: called from a report inside a binder "
                                "call of the other API while this connection is busy or not "
                                "connected"}));
    }
    hostbinder::waitIdle();
    if (c.writer == Writer::Death) {
        startService();
        serve();
    }
    ResourceList list{Resource{0x30, "1"}};
    EXPECT_EQ(3, drelHalclient::drelResCtlRequest(500, list, 0)) << "the next call reconnects";
}

// clang-format off
INSTANTIATE_TEST_SUITE_P(NestedOrNot, ReentryTest, ::testing::Values(
        ReentryCase{"ReportInsideRegisterWhileAResetWaits", Arrival::InsideRegister, Writer::Reset,
                    true, {8, 3, 9, -1, 0, 3}, {8}},
        ReentryCase{"AnswerInsideRequestWhileAResetWaits", Arrival::InsideRequest, Writer::Reset,
                    true, {8, 3, 9, 8, 0, 3}, {8}},
        ReentryCase{"ReportInsideRegisterWhileTheServiceDies", Arrival::InsideRegister,
                    Writer::Death, true, {-1, -1, -1, -1, -1, -1}, {}},
        ReentryCase{"AnswerInsideRequestWhileTheServiceDies", Arrival::InsideRequest,
                    Writer::Death, true, {-1, -1, -1, -1, -1, -1}, {}},
        ReentryCase{"ReportInsideRegisterWithNoOtherWriter", Arrival::InsideRegister,
                    Writer::None, true, {8, 3, 9, -1, 0, 3}, {8}},
        ReentryCase{"ReportInsideRegisterWithTheFlatApiNotConnected", Arrival::InsideRegister,
                    Writer::Reset, false, {8, 3, 9, -1, 0, -1}, {8}},
        ReentryCase{"ReportFromAServiceThreadAfterTheCall", Arrival::FromAServiceThreadLater,
                    Writer::Reset, false, {8, 3, 9, -1, 0, 3}, {8}}),
        [](const ::testing::TestParamInfo<ReentryCase>& info) { return info.param.name; });
// clang-format on

TEST_F(CallbackTest, ClientsLiveWhileTheirRegistryOrTheServiceHoldsThem) {
    ON_CALL(*service, request(_, _)).WillByDefault([&](const DrelRequestParcel& p, int32_t* r) {
        keep(p.callback);
        *r = 5;
        return ::ndk::ScopedAStatus::ok();
    });
    ON_CALL(*service, listeningRegister(_, _, _))
            .WillByDefault([&](const DrelRequestParcel&, const std::shared_ptr<IDrelCallback>& cb,
                               int32_t* handle) {
                keep(cb);
                *handle = 4;
                return ::ndk::ScopedAStatus::ok();
            });
    ON_CALL(*service, listeningUnregister(4, _)).WillByDefault(ReturnResult(0));
    const std::string destroyed = "ndk backend ~DrelCallbackClient";
    ResourceList list{Resource{0x10, "1"}};
    ASSERT_EQ(5, drelHalclient::drelResCtlRequest(1, 500, list, -1, 0, 0, callback));
    report({wireRecord(0x10, 0, "2"), wireRecord(0x20, 0, "")});
    EXPECT_EQ((ResourcePairs{{0x10, "2"}, {0x20, ""}}), pairsOf(callback->reports().at(0)));
    EXPECT_EQ(0u, parked().size());
    const std::vector<LogLine> lines = log.lines();
    EXPECT_TRUE(std::any_of(lines.begin(), lines.end(), [](const LogLine& line) {
        return !line.tag && line.message.rfind(
                                    "BnDrelCallback::logFunc NDK BACKEND "
                                    "method_name onCallback ",
                                    0) == 0;
    })) << "the stub's transaction log goes through printLog";
    EXPECT_EQ(0, log.count(destroyed)) << "the service still holds the one-shot client";

    std::weak_ptr<RecordingCallback> weak = callback;
    ASSERT_EQ(4, drelHalclient::drelResListeningRegister(list, 0, callback));
    hostbinder::waitIdle();
    EXPECT_TRUE(log.contains(cbInfo(destroyed))) << "the one-shot client dies with the service's "
                                                    "reference";
    callback.reset();
    report({wireRecord(0x10, 0, "3")});
    report({wireRecord(0x10, 0, "4")});
    ASSERT_NE(nullptr, weak.lock()) << "the registration keeps the caller's callback";
    EXPECT_EQ(3u, weak.lock()->reports().size());
    EXPECT_EQ((std::vector<int>{4}), groupHandles()) << "reports do not end a registration";
    EXPECT_EQ(0, drelHalclient::drelResListeningUnRegister(4));
    keep(nullptr);
    hostbinder::waitIdle();
    EXPECT_TRUE(weak.expired());
    EXPECT_EQ(2, log.count(destroyed));
}

}  // namespace
}  // namespace qel_test
