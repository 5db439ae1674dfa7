#include "SnapshotCommands.hpp"

#include "Agent/AgentErrorCode.hpp"
#include "Agent/AgentFormat.hpp"
#include "Agent/EchoedText.hpp"
#include "Support/Phrases.hpp"
#include "Support/ByteFormat.hpp"
#include "History/VolumeTimeline.hpp"
#include "Platform/MountTable.hpp"
#include "Platform/VolumeIdentity.hpp"
#include "SnapshotPlaces.hpp"

#include <set>
#include <unistd.h>

namespace tarnwick::SnapshotCommands {

namespace {

enum class Access { wholeDisk, someFolders, none };

// A change of used space since the start of a period, from the volume's record.
struct UsedChange {
    std::int64_t bytes = 0;
    Date since {};
};

struct DiskFacts {
    DiskMount disk;
    std::optional<VolumeIdentity::Space> space;
    Access access = Access::none;
    std::int64_t snapshotDays = 0;
    std::optional<Date> latestSnapshot;
    std::optional<UsedChange> sinceYesterday;
    std::optional<UsedChange> overMonth;
    VolumeTimeline timeline;
};

bool readable(const std::string& path)
{
    return ::access(path.c_str(), R_OK | X_OK) == 0;
}

// The measurement a period starts from, by the rule of the history's comparisons: the latest
// at or before its start, else the earliest.
std::optional<UsedChange> usedChange(HistoryPeriod period, const std::vector<VolumeMeasurement>& measurements,
    const std::optional<VolumeIdentity::Space>& now, const HistoryStore& store)
{
    if (!now || measurements.empty())
        return std::nullopt;
    const VolumeMeasurement* start = nullptr;
    const VolumeMeasurement* earliest = nullptr;
    for (const VolumeMeasurement& measurement : measurements) {
        if (!earliest || measurement.date < earliest->date)
            earliest = &measurement;
        if (period.reachesBack(measurement.date, store.now(), store.calendar()) && (!start || measurement.date > start->date))
            start = &measurement;
    }
    if (!start)
        start = earliest;
    std::int64_t usedThen = start->total - start->available;
    std::int64_t usedNow = now->total - now->available;
    return UsedChange { usedNow - usedThen, start->date };
}

DiskFacts factsOf(const DiskMount& disk, HistoryStore* store)
{
    DiskFacts facts { disk, VolumeIdentity::space(disk.mount.mountPoint), Access::none, 0, std::nullopt, std::nullopt, std::nullopt, {} };
    std::optional<std::string> volume = VolumeIdentity::identifier(disk.mount.mountPoint);
    facts.access = readable(disk.mount.mountPoint) ? Access::wholeDisk : Access::none;
    if (!store || !volume)
        return facts;
    std::set<std::int64_t> days;
    for (const HistoryStore::SourceRecord& record : store->index().sources) {
        if (record.source.volume != *volume)
            continue;
        for (const HistoryEntry& entry : record.entries)
            days.insert(store->calendar().dayNumber(entry.date));
        if (record.current && (!facts.latestSnapshot || record.current->date > *facts.latestSnapshot))
            facts.latestSnapshot = record.current->date;
        if (facts.access == Access::none && readable(record.source.path))
            facts.access = Access::someFolders;
    }
    facts.snapshotDays = static_cast<std::int64_t>(days.size());
    auto measurements = store->measurements(*volume);
    if (measurements) {
        facts.sinceYesterday = usedChange(HistoryPeriod::yesterday, *measurements, facts.space, *store);
        facts.overMonth = usedChange(HistoryPeriod::month, *measurements, facts.space, *store);
        facts.timeline = VolumeTimeline::make(*measurements, store->now(), store->calendar());
    }
    return facts;
}

std::string_view accessWord(Access access)
{
    switch (access) {
    case Access::wholeDisk:
        return "whole_disk";
    case Access::someFolders:
        return "some_folders";
    case Access::none:
        return "none";
    }
    return "none";
}

std::string_view accessText(Access access)
{
    switch (access) {
    case Access::wholeDisk:
        return "Tarnwick may read the whole disk.";
    case Access::someFolders:
        return "Tarnwick may read some folders of it.";
    case Access::none:
        return "Tarnwick may read none of it.";
    }
    return "";
}

JSONValue changeJSON(const std::optional<UsedChange>& change, std::string_view key)
{
    if (!change)
        return JSONValue();
    return JSONValue::Object { { std::string(key), change->bytes }, { "since", AgentFormat::isoDate(change->since) } };
}

std::string forecastText(const DiskFacts& facts, const Calendar& calendar)
{
    if (facts.timeline.forecast)
        return facts.timeline.forecast->text(calendar);
    if (facts.timeline.dayCount < 2)
        return "No forecast yet: it needs snapshots from two days or more.";
    return "No forecast: the available space isn't running out at the current pace.";
}

JSONValue::Object diskJSON(const DiskFacts& facts, const Calendar& calendar)
{
    const MountInfo& mount = facts.disk.mount;
    const auto& forecast = facts.timeline.forecast;
    return JSONValue::Object {
        { "mount_point", mount.mountPoint },
        { "device", mount.deviceName },
        { "file_system", mount.fileSystemType },
        { "disk_image", facts.disk.isDiskImage },
        { "capacity_bytes", facts.space ? JSONValue(facts.space->total) : JSONValue() },
        { "available_bytes", facts.space ? JSONValue(facts.space->available) : JSONValue() },
        { "reserved_bytes", facts.space ? JSONValue(facts.space->reserved) : JSONValue() },
        { "access", std::string(accessWord(facts.access)) },
        { "snapshot_days", facts.snapshotDays },
        { "latest_snapshot", AgentFormat::isoDate(facts.latestSnapshot) },
        { "used_change_since_yesterday", changeJSON(facts.sinceYesterday, "change_bytes") },
        { "used_change_over_month", changeJSON(facts.overMonth, "change_bytes") },
        { "forecast", forecast ? JSONValue(forecast->text(calendar)) : JSONValue() },
        { "runs_out", forecast && !forecast->isBeyondHorizon() ? AgentFormat::isoDate(forecast->runOutDate()) : JSONValue() },
        { "forecast_note", forecast ? JSONValue() : JSONValue(forecastText(facts, calendar)) },
    };
}

std::string diskText(const DiskFacts& facts, const Calendar& calendar)
{
    const MountInfo& mount = facts.disk.mount;
    std::string text = EchoedText::visible(mount.mountPoint) + " (" + mount.fileSystemType + " on " + mount.deviceName + (facts.disk.isDiskImage ? ", a disk image" : "") + "): ";
    text += facts.space ? ByteFormat::format(facts.space->total) + ", " + ByteFormat::format(facts.space->available)
            + " available. Reserved for the system: " + ByteFormat::format(facts.space->reserved) + ". "
                        : "capacity unknown. ";
    text += std::string(accessText(facts.access));
    if (facts.snapshotDays > 0)
        text += "\n  Snapshots on " + std::to_string(facts.snapshotDays) + (facts.snapshotDays == 1 ? " day" : " days");
    else
        text += "\n  No snapshots yet";
    text += facts.latestSnapshot ? ", the latest " + Phrases::localTime(*facts.latestSnapshot) + "." : ".";
    auto change = [](const std::optional<UsedChange>& used) {
        return used ? Phrases::signedSize(used->bytes) + " since " + Phrases::localTime(used->since) : std::string("unknown");
    };
    if (facts.sinceYesterday || facts.overMonth)
        text += "\n  Used space: " + change(facts.sinceYesterday) + " (yesterday), " + change(facts.overMonth) + " (month).";
    text += "\n  " + forecastText(facts, calendar);
    return text;
}

AgentResult answerFor(const std::vector<DiskFacts>& disks, std::size_t shown, const Calendar& calendar)
{
    std::string text;
    JSONValue::Array list;
    for (std::size_t i = 0; i < shown; ++i) {
        text += (text.empty() ? "" : "\n") + diskText(disks[i], calendar);
        list.push_back(diskJSON(disks[i], calendar));
    }
    if (disks.empty())
        text = "Tarnwick lists no disks on this computer.";
    if (shown < disks.size())
        text += "\nListed " + std::to_string(shown) + " of " + std::to_string(disks.size()) + " disks to fit 8 KB.";
    return AgentResult::success(text, JSONValue(JSONValue::Object { { "disks", list }, { "shrunk_to_fit", shown < disks.size() } }));
}

}

AgentResult disks(const Request&, const Context& context)
{
    std::unique_ptr<HistoryStore> owned;
    HistoryStore* store = SnapshotPlaces::history(context, owned);
    std::vector<DiskFacts> disks;
    for (const DiskMount& disk : MountTable::disks())
        disks.push_back(factsOf(disk, store));
    Calendar calendar = store ? store->calendar() : Calendar::current();
    auto fitting = AgentFormat::largestFitting(static_cast<int>(disks.size()),
        [&](int shown) { return answerFor(disks, static_cast<std::size_t>(shown), calendar); });
    if (!fitting)
        return AgentResult::failure(AgentErrorCode::outputTooLarge, "The disk list cannot fit within the 8 KB output limit.");
    return *fitting;
}

}
