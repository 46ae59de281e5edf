// Resource and scene control requests: what each overload sends, the pairing check, the parking
// of one-shot callbacks, failures and releases.

#include <gtest/gtest.h>

#include <climits>

#include "support/class_fixture.h"

namespace qel_test {
namespace {

using ::testing::_;
using ::testing::DoAll;
using ::testing::SaveArg;

// One overload, called with `list` (resource forms) or the scene id 7, and what it must send.
struct Form {
    const char* name;
    std::function<int(ResourceList&, const std::shared_ptr<IClientCallback>&)> call;
    int32_t reqId;
    int64_t timeout;
    int32_t param3;
    bool flag;
    int32_t param5;
    int32_t requestType;
    bool withCallback;
    const char* entryLine;
    const char* parkedLine;  // callback forms
    const char* failureName;
};

const char* const kResCtl = "drel client drelResCtlRequest";
const char* const kResCtlCb = "drel client drelResCtlRequest with callback";
const char* const kResCtlParked = "drel client drelResCtlRequest add to request_callbacks";
const char* const kSACtl = "drel client drelSACtlRequest";
const char* const kSACtlCb = "drel client drelSACtlRequest with callback";
const char* const kSACtlParked = "drel client drelSACtlRequest add to request_callbacks";

using Cb = const std::shared_ptr<IClientCallback>&;
const Form kForms[] = {
        {"ResTimeoutP5",
         [](ResourceList& l, Cb) { return drelHalclient::drelResCtlRequest(500, l, 55); }, -1, 500,
         -1, false, 55, 1, false, kResCtl, nullptr, "drelResCtlRequest"},
        {"ResTimeoutFlagP5",
         [](ResourceList& l, Cb) { return drelHalclient::drelResCtlRequest(500, l, 2, 55); }, -1,
         500, -1, true, 55, 1, false, kResCtl, nullptr, "drelResCtlRequest"},
        {"ResTimeoutP3FlagP5",
         [](ResourceList& l, Cb) { return drelHalclient::drelResCtlRequest(500, l, 33, 2, 55); },
         -1, 500, 33, true, 55, 1, false, kResCtl, nullptr, "drelResCtlRequest"},
        {"ResReqIdTimeoutP5",
         [](ResourceList& l, Cb) { return drelHalclient::drelResCtlRequest(11, 500, l, 55); }, 11,
         500, -1, false, 55, 1, false, kResCtl, nullptr, "drelResCtlRequest"},
        {"ResReqIdTimeoutFlagP5",
         [](ResourceList& l, Cb) { return drelHalclient::drelResCtlRequest(11, 500, l, 2, 55); },
         11, 500, -1, true, 55, 1, false, kResCtl, nullptr, "drelResCtlRequest"},
        {"ResFull",
         [](ResourceList& l, Cb) {
             return drelHalclient::drelResCtlRequest(11, -500, l, 33, 0, 55);
         },
         11, -500, 33, false, 55, 1, false, kResCtl, nullptr, "drelResCtlRequest"},
        {"ResWithCallback",
         [](ResourceList& l, Cb cb) {
             return drelHalclient::drelResCtlRequest(11, 500, l, 33, 1, 55, cb);
         },
         11, 500, 33, true, 55, 1, true, kResCtlCb, kResCtlParked,
         "drel client DrelCallbackClient with callback"},
        {"SATimeoutP5",
         [](ResourceList&, Cb) { return drelHalclient::drelSACtlRequest(500, 7, 55); }, -1, 500, -1,
         false, 55, 2, false, kSACtl, nullptr, "drelSACtlRequest"},
        {"SAFull",
         [](ResourceList&, Cb) { return drelHalclient::drelSACtlRequest(11, -500, 7, 33, 2, 55); },
         11, -500, 33, true, 55, 2, false, kSACtl, nullptr, "drelSACtlRequest"},
        {"SAWithCallback",
         [](ResourceList&, Cb cb) {
             return drelHalclient::drelSACtlRequest(11, 500, 7, 33, 0, 55, cb);
         },
         11, 500, 33, false, 55, 2, true, kSACtlCb, kSACtlParked, "drelSACtlRequest with callback"},
};

class RequestFormTest : public ClassApiFixture, public ::testing::WithParamInterface<Form> {
protected:
    // What the form must send for the list {0x1011040: "1", 0x2: "a,b"} (or for scene 7).
    DrelRequestParcel expectedParcel() const {
        const Form& form = GetParam();
        DrelRequestParcel p;
        p.requestType = form.requestType;
        p.reqId = form.reqId;
        p.timeout = form.timeout;
        p.param3 = form.param3;
        p.flag = form.flag;
        p.param5 = form.param5;
        if (form.requestType == 1) {
            p.resources = {wireRes(0x1011040, "1"), wireRes(0x2, "a,b")};
        } else {
            DrelRequestData scene;
            scene.resId = 7;  // no value, path or extra
            p.resources = {scene};
        }
        return p;
    }

    ResourceList list{res(0x1011040, "1"), res(0x2, "a,b")};
    std::shared_ptr<RecordingCallback> callback = std::make_shared<RecordingCallback>();
};

TEST_P(RequestFormTest, SendsItsArgumentsInTheirFieldsAndReturnsTheServiceResult) {
    const Form& form = GetParam();
    DrelRequestParcel sent;
    EXPECT_CALL(*service, request(_, _)).WillOnce(DoAll(SaveArg<0>(&sent), ReturnResult(42)));

    EXPECT_EQ(42, form.call(list, callback));

    DrelRequestParcel expected = expectedParcel();
    std::vector<LogLine> expectedLines{info(form.entryLine)};
    if (form.withCallback) {
        ASSERT_NE(nullptr, sent.callback) << "the callback object must travel in the parcel";
        expected.callback = sent.callback;
        expectedLines.push_back(info("new std::shared_ptr DrelCallbackClient callback"));
        expectedLines.push_back(info(form.parkedLine));
        auto clients = parked();
        ASSERT_EQ(1u, clients.size());
        EXPECT_EQ(callback, clients[0]->clientCallback);
        EXPECT_EQ(nullptr, clients[0]->clientCallbackByPath);
        EXPECT_FALSE(clients[0]->is_register);
        EXPECT_FALSE(clients[0]->by_path);
    } else {
        EXPECT_EQ(0u, parkedCount());
    }
    EXPECT_EQ(expected, sent);
    EXPECT_EQ(expectedLines, log.linesWithTag(kRequestTag));
}

TEST_P(RequestFormTest, FailedCallLogsItsNameResetsAndKeepsTheParkedClient) {
    const Form& form = GetParam();
    EXPECT_CALL(*service, request(_, _)).WillOnce(ReturnServiceError(3));

    EXPECT_EQ(-1, form.call(list, callback));

    EXPECT_TRUE(log.contains(
            error(std::string(form.failureName) + "() failed: drel HAL service not available")));
    EXPECT_EQ(form.withCallback ? 1u : 0u, parkedCount());
    std::shared_lock<std::shared_timed_mutex> lock(g_drel_hal_lock);
    EXPECT_EQ(nullptr, g_drel_hal);
}

INSTANTIATE_TEST_SUITE_P(Overloads, RequestFormTest, ::testing::ValuesIn(kForms),
                         [](const ::testing::TestParamInfo<Form>& info) {
                             return info.param.name;
                         });

class RequestTest : public ClassApiFixture {};

TEST_F(RequestTest, FlagIsSetForOneAndMoreOnly) {
    const std::pair<int, bool> table[] = {{INT_MIN, false}, {-1, false}, {0, false},
                                          {1, true},        {2, true},   {INT_MAX, true}};
    for (const auto& [flag, expected] : table) {
        SCOPED_TRACE(flag);
        DrelRequestParcel resSent;
        DrelRequestParcel saSent;
        EXPECT_CALL(*service, request(_, _))
                .WillOnce(DoAll(SaveArg<0>(&resSent), ReturnResult(1)))
                .WillOnce(DoAll(SaveArg<0>(&saSent), ReturnResult(1)));
        ResourceList empty;
        drelHalclient::drelResCtlRequest(1, 2, empty, 3, flag, 4);
        drelHalclient::drelSACtlRequest(1, 2, 5, 3, flag, 4);
        EXPECT_EQ(expected, resSent.flag);
        EXPECT_EQ(expected, saSent.flag);
    }
}

TEST_F(RequestTest, ResourcesTravelInListOrderWithAValueAlwaysPresent) {
    DrelRequestParcel sent;
    EXPECT_CALL(*service, request(_, _)).WillRepeatedly(DoAll(SaveArg<0>(&sent), ReturnResult(1)));

    ResourceList list{res(0x1011040, "1"), res(0), res(0, ""), res(0x3, "x")};
    drelHalclient::drelResCtlRequest(500, list, 0);
    EXPECT_EQ((std::vector<DrelRequestData>{wireRes(0x1011040, "1"), wireRes(0, ""), wireRes(0, ""),
                                            wireRes(0x3, "x")}),
              sent.resources);

    ResourceList empty;
    drelHalclient::drelResCtlRequest(500, empty, 0);
    EXPECT_TRUE(sent.resources.empty());
}

TEST_F(RequestTest, UnpairedListsAreRefusedWithoutACallOrAParkedClient) {
    EXPECT_CALL(*service, request(_, _)).Times(0);
    const ResourceList unpaired[] = {
            {res(0x1011040)},                 // id without a value
            {res(0x1011040, "")},             // id with an empty value
            {res(0, "1")},                    // value without an id
            {res(0x1011040, "1"), res(0x2)},  // a valid pair does not save the list
    };
    auto callback = std::make_shared<RecordingCallback>();
    for (ResourceList list : unpaired) {
        log.clear();
        EXPECT_EQ(-1, drelHalclient::drelResCtlRequest(1, 500, list, -1, 0, 0));
        EXPECT_EQ(-1, drelHalclient::drelResCtlRequest(1, 500, list, -1, 0, 0, callback));
        EXPECT_EQ(log.lines(),
                  (std::vector<LogLine>{
                          info("drel client drelResCtlRequest"),
                          error("drelResCtlRequest ERROR: size unmatched for id and value "),
                          info("drel client drelResCtlRequest with callback"),
                          error("drel client drel_resctl_request ERROR: size unmatched for id "
                                "and value ")}));
    }
    EXPECT_EQ(0u, parkedCount());
}

TEST_F(RequestTest, WithoutAServiceEveryFormReturnsMinusOneAndChecksNothing) {
    hostbinder::reset();
    ResourceList unpaired{res(0x1011040)};
    auto callback = std::make_shared<RecordingCallback>();
    EXPECT_EQ(-1, drelHalclient::drelResCtlRequest(500, unpaired, 0));
    EXPECT_EQ(-1, drelHalclient::drelResCtlRequest(1, 500, unpaired, -1, 0, 0, callback));
    EXPECT_EQ(-1, drelHalclient::drelSACtlRequest(500, 7, 0));
    EXPECT_EQ(-1, drelHalclient::drelSACtlRequest(1, 500, 7, -1, 0, 0, callback));
    EXPECT_EQ(0, log.count("drelResCtlRequest ERROR: size unmatched for id and value "));
    EXPECT_EQ(0u, parkedCount()) << "nothing is parked before the service is reached";
}

TEST_F(RequestTest, ReleasesPassTheHandleAndLeaveTheRegistriesAlone) {
    auto callback = std::make_shared<RecordingCallback>();
    ResourceList empty;
    EXPECT_CALL(*service, request(_, _)).WillOnce(ReturnResult(5));
    ASSERT_EQ(5, drelHalclient::drelResCtlRequest(1, 500, empty, -1, 0, 0, callback));
    EXPECT_CALL(*service, release(5, _)).WillOnce(ReturnResult(0));
    EXPECT_CALL(*service, release(6, _)).WillOnce(ReturnResult(-4));
    log.clear();

    EXPECT_EQ(0, drelHalclient::drelResCtlRelease(5));
    EXPECT_EQ(-4, drelHalclient::drelSACtlRelease(6));

    EXPECT_EQ(log.lines(), (std::vector<LogLine>{info("drel client drelResCtlRelease"),
                                                 info("drel client drelSACtlRelease")}));
    EXPECT_EQ(1u, parkedCount()) << "a release does not unpark the request's callback";
}

}  // namespace
}  // namespace qel_test
