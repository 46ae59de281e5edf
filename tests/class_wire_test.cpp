// The pairing check of resource lists. The conversion to and from the wire is checked field by
// field in the parcels and reports of the operations' tests.

#include <gtest/gtest.h>

#include <list>

#include "halclient.h"

namespace {

using QelClient::Resource;

TEST(CheckResourceListTest, AcceptsOnlyListsWhoseIdsAndValuesComeInPairs) {
    const struct {
        const char* name;
        std::list<Resource> list;
        bool valid;
    } cases[] = {
            {"empty", {}, true},
            {"id with value", {{0x1011040, "1"}}, true},
            {"id without value", {{0x1011040, std::nullopt}}, false},
            {"id with empty value", {{0x1011040, ""}}, false},
            {"value without id", {{0, "1"}}, false},
            {"neither id nor value", {{0, std::nullopt}}, true},
            {"zero id with empty value", {{0, ""}}, true},
            {"valid then invalid", {{0x1011040, "1"}, {0x1011050, std::nullopt}}, false},
            {"negative id with value", {{-1, "x"}}, true},
    };
    for (const auto& c : cases) {
        std::list<Resource> list = c.list;
        EXPECT_EQ(c.valid, checkResourceList(list)) << c.name;
    }
}

}  // namespace
