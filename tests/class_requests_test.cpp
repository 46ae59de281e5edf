// Resource and scene control requests: what each overload sends, the pairing check, the parking
// of one-shot callbacks, and the releases.

#include <gtest/gtest.h>

#include "support/class_fixture.h"

namespace qel_test {
namespace {

using ::testing::_;
using ::testing::DoAll;
using ::testing::SaveArg;

using Cb = const std::shared_ptr<IClientCallback>&;

// One overload, called with `list` (resource forms) or the scene id 7, and what it must send.
struct Form {
    const char* name;
    std::function<int(ResourceList&, Cb)> call;
    int32_t reqId;
    int64_t timeout;
    int32_t param3;
    bool flag;
    int32_t param5;
    int32_t requestType;
    const char* entryLine;
    const char* parkedLine;  // callback forms only
};

const char* const kResCtl = "drel client drelResCtlRequest";
const char* const kSACtl = "drel client drelSACtlRequest";

const Form kForms[] = {
        {"ResTimeoutP5", [](ResourceList& l, Cb) { return Hal::drelResCtlRequest(500, l, 55); }, -1,
         500, -1, false, 55, 1, kResCtl, nullptr},
        {"ResTimeoutFlagP5",
         [](ResourceList& l, Cb) { return Hal::drelResCtlRequest(500, l, 2, 55); }, -1, 500, -1,
         true, 55, 1, kResCtl, nullptr},
        {"ResTimeoutP3FlagP5",
         [](ResourceList& l, Cb) { return Hal::drelResCtlRequest(500, l, 33, 2, 55); }, -1, 500, 33,
         true, 55, 1, kResCtl, nullptr},
        {"ResReqIdTimeoutP5",
         [](ResourceList& l, Cb) { return Hal::drelResCtlRequest(11, 500, l, 55); }, 11, 500, -1,
         false, 55, 1, kResCtl, nullptr},
        {"ResReqIdTimeoutFlagP5",
         [](ResourceList& l, Cb) { return Hal::drelResCtlRequest(11, 500, l, 2, 55); }, 11, 500, -1,
         true, 55, 1, kResCtl, nullptr},
        {"ResFull",
         [](ResourceList& l, Cb) { return Hal::drelResCtlRequest(11, -500, l, 33, 0, 55); }, 11,
         -500, 33, false, 55, 1, kResCtl, nullptr},
        {"ResWithCallback",
         [](ResourceList& l, Cb cb) { return Hal::drelResCtlRequest(11, 500, l, 33, 1, 55, cb); },
         11, 500, 33, true, 55, 1, "drel client drelResCtlRequest with callback",
         "drel client drelResCtlRequest add to request_callbacks"},
        {"SATimeoutP5", [](ResourceList&, Cb) { return Hal::drelSACtlRequest(500, 7, 55); }, -1,
         500, -1, false, 55, 2, kSACtl, nullptr},
        {"SAFull", [](ResourceList&, Cb) { return Hal::drelSACtlRequest(11, -500, 7, 33, 2, 55); },
         11, -500, 33, true, 55, 2, kSACtl, nullptr},
        {"SAWithCallback",
         [](ResourceList&, Cb cb) { return Hal::drelSACtlRequest(11, 500, 7, 33, 0, 55, cb); }, 11,
         500, 33, false, 55, 2, "drel client drelSACtlRequest with callback",
         "drel client drelSACtlRequest add to request_callbacks"},
};

class RequestFormTest : public ClassApiFixture, public ::testing::WithParamInterface<Form> {};

TEST_P(RequestFormTest, SendsItsArgumentsInTheirFieldsAndReturnsTheServiceResult) {
    const Form& form = GetParam();
    DrelRequestParcel sent;
    EXPECT_CALL(*service, request(_, _)).WillOnce(DoAll(SaveArg<0>(&sent), ReturnResult(42)));
    ResourceList list{Resource{0x1011040, "1"}, Resource{0x2, "a,b"}};
    auto callback = std::make_shared<RecordingCallback>();

    EXPECT_EQ(42, form.call(list, callback));

    // The resource list in its order, or the scene as an id without a value.
    DrelRequestParcel expected = requestParcel(
            form.requestType, form.reqId, form.timeout, form.param3, form.flag, form.param5,
            form.requestType == 1 ? std::vector<DrelRequestData>{wireRecord(0x1011040, 0, "1"),
                                                                 wireRecord(0x2, 0, "a,b")}
                                  : std::vector<DrelRequestData>{wireRecord(7, 0, std::nullopt)});
    std::vector<LogLine> expectedLines{info(form.entryLine)};
    if (form.parkedLine != nullptr) {
        ASSERT_NE(nullptr, sent.callback) << "the callback object must travel in the parcel";
        expected.callback = sent.callback;
        expectedLines.push_back(info("new std::shared_ptr DrelCallbackClient callback"));
        expectedLines.push_back(info(form.parkedLine));
        auto clients = parked();
        ASSERT_EQ(1u, clients.size());
        EXPECT_EQ(callback, clients[0]->clientCallback);
        EXPECT_FALSE(clients[0]->is_register);
        EXPECT_FALSE(clients[0]->by_path);
    } else {
        EXPECT_EQ(0u, parked().size());
    }
    EXPECT_EQ(expected, sent);
    EXPECT_EQ(expectedLines, log.linesWithTag(kRequestTag));
}

INSTANTIATE_TEST_SUITE_P(Overloads, RequestFormTest, ::testing::ValuesIn(kForms),
                         [](const ::testing::TestParamInfo<Form>& info) {
                             return info.param.name;
                         });

class RequestTest : public ClassApiFixture {};

TEST_F(RequestTest, UnpairedListsAreRefusedWithoutACallOrAParkedClient) {
    EXPECT_CALL(*service, request(_, _)).Times(0);
    ResourceList unpaired{Resource{0x1011040, "1"}, Resource{0x2, std::nullopt}};
    EXPECT_EQ(-1, Hal::drelResCtlRequest(1, 500, unpaired, -1, 0, 0));
    EXPECT_EQ(-1, Hal::drelResCtlRequest(1, 500, unpaired, -1, 0, 0,
                                         std::make_shared<RecordingCallback>()));
    EXPECT_EQ(log.lines(),
              (std::vector<LogLine>{
                      info("drel client drelResCtlRequest"),
                      error("drelResCtlRequest ERROR: size unmatched for id and value "),
                      info("drel client drelResCtlRequest with callback"),
                      error("drel client drel_resctl_request ERROR: size unmatched for id and "
                            "value ")}));
    EXPECT_EQ(0u, parked().size());
}

TEST_F(RequestTest, ReleasesPassTheHandleAndReturnTheServiceResult) {
    EXPECT_CALL(*service, release(5, _)).WillOnce(ReturnResult(0));
    EXPECT_CALL(*service, release(6, _)).WillOnce(ReturnResult(-4));
    EXPECT_EQ(0, Hal::drelResCtlRelease(5));
    EXPECT_EQ(-4, Hal::drelSACtlRelease(6));
    EXPECT_EQ(log.lines(), (std::vector<LogLine>{info("drel client drelResCtlRelease"),
                                                 info("drel client drelSACtlRelease")}));
}

}  // namespace
}  // namespace qel_test
