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

LogLine wrapperLine(const std::string& message) {
    return {ANDROID_LOG_INFO, kWrapperTag, message};
}

class WrapperEntryTest : public ServiceFixture {
protected:
    // Acquires eventId and returns the command id the service saw, or -1 when no request came.
    int commandIdSentFor(const std::string& eventId) {
        int sent = -1;
        EXPECT_CALL(*service, request(_, _))
                .Times(::testing::AtMost(1))
                .WillOnce([&](const DrelRequestParcel& parcel, int32_t* handle) {
                    if (!parcel.resources.empty()) sent = parcel.resources[0].resId;
                    *handle = 1;
                    return ::ndk::ScopedAStatus::ok();
                });
        QelEventAcquireWrapper(eventId, "pkg", "id", 1);
        ::testing::Mock::VerifyAndClearExpectations(service.get());
        return sent;
    }
};

TEST_F(WrapperEntryTest, AnEventIdReachesTheServiceAsAnEventRequestAndTheHandleComesBack) {
    DrelRequestParcel parcel;
    EXPECT_CALL(*service, request(_, _)).WillOnce(DoAll(SaveArg<0>(&parcel), ReturnResult(77)));
    EXPECT_EQ(77, QelEventAcquireWrapper("PRAXEL_ACTION_COLD_LAUNCH", "com.quarn.camera",
                                         "uid:10123", 3000));
    EXPECT_EQ(8, parcel.requestType);
    ASSERT_EQ(1u, parcel.resources.size()) << "the command and no further resource";
    EXPECT_EQ(1, parcel.resources[0].resId);
    EXPECT_EQ(0, parcel.resources[0].resParam);
    EXPECT_EQ(std::optional<std::string>("com.quarn.camera"), parcel.pkg);
    EXPECT_EQ(std::optional<std::string>("uid:10123"), parcel.identity);
    EXPECT_EQ(3000, parcel.timeout);
    EXPECT_EQ(log.linesWithTag(kWrapperTag),
              (std::vector<LogLine>{
                      wrapperLine("[QelEventAcquireWrapper] eventId:PRAXEL_ACTION_COLD_LAUNCH, "
                                  "scene:com.quarn.camera, identity:uid:10123, timeout:3000")}));
}

TEST_F(WrapperEntryTest, EmptySceneAndIdentityAreLoggedAsNoneButSentAsTheyAre) {
    DrelRequestParcel parcel;
    EXPECT_CALL(*service, request(_, _)).WillOnce(DoAll(SaveArg<0>(&parcel), ReturnResult(5)));
    EXPECT_EQ(5, QelEventAcquireWrapper("PRAXEL_ACTION_LAUNCH", "", "", -1));
    EXPECT_EQ(std::optional<std::string>(""), parcel.pkg);
    EXPECT_EQ(std::optional<std::string>(""), parcel.identity);
    EXPECT_EQ(-1, parcel.timeout);
    EXPECT_TRUE(log.contains(wrapperLine(
            "[QelEventAcquireWrapper] eventId:PRAXEL_ACTION_LAUNCH, scene:none, identity:none, "
            "timeout:-1")));
}

TEST_F(WrapperEntryTest, EveryNameResolvesToItsFirstPosition) {
    const std::pair<const char*, int> named[] = {
            {"ACTION_LAUNCH", 0},
            {"ACTION_CAMERA_STIKER_RECORD", 78},
            {"ACTION_CAMERA_APS_CAPTURE_L1", 91},
            {"ACTION_CAMERA_APS_CAPTURE_L4", 94},
            {"ACTION_CAMERA_MULTI_SCENE", 102},
            {"ACTION_CAMERA_PREVIEW_PORTAIT", 120},
            {"ACTION_CAMERA_APS_INNER_THDR_CAPTURE_L1", 198},
    };
    for (const auto& [name, id] : named) {
        EXPECT_EQ(id, commandIdSentFor(std::string("PRAXEL_") + name)) << name;
    }
    for (size_t i = 0; i < gActionList.size(); ++i) {
        size_t first = 0;
        while (gActionList[first] != gActionList[i]) ++first;
        ASSERT_EQ(static_cast<int>(first), commandIdSentFor("PRAXEL_" + gActionList[i]))
                << gActionList[i];
    }
}

TEST_F(WrapperEntryTest, OnlyPraxelFollowedByAnExactNameAcquires) {
    EXPECT_CALL(*service, request(_, _)).Times(0);
    const char* wrong[] = {
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
    };
    for (const char* eventId : wrong) {
        EXPECT_EQ(-1, QelEventAcquireWrapper(eventId, "pkg", "id", 100)) << eventId;
    }
}

TEST_F(WrapperEntryTest, AnEmptyEventIdIsLoggedAsNoneAndGivesMinusOne) {
    EXPECT_CALL(*service, request(_, _)).Times(0);
    EXPECT_EQ(-1, QelEventAcquireWrapper("", "", "", 0));
    EXPECT_EQ(log.linesWithTag(kWrapperTag),
              (std::vector<LogLine>{wrapperLine("[QelEventAcquireWrapper] eventId:none, "
                                                "scene:none, identity:none, timeout:0")}));
}

TEST_F(WrapperEntryTest, AFailedAcquireGivesMinusOne) {
    EXPECT_CALL(*service, request(_, _)).WillOnce(ReturnServiceError(3));
    EXPECT_EQ(-1, QelEventAcquireWrapper("PRAXEL_ACTION_COLD_LAUNCH", "pkg", "id", 10));
}

TEST_F(WrapperEntryTest, ReleaseHandsTheHandleOnAndAlwaysReturnsZero) {
    EXPECT_CALL(*service, release(55, _)).WillOnce(ReturnResult(-1));
    EXPECT_EQ(0, QelReleaseWapper(55));
    EXPECT_CALL(*service, release(-3, _)).WillOnce(ReturnServiceError(1));
    EXPECT_EQ(0, QelReleaseWapper(-3));
    EXPECT_EQ(log.linesWithTag(kWrapperTag),
              (std::vector<LogLine>{wrapperLine("[QelReleaseWapper] 55"),
                                    wrapperLine("[QelReleaseWapper] -3")}));
    hostbinder::reset();
    EXPECT_EQ(0, QelReleaseWapper(9)) << "no service at all";
}

}  // namespace
}  // namespace qel_test
