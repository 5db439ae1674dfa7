#include "RoffText.hpp"

#include <gtest/gtest.h>

using tarnwick::RoffText::escaped;

TEST(RoffText, EscapesWhatRoffWouldReadAsMarkup)
{
    const std::pair<std::string_view, std::string_view> cases[] = {
        { "Scans a folder", "Scans a folder" },
        { "", "" },
        // A line that starts with a control character would be read as a request and vanish.
        { ".npm caches", "\\&.npm caches" },
        { "'quoted'", "\\&'quoted'" },
        { "one\n.two", "one\n\\&.two" },
        { "in ~/.npm", "in ~/.npm" },
        { "a\\b", "a\\eb" },
        { "--min-size", "\\-\\-min\\-size" },
        // Unicode becomes groff's names; malformed UTF-8 the replacement character.
        { "group\u2019s", "group\\(cqs" },
        { "\u2248 1 GB", "\\(~~ 1 GB" },
        { "\u00e9", "\\[u00E9]" },
        { "\U0001F4BE", "\\[u1F4BE]" },
        { "a\xE2\x80", "a\\[uFFFD]" },
        { "\xC3(x", "\\[uFFFD](x" },
    };
    for (const auto& [text, expected] : cases)
        EXPECT_EQ(escaped(text), expected) << text;
}
