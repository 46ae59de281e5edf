// Listening registrations by id and by thermal subsystem, their unregistration, thermal
// notification and state queries.

#include <gtest/gtest.h>

#include "support/class_fixture.h"

namespace qel_test {
namespace {

using ::testing::_;
using ::testing::DoAll;
using ::testing::SaveArg;

const LogLine kRegistered = info("A callback has been registered to Drel HAL ");
const LogLine kSame = error("Same callback interface registered already");

class ListeningTest : public ClassApiFixture {
protected:
    void SetUp() override {
        ClassApiFixture::SetUp();
        ON_CALL(*service, listeningRegister(_, _, _)).WillByDefault(ReturnResult3(1));
    }
    std::vector<std::vector<int>> groupIds() {
        std::lock_guard<std::mutex> lock(callback_group_mutex);
        std::vector<std::vector<int>> ids;
        for (const DrelCallbackGroup& group : callback_groups) ids.push_back(group.ids);
        return ids;
    }

    std::shared_ptr<RecordingCallback> callback = std::make_shared<RecordingCallback>();
};

TEST_F(ListeningTest, RegisterSendsTheResourcesAndKeepsAGroupWithTheServiceHandle) {
    DrelRequestParcel sent;
    std::shared_ptr<IDrelCallback> sentCallback;
    EXPECT_CALL(*service, listeningRegister(_, _, _))
            .WillOnce(DoAll(SaveArg<0>(&sent), SaveArg<1>(&sentCallback), ReturnResult3(77)));
    ResourceList list{res(0x10, "1"), res(0x20, "2")};

    EXPECT_EQ(77, drelHalclient::drelResListeningRegister(list, 9, callback));

    DrelRequestParcel expected;
    expected.param5 = 9;
    expected.resources = {wireRes(0x10, "1"), wireRes(0x20, "2")};
    EXPECT_EQ(expected, sent);
    EXPECT_NE(nullptr, sentCallback);
    {
        std::lock_guard<std::mutex> lock(callback_group_mutex);
        ASSERT_EQ(1u, callback_groups.size());
        const DrelCallbackGroup& group = callback_groups[0];
        EXPECT_EQ((std::vector<int>{0x10, 0x20}), group.ids);
        EXPECT_TRUE(group.paths.empty());
        EXPECT_EQ(77, group.handle);
        ASSERT_NE(nullptr, group.client);
        EXPECT_EQ(callback, group.client->clientCallback);
        EXPECT_TRUE(group.client->is_register);
        EXPECT_FALSE(group.client->by_path);
    }
    EXPECT_EQ(log.lines(), (std::vector<LogLine>{info("drelResListeningRegister"), kRegistered}));
    EXPECT_EQ(0u, parkedCount());
}

TEST_F(ListeningTest, OnlyAnEqualIdListInTheSameOrderIsADuplicate) {
    EXPECT_CALL(*service, listeningRegister(_, _, _)).Times(5).WillRepeatedly(ReturnResult3(1));
    ResourceList first{res(0x10, "1"), res(0x20, "2")};
    ASSERT_EQ(1, drelHalclient::drelResListeningRegister(first, 0, callback));

    struct Case {
        ResourceList list;
        bool duplicate;
    };
    Case cases[] = {
            {{res(0x10, "9"), res(0x20, "9")}, true},  // values play no part
            {{res(0x20, "2"), res(0x10, "1")}, false},
            {{res(0x10, "1")}, false},
            {{res(0x10, "1"), res(0x20, "2"), res(0x30, "3")}, false},
            {{}, false},
            {{}, true},  // the empty list registered just before
    };
    auto other = std::make_shared<RecordingCallback>();
    for (Case& c : cases) {
        log.clear();
        int handle = drelHalclient::drelResListeningRegister(c.list, 0, other);
        EXPECT_EQ(c.duplicate ? -1 : 1, handle);
        EXPECT_EQ(c.duplicate, log.contains(kSame));
    }
    EXPECT_EQ(5u, groupIds().size());
}

TEST_F(ListeningTest, AnEmptyIdListMatchesAPathRegistration) {
    ASSERT_EQ(1, drelHalclient::drel_res_listening_register_by_path(
                         {"/a"}, 0, std::make_shared<RecordingPathCallback>()));
    EXPECT_CALL(*service, listeningRegister(_, _, _)).Times(0);
    ResourceList empty;
    EXPECT_EQ(-1, drelHalclient::drelResListeningRegister(empty, 0, callback));
    EXPECT_TRUE(log.contains(kSame));
}

TEST_F(ListeningTest, AFailedRegistrationKeepsNoGroupAndReportsUnderTheMapName) {
    EXPECT_CALL(*service, listeningRegister(_, _, _)).WillOnce(ReturnServiceError(1));
    ResourceList list{res(0x10, "1")};
    EXPECT_EQ(-1, drelHalclient::drelResListeningRegister(list, 0, callback));
    EXPECT_TRUE(groupIds().empty());
    EXPECT_EQ(log.linesWithTag(kRequestTag),
              (std::vector<LogLine>{
                      info("drelResListeningRegister"),
                      error("drel_res_listening_register_map() failed: drel HAL service not "
                            "available")}));
    std::shared_lock<std::shared_timed_mutex> lock(g_drel_hal_lock);
    EXPECT_EQ(nullptr, g_drel_hal);
}

TEST_F(ListeningTest, UnregisterRemovesEveryGroupOfTheHandleAndKeepsTheOthersInOrder) {
    EXPECT_CALL(*service, listeningRegister(_, _, _))
            .WillOnce(ReturnResult3(5))
            .WillOnce(ReturnResult3(6))
            .WillOnce(ReturnResult3(5))
            .WillOnce(ReturnResult3(7));
    for (int id : {1, 2, 3, 4}) {
        ResourceList list{res(id, "1")};
        drelHalclient::drelResListeningRegister(list, 0, callback);
    }
    EXPECT_CALL(*service, listeningUnregister(5, _)).WillOnce(ReturnResult(0));
    log.clear();

    EXPECT_EQ(0, drelHalclient::drelResListeningUnRegister(5));

    EXPECT_EQ((std::vector<std::vector<int>>{{2}, {4}}), groupIds());
    EXPECT_EQ((std::vector<int>{6, 7}), groupHandles());
    EXPECT_EQ(
            log.linesWithTag(kRequestTag),
            (std::vector<LogLine>{info("drel client drelResListeningUnRegister"),
                                  info("a callback has been unregistered to Drel HAL handle 5"),
                                  info("a callback has been unregistered to Drel HAL handle 5")}));
}

TEST_F(ListeningTest, UnregisterOfAnUnknownHandleStillAsksTheService) {
    EXPECT_CALL(*service, listeningUnregister(8, _)).WillOnce(ReturnResult(3));
    EXPECT_EQ(3, drelHalclient::drelResListeningUnRegister(8));
    EXPECT_EQ(log.lines(), (std::vector<LogLine>{info("drel client drelResListeningUnRegister"),
                                                 error("The callback was not registered before")}));
}

TEST_F(ListeningTest, UnregisterRemovesTheGroupEvenWhenTheServiceFails) {
    ResourceList list{res(0x10, "1")};
    ASSERT_EQ(1, drelHalclient::drelResListeningRegister(list, 0, callback));
    EXPECT_CALL(*service, listeningUnregister(1, _)).WillOnce(ReturnServiceError(2));
    log.clear();

    EXPECT_EQ(-1, drelHalclient::drelResListeningUnRegister(1));

    EXPECT_TRUE(groupIds().empty());
    EXPECT_EQ(
            log.linesWithTag(kRequestTag),
            (std::vector<LogLine>{info("drel client drelResListeningUnRegister"),
                                  info("a callback has been unregistered to Drel HAL handle 1"),
                                  error("drelResListeningUnRegister() failed: drel HAL service not "
                                        "available")}));
}

TEST_F(ListeningTest, StateRequestAppendsTheReplyWholeAndCountsWhatWasThere) {
    DrelRequestParcel sent;
    DrelRequestData noValue;
    noValue.resId = 0x30;
    std::vector<DrelRequestData> reply{wireRes(0x10, "1,2"), wireRes(0x20, ""), noValue};
    EXPECT_CALL(*service, stateRequest(_, _))
            .WillOnce(DoAll(SaveArg<0>(&sent), ReturnResult(reply)));
    ResourceList query{res(0x10, "1"), res(0)};
    ResourceList states{res(1, "a"), res(2, "b")};

    EXPECT_EQ(5, drelHalclient::drelResStateRequest(query, 4, states));

    DrelRequestParcel expected;
    expected.param5 = 4;
    expected.resources = {wireRes(0x10, "1"), wireRes(0, "")};
    EXPECT_EQ(expected, sent);
    EXPECT_EQ((ResourcePairs{{1, "a"}, {2, "b"}, {0x10, "1,2"}, {0x20, ""}, {0x30, ""}}),
              asPairs(states));
    EXPECT_EQ(log.lines(), (std::vector<LogLine>{info("drel client drelResStateRequest"),
                                                 info("drel client hal drelResStateRequest"),
                                                 info("drel client drelResStateRequest size 5")}));
}

TEST_F(ListeningTest, StateRequestWithAnEmptyReplyOrAFailureLeavesStatesAlone) {
    EXPECT_CALL(*service, stateRequest(_, _)).WillOnce(ReturnOk()).WillOnce(ReturnServiceError(1));
    ResourceList query{res(0x10, "1")};
    ResourceList states{res(1, "a")};
    EXPECT_EQ(-1, drelHalclient::drelResStateRequest(query, 0, states));
    EXPECT_EQ(-1, drelHalclient::drelResStateRequest(query, 0, states));
    EXPECT_EQ((ResourcePairs{{1, "a"}}), asPairs(states));
    EXPECT_EQ(1, log.count("drelResStateRequest() failed: drel HAL service not available"));
}

TEST_F(ListeningTest, ThermalNotifySendsKindSevenAndRefusesUnpairedLevels) {
    DrelRequestParcel sent;
    EXPECT_CALL(*service, request(_, _)).WillOnce(DoAll(SaveArg<0>(&sent), ReturnResult(3)));
    ResourceList levels{res(0x1, "40"), res(0x2, "45")};
    EXPECT_EQ(3, drelHalclient::drelThermalNotify(levels, 6));
    DrelRequestParcel expected;
    expected.requestType = 7;
    expected.param5 = 6;
    expected.resources = {wireRes(0x1, "40"), wireRes(0x2, "45")};
    EXPECT_EQ(expected, sent);

    log.clear();
    ResourceList unpaired{res(0x1)};
    EXPECT_EQ(-1, drelHalclient::drelThermalNotify(unpaired, 6));
    EXPECT_EQ(log.lines(),
              (std::vector<LogLine>{
                      info("drel client drelThermalNotify"),
                      error("drelThermalNotify ERROR: size unmatched for id and level ")}));
}

TEST_F(ListeningTest, ThermalRegistrationsAreKeptWithoutADuplicateTestAndOutliveUnregister) {
    std::vector<int32_t> sentIds;
    std::shared_ptr<IDrelCallback> sentCallback;
    EXPECT_CALL(*service, thermalListeningRegister(_, _, _))
            .WillOnce(DoAll(SaveArg<0>(&sentIds), SaveArg<1>(&sentCallback), ReturnResult3(12)))
            .WillOnce(ReturnResult3(13));
    EXPECT_EQ(12, drelHalclient::drelThermalListeningRegister({3, 1}, callback));
    EXPECT_EQ(13, drelHalclient::drelThermalListeningRegister({3, 1}, callback));
    EXPECT_EQ((std::vector<int32_t>{3, 1}), sentIds);
    EXPECT_NE(nullptr, sentCallback);
    EXPECT_EQ((std::vector<std::vector<int>>{{3, 1}, {3, 1}}), groupIds());
    EXPECT_EQ(2, log.count("subsys's callback has been registered to Drel HAL"));
    EXPECT_EQ(2, log.count("drelThermalListeningRegister"));

    EXPECT_CALL(*service, thermalListeningUnregister(12, _)).WillOnce(ReturnResult(0));
    log.clear();
    EXPECT_EQ(0, drelHalclient::drelThermalListeningUnregister(12));
    EXPECT_EQ(log.lines(),
              (std::vector<LogLine>{info("drel client drelThermalListeningUnregister"),
                                    info("subsys's callback has been unRegistered to Drel HAL")}));
    EXPECT_EQ((std::vector<int>{12, 13}), groupHandles()) << "the group is not removed";

    EXPECT_CALL(*service, listeningUnregister(12, _)).WillOnce(ReturnResult(0));
    drelHalclient::drelResListeningUnRegister(12);
    EXPECT_EQ((std::vector<int>{13}), groupHandles());
}

TEST_F(ListeningTest, FailedCallsLogTheirOwnNames) {
    ON_CALL(*service, listeningUnregister(_, _)).WillByDefault(ReturnServiceError(1));
    ON_CALL(*service, request(_, _)).WillByDefault(ReturnServiceError(1));
    ON_CALL(*service, thermalListeningRegister(_, _, _)).WillByDefault(ReturnServiceError(1));
    ON_CALL(*service, thermalListeningUnregister(_, _)).WillByDefault(ReturnServiceError(1));
    ResourceList levels{res(0x1, "40")};
    const std::pair<const char*, std::function<int()>> table[] = {
            {"drelResListeningUnRegister",
             [] { return drelHalclient::drelResListeningUnRegister(1); }},
            {"drelThermalNotify", [&] { return drelHalclient::drelThermalNotify(levels, 0); }},
            {"drelThermalListeningRegister",
             [&] { return drelHalclient::drelThermalListeningRegister({1}, callback); }},
            {"drelThermalListeningUnregister",
             [] { return drelHalclient::drelThermalListeningUnregister(1); }},
    };
    for (const auto& [name, call] : table) {
        SCOPED_TRACE(name);
        log.clear();
        EXPECT_EQ(-1, call());
        EXPECT_TRUE(log.contains(
                error(std::string(name) + "() failed: drel HAL service not available")));
    }
    EXPECT_TRUE(groupIds().empty()) << "a failed thermal registration keeps no group";
}

}  // namespace
}  // namespace qel_test
