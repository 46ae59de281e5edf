// Event acquire, release and notify: the parcels they send, their log lines and trace markers.

#include <cutils/trace.h>
#include <gtest/gtest.h>
#include <hostbinder/hostbinder.h>

#include <string>
#include <vector>

#include "qel.h"
#include "support/flat_fixture.h"

namespace qel_test {
namespace {

using ::testing::_;
using ::testing::DoAll;
using ::testing::Invoke;
using ::testing::SaveArg;

class FlatAcquireTest : public FlatFixture {
protected:
    // The service answers every request with `handle` and keeps the last parcel.
    void captureRequests(int32_t handle) {
        ON_CALL(*service, request(_, _))
                .WillByDefault(DoAll(SaveArg<0>(&sent), ReturnResult(handle)));
    }
    DrelRequestParcel sent;
};

// The fields an acquire never sets stay at their defaults.
void expectUnsetFieldsEmpty(const DrelRequestParcel& parcel) {
    EXPECT_FALSE(parcel.flag);
    EXPECT_EQ(0, parcel.param3);
    EXPECT_EQ(0, parcel.param5);
    EXPECT_EQ(0, parcel.reqId);
    EXPECT_FALSE(parcel.tags.has_value());
    EXPECT_EQ(nullptr, parcel.callback);
    EXPECT_FALSE(parcel.intList.has_value());
}

struct CommandCase {
    int cmdId;
    int32_t requestType;
    bool leadingRecord;
};

class FlatAcquireCommandTest : public FlatAcquireTest,
                               public ::testing::WithParamInterface<CommandCase> {};

TEST_P(FlatAcquireCommandTest, SendsTheRequestTypeAndRecordsOfTheCommandId) {
    const CommandCase& c = GetParam();
    captureRequests(77);
    std::vector<QelClient::Resource> resources{{0x01011040, "1500"}, {0x01000100, std::nullopt}};
    EXPECT_EQ(77, QelEventAcquire(c.cmdId, "com.app", "ident", -5, resources));

    EXPECT_EQ(c.requestType, sent.requestType);
    std::vector<DrelRequestData> expected;
    if (c.leadingRecord) expected.push_back(wireRecord(c.cmdId));
    expected.push_back(wireRecord(0x01011040, 0, "1500"));
    expected.push_back(wireRecord(0x01000100, 0, ""));  // no value: present and empty
    EXPECT_EQ(expected, sent.resources);
    EXPECT_EQ(-5, sent.timeout) << "sign-extended";
    EXPECT_EQ(std::optional<std::string>("com.app"), sent.pkg);
    EXPECT_EQ(std::optional<std::string>("ident"), sent.identity);
    expectUnsetFieldsEmpty(sent);
}

INSTANTIATE_TEST_SUITE_P(CommandIds, FlatAcquireCommandTest,
                         ::testing::Values(CommandCase{5, 8, true}, CommandCase{0, 8, true},
                                           CommandCase{198, 8, true}, CommandCase{-1, 8, true},
                                           CommandCase{-4, 8, true}, CommandCase{-2, 1, false},
                                           CommandCase{-3, 12, false}));

TEST_F(FlatAcquireTest, EmptyPackageAndIdentityAreSentEmptyButShownAsNone) {
    captureRequests(1);
    hostbinder::setTraceTags(ATRACE_TAG_ALWAYS);
    ASSERT_EQ(1, QelEventAcquire(7, "", "", 100, {}));
    EXPECT_EQ(std::optional<std::string>(""), sent.pkg);
    EXPECT_EQ(std::optional<std::string>(""), sent.identity);
    EXPECT_EQ(qelLines(),
              (std::vector<LogLine>{qelLine(ANDROID_LOG_INFO,
                                            "QelEventAcquire, cmdid:7, pkg:none, identity:none")}));
    EXPECT_EQ(hostbinder::traceMarkers(),
              sectionMarkers("QelEventAcquire  cmd_id:7 pkg:none identity:none duration:100"));
}

TEST_F(FlatAcquireTest, TraceMarkersAreWrittenOnlyWithTheAlwaysTagAndBeforeTheCall) {
    ON_CALL(*service, request(_, _)).WillByDefault(Invoke([](auto&, int32_t* handle) {
        // The section is already closed when the service is called.
        *handle = static_cast<int32_t>(hostbinder::traceMarkers().size());
        return ndk::ScopedAStatus::ok();
    }));
    hostbinder::setTraceTags(ATRACE_TAG_ALWAYS);
    EXPECT_EQ(2, QelEventAcquire(12, "pkg", "who", 3000, {}));
    EXPECT_EQ(hostbinder::traceMarkers(),
              sectionMarkers("QelEventAcquire  cmd_id:12 pkg:pkg identity:who duration:3000"));

    for (uint64_t tags : {uint64_t{0}, ~uint64_t{ATRACE_TAG_ALWAYS}}) {
        hostbinder::clearTrace();
        hostbinder::setTraceTags(tags);
        QelEventAcquire(12, "pkg", "who", 3000, {});
        QelRelease(3);
        EXPECT_TRUE(hostbinder::traceMarkers().empty()) << "tags " << tags;
    }
}

TEST_F(FlatAcquireTest, TraceTextIsCutTo1023CharactersAndTheRequestIsNot) {
    captureRequests(9);
    hostbinder::setTraceTags(ATRACE_TAG_ALWAYS);
    const std::string pkg(2000, 'p');
    ASSERT_EQ(9, QelEventAcquire(4, pkg, "id", 1, {}));
    const std::string full = "QelEventAcquire  cmd_id:4 pkg:" + pkg + " identity:id duration:1";
    EXPECT_EQ(hostbinder::traceMarkers(), sectionMarkers(full.substr(0, 1023)));
    EXPECT_EQ(std::optional<std::string>(pkg), sent.pkg);
}

TEST_F(FlatAcquireTest, ResAcquireAndPlatformResAcquireForwardTheirArgumentsInOrder) {
    captureRequests(4);
    std::vector<QelClient::Resource> resources{{0x01011040, "1"}};
    EXPECT_EQ(4, QelResAcquire(resources, 12345, "ident", 60));
    EXPECT_EQ(1, sent.requestType);
    EXPECT_EQ(std::optional<std::string>(""), sent.pkg);
    EXPECT_EQ(std::optional<std::string>("ident"), sent.identity);
    EXPECT_EQ(60, sent.timeout);
    EXPECT_EQ(std::vector<DrelRequestData>{wireRecord(0x01011040, 0, "1")}, sent.resources);

    EXPECT_EQ(4, QelPlatformResAcquire(resources, 12345, "ident", "com.pkg", 70));
    EXPECT_EQ(12, sent.requestType);
    EXPECT_EQ(std::optional<std::string>("com.pkg"), sent.pkg);
    EXPECT_EQ(std::optional<std::string>("ident"), sent.identity);
    EXPECT_EQ(70, sent.timeout);
    EXPECT_EQ(std::vector<DrelRequestData>{wireRecord(0x01011040, 0, "1")}, sent.resources);

    EXPECT_EQ(qelLines(),
              (std::vector<LogLine>{
                      qelLine(ANDROID_LOG_INFO, "QelResAcquire"),
                      qelLine(ANDROID_LOG_INFO,
                              "QelEventAcquire, cmdid:-2, pkg:none, identity:ident"),
                      qelLine(ANDROID_LOG_INFO, "QelPlatformResAcquire"),
                      qelLine(ANDROID_LOG_INFO,
                              "QelEventAcquire, cmdid:-3, pkg:com.pkg, identity:ident")}));
}

TEST_F(FlatAcquireTest, AFailedAcquireLogsTheResetThenTheRequestError) {
    EXPECT_CALL(*service, request(_, _)).WillOnce(ReturnServiceError(2));
    EXPECT_EQ(-1, QelEventAcquire(1, "p", "i", 1, {}));
    EXPECT_EQ(qelLines(),
              (std::vector<LogLine>{
                      qelLine(ANDROID_LOG_INFO, "QelEventAcquire, cmdid:1, pkg:p, identity:i"),
                      qelLine(ANDROID_LOG_ERROR,
                              "QelEventAcquire() failed : drel HAL service not available"),
                      qelLine(ANDROID_LOG_ERROR, "drelResCtlRequest error:-1")}));
    EXPECT_FALSE(qelConnected());
}

TEST_F(FlatAcquireTest, ReleaseTracesLogsAndReleasesTheHandle) {
    EXPECT_CALL(*service, release(42, _)).WillOnce(ReturnResult(0));
    hostbinder::setTraceTags(ATRACE_TAG_ALWAYS);
    QelRelease(42);
    EXPECT_EQ(hostbinder::traceMarkers(), sectionMarkers("QelRelease: 42"));
    EXPECT_EQ(qelLines(), std::vector<LogLine>{qelLine(ANDROID_LOG_INFO, "QelRelease, handle:42")});
    EXPECT_TRUE(qelConnected());
}

TEST_F(FlatAcquireTest, NotifySendsOneIdenticalRecordPerValueAndNoTags) {
    ON_CALL(*service, request(_, _)).WillByDefault(DoAll(SaveArg<0>(&sent), ReturnResult(6)));
    struct Case {
        std::vector<int> values;
        size_t records;
    };
    for (const Case& c : {Case{{10, -20, 30}, 3}, Case{{}, 1}, Case{{0}, 1}}) {
        sent = DrelRequestParcel();
        log.clear();
        EXPECT_EQ(6, QelNotify(11, -4, c.values));
        EXPECT_EQ(10, sent.requestType);
        EXPECT_EQ(std::vector<DrelRequestData>(c.records, wireRecord(11, -4)), sent.resources)
                << c.values.size() << " values";
        EXPECT_EQ(0, sent.timeout);
        EXPECT_FALSE(sent.pkg.has_value());
        EXPECT_FALSE(sent.identity.has_value());
        expectUnsetFieldsEmpty(sent);  // tags above all: the values never reach the service
        EXPECT_EQ(qelLines(), std::vector<LogLine>{qelLine(ANDROID_LOG_INFO, "QelNotify enter")});
    }
}

}  // namespace
}  // namespace qel_test
