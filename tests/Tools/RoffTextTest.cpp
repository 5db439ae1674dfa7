#include "RoffText.hpp"

#include <gtest/gtest.h>

using tarnwick::RoffText::escaped;

TEST(RoffText, PlainWordsPassThrough)
{
    EXPECT_EQ(escaped("Scans a folder"), "Scans a folder");
    EXPECT_EQ(escaped(""), "");
}

// A line that starts with a control character would be read as a request and vanish.
TEST(RoffText, ControlCharactersAtALineStartAreGuarded)
{
    EXPECT_EQ(escaped(".npm caches"), "\\&.npm caches");
    EXPECT_EQ(escaped("'quoted'"), "\\&'quoted'");
    EXPECT_EQ(escaped("one\n.two"), "one\n\\&.two");
    EXPECT_EQ(escaped("in ~/.npm"), "in ~/.npm");
}

TEST(RoffText, BackslashesAndMinusSignsAreEscaped)
{
    EXPECT_EQ(escaped("a\\b"), "a\\eb");
    EXPECT_EQ(escaped("--min-size"), "\\-\\-min\\-size");
}

TEST(RoffText, UnicodeBecomesGroffNames)
{
    EXPECT_EQ(escaped("group\u2019s"), "group\\(cqs");
    EXPECT_EQ(escaped("\u2248 1 GB"), "\\(~~ 1 GB");
    EXPECT_EQ(escaped("\u00e9"), "\\[u00E9]");
    EXPECT_EQ(escaped("\U0001F4BE"), "\\[u1F4BE]");
}

TEST(RoffText, MalformedUtf8BecomesTheReplacementCharacter)
{
    EXPECT_EQ(escaped("a\xE2\x80"), "a\\[uFFFD]");
    EXPECT_EQ(escaped("\xC3(x"), "\\[uFFFD](x");
}
