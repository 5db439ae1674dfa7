#pragma once

#include <cstdint>
#include <expected>
#include <string>
#include <string_view>
#include <vector>

namespace tarnwick {

// A shell pattern for item names, as typed for a search: "*" any run of characters
// (a leading dot included, as in find -name), "?" one character, "[...]" one of a set
// ("[!...]" or "[^...]" none of it; ranges "a-z"; classes "[:digit:]"), "\" takes the
// next character literally. Case never matters, and names are compared as Unicode
// characters in composed form, so "é" matches whether a name stores it composed or not.
// An unclosed "[" is an ordinary character, as in the shell.
class NamePattern {
public:
    enum class Error {
        empty,
        tooLong,
        unknownClass,
    };
    // The longest pattern accepted, in bytes: no name is longer.
    static constexpr std::size_t maximumLength = 255;

    static std::expected<NamePattern, Error> compile(std::string_view pattern);
    static std::string_view message(Error error);

    [[nodiscard]] bool matches(std::string_view name) const;
    [[nodiscard]] const std::string& text() const { return m_text; }

private:
    enum class TokenType : std::uint8_t { literal, any, star, set };
    struct Token {
        TokenType type = TokenType::literal;
        char32_t value = 0;    // folded character, for literal
        std::uint32_t set = 0; // index into m_sets, for set
    };
    struct Range {
        char32_t first = 0;
        char32_t last = 0;
    };
    struct Set {
        bool negated = false;
        std::uint16_t classes = 0;
        std::vector<Range> ranges;
    };
    // The tokens between two stars. Every token stands for exactly one character, so a
    // segment covers a fixed number of characters.
    struct Segment {
        std::vector<Token> tokens;
        std::string asciiLiteral; // the folded text, when every token is an ASCII literal
        bool isAsciiLiteral = true;
    };
    class Parser;
    struct AsciiText;
    struct UnicodeText;

    void splitIntoSegments();
    [[nodiscard]] bool excludedByEnds(std::string_view name) const;
    template <typename Text>
    [[nodiscard]] bool matchesText(const Text& text) const;
    template <typename Text>
    [[nodiscard]] bool matchesAt(const Segment& segment, const Text& text, std::size_t position) const;
    template <typename Text>
    [[nodiscard]] std::size_t find(const Segment& segment, const Text& text, std::size_t from, std::size_t to) const;
    [[nodiscard]] bool matchesOne(const Token& token, char32_t folded) const;
    [[nodiscard]] bool inSet(const Set& set, char32_t folded) const;

    std::string m_text;
    std::vector<Token> m_tokens;
    std::vector<Set> m_sets;
    // The pattern is prefix*middle[0]*...*middle[n-1]*suffix, or just prefix without a star.
    bool m_hasStar = false;
    Segment m_prefix;
    std::vector<Segment> m_middle;
    Segment m_suffix;
};

}
