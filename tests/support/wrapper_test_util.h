// Helpers of the wrapper's tests: resource lists in a comparable form, and a small seeded text
// generator for the property tests (reproducible: the same seed gives the same texts).
#pragma once

#include <cstdint>
#include <optional>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "qel.h"

namespace qel_test {

// (resId, resValue) per resource, in order.
using ResourcePairs = std::vector<std::pair<int32_t, std::optional<std::string>>>;

inline ResourcePairs pairsOf(const std::vector<QelClient::Resource>& list) {
    ResourcePairs out;
    for (const auto& r : list) out.emplace_back(r.resId, r.resValue);
    return out;
}

class TextGenerator {
public:
    explicit TextGenerator(uint32_t seed) : engine_(seed) {}

    // Up to maxPieces pieces, each drawn from pieces, concatenated.
    std::string join(const std::vector<std::string>& pieces, size_t maxPieces) {
        std::string out;
        size_t n = below(maxPieces + 1);
        for (size_t i = 0; i < n; ++i) out += pieces[below(pieces.size())];
        return out;
    }

private:
    size_t below(size_t n) { return static_cast<size_t>(engine_() % n); }

    std::mt19937 engine_;
};

}  // namespace qel_test
