#include "TreeQueries/NamePattern.hpp"

#include "Support/UnicodeNames.hpp"
#include "TreeQueries/NameCharacters.hpp"

#include <algorithm>
#include <array>
#include <iterator>
#include <optional>
#include <type_traits>

namespace tarnwick {

using namespace NameCharacters;

class NamePattern::Parser {
public:
    explicit Parser(NamePattern& pattern, std::u32string_view text)
        : m_pattern(pattern)
        , m_text(text)
    {
    }

    std::optional<Error> parse()
    {
        std::size_t i = 0;
        while (i < m_text.size()) {
            char32_t c = m_text[i];
            if (c == '*') {
                if (m_pattern.m_tokens.empty() || m_pattern.m_tokens.back().type != TokenType::star)
                    m_pattern.m_tokens.push_back(Token { TokenType::star });
                ++i;
            } else if (c == '?') {
                m_pattern.m_tokens.push_back(Token { TokenType::any });
                ++i;
            } else if (c == '\\' && i + 1 < m_text.size()) {
                literal(m_text[i + 1]);
                i += 2;
            } else if (c == '[') {
                std::optional<std::size_t> next = set(i + 1);
                if (m_error)
                    return m_error;
                if (next) {
                    i = *next;
                } else {
                    literal('[');
                    ++i;
                }
            } else {
                literal(c);
                ++i;
            }
        }
        return std::nullopt;
    }

private:
    void literal(char32_t c) { m_pattern.m_tokens.push_back(Token { TokenType::literal, fold(c) }); }

    // Reads a bracket expression starting after its "["; answers where the pattern goes on,
    // or nothing when the bracket never closes.
    std::optional<std::size_t> set(std::size_t j)
    {
        Set result;
        if (j < m_text.size() && (m_text[j] == '!' || m_text[j] == '^')) {
            result.negated = true;
            ++j;
        }
        bool first = true;
        while (j < m_text.size()) {
            char32_t c = m_text[j];
            if (c == ']' && !first) {
                m_pattern.m_sets.push_back(std::move(result));
                m_pattern.m_tokens.push_back(Token { TokenType::set, 0, static_cast<std::uint32_t>(m_pattern.m_sets.size() - 1) });
                return j + 1;
            }
            first = false;
            if (c == '[' && j + 1 < m_text.size() && m_text[j + 1] == ':') {
                std::size_t close = m_text.find(U":]", j + 2);
                if (close != std::u32string_view::npos) {
                    std::optional<std::uint16_t> named = classNamed(m_text.substr(j + 2, close - j - 2));
                    if (!named) {
                        m_error = Error::unknownClass;
                        return std::nullopt;
                    }
                    result.classes |= *named;
                    j = close + 2;
                    continue;
                }
            }
            char32_t low = escaped(j);
            char32_t high = low;
            if (j + 1 < m_text.size() && m_text[j] == '-' && m_text[j + 1] != ']') {
                ++j;
                high = escaped(j);
            }
            result.ranges.push_back(Range { low, high }); // a reversed range matches nothing, as in the shell
        }
        return std::nullopt;
    }

    // The character at j, taking a backslash as "the next one literally"; moves j past it.
    char32_t escaped(std::size_t& j)
    {
        if (m_text[j] == '\\' && j + 1 < m_text.size())
            ++j;
        return m_text[j++];
    }

    NamePattern& m_pattern;
    std::u32string_view m_text;
    std::optional<Error> m_error;
};

std::expected<NamePattern, NamePattern::Error> NamePattern::compile(std::string_view pattern)
{
    if (pattern.empty())
        return std::unexpected(Error::empty);
    if (pattern.size() > maximumLength)
        return std::unexpected(Error::tooLong);
    NamePattern result;
    result.m_text = std::string(pattern);
    std::u32string text = decode(UnicodeNames::normalized(pattern));
    if (std::optional<Error> error = Parser(result, text).parse())
        return std::unexpected(*error);
    result.splitIntoSegments();
    return result;
}

std::string_view NamePattern::message(Error error)
{
    switch (error) {
    case Error::empty:
        return "The name pattern is empty. Give one such as '*.dmg'.";
    case Error::tooLong:
        return "The name pattern is too long: at most 255 bytes, as long as a name can be.";
    case Error::unknownClass:
        return "The name pattern names an unknown character class. Use one of [:alpha:], [:digit:], [:alnum:], [:upper:], "
               "[:lower:], [:space:], [:blank:], [:punct:], [:xdigit:], [:cntrl:], [:print:] or [:graph:].";
    }
    return "The name pattern isn't valid.";
}

bool NamePattern::inSet(const Set& set, char32_t folded) const
{
    bool member = set.classes != 0 && (classesOf(folded) & set.classes) != 0;
    char32_t other = upper(folded);
    for (std::size_t i = 0; !member && i < set.ranges.size(); ++i) {
        const Range& range = set.ranges[i];
        member = (folded >= range.first && folded <= range.last) || (other >= range.first && other <= range.last);
    }
    return member != set.negated;
}

bool NamePattern::matchesOne(const Token& token, char32_t folded) const
{
    switch (token.type) {
    case TokenType::literal:
        return token.value == folded;
    case TokenType::any:
        return true;
    case TokenType::set:
        return inSet(m_sets[token.set], folded);
    case TokenType::star:
        return false;
    }
    return false;
}

// Names that are plain ASCII, by far the most common, are folded into bytes and matched
// with string searches; other names are decoded, composed and folded first.
struct NamePattern::AsciiText {
    std::string_view bytes;
    [[nodiscard]] std::size_t size() const { return bytes.size(); }
    char32_t operator[](std::size_t i) const { return foldAscii(static_cast<unsigned char>(bytes[i])); }
};

struct NamePattern::UnicodeText {
    std::u32string_view characters;
    [[nodiscard]] std::size_t size() const { return characters.size(); }
    char32_t operator[](std::size_t i) const { return characters[i]; }
};

void NamePattern::splitIntoSegments()
{
    std::vector<Segment> segments(1);
    for (const Token& token : m_tokens) {
        if (token.type == TokenType::star) {
            segments.emplace_back();
            continue;
        }
        Segment& segment = segments.back();
        segment.tokens.push_back(token);
        segment.isAsciiLiteral = segment.isAsciiLiteral && token.type == TokenType::literal && token.value < 0x80;
        if (segment.isAsciiLiteral)
            segment.asciiLiteral.push_back(static_cast<char>(token.value));
    }
    m_hasStar = segments.size() > 1;
    m_prefix = std::move(segments.front());
    if (m_hasStar) {
        m_suffix = std::move(segments.back());
        m_middle.assign(std::make_move_iterator(segments.begin() + 1), std::make_move_iterator(segments.end() - 1));
        std::erase_if(m_middle, [](const Segment& segment) { return segment.tokens.empty(); });
    }
}

template <typename Text>
bool NamePattern::matchesAt(const Segment& segment, const Text& text, std::size_t position) const
{
    if constexpr (std::is_same_v<Text, AsciiText>) {
        if (segment.isAsciiLiteral) {
            const std::string& literal = segment.asciiLiteral;
            for (std::size_t i = 0; i < literal.size(); ++i) {
                if (text[position + i] != static_cast<unsigned char>(literal[i]))
                    return false;
            }
            return true;
        }
    }
    for (std::size_t i = 0; i < segment.tokens.size(); ++i) {
        if (!matchesOne(segment.tokens[i], text[position + i]))
            return false;
    }
    return true;
}

// The leftmost position in [from, to) where the whole segment fits and matches.
template <typename Text>
std::size_t NamePattern::find(const Segment& segment, const Text& text, std::size_t from, std::size_t to) const
{
    constexpr std::size_t none = static_cast<std::size_t>(-1);
    std::size_t length = segment.tokens.size();
    if (to < from || to - from < length)
        return none;
    // A literal segment is first looked for by its first character alone.
    const Token& first = segment.tokens.front();
    bool literalFirst = first.type == TokenType::literal;
    for (std::size_t position = from; position + length <= to; ++position) {
        if (literalFirst && text[position] != first.value)
            continue;
        if (matchesAt(segment, text, position))
            return position;
    }
    return none;
}

// Every token but the star takes exactly one character, so the prefix and the suffix sit
// at fixed places and each middle segment may take its leftmost fit: a later fit never
// leaves more room for the rest. Time is at most the name's length times the pattern's.
template <typename Text>
bool NamePattern::matchesText(const Text& text) const
{
    std::size_t length = text.size();
    std::size_t head = m_prefix.tokens.size();
    if (!m_hasStar)
        return length == head && matchesAt(m_prefix, text, 0);
    std::size_t tail = m_suffix.tokens.size();
    if (length < head + tail || !matchesAt(m_prefix, text, 0) || !matchesAt(m_suffix, text, length - tail))
        return false;
    std::size_t position = head;
    for (const Segment& segment : m_middle) {
        std::size_t found = find(segment, text, position, length - tail);
        if (found == static_cast<std::size_t>(-1))
            return false;
        position = found + segment.tokens.size();
    }
    return true;
}

// True when a literal prefix or suffix of plain ASCII rules the name out by its end bytes
// alone. Only ASCII ends are judged: ASCII characters stay what they are when a name is
// composed, so the full comparison would fail the same way.
bool NamePattern::excludedByEnds(std::string_view name) const
{
    auto differs = [](std::string_view bytes, const std::string& literal) {
        if (!isAscii(bytes))
            return false;
        for (std::size_t i = 0; i < literal.size(); ++i) {
            if (foldAscii(static_cast<unsigned char>(bytes[i])) != static_cast<unsigned char>(literal[i]))
                return true;
        }
        return false;
    };
    const std::string& head = m_prefix.asciiLiteral;
    if (m_prefix.isAsciiLiteral && !head.empty() && name.size() >= head.size() && differs(name.substr(0, head.size()), head))
        return true;
    const std::string& tail = m_suffix.asciiLiteral;
    return m_hasStar && m_suffix.isAsciiLiteral && !tail.empty() && name.size() >= tail.size()
        && differs(name.substr(name.size() - tail.size()), tail);
}

bool NamePattern::matches(std::string_view name) const
{
    if (excludedByEnds(name))
        return false;
    if (isAscii(name))
        return matchesText(AsciiText { name });
    // Names that only hold characters below U+0300 are in composed form already; anything
    // else may carry combining marks and is composed before it is compared.
    std::u32string text = decode(name);
    if (std::any_of(text.begin(), text.end(), [](char32_t c) { return c >= 0x300; }))
        text = decode(UnicodeNames::normalized(name));
    for (char32_t& c : text)
        c = fold(c);
    return matchesText(UnicodeText { text });
}

}
