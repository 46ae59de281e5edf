// The action catalogue and the opcode tables: the names and positions the service relies on, the
// look-up of a catalogue that a caller changed, and the layout that lets a builder read past one
// table into the next.

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "QelWrapper.h"
#include "wrapper/action_index.h"

namespace qel_test {
namespace {

// FNV-1a (64 bit) over the 199 names joined with "\n", taken from the reference table of the
// catalogue when it was transcribed. Any added, dropped, moved or re-spelt name changes it (the
// duplicates and the spellings "STIKER" and "PORTAIT" included).
constexpr uint64_t kCatalogueFnv1a = 0x2523DE20633B3368ull;

TEST(ActionCatalogueTest, HoldsTheOrderedNamesInOneAllocationOf199) {
    ASSERT_EQ(199u, gActionList.size());
    EXPECT_EQ(199u, gActionList.capacity());
    uint64_t hash = 0xcbf29ce484222325ull;
    for (size_t i = 0; i < gActionList.size(); ++i) {
        for (unsigned char byte : (i > 0 ? "\n" : "") + gActionList[i]) {
            hash = (hash ^ byte) * 0x100000001b3ull;
        }
    }
    EXPECT_EQ(kCatalogueFnv1a, hash);
}

// The look-up keeps no view into the writable vector: it answers for the vector as it is now,
// whatever a caller did to it (ASan sees any read of a name the caller freed).
TEST(ActionCatalogueTest, ALookUpFollowsTheVectorAsACallerChangedIt) {
    std::vector<std::string> names(gActionList.begin(), gActionList.end());
    const qel_wrapper::ActionIndex index(names);
    const std::string longName(300, 'L');
    // Unchanged, every name is answered by the index itself, at its first position.
    for (size_t i = 0; i < names.size(); ++i) {
        size_t first = 0;
        while (names[first] != names[i]) ++first;
        EXPECT_EQ(static_cast<int>(first), index.indexedPositionOf(names[i])) << names[i];
    }
    EXPECT_EQ(-1, index.indexedPositionOf("ACTION_NONE"));
    names[0] = longName;                     // renamed: its old name is gone, the new one found
    names[5] = "ACTION_CAMERA_MULTI_SCENE";  // an earlier copy of a name the index knows
    names[102] = "ACTION_X";                 // the known position of that name, renamed
    names.push_back("ACTION_APPENDED");
    names.push_back("ACTION_COLD_LAUNCH");  // a duplicate after the first keeps the first one
    names.shrink_to_fit();                  // every name moves
    EXPECT_EQ(-1, index.commandIdOf("PRAXEL_ACTION_LAUNCH"));
    EXPECT_EQ(0, index.commandIdOf("PRAXEL_" + longName)) << "the walk starts at position 0";
    EXPECT_EQ(-1, index.indexedPositionOf(longName)) << "a name the index never saw is walked";
    EXPECT_EQ(5, index.positionOf("ACTION_CAMERA_MULTI_SCENE"));
    EXPECT_EQ(199, index.positionOf("ACTION_APPENDED"));
    EXPECT_EQ(1, index.positionOf("ACTION_COLD_LAUNCH"));
    EXPECT_EQ(198, index.positionOf("ACTION_CAMERA_APS_INNER_THDR_CAPTURE_L1"));
    names.clear();
    EXPECT_EQ(-1, index.positionOf("ACTION_COLD_LAUNCH"));
}

TEST(OpCodeTablesTest, HoldTheirValuesInOrderBackToBack) {
    const struct {
        const int32_t* table;
        std::vector<int32_t> values;
    } tables[] = {
            {opCodeTargetLoad, {0x010108A0, 0x010108B0, 0x010108C0}},
            {opCodeAdpXpuCoreBoost, {0x01010B10, 0x01010B20, 0x01010B30, 0x01020070}},
            {opCodeAdpXpuCoreLimit, {0x01010B90, 0x01010BA0, 0x01010BB0, 0x01020080}},
            {opCodeAdpXpuFreqBoost, {0x01010010, 0x01010020, 0x01010030, 0x01020050}},
            {opCodeAdpXpuFreqLimit, {0x010100A0, 0x010100B0, 0x010100C0, 0x01020060}},
    };
    for (size_t t = 0; t < std::size(tables); ++t) {
        const auto& [table, values] = tables[t];
        EXPECT_EQ(values, std::vector<int32_t>(table, table + values.size())) << "table " << t;
        if (t == 0) continue;
        // Compared as addresses: each table begins where the one before it ends.
        const auto& before = tables[t - 1];
        EXPECT_EQ(reinterpret_cast<uintptr_t>(before.table + before.values.size()),
                  reinterpret_cast<uintptr_t>(table))
                << "table " << t;
    }
}

}  // namespace
}  // namespace qel_test
