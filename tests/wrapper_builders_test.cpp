// Scenario builders: texts and integers to resource lists, including the inputs that skip items,
// read past one opcode table into the next, or run past the end of all of them, and the memory a
// list takes.

#include <gtest/gtest.h>

#include <algorithm>
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
    // The expected list as "opcode=value|opcode=value...", opcodes in hex.
    std::string expected;
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

ResourcePairs parsePairs(const std::string& text) {
    ResourcePairs pairs;
    for (size_t start = 0; start < text.size();) {
        size_t end = std::min(text.find('|', start), text.size());
        size_t eq = text.find('=', start);
        pairs.emplace_back(std::stoi(text.substr(start, eq - start), nullptr, 16),
                           text.substr(eq + 1, end - eq - 1));
        start = end + 1;
    }
    return pairs;
}

class BuilderTableTest : public ::testing::TestWithParam<BuilderCase> {};

// Every list also takes memory in proportion to what it holds, however long the text.
TEST_P(BuilderTableTest, BuildsTheExpectedList) {
    const BuilderCase& c = GetParam();
    Builder build = builderNamed(c.builder);
    ASSERT_TRUE(build);
    std::vector<QelClient::Resource> list = build(c.text);
    EXPECT_EQ(parsePairs(c.expected), pairsOf(list));
    EXPECT_LE(list.capacity(), 2 * list.size());
    if (std::string(c.builder) == "getColocationList") {
        EXPECT_EQ(list.size(), list.capacity()) << "counted first, then sized once";
    }
}

std::string repeated(const std::string& unit, int times) {
    std::string text;
    for (int i = 0; i < times; ++i) text += unit;
    return text;
}

// The whole opcode block, read off by getTargetLoadList's positions 0 to 18 of "1,2,...,21".
const char* const kWholeBlock =
        "10108A0=1|10108B0=2|10108C0=3|1010B10=4|1010B20=5|1010B30=6|1020070=7|1010B90=8|"
        "1010BA0=9|1010BB0=10|1020080=11|1010010=12|1010020=13|1010030=14|1020050=15|"
        "10100A0=16|10100B0=17|10100C0=18|1020060=19";

// clang-format off
INSTANTIATE_TEST_SUITE_P(TargetLoad, BuilderTableTest, ::testing::Values(
        BuilderCase{"getTargetLoadList", "", ""},
        BuilderCase{"getTargetLoadList", "100,200,300", "10108A0=100|10108B0=200|10108C0=300"},
        // One "-" anywhere switches every item to the ranged form.
        BuilderCase{"getTargetLoadList", "100,-1,300", ""},
        BuilderCase{"getTargetLoadList", "-1,-1,-1", ""},
        BuilderCase{"getTargetLoadList", "100,,300", "10108A0=100|10108B0=300"},
        BuilderCase{"getTargetLoadList", "0-50,1-60", "10108A0=50|10108B0=60"},
        BuilderCase{"getTargetLoadList", "50,1-60", "10108B0=60"},
        BuilderCase{"getTargetLoadList", "a-b-c", "10108A0=b"},
        BuilderCase{"getTargetLoadList", " 100 , 200", "10108A0= 100 |10108B0= 200"},
        // The fourth position reads the next table; past the whole block nothing is appended.
        BuilderCase{"getTargetLoadList", "1,2,3,4", "10108A0=1|10108B0=2|10108C0=3|1010B10=4"},
        BuilderCase{"getTargetLoadList", "1,2,3,4,5,6,7,8,9,10,11,12,13,14,15,16,17,18,19,20,21",
                    kWholeBlock}));

INSTANTIATE_TEST_SUITE_P(Colocation, BuilderTableTest, ::testing::Values(
        BuilderCase{"getColocationList", "colocation", ""},
        BuilderCase{"getColocationList", "colocation:1", "1011040=1"},
        BuilderCase{"getColocationList", "Colocation:1", ""},
        BuilderCase{"getColocationList", "colocation:", ""},
        BuilderCase{"getColocationList", "colocation:1:2", "1011040=1"},
        BuilderCase{"getColocationList", "groupmigrate:6-3", "1010FB0=6|1010FC0=3"},
        BuilderCase{"getColocationList", "groupmigrate:6-3,colocation:9",
                    "1010FB0=6|1010FC0=3|1011040=9"},
        BuilderCase{"getColocationList", "groupmigrate:3-6", ""},
        BuilderCase{"getColocationList", "groupmigrate:3-3", ""},
        BuilderCase{"getColocationList", "groupmigrate:-1-5", ""},
        BuilderCase{"getColocationList", "groupmigrate:5--1", "1010FB0=5|1010FC0=1"},
        BuilderCase{"getColocationList", "groupmigrate:x-5", ""},
        BuilderCase{"getColocationList", "groupmigrate:5-x", "1010FB0=5|1010FC0=0"},
        BuilderCase{"getColocationList", "groupmigrate:6", ""},
        BuilderCase{"getColocationList", "groupmigrate:--", ""},
        BuilderCase{"getColocationList", "groupmigrate:99999999999-3", ""},
        // The numbers are sent as their decimal text, not as written.
        BuilderCase{"getColocationList", "groupmigrate: 06-3x", "1010FB0=6|1010FC0=3"},
        BuilderCase{"getColocationList", "colocation:1,groupmigrate:6-3,other:5,colocation:2",
                    "1011040=1|1010FB0=6|1010FC0=3|1011040=2"},
        // Long texts of items that make nothing take no memory for them.
        BuilderCase{"getColocationList", std::string(1 << 20, ':'), ""},
        BuilderCase{"getColocationList", repeated("groupmigrate:3-6,", 1 << 14) + "colocation:7",
                    "1011040=7"}));

INSTANTIATE_TEST_SUITE_P(GameAdp, BuilderTableTest, ::testing::Values(
        BuilderCase{"getGameAdpList", "", ""},
        BuilderCase{"getGameAdpList", "1,2,3,4;5,6",
                    "1010B10=1|1010B20=2|1010B30=3|1020070=4|1010B90=5|1010BA0=6"},
        // A group without "," is skipped but still counts as a group.
        BuilderCase{"getGameAdpList", "7;8,9", "1010B90=8|1010BA0=9"},
        BuilderCase{"getGameAdpList", " 1 ,\t2\r\n;", "1010B10=1|1010B20=2"},
        BuilderCase{"getGameAdpList", "-1, ,", "1010B10=-1|1010B20="},
        BuilderCase{"getGameAdpList", ",;1,", "1010B90=1"},
        BuilderCase{"getGameAdpList", "1,;2,;3,;4,;5,", "1010B10=1|1010B90=2|1010010=3|10100A0=4"},
        BuilderCase{"getGameAdpList", "1,2,3,4,5",
                    "1010B10=1|1010B20=2|1010B30=3|1020070=4|1010B90=5"},
        // The last table's fifth item lies past the whole block: nothing.
        BuilderCase{"getGameAdpList", "a,;b,;c,;1,2,3,4,5",
                    "1010B10=a|1010B90=b|1010010=c|10100A0=1|10100B0=2|10100C0=3|1020060=4"}));
// clang-format on

TEST(GameUpgradeListTest, ReadsOnlyLevelAndText) {
    const struct {
        int level;
        std::string text;
        std::string expected;
    } cases[] = {{0, "", ""},
                 {2, "abc", "1011040=2|10115B0=abc"},
                 {1, "", "1011040=1"},
                 {-3, " x", "10115B0= x"}};
    for (const auto& c : cases) {
        EXPECT_EQ(parsePairs(c.expected), pairsOf(getGameUpgradeList(0, 0, c.level, 0, 0, c.text)));
        EXPECT_EQ(parsePairs(c.expected),
                  pairsOf(getGameUpgradeList(-1, 9, c.level, 7, -5, c.text)))
                << "the other integers must not matter";
    }
}

}  // namespace
}  // namespace qel_test
