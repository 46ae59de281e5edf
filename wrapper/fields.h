// The fields of a text as stringUtils::split cuts them, visited in place: the builders walk long
// scenario texts without making a vector of copies of every field first.
#pragma once

#include <algorithm>
#include <optional>
#include <string_view>
#include <utility>

namespace qel_wrapper {

// Calls visit(field) for each maximal run of bytes of `s` not in `delims`, in order: delimiters
// at either end and runs of them make no empty field; an empty `delims` makes `s` one field
// (none when `s` is empty). The fields are views into `s`.
template <typename Visit>
void forEachField(std::string_view s, std::string_view delims, Visit&& visit) {
    size_t start = s.find_first_not_of(delims);
    while (start != std::string_view::npos) {
        size_t stop = s.find_first_of(delims, start);  // npos: the field runs to the end
        visit(s.substr(start, stop - start));
        start = s.find_first_not_of(delims, stop);
    }
}

// forEachField for one delimiter byte: the same fields, each found with one memchr-speed search
// instead of a search of the delimiter set for every byte (the colocation text is walked twice,
// counted and then built, so its walk is the one that counts).
template <typename Visit>
void forEachField(std::string_view s, char delim, Visit&& visit) {
    size_t start = 0;
    while (start < s.size()) {
        if (s[start] == delim) {
            ++start;
            continue;
        }
        size_t stop = std::min(s.find(delim, start), s.size());
        visit(s.substr(start, stop - start));
        start = stop;
    }
}

// `s` without its leading and trailing runs of bytes from `chars`, as stringUtils::trim makes
// it, as a view into `s`.
inline std::string_view trimmed(std::string_view s, std::string_view chars) {
    size_t first = s.find_first_not_of(chars);
    if (first == std::string_view::npos) return {};
    return s.substr(first, s.find_last_not_of(chars) - first + 1);
}

// The first two fields of `s` cut at `delims` (a set of bytes, or one byte), as
// split(s, delims)[0] and [1]; nothing when there are fewer than two. Further fields are ignored.
template <typename Delims>
std::optional<std::pair<std::string_view, std::string_view>> firstTwoFields(std::string_view s,
                                                                            Delims delims) {
    std::string_view fields[2];
    size_t count = 0;
    forEachField(s, delims, [&](std::string_view field) {
        if (count < 2) fields[count] = field;
        ++count;
    });
    if (count < 2) return std::nullopt;
    return std::pair{fields[0], fields[1]};
}

}  // namespace qel_wrapper
