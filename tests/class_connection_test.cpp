// The class API's connection: lazy connect, one connect under contention, reconnect after a
// death, waiting for a declared service, the not-declared path, and the failure line and reset
// of every operation.

#include <android/binder_manager.h>
#include <gtest/gtest.h>
#include <hostbinder/hostbinder.h>

#include <atomic>
#include <future>
#include <map>
#include <memory>
#include <thread>

#include "support/class_fixture.h"

namespace qel_test {
namespace {

using ::testing::_;

class ClassConnectionTest : public ClassApiFixture {};

TEST_F(ClassConnectionTest, DrelInitConnectsOnceAndCallsInitThroughAProxy) {
    EXPECT_CALL(*service, init()).Times(2).WillRepeatedly(ReturnOk());
    Hal::drel_init();
    Hal::drel_init();
    EXPECT_EQ(log.lines(), std::vector<LogLine>(2, info("drel client drel_init")));
    EXPECT_EQ(2, hostbinder::serviceManagerCalls()) << "isDeclared + waitForService, once";
    std::shared_lock<std::shared_timed_mutex> lock(g_drel_hal_lock);
    ASSERT_NE(nullptr, g_drel_hal);
    EXPECT_TRUE(g_drel_hal->isRemote()) << "the library must hold a proxy, not the service";
}

TEST_F(ClassConnectionTest, EightThreadsConnectingAtOnceConnectOnce) {
    EXPECT_CALL(*service, init()).Times(8).WillRepeatedly(ReturnOk());
    std::atomic<int> ready{0};
    std::vector<std::thread> threads;
    for (int i = 0; i < 8; ++i) {
        threads.emplace_back([&] {
            ++ready;
            while (ready < 8) std::this_thread::yield();
            Hal::drel_init();
        });
    }
    for (auto& t : threads) t.join();
    EXPECT_EQ(2, hostbinder::serviceManagerCalls());
}

// A death, also one between the look-up and the link (the call fails after the link line), leaves
// no proxy behind, and the next call connects to the restarted service.
TEST_F(ClassConnectionTest, ReconnectsAfterServiceDeathWithoutCallerAction) {
    hostbinder::dieAtNextDeathLink(kInstance);
    EXPECT_EQ(-1, Hal::drelResCtlRelease(1));
    EXPECT_EQ(log.lines(),
              (std::vector<LogLine>{info("drel client drelResCtlRelease"),
                                    error("Unable to link to g_drel_hal death notifications!")}));
    EXPECT_FALSE(classConnected());
    startService();
    EXPECT_CALL(*service, init()).WillOnce(ReturnOk());
    Hal::drel_init();
    killService();
    EXPECT_TRUE(log.contains(error("Drel HAL Service died")));
    EXPECT_FALSE(classConnected());
    startService();
    EXPECT_CALL(*service, init()).WillOnce(ReturnOk());
    log.clear();
    Hal::drel_init();
    EXPECT_EQ(1u, log.lines().size()) << "no failure is logged: the call reconnected first";
    // A second death is delivered too: the new connection linked a new recipient.
    killService();
    EXPECT_EQ(1, log.count("Drel HAL Service died"));
}

TEST_F(ClassConnectionTest, DeclaredServiceThatIsNotRunningMakesDrelInitWaitForIt) {
    hostbinder::reset();
    hostbinder::declareService(kInstance);
    auto done = std::async(std::launch::async, [] { Hal::drel_init(); });
    // Started only once drel_init has looked the service up, so that only a wait finds it.
    while (hostbinder::serviceManagerCalls() < 2) std::this_thread::yield();
    service = ::ndk::SharedRefBase::make<::testing::NiceMock<MockDrel>>();
    EXPECT_CALL(*service, init()).WillOnce(ReturnOk());
    ASSERT_EQ(EX_NONE, AServiceManager_addService(service->asBinder().get(), kInstance));
    done.get();
}

TEST_F(ClassConnectionTest, UndeclaredServiceLogsTheSecondAnswerAndFails) {
    hostbinder::reset();
    EXPECT_EQ(-1, Hal::drelResCtlRelease(1));
    EXPECT_EQ(log.lines(),
              (std::vector<LogLine>{info("drel client drelResCtlRelease"),
                                    error("Drel is not declared, AServiceManager_isDeclared:0")}));
    EXPECT_EQ(2, hostbinder::serviceManagerCalls()) << "isDeclared is asked twice";
}

// Every operation, under the name its failure line gives it; -1 (or an empty property) when it
// fails. The lists are paired, so that only the service's answer decides.
ResourceList gList{Resource{0x10, "1"}};
std::vector<std::string> gStates;
std::map<std::string, std::string> gStateMap;
std::shared_ptr<RecordingCallback> cb() {
    return std::make_shared<RecordingCallback>();
}
std::shared_ptr<RecordingPathCallback> pathCb() {
    return std::make_shared<RecordingPathCallback>();
}

const std::pair<const char*, int (*)()> kOperations[] = {
        {"drel_init",
         [] {
             Hal::drel_init();
             return classConnected() ? 0 : -1;
         }},
        {"drelDumpToDoQueue", Hal::drelDumpToDoQueue},
        {"drelDumpRunMap", Hal::drelDumpRunMap},
        {"drelDumpActiveResMap", Hal::drelDumpActiveResMap},
        {"drelDumpResRequest", Hal::drelDumpResRequest},
        {"drelDumpResInfo", Hal::drelDumpResInfo},
        {"drelDumpSAInfo", Hal::drelDumpSAInfo},
        {"drelDumpPidFdList", Hal::drelDumpPidFdList},
        {"drelDumpPidfdMonitorMap", Hal::drelDumpPidfdMonitorMap},
        {"drelDumpResRecordList", Hal::drelDumpResRecordList},
        {"drelHistoryRequestRecordOn", Hal::drelHistoryRequestRecordOn},
        {"drelHistoryRequestRecordOff", Hal::drelHistoryRequestRecordOff},
        {"drelPropertyGet",
         [] { return std::unique_ptr<char[]>(Hal::drelPropertyGet("p"))[0] == 0 ? -1 : 0; }},
        {"drelPropertySet", [] { return Hal::drelPropertySet("p", "1"); }},
        {"drelResCtlRequest", [] { return Hal::drelResCtlRequest(500, gList, 0); }},
        {"drel client DrelCallbackClient with callback",
         [] { return Hal::drelResCtlRequest(1, 500, gList, 0, 0, 0, cb()); }},
        {"drelSACtlRequest", [] { return Hal::drelSACtlRequest(500, 7, 0); }},
        {"drelSACtlRequest with callback",
         [] { return Hal::drelSACtlRequest(1, 500, 7, 0, 0, 0, cb()); }},
        {"drelResCtlRelease", [] { return Hal::drelResCtlRelease(1); }},
        {"drelSACtlRelease", [] { return Hal::drelSACtlRelease(1); }},
        {"drel_res_listening_register_map",
         [] { return Hal::drelResListeningRegister(gList, 0, cb()); }},
        {"drelResListeningUnRegister", [] { return Hal::drelResListeningUnRegister(1); }},
        {"drelResStateRequest",
         [] {
             ResourceList states;
             return Hal::drelResStateRequest(gList, 0, states);
         }},
        {"drelThermalNotify", [] { return Hal::drelThermalNotify(gList, 0); }},
        {"drelThermalListeningRegister",
         [] { return Hal::drelThermalListeningRegister({1}, cb()); }},
        {"drelThermalListeningUnregister", [] { return Hal::drelThermalListeningUnregister(1); }},
        {"drel_resctl_request_by_path",
         [] { return Hal::drel_resctl_request_by_path(1, 1, {"/a"}, {"1"}, 0, 0, 0); }},
        {"drel client drel_resctl_request_with_callback",
         [] {
             return Hal::drel_resctl_request_with_callback_by_path(1, 1, {"/a"}, {"1"}, 0, 0, 0,
                                                                   pathCb());
         }},
        {"drel_res_state_request",
         [] { return Hal::drel_res_state_request_by_path({"/a"}, {}, 0, gStates); }},
        {"drel_res_state_request_map",
         [] {
             return Hal::drel_res_state_request_map_by_path({{"/a", ""}}, 0, gStateMap);
         }},
        {"drel_res_listening_register",
         [] { return Hal::drel_res_listening_register_by_path({"/a"}, 0, pathCb()); }},
        {"drel_res_listening_register_map",
         [] {
             return Hal::drel_res_listening_register_map_by_path({{"/a", ""}}, 0, pathCb());
         }},
};

TEST_F(ClassConnectionTest, WithoutADeclaredServiceEveryOperationFailsAndParksNothing) {
    hostbinder::reset();
    for (const auto& [name, call] : kOperations) {
        SCOPED_TRACE(name);
        EXPECT_EQ(-1, call());
    }
    EXPECT_EQ(0u, parked().size());
}

TEST_F(ClassConnectionTest, AFailedCallLogsTheOperationsNameAndDropsTheProxy) {
    // No answer is set: every method returns an empty status, which is not OK.
    for (const auto& [name, call] : kOperations) {
        SCOPED_TRACE(name);
        log.clear();
        EXPECT_EQ(-1, call());
        EXPECT_TRUE(log.contains(failed(name)));
        EXPECT_FALSE(classConnected()) << "the next call reconnects";
    }
    EXPECT_EQ(3u, parked().size()) << "a failed request keeps its one-shot client parked";
    EXPECT_TRUE(groups().empty()) << "a failed registration keeps no group";
    EXPECT_TRUE(gStates.empty());
    EXPECT_TRUE(gStateMap.empty());
}

}  // namespace
}  // namespace qel_test
