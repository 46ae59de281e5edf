// Byte-string helpers used to cut scenario texts into fields. No locale, no multi-byte
// characters. All functions are pure and thread-safe.
#pragma once

#include <string>
#include <vector>

#include "qel_export.h"

namespace stringUtils {

// Space, line feed, carriage return and horizontal tab.
QEL_EXPORT extern const char* const WHITESPACE;

// True when part is empty or occurs in s.
QEL_EXPORT bool contains(std::string s, std::string part);
// True when a and b have the same bytes.
QEL_EXPORT bool equals(std::string a, std::string b);
// Base-10 value of s (leading blanks, sign, trailing text ignored); 0 when not a number or out
// of range.
QEL_EXPORT int parseInt(std::string s);
// Decimal text of value.
QEL_EXPORT std::string valueOf(int value);
// s without its leading / trailing run of bytes from chars.
QEL_EXPORT std::string trimLeft(const std::string& s, const char* chars);
QEL_EXPORT std::string trimRight(const std::string& s, const char* chars);
QEL_EXPORT std::string trim(const std::string& s, const char* chars);
// The non-empty fields of s between runs of bytes from delims.
QEL_EXPORT std::vector<std::string> split(const std::string& s, std::string delims);

}  // namespace stringUtils
