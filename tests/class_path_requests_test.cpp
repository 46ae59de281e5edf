// Path-addressed requests: the debug tag, resource control by path with and without a callback,
// state queries as a list and as a map, and path registrations.

#include <gtest/gtest.h>

#include "support/class_fixture.h"

namespace qel_test {
namespace {

using ::testing::_;
using ::testing::DoAll;
using ::testing::SaveArg;

using Tags = std::vector<std::optional<std::string>>;
using StringMap = std::map<std::string, std::string>;

const Tags kDebugTag{std::string("zdbdebug")};

class PathRequestTest : public ClassApiFixture {
protected:
    std::vector<std::vector<std::string>> groupPaths() {
        std::lock_guard<std::mutex> lock(callback_group_mutex);
        std::vector<std::vector<std::string>> paths;
        for (const DrelCallbackGroup& group : callback_groups) paths.push_back(group.paths);
        return paths;
    }

    std::shared_ptr<RecordingPathCallback> callback = std::make_shared<RecordingPathCallback>();
};

TEST_F(PathRequestTest, TheDebugTagReplacesWhateverTagsThereWere) {
    DrelRequestParcel parcel;
    drelHalclient::drel_add_zdbdebug_for_request_parcel(parcel);
    EXPECT_EQ(kDebugTag, parcel.tags);
    parcel.tags = Tags{std::string("a"), std::nullopt};
    drelHalclient::drel_add_zdbdebug_for_request_parcel(parcel);
    EXPECT_EQ(kDebugTag, parcel.tags);
}

TEST_F(PathRequestTest, ResourceControlByPathSendsEveryFieldAndTheDebugTag) {
    DrelRequestParcel sent;
    EXPECT_CALL(*service, request(_, _)).WillOnce(DoAll(SaveArg<0>(&sent), ReturnResult(21)));

    EXPECT_EQ(21, drelHalclient::drel_resctl_request_by_path(4, 5000000000L, {"/a", "/b"},
                                                             {"1", ""}, 33, 1, 55));

    DrelRequestParcel expected;
    expected.requestType = 1;
    expected.reqId = 4;
    expected.timeout = 5000000000L;
    expected.param3 = 33;
    expected.flag = true;
    expected.param5 = 55;
    expected.tags = kDebugTag;
    expected.resources = {wirePath("/a", "1"), wirePath("/b", "")};
    EXPECT_EQ(expected, sent);
    EXPECT_EQ(log.lines(), (std::vector<LogLine>{info("drel client drel_resctl_request")}));
}

TEST_F(PathRequestTest, ResourceControlByPathWithEmptyListsSendsNoResources) {
    DrelRequestParcel sent;
    EXPECT_CALL(*service, request(_, _)).WillOnce(DoAll(SaveArg<0>(&sent), ReturnResult(1)));
    EXPECT_EQ(1, drelHalclient::drel_resctl_request_by_path(-1, 0, {}, {}, -1, 0, 0));
    EXPECT_TRUE(sent.resources.empty());
    EXPECT_FALSE(sent.flag);
}

TEST_F(PathRequestTest, LengthMismatchesAreRefusedWithoutACallOrAParkedClient) {
    EXPECT_CALL(*service, request(_, _)).Times(0);
    EXPECT_EQ(-1, drelHalclient::drel_resctl_request_by_path(1, 1, {"/a", "/b"}, {"1"}, 0, 0, 0));
    EXPECT_EQ(-1, drelHalclient::drel_resctl_request_with_callback_by_path(1, 1, {"/a"}, {}, 0, 0,
                                                                           0, callback));
    EXPECT_EQ(log.lines(),
              (std::vector<LogLine>{
                      info("drel client drel_resctl_request"),
                      error("drel_resctl_request ERROR: size unmatched for paths and value "),
                      info("drel client drel_resctl_request_with_callback"),
                      error("drel client drel_resctl_request ERROR: size unmatched for id and "
                            "value ")}));
    EXPECT_EQ(0u, parkedCount());
}

TEST_F(PathRequestTest, ResourceControlWithCallbackParksAPathClientBeforeTheCall) {
    DrelRequestParcel sent;
    size_t parkedDuringCall = 0;
    EXPECT_CALL(*service, request(_, _))
            .WillOnce(DoAll(
                    SaveArg<0>(&sent),
                    [&](const DrelRequestParcel&, int32_t*) { parkedDuringCall = parkedCount(); },
                    ReturnServiceError(1)));

    EXPECT_EQ(-1, drelHalclient::drel_resctl_request_with_callback_by_path(4, 500, {"/a"}, {"1"},
                                                                           33, 0, 55, callback));

    EXPECT_EQ(1u, parkedDuringCall);
    ASSERT_NE(nullptr, sent.callback);
    DrelRequestParcel expected;
    expected.requestType = 1;
    expected.reqId = 4;
    expected.timeout = 500;
    expected.param3 = 33;
    expected.param5 = 55;
    expected.tags = kDebugTag;
    expected.callback = sent.callback;
    expected.resources = {wirePath("/a", "1")};
    EXPECT_EQ(expected, sent);
    auto clients = parked();
    ASSERT_EQ(1u, clients.size()) << "a failed call leaves the client parked";
    EXPECT_EQ(callback, clients[0]->clientCallbackByPath);
    EXPECT_EQ(nullptr, clients[0]->clientCallback);
    EXPECT_FALSE(clients[0]->is_register);
    EXPECT_TRUE(clients[0]->by_path);
    EXPECT_EQ(log.linesWithTag(kRequestTag),
              (std::vector<LogLine>{
                      info("drel client drel_resctl_request_with_callback"),
                      info("new std::shared_ptr DrelCallbackClient callback"),
                      info("drel client drel_resctl_request_with_callback add to "
                           "request_callbacks"),
                      error("drel client drel_resctl_request_with_callback() failed: drel HAL "
                            "service not available")}));
}

TEST_F(PathRequestTest, StateRequestSendsValuesOnlyWhenEveryPathHasOne) {
    struct Case {
        std::vector<std::string> paths;
        std::vector<std::string> values;
        std::vector<DrelRequestData> records;
    };
    const Case cases[] = {
            {{"/a", "/b", "/c"},
             {"1", "2"},
             {wirePath("/a", std::nullopt), wirePath("/b", std::nullopt),
              wirePath("/c", std::nullopt)}},
            {{"/a", "/b"}, {}, {wirePath("/a", std::nullopt), wirePath("/b", std::nullopt)}},
            {{"/a", "/b"}, {"1", ""}, {wirePath("/a", "1"), wirePath("/b", "")}},
    };
    for (const Case& c : cases) {
        DrelRequestParcel sent;
        EXPECT_CALL(*service, stateRequest(_, _))
                .WillOnce(DoAll(SaveArg<0>(&sent),
                                ReturnResult(std::vector<DrelRequestData>{wirePath("/a", "9")})));
        std::vector<std::string> states;
        EXPECT_EQ(1, drelHalclient::drel_res_state_request_by_path(c.paths, c.values, 8, states));
        DrelRequestParcel expected;
        expected.param5 = 8;
        expected.tags = kDebugTag;
        expected.resources = c.records;
        EXPECT_EQ(expected, sent);
    }
    EXPECT_EQ(0, log.count("drel_resctl_request ERROR: size unmatched for paths and value "));
}

TEST_F(PathRequestTest, StateRequestAppendsTheValuesInReplyOrder) {
    DrelRequestData noValue;
    noValue.resPath = "/b";
    EXPECT_CALL(*service, stateRequest(_, _))
            .WillOnce(ReturnResult(std::vector<DrelRequestData>{wirePath("/a", "1,2"), noValue}))
            .WillOnce(ReturnOk());
    std::vector<std::string> states{"old"};

    EXPECT_EQ(3, drelHalclient::drel_res_state_request_by_path({"/a", "/b"}, {}, 0, states));
    EXPECT_EQ((std::vector<std::string>{"old", "1,2", ""}), states);
    EXPECT_EQ(log.lines(), (std::vector<LogLine>{info("drel client drel_res_state_request"),
                                                 info("drel client drel_res_state_request size "
                                                      "3")}));

    EXPECT_EQ(-1, drelHalclient::drel_res_state_request_by_path({"/a"}, {}, 0, states))
            << "an empty reply";
    EXPECT_EQ(3u, states.size());
}

TEST_F(PathRequestTest, MapStateRequestKeepsTheLastValueOfARepeatedPath) {
    DrelRequestParcel sent;
    DrelRequestData noPath;
    noPath.resValue = "3";
    EXPECT_CALL(*service, stateRequest(_, _))
            .WillOnce(DoAll(SaveArg<0>(&sent), ReturnResult(std::vector<DrelRequestData>{
                                                       wirePath("/x", "1"), wirePath("/x", "2"),
                                                       noPath, wirePath("/y", std::nullopt)})));
    StringMap stateMap{{"/old", "0"}, {"/x", "0"}};

    EXPECT_EQ(2, drelHalclient::drel_res_state_request_map_by_path({{"/b", "2"}, {"/a", ""}}, 7,
                                                                   stateMap));

    DrelRequestParcel expected;
    expected.param5 = 7;
    expected.tags = kDebugTag;
    expected.resources = {wirePath("/a", ""), wirePath("/b", "2")};  // key order
    EXPECT_EQ(expected, sent);
    EXPECT_EQ((StringMap{{"/old", "0"}, {"/x", "2"}}), stateMap);
    EXPECT_EQ(log.lines(),
              (std::vector<LogLine>{info("drel client drel_res_state_request_map"),
                                    error("res_Path: /x, res_Value:1"),
                                    error("res_Path: /x, res_Value:2"),
                                    info("drel client drel_res_state_request_map size 2")}));
}

TEST_F(PathRequestTest, PathRegistrationsSendThePathsAndKeepAPathGroup) {
    DrelRequestParcel vectorSent;
    DrelRequestParcel mapSent;
    EXPECT_CALL(*service, listeningRegister(_, _, _))
            .WillOnce(DoAll(SaveArg<0>(&vectorSent), ReturnResult3(31)))
            .WillOnce(DoAll(SaveArg<0>(&mapSent), ReturnResult3(32)));

    EXPECT_EQ(31, drelHalclient::drel_res_listening_register_by_path({"/b", "/a"}, 5, callback));
    EXPECT_EQ(32, drelHalclient::drel_res_listening_register_map_by_path({{"/d", "4"}, {"/c", "3"}},
                                                                         6, callback));

    DrelRequestParcel expected;
    expected.param5 = 5;
    expected.tags = kDebugTag;
    expected.resources = {wirePath("/b", std::nullopt), wirePath("/a", std::nullopt)};
    EXPECT_EQ(expected, vectorSent);
    expected.param5 = 6;
    expected.resources = {wirePath("/c", "3"), wirePath("/d", "4")};
    EXPECT_EQ(expected, mapSent);
    EXPECT_EQ((std::vector<std::vector<std::string>>{{"/b", "/a"}, {"/c", "/d"}}), groupPaths());
    EXPECT_EQ((std::vector<int>{31, 32}), groupHandles());
    {
        std::lock_guard<std::mutex> lock(callback_group_mutex);
        for (const DrelCallbackGroup& group : callback_groups) {
            EXPECT_TRUE(group.ids.empty());
            EXPECT_EQ(callback, group.client->clientCallbackByPath);
            EXPECT_TRUE(group.client->is_register);
            EXPECT_TRUE(group.client->by_path);
        }
    }
    const LogLine registered = info("A callback has been registered to Drel HAL ");
    EXPECT_EQ(log.lines(),
              (std::vector<LogLine>{info("drel client drel_res_listening_register"), registered,
                                    info("drel client drel_res_listening_register_map"),
                                    registered}));
}

TEST_F(PathRequestTest, SamePathListsAreDuplicatesWhateverTheirValuesOrCallbacks) {
    EXPECT_CALL(*service, listeningRegister(_, _, _)).Times(2).WillRepeatedly(ReturnResult3(1));
    auto other = std::make_shared<RecordingPathCallback>();
    ASSERT_EQ(1,
              drelHalclient::drel_res_listening_register_map_by_path({{"/a", "1"}}, 0, callback));
    EXPECT_EQ(-1, drelHalclient::drel_res_listening_register_by_path({"/a"}, 0, other));
    EXPECT_EQ(-1, drelHalclient::drel_res_listening_register_map_by_path({{"/a", "2"}}, 0, other));
    EXPECT_EQ(1, drelHalclient::drel_res_listening_register_by_path({"/A"}, 0, other));
    EXPECT_EQ(2, log.count("Same callback interface registered already"));
}

TEST_F(PathRequestTest, AnEmptyPathListMatchesAnIdRegistration) {
    EXPECT_CALL(*service, listeningRegister(_, _, _)).WillOnce(ReturnResult3(1));
    ResourceList list{res(0x10, "1")};
    ASSERT_EQ(1, drelHalclient::drelResListeningRegister(list, 0,
                                                         std::make_shared<RecordingCallback>()));
    EXPECT_EQ(-1, drelHalclient::drel_res_listening_register_by_path({}, 0, callback));
    EXPECT_EQ(-1, drelHalclient::drel_res_listening_register_map_by_path({}, 0, callback));
    EXPECT_EQ(1u, groupPaths().size());
}

TEST_F(PathRequestTest, FailedCallsLogTheirOwnNames) {
    ON_CALL(*service, request(_, _)).WillByDefault(ReturnServiceError(1));
    ON_CALL(*service, stateRequest(_, _)).WillByDefault(ReturnServiceError(1));
    ON_CALL(*service, listeningRegister(_, _, _)).WillByDefault(ReturnServiceError(1));
    std::vector<std::string> states;
    StringMap stateMap;
    const std::pair<const char*, std::function<int()>> table[] = {
            {"drel_resctl_request_by_path",
             [] {
                 return drelHalclient::drel_resctl_request_by_path(1, 1, {"/a"}, {"1"}, 0, 0, 0);
             }},
            {"drel_res_state_request",
             [&] { return drelHalclient::drel_res_state_request_by_path({"/a"}, {}, 0, states); }},
            {"drel_res_state_request_map",
             [&] {
                 return drelHalclient::drel_res_state_request_map_by_path({{"/a", ""}}, 0,
                                                                          stateMap);
             }},
            {"drel_res_listening_register",
             [&] {
                 return drelHalclient::drel_res_listening_register_by_path({"/a"}, 0, callback);
             }},
            {"drel_res_listening_register_map",
             [&] {
                 return drelHalclient::drel_res_listening_register_map_by_path({{"/a", ""}}, 0,
                                                                               callback);
             }},
    };
    for (const auto& [name, call] : table) {
        SCOPED_TRACE(name);
        log.clear();
        EXPECT_EQ(-1, call());
        EXPECT_TRUE(log.contains(
                error(std::string(name) + "() failed: drel HAL service not available")));
    }
    EXPECT_TRUE(groupPaths().empty());
    EXPECT_TRUE(states.empty());
    EXPECT_TRUE(stateMap.empty());
}

}  // namespace
}  // namespace qel_test
