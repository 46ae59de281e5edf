// The action look-up of the wrapper: from an event id ("PRAXEL_" + an action name) to the first
// position of that name in the catalogue. The index is made once, at load time, so that a look-up
// costs the same for every position and allocates nothing.
#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace qel_wrapper {

class ActionIndex {
public:
    // Indexes `names`, which must outlive the index unchanged (it keeps views of them).
    explicit ActionIndex(const std::vector<std::string>& names);

    // The position of the first name equal to `name`, byte for byte; -1 when there is none.
    int positionOf(std::string_view name) const;

    // The command id of `eventId`: when it contains "PRAXEL_", the position of the name that
    // equals it from index 7 on; otherwise, or when no name does, -1. Since no name holds
    // "PRAXEL_", only an id that begins with it can match.
    int commandIdOf(std::string_view eventId) const;

private:
    // One entry per distinct name, with its first position, sorted by name.
    std::vector<std::pair<std::string_view, int>> mEntries;
};

// The index of gActionList, made right after it at load time.
extern const ActionIndex gActionIndex;

}  // namespace qel_wrapper
