// Path-addressed requests: resource control by path with and without a callback, state queries
// as a list and as a map, and path registrations. Every parcel carries the debug tag.

#include <gtest/gtest.h>

#include <map>

#include "support/class_fixture.h"

namespace qel_test {
namespace {

using ::testing::_;
using ::testing::DoAll;
using ::testing::SaveArg;

using StringMap = std::map<std::string, std::string>;

class PathRequestTest : public ClassApiFixture {
protected:
    std::vector<std::vector<std::string>> groupPaths() {
        std::vector<std::vector<std::string>> paths;
        for (const Group& group : groups()) paths.push_back(group.paths);
        return paths;
    }

    std::shared_ptr<RecordingPathCallback> callback = std::make_shared<RecordingPathCallback>();
};

TEST_F(PathRequestTest, ResourceControlByPathSendsEveryFieldAndTheDebugTag) {
    DrelRequestParcel sent;
    EXPECT_CALL(*service, request(_, _)).WillOnce(DoAll(SaveArg<0>(&sent), ReturnResult(21)));

    EXPECT_EQ(21,
              Hal::drel_resctl_request_by_path(4, 5000000000L, {"/a", "/b"}, {"1", ""}, 33, 1, 55));

    EXPECT_EQ(debugTagged(requestParcel(1, 4, 5000000000L, 33, true, 55,
                                        {wirePath("/a", "1"), wirePath("/b", "")})),
              sent);
    EXPECT_EQ(log.lines(), (std::vector<LogLine>{info("drel client drel_resctl_request")}));
}

TEST_F(PathRequestTest, LengthMismatchesAreRefusedWithoutACallOrAParkedClient) {
    EXPECT_CALL(*service, request(_, _)).Times(0);
    EXPECT_EQ(-1, Hal::drel_resctl_request_by_path(1, 1, {"/a", "/b"}, {"1"}, 0, 0, 0));
    EXPECT_EQ(-1,
              Hal::drel_resctl_request_with_callback_by_path(1, 1, {"/a"}, {}, 0, 0, 0, callback));
    EXPECT_EQ(log.lines(),
              (std::vector<LogLine>{
                      info("drel client drel_resctl_request"),
                      error("drel_resctl_request ERROR: size unmatched for paths and value "),
                      info("drel client drel_resctl_request_with_callback"),
                      error("drel client drel_resctl_request ERROR: size unmatched for id and "
                            "value ")}));
    EXPECT_EQ(0u, parked().size());
}

TEST_F(PathRequestTest, ResourceControlWithCallbackParksAPathClientBeforeTheCall) {
    DrelRequestParcel sent;
    size_t parkedDuringCall = 0;
    EXPECT_CALL(*service, request(_, _))
            .WillOnce(DoAll(
                    SaveArg<0>(&sent),
                    [&](const DrelRequestParcel&, int32_t*) { parkedDuringCall = parked().size(); },
                    ReturnResult(8)));

    EXPECT_EQ(8, Hal::drel_resctl_request_with_callback_by_path(4, 500, {"/a"}, {"1"}, 33, 0, 55,
                                                                callback));

    EXPECT_EQ(1u, parkedDuringCall);
    ASSERT_NE(nullptr, sent.callback);
    DrelRequestParcel expected =
            debugTagged(requestParcel(1, 4, 500, 33, false, 55, {wirePath("/a", "1")}));
    expected.callback = sent.callback;
    EXPECT_EQ(expected, sent);
    auto clients = parked();
    ASSERT_EQ(1u, clients.size());
    EXPECT_EQ(callback, clients[0]->clientCallbackByPath);
    EXPECT_EQ(nullptr, clients[0]->clientCallback);
    EXPECT_FALSE(clients[0]->is_register);
    EXPECT_TRUE(clients[0]->by_path);
    EXPECT_EQ(log.linesWithTag(kRequestTag),
              (std::vector<LogLine>{info("drel client drel_resctl_request_with_callback"),
                                    info("new std::shared_ptr DrelCallbackClient callback"),
                                    info("drel client drel_resctl_request_with_callback add to "
                                         "request_callbacks")}));
}

TEST_F(PathRequestTest, StateRequestSendsValuesOnlyWhenEveryPathHasOne) {
    const struct {
        std::vector<std::string> paths;
        std::vector<std::string> values;
        std::vector<DrelRequestData> records;
    } cases[] = {
            {{"/a", "/b", "/c"},
             {"1", "2"},
             {wirePath("/a", std::nullopt), wirePath("/b", std::nullopt),
              wirePath("/c", std::nullopt)}},
            {{"/a", "/b"}, {}, {wirePath("/a", std::nullopt), wirePath("/b", std::nullopt)}},
            {{"/a", "/b"}, {"1", ""}, {wirePath("/a", "1"), wirePath("/b", "")}},
    };
    for (const auto& c : cases) {
        DrelRequestParcel sent;
        EXPECT_CALL(*service, stateRequest(_, _))
                .WillOnce(DoAll(SaveArg<0>(&sent),
                                ReturnResult(std::vector<DrelRequestData>{wirePath("/a", "9")})));
        std::vector<std::string> states;
        EXPECT_EQ(1, Hal::drel_res_state_request_by_path(c.paths, c.values, 8, states));
        EXPECT_EQ(debugTagged(queryParcel(8, c.records)), sent);
    }
}

TEST_F(PathRequestTest, StateRequestAppendsTheValuesInReplyOrder) {
    EXPECT_CALL(*service, stateRequest(_, _))
            .WillOnce(ReturnResult(
                    std::vector<DrelRequestData>{wirePath("/a", "1,2"), wirePath("/b", {})}))
            .WillOnce(ReturnOk());
    std::vector<std::string> states{"old"};

    EXPECT_EQ(3, Hal::drel_res_state_request_by_path({"/a", "/b"}, {}, 0, states));
    EXPECT_EQ((std::vector<std::string>{"old", "1,2", ""}), states);
    EXPECT_EQ(log.lines(), (std::vector<LogLine>{info("drel client drel_res_state_request"),
                                                 info("drel client drel_res_state_request size "
                                                      "3")}));

    EXPECT_EQ(-1, Hal::drel_res_state_request_by_path({"/a"}, {}, 0, states)) << "an empty reply";
    EXPECT_EQ(3u, states.size());
}

TEST_F(PathRequestTest, MapStateRequestKeepsTheLastValueOfARepeatedPath) {
    DrelRequestParcel sent;
    DrelRequestData noPath;
    noPath.resValue = "3";
    EXPECT_CALL(*service, stateRequest(_, _))
            .WillOnce(DoAll(SaveArg<0>(&sent), ReturnResult(std::vector<DrelRequestData>{
                                                       wirePath("/x", "1"), wirePath("/x", "2"),
                                                       noPath, wirePath("/y", std::nullopt)})))
            .WillOnce(ReturnOk());
    StringMap stateMap{{"/old", "0"}, {"/x", "0"}};

    EXPECT_EQ(2, Hal::drel_res_state_request_map_by_path({{"/b", "2"}, {"/a", ""}}, 7, stateMap));

    // The records go in key order.
    EXPECT_EQ(debugTagged(queryParcel(7, {wirePath("/a", ""), wirePath("/b", "2")})), sent);
    EXPECT_EQ((StringMap{{"/old", "0"}, {"/x", "2"}}), stateMap);
    EXPECT_EQ(log.lines(),
              (std::vector<LogLine>{info("drel client drel_res_state_request_map"),
                                    error("res_Path: /x, res_Value:1"),
                                    error("res_Path: /x, res_Value:2"),
                                    info("drel client drel_res_state_request_map size 2")}));

    EXPECT_EQ(-1, Hal::drel_res_state_request_map_by_path({{"/b", "2"}}, 7, stateMap))
            << "an empty reply";
}

TEST_F(PathRequestTest, PathRegistrationsSendThePathsAndKeepAPathGroup) {
    DrelRequestParcel vectorSent;
    DrelRequestParcel mapSent;
    EXPECT_CALL(*service, listeningRegister(_, _, _))
            .WillOnce(DoAll(SaveArg<0>(&vectorSent), ReturnResult3(31)))
            .WillOnce(DoAll(SaveArg<0>(&mapSent), ReturnResult3(32)));

    EXPECT_EQ(31, Hal::drel_res_listening_register_by_path({"/b", "/a"}, 5, callback));
    EXPECT_EQ(32, Hal::drel_res_listening_register_map_by_path({{"/d", "4"}, {"/c", "3"}}, 6,
                                                               callback));

    EXPECT_EQ(debugTagged(
                      queryParcel(5, {wirePath("/b", std::nullopt), wirePath("/a", std::nullopt)})),
              vectorSent);
    EXPECT_EQ(debugTagged(queryParcel(6, {wirePath("/c", "3"), wirePath("/d", "4")})), mapSent);
    EXPECT_EQ((std::vector<std::vector<std::string>>{{"/b", "/a"}, {"/c", "/d"}}), groupPaths());
    EXPECT_EQ((std::vector<int>{31, 32}), groupHandles());
    for (const Group& group : groups()) {
        EXPECT_TRUE(group.ids.empty());
        EXPECT_EQ(callback, group.client->clientCallbackByPath);
        EXPECT_TRUE(group.client->is_register);
        EXPECT_TRUE(group.client->by_path);
    }
    const LogLine registered = info("A callback has been registered to Drel HAL ");
    EXPECT_EQ(log.lines(),
              (std::vector<LogLine>{info("drel client drel_res_listening_register"), registered,
                                    info("drel client drel_res_listening_register_map"),
                                    registered}));
}

}  // namespace
}  // namespace qel_test
