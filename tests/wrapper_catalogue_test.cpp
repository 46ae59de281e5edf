// The action catalogue and the opcode tables: the names and positions the service relies on,
// and the layout that lets a builder read past one table into the next.

#include <gtest/gtest.h>

#include <cstdint>
#include <regex>
#include <set>

#include "QelWrapper.h"

namespace qel_test {
namespace {

// FNV-1a (64 bit) over the 199 names joined with "\n", taken from the reference table of the
// catalogue when it was transcribed. Any added, dropped, moved or re-spelt name changes it.
constexpr uint64_t kCatalogueFnv1a = 0x2523DE20633B3368ull;

uint64_t fnv1a(const std::string& bytes) {
    uint64_t hash = 0xcbf29ce484222325ull;
    for (unsigned char byte : bytes) {
        hash ^= byte;
        hash *= 0x100000001b3ull;
    }
    return hash;
}

TEST(ActionCatalogueTest, HoldsTheOrderedNamesInOneAllocationOf199) {
    ASSERT_EQ(199u, gActionList.size());
    EXPECT_EQ(199u, gActionList.capacity());
    std::string joined;
    for (size_t i = 0; i < gActionList.size(); ++i) {
        if (i > 0) joined += "\n";
        joined += gActionList[i];
    }
    EXPECT_EQ(kCatalogueFnv1a, fnv1a(joined));
}

TEST(ActionCatalogueTest, NamedPositionsKeepTheirSpelling) {
    const std::pair<size_t, const char*> positions[] = {
            {0, "ACTION_LAUNCH"},
            {1, "ACTION_COLD_LAUNCH"},
            {78, "ACTION_CAMERA_STIKER_RECORD"},
            {91, "ACTION_CAMERA_APS_CAPTURE_L1"},
            {102, "ACTION_CAMERA_MULTI_SCENE"},
            {120, "ACTION_CAMERA_PREVIEW_PORTAIT"},
            {148, "ACTION_CAMERA_STICKER_MODE"},
            {171, "ACTION_CAMERA_REAR_PORTRAIT_PREVIEW"},
            {198, "ACTION_CAMERA_APS_INNER_THDR_CAPTURE_L1"},
    };
    ASSERT_EQ(199u, gActionList.size());
    for (const auto& [position, name] : positions) EXPECT_EQ(name, gActionList[position]);
}

TEST(ActionCatalogueTest, OnlyTheKnownDuplicatesOccurTwice) {
    ASSERT_EQ(199u, gActionList.size());
    for (size_t i = 0; i < 4; ++i) EXPECT_EQ(gActionList[91 + i], gActionList[106 + i]);
    EXPECT_EQ(gActionList[102], gActionList[162]);
    std::set<std::string> distinct(gActionList.begin(), gActionList.end());
    EXPECT_EQ(199u - 5u, distinct.size());
}

TEST(ActionCatalogueTest, NamesAreCapitalsDigitsAndUnderscoresOfTenToFortyFourBytes) {
    const std::regex shape("ACTION_[A-Z0-9_]+");
    for (const std::string& name : gActionList) {
        EXPECT_TRUE(std::regex_match(name, shape)) << name;
        EXPECT_GE(name.size(), 10u) << name;
        EXPECT_LE(name.size(), 44u) << name;
    }
}

TEST(OpCodeTablesTest, HoldTheirValuesInOrder) {
    EXPECT_EQ((std::vector<int32_t>{0x010108A0, 0x010108B0, 0x010108C0}),
              std::vector<int32_t>(opCodeTargetLoad, opCodeTargetLoad + 3));
    EXPECT_EQ((std::vector<int32_t>{0x01010B10, 0x01010B20, 0x01010B30, 0x01020070}),
              std::vector<int32_t>(opCodeAdpXpuCoreBoost, opCodeAdpXpuCoreBoost + 4));
    EXPECT_EQ((std::vector<int32_t>{0x01010B90, 0x01010BA0, 0x01010BB0, 0x01020080}),
              std::vector<int32_t>(opCodeAdpXpuCoreLimit, opCodeAdpXpuCoreLimit + 4));
    EXPECT_EQ((std::vector<int32_t>{0x01010010, 0x01010020, 0x01010030, 0x01020050}),
              std::vector<int32_t>(opCodeAdpXpuFreqBoost, opCodeAdpXpuFreqBoost + 4));
    EXPECT_EQ((std::vector<int32_t>{0x010100A0, 0x010100B0, 0x010100C0, 0x01020060}),
              std::vector<int32_t>(opCodeAdpXpuFreqLimit, opCodeAdpXpuFreqLimit + 4));
}

TEST(OpCodeTablesTest, LieBackToBackInTheirOrder) {
    // Compared as addresses: each table begins where the one before it ends.
    auto at = [](const int32_t* table) { return reinterpret_cast<uintptr_t>(table); };
    EXPECT_EQ(at(opCodeTargetLoad) + 3 * sizeof(int32_t), at(opCodeAdpXpuCoreBoost));
    EXPECT_EQ(at(opCodeAdpXpuCoreBoost) + 4 * sizeof(int32_t), at(opCodeAdpXpuCoreLimit));
    EXPECT_EQ(at(opCodeAdpXpuCoreLimit) + 4 * sizeof(int32_t), at(opCodeAdpXpuFreqBoost));
    EXPECT_EQ(at(opCodeAdpXpuFreqBoost) + 4 * sizeof(int32_t), at(opCodeAdpXpuFreqLimit));
}

}  // namespace
}  // namespace qel_test
