#include "Agent/AgentCommands.hpp"

#include <algorithm>
#include <cctype>
#include <limits>

namespace tarnwick::AgentCommands {

namespace {

bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

// Digits to a number while it stays at or below limit; absent beyond it.
std::optional<std::uint64_t> digitsValue(std::string_view digits, std::uint64_t limit)
{
    std::uint64_t value = 0;
    for (char c : digits) {
        auto digit = static_cast<std::uint64_t>(c - '0');
        if (value > (limit - digit) / 10)
            return std::nullopt;
        value = value * 10 + digit;
    }
    return value;
}

std::string_view trimmedBlanks(std::string_view word)
{
    std::size_t first = word.find_first_not_of(" \t");
    if (first == std::string_view::npos)
        return {};
    std::size_t last = word.find_last_not_of(" \t");
    return word.substr(first, last - first + 1);
}

constexpr std::int64_t sizeLimit = 9'000'000'000'000'000'000;
// Fraction digits beyond these change the size by far less than a byte.
constexpr std::size_t keptFractionDigits = 18;

// "1.5" times multiplier, exactly, rounded half up to a whole byte; absent unless the number
// is digits with at most one "." and the product stays below 9 x 10^18.
std::optional<std::int64_t> scaledDecimal(std::string_view number, std::int64_t multiplier)
{
    std::size_t point = number.find('.');
    std::string_view whole = number.substr(0, point);
    std::string_view fraction = point == std::string_view::npos ? std::string_view() : number.substr(point + 1);
    if (whole.empty() && fraction.empty())
        return std::nullopt;
    if (!std::all_of(whole.begin(), whole.end(), isDigit) || !std::all_of(fraction.begin(), fraction.end(), isDigit))
        return std::nullopt;
    std::optional<std::uint64_t> wholeValue = digitsValue(whole, static_cast<std::uint64_t>(sizeLimit));
    if (!wholeValue)
        return std::nullopt;
    fraction = fraction.substr(0, std::min(fraction.size(), keptFractionDigits));
    __int128 denominator = 1;
    for (std::size_t i = 0; i < fraction.size(); ++i)
        denominator *= 10;
    __int128 fractionBytes = static_cast<__int128>(*digitsValue(fraction, std::numeric_limits<std::uint64_t>::max())) * multiplier;
    __int128 bytes = static_cast<__int128>(*wholeValue) * multiplier + fractionBytes / denominator;
    if (bytes >= sizeLimit)
        return std::nullopt;
    if ((fractionBytes % denominator) * 2 >= denominator)
        ++bytes;
    return static_cast<std::int64_t>(bytes);
}

}

std::optional<std::int64_t> parseInteger(std::string_view word)
{
    bool negative = false;
    if (!word.empty() && (word.front() == '+' || word.front() == '-')) {
        negative = word.front() == '-';
        word.remove_prefix(1);
    }
    if (word.empty() || !std::all_of(word.begin(), word.end(), isDigit))
        return std::nullopt;
    auto largest = static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max());
    std::optional<std::uint64_t> magnitude = digitsValue(word, negative ? largest + 1 : largest);
    if (!magnitude)
        return std::nullopt;
    if (negative)
        return static_cast<std::int64_t>(0 - *magnitude);
    return static_cast<std::int64_t>(*magnitude);
}

std::optional<std::int64_t> parseSize(std::string_view word)
{
    std::string text(trimmedBlanks(word));
    std::transform(text.begin(), text.end(), text.begin(), [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
    if (!text.empty() && text.back() == 'B')
        text.pop_back();
    std::int64_t multiplier = 1;
    if (!text.empty()) {
        switch (text.back()) {
        case 'K':
            multiplier = 1'000;
            break;
        case 'M':
            multiplier = 1'000'000;
            break;
        case 'G':
            multiplier = 1'000'000'000;
            break;
        case 'T':
            multiplier = 1'000'000'000'000;
            break;
        default:
            break;
        }
        if (multiplier != 1)
            text.pop_back();
    }
    return scaledDecimal(text, multiplier);
}

std::optional<std::string> parseValue(const Value& value, std::string_view word)
{
    switch (value.kind) {
    case Value::Kind::integer: {
        std::optional<std::int64_t> number = parseInteger(word);
        if (!number || (value.range && (*number < value.range->lowest || *number > value.range->highest)))
            return std::nullopt;
        return std::to_string(*number);
    }
    case Value::Kind::choice:
        if (std::find(value.choices.begin(), value.choices.end(), word) == value.choices.end())
            return std::nullopt;
        return std::string(word);
    case Value::Kind::text:
    case Value::Kind::folder:
        return std::string(word);
    case Value::Kind::size: {
        std::optional<std::int64_t> bytes = parseSize(word);
        if (!bytes)
            return std::nullopt;
        return std::to_string(*bytes);
    }
    }
    return std::nullopt;
}

}
