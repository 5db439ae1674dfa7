#include "TreeQueries/NamePattern.hpp"

#include <gtest/gtest.h>

#include <string>

using namespace tarnwick;

// Shell patterns, matched ignoring case, on names of any Unicode form.
TEST(NamePattern, ShellPatternsIgnoringCaseOnUnicodeNames)
{
    const std::string composed = "r\xC3\xA9sum\xC3\xA9.pdf";    // é as one character
    const std::string decomposed = "re\xCC\x81sume\xCC\x81.pdf"; // e followed by a combining accent
    struct Case {
        std::string pattern;
        std::string name;
        bool matches;
    };
    const Case cases[] {
        { "*.dmg", "Installer.DMG", true },
        { "*.DMG", "installer.dmg", true },
        { "*.dmg", "installer.dmg.part", false },
        { "*.dmg", ".dmg", true },
        { "*.dmg", "dmg", false },
        { "*", "", true },
        { "*", ".hidden", true }, // a leading dot is not special, as in find -name
        { "?", "a", true },
        { "?", "", false },
        { "?", "ab", false },
        { "a?c", "abc", true },
        { "a?c", "ac", false },
        { "node_modules", "Node_Modules", true },
        { "node_modules", "node_modules2", false },
        { "*cache*", "com.apple.Caches", true },
        { "*cache*", "cach", false },
        { "*a*b*c", "aXbYc", true },
        { "*a*b*c", "cba", false },
        { "*a*a", "a", false },
        { "*a*a", "aa", true },
        { "a**b", "ab", true },
        { "**", "anything", true },
        { "*ab*ab", "abab", true },
        { "*aab", "aaab", true },
        { "[abc]x", "Bx", true },
        { "[abc]x", "dx", false },
        { "[!abc]x", "dx", true },
        { "[^abc]x", "Ax", false },
        { "[a-f]*", "Cake", true },
        { "[A-F]*", "cake", true },
        { "[a-f]*", "zebra", false },
        { "[z-a]", "m", false }, // a reversed range matches nothing
        { "[]]", "]", true },
        { "[!]]", "]", false },
        { "[a-]", "-", true },
        { "[[:digit:]][[:digit:]]*", "42 answers", true },
        { "[[:digit:]]*", "answers", false },
        { "[[:upper:]]*", "lower", true }, // case doesn't matter: any letter with case
        { "[[:space:]]", " ", true },
        { "[[:alpha:][:digit:]_]", "_", true },
        { "[[:punct:]]", "!", true },
        { "[[:xdigit:]]", "G", false },
        { "[abc", "[abc", true }, // an unclosed bracket is an ordinary character
        { "[abc", "a", false },
        { "\\*", "*", true },
        { "\\*", "x", false },
        { "\\[a]", "[a]", true },
        { "[\\]]", "]", true },
        { "a\\", "a\\", true }, // a trailing backslash stands for itself
        { "*.[jt]s", "index.TS", true },
        { "file-1?[0-9]*.[jt]s", "file-123456.js", true },
        { "r\xC3\xA9sum\xC3\xA9*", composed, true },
        { "r\xC3\xA9sum\xC3\xA9*", decomposed, true },
        { "re\xCC\x81sum*", composed, true },
        { "R\xC3\x89SUM\xC3\x89.PDF", composed, true }, // É, upper case
        { "r?sum?.pdf", decomposed, true },              // ? takes a whole composed character
        { "r??sum*", composed, false },
        { "*.pdf", decomposed, true },
        { "*.txt", decomposed, false },
        { "[\xC3\xA9\xC3\xA8]*", "\xC3\x89t\xC3\xA9", true }, // [éè] on "Été"
        { "[[:alpha:]]*", "\xC3\x89t\xC3\xA9", true },
        { "\xCE\xA3*", "\xCF\x83\xCE\xBF\xCF\x86\xCE\xAF\xCE\xB1", true }, // Σ* on "σοφία"
        { "*", "bad\xFF" "byte", true },
        { "bad?byte", "bad\xFF" "byte", true }, // an invalid byte is one character
        { "bad\xFF*", "bad\xFF" "byte", true },
        { "bad\xFE*", "bad\xFF" "byte", false },
        { "*.\xE6\x96\x87", "\xE4\xB8\xAD.\xE6\x96\x87", true },
    };
    for (const Case& c : cases) {
        auto pattern = NamePattern::compile(c.pattern);
        ASSERT_TRUE(pattern) << c.pattern;
        EXPECT_EQ(pattern->matches(c.name), c.matches) << "'" << c.pattern << "' on '" << c.name << "'";
    }
}

TEST(NamePattern, InvalidPatternsAreRefusedWithAReason)
{
    struct Case {
        std::string pattern;
        NamePattern::Error error;
    };
    const Case cases[] {
        { "", NamePattern::Error::empty },
        { std::string(256, 'a'), NamePattern::Error::tooLong },
        { "[[:digits:]]*", NamePattern::Error::unknownClass },
        { "[[:Digit:]]", NamePattern::Error::unknownClass },
    };
    for (const Case& c : cases) {
        auto pattern = NamePattern::compile(c.pattern);
        ASSERT_FALSE(pattern) << c.pattern;
        EXPECT_EQ(pattern.error(), c.error) << c.pattern;
        EXPECT_FALSE(NamePattern::message(c.error).empty());
    }
    EXPECT_TRUE(NamePattern::compile(std::string(255, '*')));
    EXPECT_EQ(NamePattern::compile("*.dmg")->text(), "*.dmg");
    // "[:" without its closing ":]" is an ordinary bracket member.
    EXPECT_TRUE(NamePattern::compile("[[:x]")->matches(":"));
}
