// The action look-up: a sorted array of the catalogue's names, searched by binary search.

#include "wrapper/action_index.h"

#include <algorithm>

namespace qel_wrapper {

namespace {

// Event ids are "PRAXEL_" followed by an action name.
constexpr std::string_view kEventPrefix = "PRAXEL_";

}  // namespace

ActionIndex::ActionIndex(const std::vector<std::string>& names) {
    mEntries.reserve(names.size());
    for (size_t i = 0; i < names.size(); ++i) {
        mEntries.emplace_back(names[i], static_cast<int>(i));
    }
    // Sorted by name, then position, so that of equal names the first position comes first and
    // is the one kept: a duplicated name resolves to its first position, as a walk from
    // position 0 finds it.
    std::sort(mEntries.begin(), mEntries.end());
    auto sameName = [](const auto& a, const auto& b) { return a.first == b.first; };
    mEntries.erase(std::unique(mEntries.begin(), mEntries.end(), sameName), mEntries.end());
}

int ActionIndex::positionOf(std::string_view name) const {
    auto entry = std::lower_bound(mEntries.begin(), mEntries.end(), name,
                                  [](const std::pair<std::string_view, int>& e,
                                     std::string_view n) { return e.first < n; });
    if (entry == mEntries.end() || entry->first != name) return -1;
    return entry->second;
}

int ActionIndex::commandIdOf(std::string_view eventId) const {
    // The prefix may stand anywhere, but the name is always taken from index 7 on; an id that
    // holds the prefix is at least 7 bytes long.
    if (eventId.find(kEventPrefix) == std::string_view::npos) return -1;
    return positionOf(eventId.substr(kEventPrefix.size()));
}

}  // namespace qel_wrapper
