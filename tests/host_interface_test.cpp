// The host form of the generated interface library stays in step with the .aidl files and with
// the frozen API dump of version 1.

#include <aidl/vendor/quarn/hardware/drel/DrelRequestParcel.h>
#include <aidl/vendor/quarn/hardware/drel/IDrel.h>
#include <aidl/vendor/quarn/hardware/drel/IDrelCallback.h>
#include <gtest/gtest.h>

#include <fstream>
#include <regex>
#include <sstream>

namespace {

using ::aidl::vendor::quarn::hardware::drel::DrelRequestData;
using ::aidl::vendor::quarn::hardware::drel::DrelRequestParcel;
using ::aidl::vendor::quarn::hardware::drel::IDrel;
using ::aidl::vendor::quarn::hardware::drel::IDrelCallback;

const std::string kAidlDir = std::string(QEL_SOURCE_DIR) + "/aidl/";
const std::string kTypeDir = "vendor/quarn/hardware/drel/";

std::string readFile(const std::string& path) {
    std::ifstream in(path);
    EXPECT_TRUE(in.good()) << path;
    std::stringstream text;
    text << in.rdbuf();
    return text.str();
}

// The first group of every match of `pattern` in `text`, in order.
std::vector<std::string> matches(const std::string& text, const std::string& pattern) {
    std::vector<std::string> found;
    std::regex re(pattern);
    for (auto it = std::sregex_iterator(text.begin(), text.end(), re); it != std::sregex_iterator();
         ++it) {
        found.push_back((*it)[1]);
    }
    return found;
}

// Names declared in an .aidl body, comments aside: methods "type name(" or fields "type name;".
std::vector<std::string> declaredNames(const std::string& file, const std::string& pattern) {
    std::string text = readFile(kAidlDir + kTypeDir + file);
    return matches(std::regex_replace(text, std::regex(R"(/\*[\s\S]*?\*/)"), ""), pattern);
}

TEST(HostInterfaceTest, MethodsKeepTheirTransactionCodesInDeclarationOrder) {
    const std::vector<std::pair<std::string, uint32_t>> hostForm = {
            {"init", IDrel::TRANSACTION_init},
            {"request", IDrel::TRANSACTION_request},
            {"release", IDrel::TRANSACTION_release},
            {"stateRequest", IDrel::TRANSACTION_stateRequest},
            {"listeningRegister", IDrel::TRANSACTION_listeningRegister},
            {"listeningUnregister", IDrel::TRANSACTION_listeningUnregister},
            {"propertyGet", IDrel::TRANSACTION_propertyGet},
            {"propertySet", IDrel::TRANSACTION_propertySet},
            {"thermalListeningRegister", IDrel::TRANSACTION_thermalListeningRegister},
            {"thermalListeningUnregister", IDrel::TRANSACTION_thermalListeningUnregister},
            {"reserved11", IDrel::TRANSACTION_reserved11},
            {"setRelatedSysInfo", IDrel::TRANSACTION_setRelatedSysInfo},
            {"ruleCtl", IDrel::TRANSACTION_ruleCtl},
    };
    std::vector<std::string> aidl = declaredNames("IDrel.aidl", R"(\b(\w+)\s*\()");
    ASSERT_EQ(hostForm.size(), aidl.size());
    for (size_t i = 0; i < aidl.size(); ++i) {
        EXPECT_EQ(aidl[i], hostForm[i].first);
        EXPECT_EQ(FIRST_CALL_TRANSACTION + i, hostForm[i].second) << aidl[i];
    }
    EXPECT_EQ(std::vector<std::string>{"onCallback"},
              declaredNames("IDrelCallback.aidl", R"(\b(\w+)\s*\()"));
    EXPECT_EQ(FIRST_CALL_TRANSACTION + 0, IDrelCallback::TRANSACTION_onCallback);
}

TEST(HostInterfaceTest, ParcelableFieldsKeepTheirOrder) {
    const char* field = R"(\n[ \t]+[^\n;]*\s(\w+)\s*;)";
    // toString() prints the fields in the order they are declared in.
    const char* printed = R"([{ ](\w+): )";
    EXPECT_EQ(declaredNames("DrelRequestData.aidl", field),
              matches(DrelRequestData{}.toString(), printed));
    EXPECT_EQ(declaredNames("DrelRequestParcel.aidl", field),
              matches(DrelRequestParcel{}.toString(), printed));
}

TEST(HostInterfaceTest, VersionAndHashAreThoseOfTheFrozenDump) {
    std::string dump = kAidlDir + "aidl_api/vendor.quarn.hardware.drel/";
    std::string hash = readFile(dump + "1/.hash");
    hash.erase(hash.find_last_not_of("\n") + 1);
    EXPECT_EQ(hash, IDrel::hash);
    EXPECT_EQ(hash, IDrelCallback::hash);
    const int32_t version = IDrel::version;  // a copy: the member has no out-of-line definition
    EXPECT_EQ(1, version);
    for (const char* file :
         {"IDrel.aidl", "IDrelCallback.aidl", "DrelRequestData.aidl", "DrelRequestParcel.aidl"}) {
        EXPECT_EQ(readFile(dump + "1/" + kTypeDir + file),
                  readFile(dump + "current/" + kTypeDir + file))
                << file << ": the interface changed after version 1 was frozen";
    }
}

}  // namespace
