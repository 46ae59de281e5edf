// Resource lists, as the wrapper builds them and the class API reports them, in a comparable form.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "qel.h"

namespace qel_test {

// (resId, resValue) per resource, in order.
using ResourcePairs = std::vector<std::pair<int32_t, std::optional<std::string>>>;

template <typename List>  // a vector or list of QelClient::Resource
ResourcePairs pairsOf(const List& list) {
    ResourcePairs out;
    for (const auto& r : list) out.emplace_back(r.resId, r.resValue);
    return out;
}

}  // namespace qel_test
