// Resource records: the pairing check, the conversion to and from the wire, and the
// transaction-log line of the callback stub.

#include <gtest/gtest.h>

#include "halclient.h"
#include "halclient/halclient_internal.h"
#include "halclient/wire.h"
#include "support/service_fixture.h"

namespace qel_test {
namespace {

using ::aidl::vendor::quarn::hardware::drel::BnDrelCallback;
using QelClient::Resource;

struct PairingCase {
    const char* name;
    std::list<Resource> list;
    bool valid;
};

class CheckResourceListTest : public ::testing::TestWithParam<PairingCase> {};

TEST_P(CheckResourceListTest, AcceptsOnlyListsWhoseIdsAndValuesComeInPairs) {
    std::list<Resource> list = GetParam().list;
    EXPECT_EQ(GetParam().valid, checkResourceList(list));
}

INSTANTIATE_TEST_SUITE_P(
        Lists, CheckResourceListTest,
        ::testing::Values(PairingCase{"Empty", {}, true},
                          PairingCase{"IdWithValue", {{0x1011040, "1"}}, true},
                          PairingCase{"IdWithoutValue", {{0x1011040, std::nullopt}}, false},
                          PairingCase{"IdWithEmptyValue", {{0x1011040, ""}}, false},
                          PairingCase{"ValueWithoutId", {{0, "1"}}, false},
                          PairingCase{"NeitherIdNorValue", {{0, std::nullopt}}, true},
                          PairingCase{"ZeroIdWithEmptyValue", {{0, ""}}, true},
                          PairingCase{"ValidThenInvalid",
                                      {{0x1011040, "1"}, {0x1011050, std::nullopt}},
                                      false},
                          PairingCase{"NegativeIdWithValue", {{-1, "x"}}, true}),
        [](const auto& info) { return std::string(info.param.name); });

TEST(WireConversionTest, EveryRecordCarriesAPresentValueAndNoPath) {
    std::vector<Resource> resources{{0x10, "5"}, {0x20, std::nullopt}, {0, ""}};
    std::vector<DrelRequestData> wire;
    wire.emplace_back();  // appending keeps what was there
    qel_internal::appendToWire(wire, resources);
    ASSERT_EQ(4u, wire.size());
    const int ids[] = {0x10, 0x20, 0};
    const char* values[] = {"5", "", ""};
    for (size_t i = 0; i < 3; ++i) {
        const DrelRequestData& record = wire[i + 1];
        EXPECT_EQ(ids[i], record.resId);
        EXPECT_EQ(0, record.resParam);
        EXPECT_EQ(std::optional<std::string>(values[i]), record.resValue) << i;
        EXPECT_FALSE(record.resPath.has_value());
        EXPECT_FALSE(record.resExtra.has_value());
    }
}

TEST(WireConversionTest, ReportedRecordsBecomeResourcesWithPresentValues) {
    DrelRequestData absent;
    absent.resId = 3;
    absent.resPath = "/ignored";
    Resource fromAbsent = qel_internal::fromWire(absent);
    EXPECT_EQ(3, fromAbsent.resId);
    EXPECT_EQ(std::optional<std::string>(""), fromAbsent.resValue);
    DrelRequestData present;
    present.resId = -4;
    present.resValue = "1,2";
    EXPECT_EQ(std::optional<std::string>("1,2"), qel_internal::fromWire(present).resValue);
}

class RecordingClient : public IClientCallback {
public:
    void onCallback(std::list<Resource> resources) override { received = std::move(resources); }
    std::list<Resource> received;
};

class PrintLogTest : public ServiceFixture {};

TEST_F(PrintLogTest, EveryClientInstallsTheUntaggedTransactionLogLine) {
    BnDrelCallback::logFunc = nullptr;
    auto client = ::ndk::SharedRefBase::make<DrelCallbackClient>(
            std::make_shared<RecordingClient>(), true, false);
    ASSERT_TRUE(static_cast<bool>(BnDrelCallback::logFunc));

    // A report that reaches the client through the binder runs the stub's log hook.
    std::shared_ptr<IDrelCallback> proxy;
    EXPECT_CALL(*service, listeningRegister(::testing::_, ::testing::_, ::testing::_))
            .WillOnce(::testing::DoAll(::testing::SaveArg<1>(&proxy), ReturnResult3(1)));
    ::ndk::SpAIBinder binder(AServiceManager_checkService(kInstance));
    int32_t handle = 0;
    ASSERT_TRUE(::aidl::vendor::quarn::hardware::drel::IDrel::fromBinder(binder)
                        ->listeningRegister(DrelRequestParcel{}, client, &handle)
                        .isOk());
    log.clear();
    ASSERT_TRUE(proxy->onCallback({}).isOk());
    EXPECT_TRUE(log.contains({ANDROID_LOG_INFO, std::nullopt,
                              "BnDrelCallback::logFunc NDK BACKEND method_name onCallback "
                              "exception_code 0 exception_message  transaction_error 0 "
                              "service_specific_error_code 0"}));

    log.clear();
    BnDrelCallback::TransactionLog failed{};
    failed.method_name = "m";
    failed.exception_code = -8;
    failed.exception_message = "why";
    failed.transaction_error = -32;
    failed.service_specific_error_code = 4;
    qel_internal::printLog(failed);
    EXPECT_EQ(log.lines(),
              (std::vector<LogLine>{{ANDROID_LOG_INFO, std::nullopt,
                                     "BnDrelCallback::logFunc NDK BACKEND method_name m "
                                     "exception_code -8 exception_message why transaction_error "
                                     "-32 service_specific_error_code 4"}}));
}

}  // namespace
}  // namespace qel_test
