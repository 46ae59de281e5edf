// Listening registrations by id and by thermal subsystem, the duplicate test they share with the
// path registrations, their unregistration, thermal notification and state queries.

#include <gtest/gtest.h>

#include <functional>
#include <map>

#include "support/class_fixture.h"

namespace qel_test {
namespace {

using ::testing::_;
using ::testing::DoAll;
using ::testing::SaveArg;

class ListeningTest : public ClassApiFixture {
protected:
    std::vector<std::vector<int>> groupIds() {
        std::vector<std::vector<int>> ids;
        for (const Group& group : groups()) ids.push_back(group.ids);
        return ids;
    }

    std::shared_ptr<RecordingCallback> callback = std::make_shared<RecordingCallback>();
};

TEST_F(ListeningTest, RegisterSendsTheResourcesAndKeepsAGroupWithTheServiceHandle) {
    DrelRequestParcel sent;
    std::shared_ptr<IDrelCallback> sentCallback;
    EXPECT_CALL(*service, listeningRegister(_, _, _))
            .WillOnce(DoAll(SaveArg<0>(&sent), SaveArg<1>(&sentCallback), ReturnResult3(77)));
    ResourceList list{Resource{0x10, "1"}, Resource{0x20, "2"}};

    EXPECT_EQ(77, Hal::drelResListeningRegister(list, 9, callback));

    EXPECT_EQ(queryParcel(9, {wireRecord(0x10, 0, "1"), wireRecord(0x20, 0, "2")}), sent);
    EXPECT_NE(nullptr, sentCallback);
    std::vector<Group> kept = groups();
    ASSERT_EQ(1u, kept.size());
    EXPECT_EQ((std::vector<int>{0x10, 0x20}), kept[0].ids);
    EXPECT_TRUE(kept[0].paths.empty());
    EXPECT_EQ(77, kept[0].handle);
    EXPECT_EQ(callback, kept[0].client->clientCallback);
    EXPECT_TRUE(kept[0].client->is_register);
    EXPECT_FALSE(kept[0].client->by_path);
    EXPECT_EQ(log.lines(), (std::vector<LogLine>{info("drelResListeningRegister"),
                                                 info("A callback has been registered to Drel "
                                                      "HAL ")}));
    EXPECT_EQ(0u, parked().size());
}

// Registrations by id and by path share one registry. Each is refused while a group listens to
// the same key in the same order, values and callbacks aside; an empty key matches every group of
// the other kind, whose key of this kind is empty.
TEST_F(ListeningTest, OnlyAnEqualKeyInTheSameOrderIsADuplicate) {
    EXPECT_CALL(*service, listeningRegister(_, _, _)).Times(7).WillRepeatedly(ReturnResult3(1));
    auto ids = [](std::vector<int> ids, const char* value) {
        ResourceList list;
        for (int id : ids) list.push_back(Resource{id, value});
        return [list]() mutable { return Hal::drelResListeningRegister(list, 0, nullptr); };
    };
    auto paths = [](std::vector<std::string> paths) {
        return [=] { return Hal::drel_res_listening_register_by_path(paths, 0, nullptr); };
    };
    auto pathMap = [](std::map<std::string, std::string> map) {
        return [=] { return Hal::drel_res_listening_register_map_by_path(map, 0, nullptr); };
    };
    const struct {
        const char* what;
        std::function<int()> call;
        bool duplicate;
    } cases[] = {
            {"ids", ids({0x10, 0x20}, "1"), false},
            {"the same ids with other values", ids({0x10, 0x20}, "9"), true},
            {"the ids in another order", ids({0x20, 0x10}, "1"), false},
            {"fewer ids", ids({0x10}, "1"), false},
            {"more ids", ids({0x10, 0x20, 0x30}, "1"), false},
            {"no ids", ids({}, "1"), false},
            {"no ids again", ids({}, "1"), true},
            {"no paths, as every id group has", paths({}), true},
            {"a path with a value", pathMap({{"/a", "1"}}), false},
            {"the path alone", paths({"/a"}), true},
            {"the path with another value", pathMap({{"/a", "2"}}), true},
            {"another path", paths({"/A"}), false},
            {"no path values, as every path group has", pathMap({}), true},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        log.clear();
        EXPECT_EQ(c.duplicate ? -1 : 1, c.call());
        EXPECT_EQ(c.duplicate, log.contains(error("Same callback interface registered already")));
    }
    EXPECT_EQ(7u, groups().size());
}

TEST_F(ListeningTest, UnregisterRemovesEveryGroupOfTheHandleWhateverTheServiceAnswers) {
    EXPECT_CALL(*service, listeningRegister(_, _, _))
            .WillOnce(ReturnResult3(5))
            .WillOnce(ReturnResult3(6))
            .WillOnce(ReturnResult3(5))
            .WillOnce(ReturnResult3(7));
    for (int id : {1, 2, 3, 4}) {
        ResourceList list{Resource{id, "1"}};
        Hal::drelResListeningRegister(list, 0, callback);
    }
    EXPECT_CALL(*service, listeningUnregister(5, _)).WillOnce(ReturnServiceError(2));
    EXPECT_CALL(*service, listeningUnregister(8, _)).WillOnce(ReturnResult(3));
    log.clear();

    EXPECT_EQ(-1, Hal::drelResListeningUnRegister(5));
    EXPECT_EQ((std::vector<std::vector<int>>{{2}, {4}}), groupIds()) << "the others keep order";
    EXPECT_EQ((std::vector<int>{6, 7}), groupHandles());
    EXPECT_EQ(3, Hal::drelResListeningUnRegister(8)) << "an unknown handle is sent too";

    const LogLine entry = info("drel client drelResListeningUnRegister");
    const LogLine removed = info("a callback has been unregistered to Drel HAL handle 5");
    EXPECT_EQ(log.linesWithTag(kRequestTag),
              (std::vector<LogLine>{entry, removed, removed, failed("drelResListeningUnRegister"),
                                    entry, error("The callback was not registered before")}));
}

TEST_F(ListeningTest, StateRequestAppendsTheReplyWholeAndCountsWhatWasThere) {
    DrelRequestParcel sent;
    std::vector<DrelRequestData> reply{wireRecord(0x10, 0, "1,2"), wireRecord(0x20, 0, ""),
                                       wireRecord(0x30, 0, std::nullopt)};
    EXPECT_CALL(*service, stateRequest(_, _))
            .WillOnce(DoAll(SaveArg<0>(&sent), ReturnResult(reply)))
            .WillOnce(ReturnOk());
    ResourceList query{Resource{0x10, "1"}, Resource{0, std::nullopt}};
    ResourceList states{Resource{1, "a"}, Resource{2, "b"}};

    EXPECT_EQ(5, Hal::drelResStateRequest(query, 4, states));

    EXPECT_EQ(queryParcel(4, {wireRecord(0x10, 0, "1"), wireRecord(0, 0, "")}), sent);
    const ResourcePairs expected{{1, "a"}, {2, "b"}, {0x10, "1,2"}, {0x20, ""}, {0x30, ""}};
    EXPECT_EQ(expected, pairsOf(states));
    EXPECT_EQ(log.lines(), (std::vector<LogLine>{info("drel client drelResStateRequest"),
                                                 info("drel client hal drelResStateRequest"),
                                                 info("drel client drelResStateRequest size 5")}));

    EXPECT_EQ(-1, Hal::drelResStateRequest(query, 4, states)) << "an empty reply";
    EXPECT_EQ(expected, pairsOf(states));
}

TEST_F(ListeningTest, ThermalNotifySendsKindSevenAndRefusesUnpairedLevels) {
    DrelRequestParcel sent;
    EXPECT_CALL(*service, request(_, _)).WillOnce(DoAll(SaveArg<0>(&sent), ReturnResult(3)));
    ResourceList levels{Resource{0x1, "40"}, Resource{0x2, "45"}};
    EXPECT_EQ(3, Hal::drelThermalNotify(levels, 6));
    EXPECT_EQ(requestParcel(7, 0, 0, 0, false, 6,
                            {wireRecord(0x1, 0, "40"), wireRecord(0x2, 0, "45")}),
              sent);

    ResourceList unpaired{Resource{0x1, std::nullopt}};
    EXPECT_EQ(-1, Hal::drelThermalNotify(unpaired, 6));
    const LogLine entry = info("drel client drelThermalNotify");
    EXPECT_EQ(log.lines(),
              (std::vector<LogLine>{
                      entry, entry,
                      error("drelThermalNotify ERROR: size unmatched for id and level ")}));
}

TEST_F(ListeningTest, ThermalRegistrationsAreKeptWithoutADuplicateTestAndOutliveUnregister) {
    std::vector<int32_t> sentIds;
    std::shared_ptr<IDrelCallback> sentCallback;
    EXPECT_CALL(*service, thermalListeningRegister(_, _, _))
            .WillOnce(DoAll(SaveArg<0>(&sentIds), SaveArg<1>(&sentCallback), ReturnResult3(12)))
            .WillOnce(ReturnResult3(13));
    EXPECT_EQ(12, Hal::drelThermalListeningRegister({3, 1}, callback));
    EXPECT_EQ(13, Hal::drelThermalListeningRegister({3, 1}, callback));
    EXPECT_EQ((std::vector<int32_t>{3, 1}), sentIds);
    EXPECT_NE(nullptr, sentCallback);
    EXPECT_EQ((std::vector<std::vector<int>>{{3, 1}, {3, 1}}), groupIds());
    EXPECT_EQ(2, log.count("subsys's callback has been registered to Drel HAL"));
    EXPECT_EQ(2, log.count("drelThermalListeningRegister"));

    EXPECT_CALL(*service, thermalListeningUnregister(12, _)).WillOnce(ReturnResult(0));
    log.clear();
    EXPECT_EQ(0, Hal::drelThermalListeningUnregister(12));
    EXPECT_EQ(log.lines(),
              (std::vector<LogLine>{info("drel client drelThermalListeningUnregister"),
                                    info("subsys's callback has been unRegistered to Drel HAL")}));
    EXPECT_EQ((std::vector<int>{12, 13}), groupHandles()) << "the group is not removed";

    EXPECT_CALL(*service, listeningUnregister(12, _)).WillOnce(ReturnResult(0));
    Hal::drelResListeningUnRegister(12);
    EXPECT_EQ((std::vector<int>{13}), groupHandles());
}

}  // namespace
}  // namespace qel_test
