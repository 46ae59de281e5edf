// Scenario builders: texts and integers to resource lists, including the inputs that skip items,
// read past one opcode table into the next, or run past the end of all of them.

#include <gtest/gtest.h>

#include <functional>
#include <ostream>

#include "QelWrapper.h"
#include "support/wrapper_test_util.h"

namespace qel_test {
namespace {

using Builder = std::function<std::vector<QelClient::Resource>(std::string)>;

struct BuilderCase {
    const char* builder;
    std::string text;
    ResourcePairs expected;
};

void PrintTo(const BuilderCase& c, std::ostream* os) {
    *os << c.builder << "(\"" << c.text << "\")";
}

Builder builderNamed(const std::string& name) {
    if (name == "getTargetLoadList") return getTargetLoadList;
    if (name == "getColocationList") return getColocationList;
    if (name == "getGameAdpList") return getGameAdpList;
    return nullptr;
}

class BuilderTableTest : public ::testing::TestWithParam<BuilderCase> {};

TEST_P(BuilderTableTest, BuildsTheExpectedList) {
    const BuilderCase& c = GetParam();
    Builder build = builderNamed(c.builder);
    ASSERT_TRUE(build);
    EXPECT_EQ(c.expected, pairsOf(build(c.text))) << c.builder << "(\"" << c.text << "\")";
}

// Nineteen opcodes in the order of the block, to read the expected lists off.
const int32_t kBlock[19] = {0x010108A0, 0x010108B0, 0x010108C0, 0x01010B10, 0x01010B20,
                            0x01010B30, 0x01020070, 0x01010B90, 0x01010BA0, 0x01010BB0,
                            0x01020080, 0x01010010, 0x01010020, 0x01010030, 0x01020050,
                            0x010100A0, 0x010100B0, 0x010100C0, 0x01020060};

std::string numbersTo(int last) {
    std::string text;
    for (int i = 1; i <= last; ++i) text += (i > 1 ? "," : "") + std::to_string(i);
    return text;
}

ResourcePairs wholeBlockFromTargetLoad() {
    ResourcePairs out;
    for (int i = 0; i < 19; ++i) out.emplace_back(kBlock[i], std::to_string(i + 1));
    return out;
}

INSTANTIATE_TEST_SUITE_P(
        TargetLoad, BuilderTableTest,
        ::testing::Values(
                BuilderCase{"getTargetLoadList", "", {}},
                BuilderCase{"getTargetLoadList",
                            "100,200,300",
                            {{0x010108A0, "100"}, {0x010108B0, "200"}, {0x010108C0, "300"}}},
                // One "-" anywhere switches every item to the ranged form.
                BuilderCase{"getTargetLoadList", "100,-1,300", {}},
                BuilderCase{"getTargetLoadList", "-1,-1,-1", {}},
                BuilderCase{"getTargetLoadList",
                            "100,,300",
                            {{0x010108A0, "100"}, {0x010108B0, "300"}}},
                BuilderCase{
                        "getTargetLoadList", "0-50,1-60", {{0x010108A0, "50"}, {0x010108B0, "60"}}},
                BuilderCase{"getTargetLoadList", "50,1-60", {{0x010108B0, "60"}}},
                BuilderCase{"getTargetLoadList", "a-b-c", {{0x010108A0, "b"}}},
                BuilderCase{"getTargetLoadList",
                            " 100 , 200",
                            {{0x010108A0, " 100 "}, {0x010108B0, " 200"}}},
                // The fourth position reads the first word of the next table.
                BuilderCase{"getTargetLoadList",
                            "1,2,3,4",
                            {{0x010108A0, "1"},
                             {0x010108B0, "2"},
                             {0x010108C0, "3"},
                             {0x01010B10, "4"}}},
                // Past the end of the whole block an item appends nothing.
                BuilderCase{"getTargetLoadList", numbersTo(21), wholeBlockFromTargetLoad()}));

INSTANTIATE_TEST_SUITE_P(
        Colocation, BuilderTableTest,
        ::testing::Values(BuilderCase{"getColocationList", "colocation", {}},
                          BuilderCase{"getColocationList", "colocation:1", {{0x01011040, "1"}}},
                          BuilderCase{"getColocationList", "Colocation:1", {}},
                          BuilderCase{"getColocationList", "colocation:", {}},
                          BuilderCase{"getColocationList", "colocation:1:2", {{0x01011040, "1"}}},
                          BuilderCase{"getColocationList",
                                      "groupmigrate:6-3",
                                      {{0x01010FB0, "6"}, {0x01010FC0, "3"}}},
                          BuilderCase{"getColocationList", "groupmigrate:3-6", {}},
                          BuilderCase{"getColocationList", "groupmigrate:3-3", {}},
                          BuilderCase{"getColocationList", "groupmigrate:-1-5", {}},
                          BuilderCase{"getColocationList",
                                      "groupmigrate:5--1",
                                      {{0x01010FB0, "5"}, {0x01010FC0, "1"}}},
                          BuilderCase{"getColocationList", "groupmigrate:x-5", {}},
                          BuilderCase{"getColocationList",
                                      "groupmigrate:5-x",
                                      {{0x01010FB0, "5"}, {0x01010FC0, "0"}}},
                          BuilderCase{"getColocationList", "groupmigrate:6", {}},
                          BuilderCase{"getColocationList", "groupmigrate:--", {}},
                          BuilderCase{"getColocationList", "groupmigrate:99999999999-3", {}},
                          // The numbers are sent as their decimal text, not as written.
                          BuilderCase{"getColocationList",
                                      "groupmigrate: 06-3x",
                                      {{0x01010FB0, "6"}, {0x01010FC0, "3"}}},
                          BuilderCase{"getColocationList",
                                      "colocation:1,groupmigrate:6-3,other:5,colocation:2",
                                      {{0x01011040, "1"},
                                       {0x01010FB0, "6"},
                                       {0x01010FC0, "3"},
                                       {0x01011040, "2"}}}));

INSTANTIATE_TEST_SUITE_P(
        GameAdp, BuilderTableTest,
        ::testing::Values(
                BuilderCase{"getGameAdpList", "", {}},
                BuilderCase{"getGameAdpList",
                            "1,2,3,4;5,6",
                            {{0x01010B10, "1"},
                             {0x01010B20, "2"},
                             {0x01010B30, "3"},
                             {0x01020070, "4"},
                             {0x01010B90, "5"},
                             {0x01010BA0, "6"}}},
                // A group without "," is skipped but still counts as a group.
                BuilderCase{"getGameAdpList", "7;8,9", {{0x01010B90, "8"}, {0x01010BA0, "9"}}},
                BuilderCase{
                        "getGameAdpList", " 1 ,\t2\r\n;", {{0x01010B10, "1"}, {0x01010B20, "2"}}},
                BuilderCase{"getGameAdpList", "-1, ,", {{0x01010B10, "-1"}, {0x01010B20, ""}}},
                BuilderCase{"getGameAdpList", ",;1,", {{0x01010B90, "1"}}},
                BuilderCase{"getGameAdpList",
                            "1,;2,;3,;4,;5,",
                            {{0x01010B10, "1"},
                             {0x01010B90, "2"},
                             {0x01010010, "3"},
                             {0x010100A0, "4"}}},
                BuilderCase{"getGameAdpList",
                            "1,2,3,4,5",
                            {{0x01010B10, "1"},
                             {0x01010B20, "2"},
                             {0x01010B30, "3"},
                             {0x01020070, "4"},
                             {0x01010B90, "5"}}},
                // The last table's fifth item lies past the whole block: nothing.
                BuilderCase{"getGameAdpList",
                            "a,;b,;c,;1,2,3,4,5",
                            {{0x01010B10, "a"},
                             {0x01010B90, "b"},
                             {0x01010010, "c"},
                             {0x010100A0, "1"},
                             {0x010100B0, "2"},
                             {0x010100C0, "3"},
                             {0x01020060, "4"}}}));

TEST(GameUpgradeListTest, ReadsOnlyLevelAndText) {
    const struct {
        int level;
        std::string text;
        ResourcePairs expected;
    } cases[] = {
            {0, "", {}},
            {2, "abc", {{0x01011040, "2"}, {0x010115B0, "abc"}}},
            {1, "", {{0x01011040, "1"}}},
            {-3, " x", {{0x010115B0, " x"}}},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(c.expected, pairsOf(getGameUpgradeList(0, 0, c.level, 0, 0, c.text)));
        EXPECT_EQ(c.expected, pairsOf(getGameUpgradeList(-1, 9, c.level, 7, -5, c.text)))
                << "the other integers must not matter";
    }
}

TEST(ResourceInfoTest, MakesAResourceWithAPresentValue) {
    EXPECT_EQ((ResourcePairs{{0x01011040, ""}}), pairsOf({QelResourceInfo(0x01011040, "")}));
    EXPECT_EQ((ResourcePairs{{-1, "v"}}), pairsOf({QelResourceInfo(-1, "v")}));
}

// Generated texts built from the tokens the grammars know: each builder gives the same list for
// the same text, and every resource it makes carries a value.
TEST(BuilderPropertyTest, OutputDependsOnlyOnTheInputAndAlwaysCarriesValues) {
    const std::vector<std::string> tokens = {"colocation", "groupmigrate", ":", ",", ";", "-", "-1",
                                             "7",          "12",           " ", "x"};
    TextGenerator gen(42);
    const char* builders[] = {"getTargetLoadList", "getColocationList", "getGameAdpList"};
    size_t nonEmpty = 0;
    for (int i = 0; i < 1500; ++i) {
        std::string text = gen.join(tokens, 12);
        for (const char* name : builders) {
            Builder build = builderNamed(name);
            ResourcePairs first = pairsOf(build(text));
            ASSERT_EQ(first, pairsOf(build(text))) << name << "(\"" << text << "\")";
            for (const auto& resource : first) {
                ASSERT_TRUE(resource.second.has_value()) << name << "(\"" << text << "\")";
            }
            nonEmpty += first.empty() ? 0 : 1;
        }
        ASSERT_EQ(pairsOf(getGameUpgradeList(0, 0, i % 3, 0, 0, text)),
                  pairsOf(getGameUpgradeList(1, 1, i % 3, 1, 1, text)));
    }
    EXPECT_GT(nonEmpty, 300u) << "the generator must reach lists that are not empty";
}

}  // namespace
}  // namespace qel_test
