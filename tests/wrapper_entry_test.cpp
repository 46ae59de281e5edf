// The wrapper's event acquire and release, end to end: an event id text reaches the service as
// an event request with the action's command id, and the service's handle comes back.

#include <gtest/gtest.h>
#include <hostbinder/hostbinder.h>

#include "QelWrapper.h"
#include "support/service_fixture.h"

namespace qel_test {
namespace {

using ::testing::_;
using ::testing::DoAll;
using ::testing::SaveArg;

const std::string kWrapperTag = "[QEL_CLIENT_WRAPPER]";

using WrapperEntryTest = ServiceFixture;

TEST_F(WrapperEntryTest, AnEventIdReachesTheServiceAsAnEventRequestAndTheHandleComesBack) {
    struct Case {
        std::string eventId, scene, identity;
        int timeout, commandId;
        std::string logged;  // empty texts are logged as "none" but sent as they are
    };
    const Case cases[] = {
            {"PRAXEL_ACTION_COLD_LAUNCH", "com.quarn.camera", "uid:10123", 3000, 1,
             "[QelEventAcquireWrapper] eventId:PRAXEL_ACTION_COLD_LAUNCH, scene:com.quarn.camera, "
             "identity:uid:10123, timeout:3000"},
            {"PRAXEL_ACTION_LAUNCH", "", "", -1, 0,
             "[QelEventAcquireWrapper] eventId:PRAXEL_ACTION_LAUNCH, scene:none, identity:none, "
             "timeout:-1"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.eventId);
        log.clear();
        DrelRequestParcel parcel;
        EXPECT_CALL(*service, request(_, _)).WillOnce(DoAll(SaveArg<0>(&parcel), ReturnResult(77)));
        EXPECT_EQ(77, QelEventAcquireWrapper(c.eventId, c.scene, c.identity, c.timeout));
        EXPECT_EQ(8, parcel.requestType);
        ASSERT_EQ(1u, parcel.resources.size()) << "the command and no further resource";
        EXPECT_EQ(c.commandId, parcel.resources[0].resId);
        EXPECT_EQ(0, parcel.resources[0].resParam);
        EXPECT_EQ(std::optional<std::string>(c.scene), parcel.pkg);
        EXPECT_EQ(std::optional<std::string>(c.identity), parcel.identity);
        EXPECT_EQ(c.timeout, parcel.timeout);
        EXPECT_EQ(log.linesWithTag(kWrapperTag),
                  (std::vector<LogLine>{{ANDROID_LOG_INFO, kWrapperTag, c.logged}}));
    }
}

TEST_F(WrapperEntryTest, EveryNameResolvesToItsFirstPosition) {
    int sent = -1;
    ON_CALL(*service, request(_, _))
            .WillByDefault([&](const DrelRequestParcel& parcel, int32_t* handle) {
                sent = parcel.resources.empty() ? -2 : parcel.resources[0].resId;
                *handle = 1;
                return ::ndk::ScopedAStatus::ok();
            });
    auto commandIdSentFor = [&](const std::string& name) {
        sent = -1;
        EXPECT_EQ(1, QelEventAcquireWrapper("PRAXEL_" + name, "pkg", "id", 1)) << name;
        return sent;
    };
    // Names that repeat an earlier entry acquire the earlier position.
    EXPECT_EQ(78, commandIdSentFor("ACTION_CAMERA_STIKER_RECORD"));
    EXPECT_EQ(91, commandIdSentFor("ACTION_CAMERA_APS_CAPTURE_L1"));
    EXPECT_EQ(94, commandIdSentFor("ACTION_CAMERA_APS_CAPTURE_L4"));
    EXPECT_EQ(102, commandIdSentFor("ACTION_CAMERA_MULTI_SCENE"));
    EXPECT_EQ(120, commandIdSentFor("ACTION_CAMERA_PREVIEW_PORTAIT"));
    EXPECT_EQ(198, commandIdSentFor("ACTION_CAMERA_APS_INNER_THDR_CAPTURE_L1"));
    for (size_t i = 0; i < gActionList.size(); ++i) {
        size_t first = 0;
        while (gActionList[first] != gActionList[i]) ++first;
        ASSERT_EQ(static_cast<int>(first), commandIdSentFor(gActionList[i]));
    }
}

TEST_F(WrapperEntryTest, OnlyPraxelFollowedByAnExactNameAcquiresAndAFailureGivesMinusOne) {
    EXPECT_CALL(*service, request(_, _)).Times(0);
    for (const char* eventId : {
                 "",
                 "ACTION_COLD_LAUNCH",
                 "praxel_ACTION_COLD_LAUNCH",
                 "xPRAXEL_ACTION_COLD_LAUNCH",
                 "QWERTYUACTION_COLD_LAUNCH",  // seven other characters are not the prefix
                 "PRAXEL_ACTION_COLD_LAUNCHPRAXEL_",
                 "PRAXEL_ACTION_COLD_LAUNCH ",
                 "PRAXEL_action_cold_launch",
                 "PRAXEL_ACTION_CAMERA_STICKER_RECORD",
                 "PRAXEL_ACTION_CAMERA_PREVIEW_PORTRAIT",
                 "PRAXEL_",
                 "PRAXEL",
         }) {
        EXPECT_EQ(-1, QelEventAcquireWrapper(eventId, "pkg", "id", 100)) << eventId;
    }
    EXPECT_TRUE(log.contains({ANDROID_LOG_INFO, kWrapperTag,
                              "[QelEventAcquireWrapper] eventId:none, scene:pkg, identity:id, "
                              "timeout:100"}));
    ::testing::Mock::VerifyAndClearExpectations(service.get());
    EXPECT_CALL(*service, request(_, _)).WillOnce(ReturnServiceError(3));
    EXPECT_EQ(-1, QelEventAcquireWrapper("PRAXEL_ACTION_COLD_LAUNCH", "pkg", "id", 10));
}

TEST_F(WrapperEntryTest, ReleaseHandsTheHandleOnAndAlwaysReturnsZero) {
    EXPECT_CALL(*service, release(55, _)).WillOnce(ReturnResult(-1));
    EXPECT_EQ(0, QelReleaseWapper(55));
    EXPECT_CALL(*service, release(-3, _)).WillOnce(ReturnServiceError(1));
    EXPECT_EQ(0, QelReleaseWapper(-3));
    EXPECT_EQ(log.linesWithTag(kWrapperTag),
              (std::vector<LogLine>{{ANDROID_LOG_INFO, kWrapperTag, "[QelReleaseWapper] 55"},
                                    {ANDROID_LOG_INFO, kWrapperTag, "[QelReleaseWapper] -3"}}));
    hostbinder::reset();
    EXPECT_EQ(0, QelReleaseWapper(9)) << "no service at all";
}

}  // namespace
}  // namespace qel_test
