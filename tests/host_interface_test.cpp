// The host form of the generated interface library stays in step with the .aidl files and with
// the frozen API dump of version 1.

#include <aidl/vendor/quarn/hardware/drel/DrelRequestParcel.h>
#include <aidl/vendor/quarn/hardware/drel/IDrel.h>
#include <aidl/vendor/quarn/hardware/drel/IDrelCallback.h>
#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <regex>

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
    return std::string(std::istreambuf_iterator<char>(in), {});
}

// The first group of every match of `pattern` in `text`, in order.
std::vector<std::string> matches(const std::string& text, const std::string& pattern) {
    std::vector<std::string> found;
    const std::regex re(pattern);
    for (std::sregex_iterator it(text.begin(), text.end(), re), end; it != end; ++it)
        found.push_back((*it)[1]);
    return found;
}

// Names declared in an .aidl body, comments aside: methods "type name(" or fields "type name;".
std::vector<std::string> declaredNames(const std::string& file, const std::string& pattern) {
    const std::regex comment(R"(/\*[\s\S]*?\*/)");
    return matches(std::regex_replace(readFile(kAidlDir + kTypeDir + file), comment, ""), pattern);
}

TEST(HostInterfaceTest, MethodsKeepTheirTransactionCodesInDeclarationOrder) {
    // clang-format off
#define CODE(name) std::make_pair(#name, IDrel::TRANSACTION_##name)
    const std::vector<std::pair<std::string, uint32_t>> hostForm = {
            CODE(init), CODE(request), CODE(release), CODE(stateRequest), CODE(listeningRegister),
            CODE(listeningUnregister), CODE(propertyGet), CODE(propertySet),
            CODE(thermalListeningRegister), CODE(thermalListeningUnregister), CODE(reserved11),
            CODE(setRelatedSysInfo), CODE(ruleCtl)};
#undef CODE
    // clang-format on
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
    EXPECT_EQ(1, int32_t{IDrel::version});  // a copy: the member has no out-of-line definition
    for (const char* file :
         {"IDrel.aidl", "IDrelCallback.aidl", "DrelRequestData.aidl", "DrelRequestParcel.aidl"}) {
        EXPECT_EQ(readFile(dump + "1/" + kTypeDir + file),
                  readFile(dump + "current/" + kTypeDir + file))
                << file << ": the interface changed after version 1 was frozen";
    }
}

}  // namespace
