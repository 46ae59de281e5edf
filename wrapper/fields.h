// The fields of a text as stringUtils::split cuts them, visited in place: the builders walk long
// scenario texts without making a vector of copies of every field first.
#pragma once

#include <string_view>

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

}  // namespace qel_wrapper
