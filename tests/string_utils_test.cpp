// stringUtils: splitting and trimming of scenario texts, number parsing, and the whitespace set.

#include <gtest/gtest.h>

#include "stringUtils.h"

namespace qel_test {
namespace {

using Fields = std::vector<std::string>;

TEST(StringUtilsTest, WhitespaceIsExactlySpaceLineFeedCarriageReturnTab) {
    EXPECT_EQ(std::string(" \n\r\t"), stringUtils::WHITESPACE);
}

struct SplitCase {
    std::string text;
    std::string delims;
    Fields fields;
};

TEST(StringUtilsTest, SplitYieldsTheNonEmptyFieldsBetweenDelimiterRuns) {
    const SplitCase cases[] = {
            {"a,,b,", ",", {"a", "b"}},
            {",,", ",", {}},
            {"", ",", {}},
            {"a b", "", {"a b"}},
            {",a", ",", {"a"}},
            {"1-2;3", ";-", {"1", "2", "3"}},
            {" x \t y\n", stringUtils::WHITESPACE, {"x", "y"}},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(c.fields, stringUtils::split(c.text, c.delims))
                << "split(\"" << c.text << "\", \"" << c.delims << "\")";
    }
}

struct TrimCase {
    std::string text;
    const char* chars;
    std::string left, right, both;
};

TEST(StringUtilsTest, TrimStripsRunsOfTheGivenBytesOnly) {
    const TrimCase cases[] = {
            {" \tx \r\n", stringUtils::WHITESPACE, "x \r\n", " \tx", "x"},
            {"\fx", stringUtils::WHITESPACE, "\fx", "\fx", "\fx"},  // form feed is kept
            {"x\v", stringUtils::WHITESPACE, "x\v", "x\v", "x\v"},  // and vertical tab
            {"xxab", "x", "ab", "xxab", "ab"},
            {"xxx", "x", "", "", ""},
            {" a ", "", " a ", " a ", " a "},  // an empty set matches nothing
            {"yxaxy", "xyx", "axy", "yxa", "a"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE("text \"" + c.text + "\"");
        EXPECT_EQ(c.left, stringUtils::trimLeft(c.text, c.chars));
        EXPECT_EQ(c.right, stringUtils::trimRight(c.text, c.chars));
        EXPECT_EQ(c.both, stringUtils::trim(c.text, c.chars));
    }
}

TEST(StringUtilsTest, ParseIntReadsALeadingDecimalAndGivesZeroOnFailure) {
    const std::pair<std::string, int> cases[] = {
            {"42", 42},
            {" -7", -7},
            {"+8", 8},
            {"42abc", 42},
            {"", 0},
            {"2147483647", 2147483647},
            {"-2147483648", -2147483647 - 1},
            {"2147483648", 0},
            {"0x10", 0},
            {"\n\t12", 12},
    };
    for (const auto& [text, value] : cases) {
        EXPECT_EQ(value, stringUtils::parseInt(text)) << "parseInt(\"" << text << "\")";
    }
}

TEST(StringUtilsTest, ContainsEqualsAndValueOf) {
    EXPECT_TRUE(stringUtils::contains("abc", ""));
    EXPECT_TRUE(stringUtils::contains("", ""));
    EXPECT_TRUE(stringUtils::contains("abc", "bc"));
    EXPECT_FALSE(stringUtils::contains("", "a"));
    EXPECT_FALSE(stringUtils::contains("abc", "ac"));
    EXPECT_TRUE(stringUtils::equals("a", "a"));
    EXPECT_FALSE(stringUtils::equals("a", "A"));
    EXPECT_FALSE(stringUtils::equals("a", "a "));
    EXPECT_EQ("-15", stringUtils::valueOf(-15));
    EXPECT_EQ("0", stringUtils::valueOf(0));
    EXPECT_EQ("-2147483648", stringUtils::valueOf(-2147483647 - 1));
}

}  // namespace
}  // namespace qel_test
