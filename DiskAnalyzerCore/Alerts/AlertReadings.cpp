#include "Alerts/AlertReadings.hpp"

#include "History/ChangeOverPeriod.hpp"
#include "History/HistoryPlaces.hpp"
#include "Platform/MountTable.hpp"
#include "Support/Phrases.hpp"

#include "Support/ByteFormat.hpp"
#include "Alerts/AlertCheck.hpp"
#include "Alerts/AlertTexts.hpp"
#include "Platform/VolumeIdentity.hpp"

#include <cstdio>

namespace tarnwick::AlertReadings {

namespace {

using Condition = SpaceAlert::Condition;

std::string_view periodPhrase(std::string_view rawValue)
{
    auto period = HistoryPeriod::fromRawValue(rawValue);
    switch (period.value_or(HistoryPeriod::yesterday)) {
    case HistoryPeriod::yesterday:
        return "since yesterday";
    case HistoryPeriod::dayBeforeYesterday:
        return "since the day before yesterday";
    case HistoryPeriod::week:
        return "over the past week";
    case HistoryPeriod::month:
        return "over the past month";
    case HistoryPeriod::threeMonths:
        return "over the past 3 months";
    case HistoryPeriod::sixMonths:
        return "over the past 6 months";
    case HistoryPeriod::year:
        return "over the past year";
    case HistoryPeriod::all:
        return "since the first snapshot";
    }
    return "since yesterday";
}

std::string percentText(double value, int decimals)
{
    char buffer[32];
    std::snprintf(buffer, sizeof buffer, "%.*f %%", decimals, value);
    return buffer;
}

std::optional<AlertCheck::Growth> growthOf(HistoryStore& store, const HistoryPlaces::Located& located, std::string_view periodRaw)
{
    HistoryPeriod period = HistoryPeriod::fromRawValue(periodRaw).value_or(HistoryPeriod::defaultPeriod);
    auto compared = ChangeOverPeriod::of(store, located, period, 0);
    if (!compared)
        return std::nullopt;
    return AlertCheck::Growth { compared->changes.change, compared->changes.isUncertain, compared->changes.from->date };
}

std::optional<AlertCheck::Folder> folderOf(const SpaceAlert& alert, HistoryStore* store)
{
    if (!store)
        return std::nullopt;
    // A folder reads from the latest snapshot of its disk; one that snapshot no longer keeps
    // is not measured, whatever older ones said.
    auto located = HistoryPlaces::locate(*store, alert.path);
    if (!located || !located->isInLatest())
        return std::nullopt;
    AlertCheck::Folder folder { located->current->date, located->current->size(located->node), std::nullopt, std::nullopt };
    if (located->current->volume)
        folder.capacity = located->current->volume->total;
    else
        folder.capacity = located->latest.volumeTotal;
    if (const auto* growth = std::get_if<Condition::Growth>(&alert.condition.value))
        folder.growth = growthOf(*store, *located, growth->period);
    return folder;
}

std::string placeName(const std::string& path)
{
    std::size_t slash = path.find_last_of('/');
    if (path == "/" || slash == std::string::npos || slash + 1 == path.size())
        return path;
    return path.substr(slash + 1);
}

}

SpaceAlertStore::PlaceKind placeKind(const std::string& path)
{
    return MountTable::mountedAt(HistoryPlaces::pathForms(path)) ? SpaceAlertStore::PlaceKind::disk : SpaceAlertStore::PlaceKind::folder;
}

AlertReading read(const SpaceAlert& alert, HistoryStore* store, Date now)
{
    if (const auto* diskUsed = std::get_if<Condition::DiskUsed>(&alert.condition.value)) {
        std::optional<AlertCheck::Disk> disk;
        if (MountTable::mountedAt(HistoryPlaces::pathForms(alert.path))) {
            if (auto space = VolumeIdentity::space(alert.path))
                disk = AlertCheck::Disk { space->total, space->available };
        }
        return AlertCheck::readDisk(*diskUsed, disk, now);
    }
    return AlertCheck::readFolder(alert.condition, folderOf(alert, store));
}

std::string limitText(const Condition& condition)
{
    if (const auto* diskUsed = std::get_if<Condition::DiskUsed>(&condition.value))
        return "fuller than " + std::to_string(diskUsed->percent) + " %";
    if (const auto* size = std::get_if<Condition::Size>(&condition.value))
        return "larger than " + ByteFormat::format(size->bytes);
    if (const auto* share = std::get_if<Condition::Share>(&condition.value))
        return "more than " + std::to_string(share->percent) + " % of its disk";
    const auto& growth = std::get<Condition::Growth>(condition.value);
    return "grows by more than " + ByteFormat::format(growth.bytes) + " " + std::string(periodPhrase(growth.period));
}

std::string valueText(const Condition& condition, const AlertReading& reading)
{
    if (!reading.value)
        return {};
    switch (condition.kind()) {
    case Condition::Kind::diskUsed:
    case Condition::Kind::share:
        return percentText(*reading.value, *reading.value < 1 ? 2 : 1);
    case Condition::Kind::size:
        return ByteFormat::format(static_cast<std::int64_t>(*reading.value));
    case Condition::Kind::growth:
        return Phrases::signedSize(static_cast<std::int64_t>(*reading.value), reading.uncertain)
            + (reading.since ? " since " + Phrases::localTime(*reading.since) : "");
    }
    return {};
}

std::string notificationText(const SpaceAlert& alert)
{
    std::string text = "“" + placeName(alert.path);
    const Condition& condition = alert.condition;
    if (const auto* diskUsed = std::get_if<Condition::DiskUsed>(&condition.value))
        return text + std::string(AlertTexts::diskUsedPiece) + std::to_string(diskUsed->percent) + " % full.";
    if (const auto* size = std::get_if<Condition::Size>(&condition.value))
        return text + std::string(AlertTexts::sizePiece) + ByteFormat::format(size->bytes) + ".";
    if (const auto* share = std::get_if<Condition::Share>(&condition.value))
        return text + std::string(AlertTexts::sharePiece) + std::to_string(share->percent) + " % of its disk.";
    const auto& growth = std::get<Condition::Growth>(condition.value);
    return text + std::string(AlertTexts::growthPiece) + ByteFormat::format(growth.bytes) + " " + std::string(periodPhrase(growth.period)) + ".";
}

}
