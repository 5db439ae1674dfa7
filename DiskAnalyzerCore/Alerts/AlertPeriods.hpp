#pragma once

#include <array>
#include <optional>
#include <string_view>

// The periods a growth alert can span, by the raw values that history periods are stored by.
// Alerts keep the raw value as it is, so that they need nothing of the history to be stored,
// listed or compared; the history reads it back when it measures the growth.
namespace tarnwick::AlertPeriods {

struct Period {
    std::string_view rawValue;        // "dayBeforeYesterday", as stored
    std::string_view commandLineName; // "day-before-yesterday", as typed after --period
};

// In the order of the period picker.
inline constexpr std::array<Period, 8> all { {
    { "yesterday", "yesterday" },
    { "dayBeforeYesterday", "day-before-yesterday" },
    { "week", "week" },
    { "month", "month" },
    { "threeMonths", "3-months" },
    { "sixMonths", "6-months" },
    { "year", "year" },
    { "all", "all" },
} };

// The period of a growth alert given without --period.
inline constexpr std::string_view defaultRawValue = "yesterday";

// The raw value for a name of the command line's --period; absent for any other word.
std::optional<std::string_view> fromCommandLineName(std::string_view name);
// The command line's name for a raw value; absent for a value that names no period.
std::optional<std::string_view> commandLineName(std::string_view rawValue);
bool isRawValue(std::string_view rawValue);

}
