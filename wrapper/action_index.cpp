// The action look-up: a sorted array of copies of the catalogue's names, searched by binary
// search, each answer checked against the catalogue as it is now.

#include "wrapper/action_index.h"

#include <algorithm>

namespace qel_wrapper {

namespace {

// Event ids are "PRAXEL_" followed by an action name.
constexpr std::string_view kEventPrefix = "PRAXEL_";

// The order of the index: by length, then by bytes. Most steps of a search are decided by the
// lengths alone, without comparing bytes.
bool shorterOrBefore(std::string_view a, std::string_view b) {
    if (a.size() != b.size()) return a.size() < b.size();
    return a < b;
}

}  // namespace

ActionIndex::ActionIndex(const std::vector<std::string>& names) : mNames(names) {
    size_t bytes = 0;
    for (const std::string& name : names) bytes += name.size();
    // Filled whole before any view is taken, so that the views never move.
    mCopy.reserve(bytes);
    for (const std::string& name : names) mCopy += name;
    mEntries.reserve(names.size());
    size_t offset = 0;
    for (size_t i = 0; i < names.size(); ++i) {
        mEntries.emplace_back(std::string_view(mCopy).substr(offset, names[i].size()),
                              static_cast<int>(i));
        offset += names[i].size();
    }
    // Sorted by name, then position, so that of equal names the first position comes first and
    // is the one kept: a duplicated name resolves to its first position, as a walk from
    // position 0 finds it.
    std::sort(mEntries.begin(), mEntries.end(), [](const auto& a, const auto& b) {
        if (a.first != b.first) return shorterOrBefore(a.first, b.first);
        return a.second < b.second;
    });
    auto sameName = [](const auto& a, const auto& b) { return a.first == b.first; };
    mEntries.erase(std::unique(mEntries.begin(), mEntries.end(), sameName), mEntries.end());
}

int ActionIndex::positionOf(std::string_view name) const {
    int position = indexedPositionOf(name);
    // A name the index does not know, or whose slot the caller changed: the vector decides.
    return position != -1 ? position : walk(name);
}

int ActionIndex::indexedPositionOf(std::string_view name) const {
    auto entry = std::lower_bound(mEntries.begin(), mEntries.end(), name,
                                  [](const std::pair<std::string_view, int>& e,
                                     std::string_view n) { return shorterOrBefore(e.first, n); });
    if (entry == mEntries.end() || entry->first != name) return -1;
    // The fast path, for the catalogue as the library loaded it: the slot still holds it.
    size_t position = static_cast<size_t>(entry->second);
    if (position < mNames.size() && std::string_view(mNames[position]) == name) {
        return entry->second;
    }
    return -1;
}

int ActionIndex::walk(std::string_view name) const {
    for (size_t i = 0; i < mNames.size(); ++i) {
        if (std::string_view(mNames[i]) == name) return static_cast<int>(i);
    }
    return -1;
}

int ActionIndex::commandIdOf(std::string_view eventId) const {
    // The prefix may stand anywhere, but the name is always taken from index 7 on; an id that
    // holds the prefix is at least 7 bytes long.
    if (eventId.find(kEventPrefix) == std::string_view::npos) return -1;
    return positionOf(eventId.substr(kEventPrefix.size()));
}

}  // namespace qel_wrapper
