// The action look-up of the wrapper: from an event id ("PRAXEL_" + an action name) to the first
// position of that name in the catalogue. The index is made once, at load time, so that a look-up
// costs the same for every position and allocates nothing.
//
// The catalogue is the exported, writable gActionList, which a caller may change (push_back,
// assignment to a name, ...). The index keeps its own copy of the names as they were when it was
// made, so no change leaves it reading freed memory, and a look-up answers for the vector as it
// is now: the position the index gives is used only when that slot still holds the name;
// otherwise, and for a name the index does not know, the vector is walked from position 0 as it
// stands. The one change the index cannot see is a name copied into a slot before the one it
// stood at when the index was made while that later slot still holds it: the later position is
// found. A caller that changes gActionList must not do so while another thread looks a name up.
#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace qel_wrapper {

class ActionIndex {
public:
    // Indexes `names` as they are now; look-ups read `names`, which must outlive the index.
    explicit ActionIndex(const std::vector<std::string>& names);
    ActionIndex(const ActionIndex&) = delete;
    ActionIndex& operator=(const ActionIndex&) = delete;

    // The position of the first name of `names` equal to `name`, byte for byte; -1 when there is
    // none.
    int positionOf(std::string_view name) const;

    // The position the index itself holds for `name`, when that slot of `names` still holds the
    // name; -1 otherwise (positionOf then walks `names`). For the catalogue as it was indexed,
    // this answers every name without a walk.
    int indexedPositionOf(std::string_view name) const;

    // The command id of `eventId`: when it contains "PRAXEL_", the position of the name that
    // equals it from index 7 on; otherwise, or when no name does, -1. Since no name holds
    // "PRAXEL_", only an id that begins with it can match.
    int commandIdOf(std::string_view eventId) const;

private:
    // The walk from position 0 over `names` as they stand.
    int walk(std::string_view name) const;

    const std::vector<std::string>& mNames;
    // The names as they were when the index was made, back to back; mEntries views into it.
    std::string mCopy;
    // One entry per distinct name, with its first position, sorted by name.
    std::vector<std::pair<std::string_view, int>> mEntries;
};

// The index of gActionList, made right after it at load time.
extern const ActionIndex gActionIndex;

}  // namespace qel_wrapper
