// Scenario texts to resource lists for the rule control. The builders keep no state; a malformed
// item is skipped on its own and never fails the whole text.

#include <iterator>
#include <optional>
#include <string_view>
#include <type_traits>

#include "QelWrapper.h"
#include "stringUtils.h"
#include "wrapper/fields.h"
#include "wrapper/opcode_tables.h"

using qel_wrapper::opCodeAt;
using QelClient::Resource;

namespace {

constexpr int32_t kColocationOpCode = 0x01011040;  // also the game upgrade level
constexpr int32_t kGroupMigrateUpOpCode = 0x01010FB0;
constexpr int32_t kGroupMigrateDownOpCode = 0x01010FC0;
constexpr int32_t kGameUpgradeTextOpCode = 0x010115B0;

// One table per group of a game-adaptive text, in group order.
constexpr size_t kGameAdpTables[] = {qel_wrapper::kCoreBoostTable, qel_wrapper::kCoreLimitTable,
                                     qel_wrapper::kFreqBoostTable, qel_wrapper::kFreqLimitTable};

// Appends (table[position], value). Positions are not held to the table's own length: a position
// past it takes the next table's opcode. Only a position past the whole block appends nothing,
// and then no copy of the value is made.
void appendAt(std::vector<Resource>& list, size_t table, size_t position, std::string_view value) {
    if (std::optional<int32_t> opcode = opCodeAt(table, position)) {
        list.push_back(QelResourceInfo(*opcode, std::string(value)));
    }
}

// Calls visit(opcode, value) for each resource a colocation text makes, in order: the value of a
// "colocation" item as a view into the text, the bounds of a "groupmigrate" item as ints. Items,
// keys, values and bounds are walked as views; nothing is copied.
template <typename Visit>
void forEachColocationResource(std::string_view text, Visit&& visit) {
    qel_wrapper::forEachField(text, ',', [&](std::string_view item) {
        auto keyValue = qel_wrapper::firstTwoFields(item, ':');
        if (!keyValue) return;
        auto [key, value] = *keyValue;
        if (key == "colocation") {
            visit(kColocationOpCode, value);
        } else if (key == "groupmigrate") {
            if (value.find('-') == std::string_view::npos) return;
            auto bounds = qel_wrapper::firstTwoFields(value, '-');
            if (!bounds) return;
            // A bound that is no number counts as 0. The first must be strictly the larger;
            // neither can be -1 since "-" separates them, but the service's "none" is refused
            // all the same.
            int up = stringUtils::parseInt(std::string(bounds->first));
            int down = stringUtils::parseInt(std::string(bounds->second));
            if (up > down && up != -1 && down != -1) {
                visit(kGroupMigrateUpOpCode, up);
                visit(kGroupMigrateDownOpCode, down);
            }
        }
    });
}

}  // namespace

Resource QelResourceInfo(int opcode, std::string value) {
    Resource resource;
    resource.resId = opcode;
    resource.resValue = std::move(value);
    return resource;
}

std::vector<Resource> getTargetLoadList(std::string text) {
    std::vector<Resource> list;
    if (text.empty()) return list;
    // Either every item is "<anything>-<load>" or every item is a bare load; one "-" anywhere
    // in the text selects the first form for all items.
    bool ranged = text.find('-') != std::string::npos;
    // The items are walked in place: a long text is not first copied into a vector of items,
    // most of which (past the end of the opcode block) append nothing.
    size_t i = 0;
    qel_wrapper::forEachField(text, ",", [&](std::string_view item) {
        if (ranged) {
            // The load is the second part of the item split at "-"; the first is ignored.
            if (auto parts = qel_wrapper::firstTwoFields(item, "-")) {
                appendAt(list, qel_wrapper::kTargetLoadTable, i, parts->second);
            }
        } else if (item != "-1") {
            // "-1" (no target) cannot reach here, since it holds a "-"; the test is kept as
            // the meaning of the bare form.
            appendAt(list, qel_wrapper::kTargetLoadTable, i, item);
        }
        ++i;
    });
    return list;
}

std::vector<Resource> getColocationList(std::string text) {
    std::vector<Resource> list;
    if (text.find(':') == std::string::npos) return list;
    // Counted first, then sized once: a list grown by doubling paged fresh memory in on every
    // call of a long text, and a size guessed from the text (such as two per ":") would reserve
    // far more than is made for a text of items that append nothing.
    size_t count = 0;
    forEachColocationResource(text, [&](int32_t, auto) { ++count; });
    list.reserve(count);
    forEachColocationResource(text, [&](int32_t opcode, auto value) {
        if constexpr (std::is_same_v<decltype(value), int>) {
            list.push_back(QelResourceInfo(opcode, std::to_string(value)));
        } else {
            list.push_back(QelResourceInfo(opcode, std::string(value)));
        }
    });
    return list;
}

std::vector<Resource> getGameAdpList(std::string text) {
    std::vector<Resource> list;
    if (text.empty()) return list;
    // Groups and items are walked as views into the text; only appended values are copied.
    size_t g = 0;
    qel_wrapper::forEachField(text, ";", [&](std::string_view group) {
        size_t table = g++;
        if (table >= std::size(kGameAdpTables)) return;  // groups past the fourth are ignored
        // A group is a comma list; one value alone must be written "v," to count.
        if (group.find(',') == std::string_view::npos) return;
        size_t j = 0;
        qel_wrapper::forEachField(group, ",", [&](std::string_view item) {
            appendAt(list, kGameAdpTables[table], j++,
                     qel_wrapper::trimmed(item, stringUtils::WHITESPACE));
        });
    });
    return list;
}

std::vector<Resource> getGameUpgradeList(int, int, int level, int, int, std::string text) {
    std::vector<Resource> list;
    if (level >= 1) list.push_back(QelResourceInfo(kColocationOpCode, std::to_string(level)));
    if (!text.empty()) list.push_back(QelResourceInfo(kGameUpgradeTextOpCode, std::move(text)));
    return list;
}

void clrGameUpgradeMode(int ruleId, int mode) {
    // "-1" clears the level; the second, empty value clears the upgrade text.
    std::vector<Resource> list = {QelResourceInfo(kColocationOpCode, "-1"),
                                  QelResourceInfo(kColocationOpCode, "")};
    qelRuleCtl(ruleId, mode, list);
}
