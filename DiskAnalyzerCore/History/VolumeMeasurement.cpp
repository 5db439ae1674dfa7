#include "History/VolumeMeasurement.hpp"

#include <charconv>
#include <chrono>

namespace tarnwick {

namespace {

constexpr std::int64_t microPerSecond = 1'000'000;
constexpr std::int64_t referenceMicroseconds = TreeDate::referenceUnixSeconds * microPerSecond;
// Keeps dates inside the system clock's nanosecond range.
constexpr std::int64_t limitSeconds = 8'000'000'000;

std::string dateText(Date date)
{
    std::int64_t micro = std::chrono::floor<std::chrono::microseconds>(date.time_since_epoch()).count() - referenceMicroseconds;
    std::string text = micro < 0 ? "-" : "";
    std::uint64_t magnitude = micro < 0 ? 0 - static_cast<std::uint64_t>(micro) : static_cast<std::uint64_t>(micro);
    text += std::to_string(magnitude / microPerSecond);
    if (std::uint64_t fraction = magnitude % microPerSecond; fraction != 0) {
        std::string digits = std::to_string(fraction);
        digits.insert(0, 6 - digits.size(), '0');
        digits.erase(digits.find_last_not_of('0') + 1);
        text += "." + digits;
    }
    return text;
}

std::optional<std::int64_t> wholeNumber(std::string_view text)
{
    std::int64_t value = 0;
    auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || end != text.data() + text.size() || text.empty())
        return std::nullopt;
    return value;
}

std::optional<Date> parseDate(std::string_view text)
{
    bool negative = !text.empty() && text.front() == '-';
    if (negative)
        text.remove_prefix(1);
    std::string_view whole = text.substr(0, text.find('.'));
    std::string_view fraction = whole.size() < text.size() ? text.substr(whole.size() + 1) : std::string_view {};
    auto seconds = wholeNumber(whole);
    if (!seconds || *seconds < 0 || *seconds > limitSeconds || fraction.size() > 6
        || (whole.size() < text.size() && fraction.empty()))
        return std::nullopt;
    std::int64_t micro = 0;
    if (!fraction.empty()) {
        auto digits = wholeNumber(fraction);
        if (!digits || *digits < 0)
            return std::nullopt;
        micro = *digits;
        for (std::size_t k = fraction.size(); k < 6; ++k)
            micro *= 10;
    }
    std::int64_t total = *seconds * microPerSecond + micro;
    total = negative ? -total : total;
    return Date(std::chrono::duration_cast<Date::duration>(std::chrono::microseconds(total + referenceMicroseconds)));
}

}

std::string VolumeMeasurement::logLine() const
{
    std::string line = dateText(date) + " " + std::to_string(total) + " " + std::to_string(available);
    if (scanned)
        line += " " + std::to_string(*scanned);
    return line + "\n";
}

std::optional<VolumeMeasurement> VolumeMeasurement::parseLogLine(std::string_view line)
{
    if (!line.empty() && line.back() == '\n')
        line.remove_suffix(1);
    std::string_view fields[5];
    std::size_t count = 0;
    while (!line.empty()) {
        if (count == 4)
            return std::nullopt;
        std::size_t blank = line.find(' ');
        fields[count++] = line.substr(0, blank);
        line = blank == std::string_view::npos ? std::string_view {} : line.substr(blank + 1);
    }
    if (count < 3)
        return std::nullopt;
    VolumeMeasurement measurement;
    auto date = parseDate(fields[0]);
    auto total = wholeNumber(fields[1]);
    auto available = wholeNumber(fields[2]);
    if (!date || !total || !available || *total < 0 || *available < 0)
        return std::nullopt;
    measurement.date = *date;
    measurement.total = *total;
    measurement.available = *available;
    if (count == 4) {
        measurement.scanned = wholeNumber(fields[3]);
        if (!measurement.scanned || *measurement.scanned < 0)
            return std::nullopt;
    }
    return measurement;
}

std::vector<VolumeMeasurement> VolumeMeasurement::parseLog(std::string_view text)
{
    std::vector<VolumeMeasurement> measurements;
    while (!text.empty()) {
        std::size_t end = text.find('\n');
        // A last line without its line feed was cut short while being written.
        if (end == std::string_view::npos)
            break;
        if (auto measurement = parseLogLine(text.substr(0, end)))
            measurements.push_back(*measurement);
        text.remove_prefix(end + 1);
    }
    return measurements;
}

std::string VolumeMeasurement::logFileName(std::string_view volume)
{
    std::string name(volume);
    for (char& c : name) {
        if (c == '/' || c == ':')
            c = '_';
    }
    return name + ".log";
}

}
