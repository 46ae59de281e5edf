// Byte-string helpers for scenario texts. Every function works on single bytes and never looks
// at the locale.

#include <stdexcept>

#include "stringUtils.h"
#include "wrapper/fields.h"

namespace stringUtils {

const char* const WHITESPACE = " \n\r\t";

bool contains(std::string s, std::string part) {
    return s.find(part) != std::string::npos;
}

bool equals(std::string a, std::string b) {
    return a == b;
}

int parseInt(std::string s) {
    // A genuine 0 and a text that is no number both give 0; callers treat both alike.
    try {
        return std::stoi(s);
    } catch (const std::invalid_argument&) {
        return 0;
    } catch (const std::out_of_range&) {
        return 0;
    }
}

std::string valueOf(int value) {
    return std::to_string(value);
}

std::string trimLeft(const std::string& s, const char* chars) {
    size_t first = s.find_first_not_of(chars);
    return first == std::string::npos ? std::string() : s.substr(first);
}

std::string trimRight(const std::string& s, const char* chars) {
    size_t last = s.find_last_not_of(chars);
    return last == std::string::npos ? std::string() : s.substr(0, last + 1);
}

std::string trim(const std::string& s, const char* chars) {
    return trimRight(trimLeft(s, chars), chars);
}

std::vector<std::string> split(const std::string& s, std::string delims) {
    std::vector<std::string> fields;
    qel_wrapper::forEachField(s, delims,
                              [&](std::string_view field) { fields.emplace_back(field); });
    return fields;
}

}  // namespace stringUtils
