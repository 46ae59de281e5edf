// DrelCallbackClient: conversion of the service's reports into the caller's form, its log lines,
// the bookkeeping of one-shot clients in request_callbacks, and the stub's transaction log. The
// client's onCallback is called directly here; the end-to-end path through the service is in
// class_callbacks_test.cpp.

#include <gtest/gtest.h>

#include "support/class_fixture.h"

namespace qel_test {
namespace {

using ::aidl::vendor::quarn::hardware::drel::BnDrelCallback;

std::shared_ptr<DrelCallbackClient> oneShot(const std::shared_ptr<IClientCallback>& cb) {
    return ::ndk::SharedRefBase::make<DrelCallbackClient>(cb, false, false);
}

void park(const std::shared_ptr<DrelCallbackClient>& client) {
    std::lock_guard<std::mutex> lock(request_callback_mutex);
    request_callbacks.push_back(client);
}

const LogLine kFound = cbInfo("callback is found in request_callbacks");

LogLine sizes(int before, int after) {
    return cbInfo(
            "DrelCallback::onCallback request callback called , remove from request_callbacks , "
            "request_callbacks size before " +
            std::to_string(before) + " after " + std::to_string(after));
}

LogLine called(int isRegister) {
    return cbInfo("DrelCallback::onCallback call IClientCallback onCallback is_register " +
                  std::to_string(isRegister));
}

class CallbackClientTest : public ClassApiFixture {
protected:
    std::shared_ptr<RecordingCallback> callback = std::make_shared<RecordingCallback>();
};

TEST_F(CallbackClientTest, IdFormDeliversEveryRecordAndLogsEachWithOrWithoutItsValue) {
    auto client = ::ndk::SharedRefBase::make<DrelCallbackClient>(callback, true, false);
    ASSERT_TRUE(
            client->onCallback({wireRecord(0x1011040, 0, "1"), wireRecord(0x2, 0, std::nullopt)})
                    .isOk());

    ASSERT_EQ(1u, callback->reports().size());
    EXPECT_EQ((ResourcePairs{{0x1011040, "1"}, {0x2, ""}}), pairsOf(callback->reports()[0]));
    EXPECT_EQ(
            log.lines(),
            (std::vector<LogLine>{
                    cbInfo("DrelCallbackClient::onCallback res_Id 0x1011040 res_Value 1 "
                           "is_register 1"),
                    cbInfo("DrelCallbackClient::onCallback res_Id 0x2 is_register 1"), called(1)}));
}

TEST_F(CallbackClientTest, PathFormDeliversAnEmptyStringForAMissingPathOrValue) {
    auto pathCallback = std::make_shared<RecordingPathCallback>();
    auto client = ::ndk::SharedRefBase::make<DrelCallbackClient>(pathCallback, true, true);
    DrelRequestData noPath;
    noPath.resValue = "2";
    client->onCallback({wirePath("/a", "1"), noPath, wirePath("/c", std::nullopt)});

    auto reports = pathCallback->reports();
    ASSERT_EQ(1u, reports.size());
    EXPECT_EQ((std::vector<std::string>{"/a", "", "/c"}), reports[0].paths);
    EXPECT_EQ((std::vector<std::string>{"1", "2", ""}), reports[0].values);
    // Only a record holding both a path and a value gets its own line.
    EXPECT_EQ(log.lines(),
              (std::vector<LogLine>{
                      cbInfo("DrelCallbackClient::onCallback res_Id /a res_Value 1 is_register 1"),
                      called(1)}));
}

TEST_F(CallbackClientTest, AOneShotClientLeavesEveryParkedEntryOnItsFirstReportOnly) {
    auto client = oneShot(callback);
    auto x = oneShot(callback);
    auto y = oneShot(callback);
    for (const auto& c : {client, x, client, y}) park(c);
    ASSERT_TRUE(client->onCallback({}).isOk());

    EXPECT_TRUE(callback->reports().empty()) << "an empty report calls nothing";
    EXPECT_EQ(parked(), (std::vector<std::shared_ptr<DrelCallbackClient>>{x, y}));
    EXPECT_EQ(log.lines(), (std::vector<LogLine>{kFound, kFound, sizes(4, 2)}));

    log.clear();
    client->onCallback({wireRecord(0x5, 0, "2")});
    EXPECT_EQ(1u, callback->reports().size()) << "the caller hears every report it is given";
    EXPECT_EQ(log.lines(),
              (std::vector<LogLine>{
                      cbInfo("DrelCallbackClient::onCallback res_Id 0x5 res_Value 2 is_register 0"),
                      called(0),
                      {ANDROID_LOG_ERROR, std::string("DrelFramework-lib-vendor"),
                       "callback not found in request_callbacks"},
                      sizes(2, 2)}));
}

TEST_F(CallbackClientTest, AMissingCallerCallbackIsSkippedSilently) {
    auto client = oneShot(nullptr);
    auto pathClient = ::ndk::SharedRefBase::make<DrelCallbackClient>(
            std::shared_ptr<IClientCallbackByPath>(), true, true);
    park(client);
    client->onCallback({wireRecord(0x5, 0, std::nullopt)});
    pathClient->onCallback({wirePath("/a", "1")});

    EXPECT_EQ(0u, parked().size());
    EXPECT_FALSE(log.contains(called(0)));
    EXPECT_FALSE(log.contains(called(1)));
}

TEST_F(CallbackClientTest, EveryNewClientPutsTheUntaggedTransactionLogIntoTheStubHook) {
    int foreignCalls = 0;
    BnDrelCallback::logFunc = [&](const BnDrelCallback::TransactionLog&) { ++foreignCalls; };
    auto client = oneShot(callback);
    ASSERT_TRUE(BnDrelCallback::logFunc);

    BnDrelCallback::TransactionLog entry{};
    entry.method_name = "onCallback";
    entry.exception_message = "m";
    entry.exception_code = -8;
    entry.transaction_error = 3;
    entry.service_specific_error_code = 9;
    BnDrelCallback::logFunc(entry);

    EXPECT_EQ(0, foreignCalls);
    EXPECT_EQ(log.lines(),
              (std::vector<LogLine>{
                      {ANDROID_LOG_INFO, std::nullopt,
                       "BnDrelCallback::logFunc NDK BACKEND method_name onCallback exception_code "
                       "-8 exception_message m transaction_error 3 service_specific_error_code "
                       "9"}}));
}

}  // namespace
}  // namespace qel_test
