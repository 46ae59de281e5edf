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
using ::testing::SaveArg;

class FlatAcquireTest : public FlatFixture {
protected:
    void SetUp() override {
        FlatFixture::SetUp();
        // The service answers every request with 77 and keeps the last parcel.
        ON_CALL(*service, request(_, _)).WillByDefault(DoAll(SaveArg<0>(&sent), ReturnResult(77)));
    }
    DrelRequestParcel sent;
};

// An acquire's parcel: the kind, the records, the duration and both texts; nothing else set.
DrelRequestParcel acquireParcel(int32_t type, std::vector<DrelRequestData> records, int64_t timeout,
                                std::string pkg, std::string identity) {
    DrelRequestParcel parcel;
    parcel.requestType = type;
    parcel.resources = std::move(records);
    parcel.timeout = timeout;
    parcel.pkg = std::move(pkg);
    parcel.identity = std::move(identity);
    return parcel;
}

TEST_F(FlatAcquireTest, TheCommandIdSelectsTheRequestTypeAndLeadsTheRecordsOfAnEvent) {
    const struct {
        int cmdId;
        int32_t requestType;
        bool leadingRecord;
    } cases[] = {{5, 8, true},  {0, 8, true},   {-1, 8, true},
                 {-4, 8, true}, {-2, 1, false}, {-3, 12, false}};
    // Values go as they are, an absent one as a present empty text.
    const std::vector<QelClient::Resource> resources{{0x01011040, "1500"},
                                                     {0x01000100, std::nullopt}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.cmdId);
        EXPECT_EQ(77, QelEventAcquire(c.cmdId, "com.app", "ident", -5, resources));
        std::vector<DrelRequestData> records{wireRecord(0x01011040, 0, "1500"),
                                             wireRecord(0x01000100, 0, "")};
        if (c.leadingRecord) records.insert(records.begin(), wireRecord(c.cmdId));
        EXPECT_EQ(acquireParcel(c.requestType, records, -5, "com.app", "ident"), sent);
    }
}

TEST_F(FlatAcquireTest, ResAndPlatformResAcquireForwardTheirArgumentsAsCommands) {
    const std::vector<QelClient::Resource> resources{{0x01011040, "1"}};
    EXPECT_EQ(77, QelResAcquire(resources, 12345, "ident", 60));
    EXPECT_EQ(acquireParcel(1, {wireRecord(0x01011040, 0, "1")}, 60, "", "ident"), sent);
    EXPECT_EQ(77, QelPlatformResAcquire(resources, 12345, "ident", "com.pkg", 70));
    EXPECT_EQ(acquireParcel(12, {wireRecord(0x01011040, 0, "1")}, 70, "com.pkg", "ident"), sent);
    EXPECT_EQ(qelLines(),
              (std::vector<LogLine>{
                      qelLine(ANDROID_LOG_INFO, "QelResAcquire"),
                      qelLine(ANDROID_LOG_INFO,
                              "QelEventAcquire, cmdid:-2, pkg:none, identity:ident"),
                      qelLine(ANDROID_LOG_INFO, "QelPlatformResAcquire"),
                      qelLine(ANDROID_LOG_INFO,
                              "QelEventAcquire, cmdid:-3, pkg:com.pkg, identity:ident")}));
}

TEST_F(FlatAcquireTest, EmptyPackageAndIdentityAreSentEmptyButShownAsNone) {
    hostbinder::setTraceTags(ATRACE_TAG_ALWAYS);
    ASSERT_EQ(77, QelEventAcquire(7, "", "", 100, {}));
    EXPECT_EQ(acquireParcel(8, {wireRecord(7)}, 100, "", ""), sent);
    EXPECT_EQ(qelLines(),
              (std::vector<LogLine>{qelLine(ANDROID_LOG_INFO,
                                            "QelEventAcquire, cmdid:7, pkg:none, identity:none")}));
    EXPECT_EQ(hostbinder::traceMarkers(),
              sectionMarkers("QelEventAcquire  cmd_id:7 pkg:none identity:none duration:100"));
}

TEST_F(FlatAcquireTest, TraceMarkersAreWrittenOnlyWithTheAlwaysTagAndBeforeTheCall) {
    ON_CALL(*service, request(_, _)).WillByDefault([](auto&, int32_t* handle) {
        // The section is already closed when the service is called.
        *handle = static_cast<int32_t>(hostbinder::traceMarkers().size());
        return ndk::ScopedAStatus::ok();
    });
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
    hostbinder::setTraceTags(ATRACE_TAG_ALWAYS);
    const std::string pkg(2000, 'p');
    ASSERT_EQ(77, QelEventAcquire(4, pkg, "id", 1, {}));
    const std::string full = "QelEventAcquire  cmd_id:4 pkg:" + pkg + " identity:id duration:1";
    EXPECT_EQ(hostbinder::traceMarkers(), sectionMarkers(full.substr(0, 1023)));
    EXPECT_EQ(std::optional<std::string>(pkg), sent.pkg);
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
    const struct {
        std::vector<int> values;
        size_t records;
    } cases[] = {{{10, -20, 30}, 3}, {{}, 1}, {{0}, 1}};
    for (const auto& c : cases) {
        log.clear();
        EXPECT_EQ(77, QelNotify(11, -4, c.values));
        // Kind 10 and the records only: above all no tags, the values never reach the service.
        DrelRequestParcel expected;
        expected.requestType = 10;
        expected.resources.assign(c.records, wireRecord(11, -4));
        EXPECT_EQ(expected, sent) << c.values.size() << " values";
        EXPECT_EQ(qelLines(), std::vector<LogLine>{qelLine(ANDROID_LOG_INFO, "QelNotify enter")});
    }
}

}  // namespace
}  // namespace qel_test
