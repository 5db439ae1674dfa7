#include "History/HistoryChanges.hpp"

#include "Support/UnicodeNames.hpp"

#include <chrono>
#include <cstdio>

namespace tarnwick::HistoryQueries {

namespace {

constexpr std::int64_t bytesPerTenthMB = 100'000;

// "yyyy-MM-dd HH:mm" in the zone's local time, with plain digits whatever the locale.
std::string minuteText(Date date, const TimeZone& zone)
{
    using namespace std::chrono;
    std::int64_t unixSeconds = floor<seconds>(date.time_since_epoch()).count();
    std::int64_t local = unixSeconds + zone.offsetFromGMT(unixSeconds);
    std::int64_t days = local / 86400 - (local % 86400 < 0 ? 1 : 0);
    std::int64_t secondOfDay = local - days * 86400;
    year_month_day day { sys_days { std::chrono::days { days } } };
    char text[32];
    std::snprintf(text, sizeof text, "%04d-%02u-%02u %02d:%02d", static_cast<int>(day.year()), static_cast<unsigned>(day.month()),
        static_cast<unsigned>(day.day()), static_cast<int>(secondOfDay / 3600), static_cast<int>(secondOfDay % 3600 / 60));
    return text;
}

// Megabytes with one decimal, rounded half away from zero; a change carries its sign.
std::string megabytes(std::int64_t bytes, bool withSign = false)
{
    const bool negative = bytes < 0;
    const std::uint64_t size = negative ? 0 - static_cast<std::uint64_t>(bytes) : static_cast<std::uint64_t>(bytes);
    const std::uint64_t tenths = size / bytesPerTenthMB + (size % bytesPerTenthMB >= bytesPerTenthMB / 2 ? 1 : 0);
    std::string text = negative && tenths > 0 ? "-" : (withSign && tenths > 0 ? "+" : "");
    text += std::to_string(tenths / 10) + "." + std::to_string(tenths % 10);
    return text;
}

std::string changeText(std::int64_t change, bool uncertain)
{
    return (uncertain ? std::string(ChangeTexts::uncertainMark) : std::string()) + megabytes(change, true);
}

std::string row(std::string_view label, std::int64_t before, std::int64_t after, bool uncertain)
{
    std::string line(label);
    line += '\t' + megabytes(before) + '\t' + megabytes(after) + '\t' + changeText(after - before, uncertain) + '\n';
    return line;
}

// Paths below the compared place are shown relative to it.
std::string_view below(std::string_view path, std::string_view place)
{
    if (path != place && UnicodeNames::hasPathPrefix(path, place))
        return UnicodeNames::dropPathPrefix(path, place);
    return path;
}

}

std::string exportText(const Changes& changes, const TimeZone& zone)
{
    const std::string fromDate = changes.from ? minuteText(changes.from->date, zone) : std::string();
    const std::string toDate = changes.to ? minuteText(changes.to->date, zone) : std::string();
    std::string text = "Place\t" + fromDate + " (MB)\t" + toDate + " (MB)\tChange (MB)\n";
    text += row(changes.place, changes.sizeBefore, changes.sizeAfter, changes.isUncertain);
    for (const PlaceChange& place : changes.inside)
        text += row(below(place.path, changes.place), place.before, place.after, place.isUncertain);
    if (changes.moreInside > 0)
        text += "and " + std::to_string(changes.moreInside) + " more changed places inside\n";
    text += row(std::string(ChangeTexts::restLabel) + " (" + std::string(ChangeTexts::restExplanation) + ")", changes.rest.before,
        changes.rest.after, changes.rest.isUncertain);
    if (!changes.grewMost.empty()) {
        text += "\nGrew most\n";
        for (const PlaceChange& place : changes.grewMost)
            text += row(below(place.path, changes.place), place.before, place.after, place.isUncertain);
    }
    if (!changes.byType.empty()) {
        text += "\nBy type\n";
        for (const TypeChange& type : changes.byType)
            text += row(ContentCategories::displayLabel(type.category), type.before, type.after, false);
    }
    if (!changes.readByOneScan.empty()) {
        text += "\nRead in full by one scan only\n";
        for (const OneScanPlace& place : changes.readByOneScan)
            text += place.path + "\tread only by the scan of " + (place.readBy == ReadBy::earlierScan ? fromDate : toDate) + '\n';
    }
    if (changes.isUncertain)
        text += "\n" + std::string(ChangeTexts::uncertainMark) + " " + std::string(ChangeTexts::uncertainExplanation) + '\n';
    return text;
}

}
