#include "Support/ByteFormat.hpp"

#include <array>
#include <clocale>

namespace tarnwick::ByteFormat {

namespace {

struct Unit {
    std::string_view name;
    std::int64_t size;
};

constexpr std::array<Unit, 6> units { {
    { "KB", 1'000 },
    { "MB", 1'000'000 },
    { "GB", 1'000'000'000 },
    { "TB", 1'000'000'000'000 },
    { "PB", 1'000'000'000'000'000 },
    { "EB", 1'000'000'000'000'000'000 },
} };

constexpr std::array<std::int64_t, 3> powersOfTen { 1, 10, 100 };

// count x 10^decimals / unit, rounded half up; 128 bits because count can be near 2^63.
std::int64_t scaled(std::int64_t count, std::int64_t unit, int decimals)
{
    __int128 numerator = static_cast<__int128>(count) * powersOfTen[static_cast<std::size_t>(decimals)];
    __int128 quotient = numerator / unit;
    if ((numerator % unit) * 2 >= unit)
        ++quotient;
    return static_cast<std::int64_t>(quotient);
}

}

std::string format(std::int64_t bytes, std::string_view decimalSeparator)
{
    std::int64_t count = bytes < 0 ? 0 : bytes;
    if (count < 1'000)
        return std::to_string(count) + " B";
    std::size_t unit = 0;
    while (unit + 1 < units.size() && count >= units[unit + 1].size)
        ++unit;
    std::int64_t whole = count / units[unit].size;
    int decimals = whole > 99 ? 0 : whole > 9 ? 1 : 2;
    std::int64_t value = scaled(count, units[unit].size, decimals);
    // Rounding may carry into a fourth digit (999.5 KB): give up a decimal, or move up a unit.
    while (value >= 1'000) {
        if (decimals > 0) {
            --decimals;
        } else if (unit + 1 < units.size()) {
            ++unit;
            decimals = 2;
        } else {
            break;
        }
        value = scaled(count, units[unit].size, decimals);
    }
    std::string text;
    if (decimals == 0) {
        text = std::to_string(value);
    } else {
        std::int64_t power = powersOfTen[static_cast<std::size_t>(decimals)];
        std::string fraction = std::to_string(value % power);
        fraction.insert(0, static_cast<std::size_t>(decimals) - fraction.size(), '0');
        text = std::to_string(value / power) + std::string(decimalSeparator) + fraction;
    }
    return text + " " + std::string(units[unit].name);
}

std::string format(std::int64_t bytes)
{
    return format(bytes, decimalSeparator());
}

std::string decimalSeparator()
{
    const std::lconv* conventions = std::localeconv();
    if (conventions == nullptr || conventions->decimal_point == nullptr || conventions->decimal_point[0] == '\0')
        return ".";
    return conventions->decimal_point;
}

}
