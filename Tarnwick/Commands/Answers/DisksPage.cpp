#include "AnswerPages.hpp"

#include "Agent/AgentFormat.hpp"
#include "Agent/EchoedText.hpp"
#include "DisksAnswer.hpp"
#include "Support/ByteFormat.hpp"
#include "Support/Phrases.hpp"

namespace tarnwick::AnswerPages {

namespace {

using Access = DisksAnswer::Access;
using Disk = DisksAnswer::Disk;
using UsedChange = DisksAnswer::UsedChange;

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

JSONValue changeJSON(const std::optional<UsedChange>& change)
{
    if (!change)
        return JSONValue();
    return JSONValue::Object { { "change_bytes", change->bytes }, { "since", AgentFormat::isoDate(change->since) } };
}

std::string forecastText(const Disk& disk, const Calendar& calendar)
{
    if (disk.forecast)
        return disk.forecast->text(calendar);
    if (disk.measuredDays < 2)
        return "No forecast yet: it needs snapshots from two days or more.";
    return "No forecast: the available space isn't running out at the current pace.";
}

JSONValue::Object diskJSON(const Disk& disk, const Calendar& calendar)
{
    const MountInfo& mount = disk.disk.mount;
    const auto& forecast = disk.forecast;
    return JSONValue::Object {
        { "mount_point", EchoedText::shortened(mount.mountPoint) },
        { "device", EchoedText::shortened(mount.deviceName) },
        { "file_system", EchoedText::shortened(mount.fileSystemType) },
        { "disk_image", disk.disk.isDiskImage },
        { "capacity_bytes", disk.space ? JSONValue(disk.space->total) : JSONValue() },
        { "available_bytes", disk.space ? JSONValue(disk.space->available) : JSONValue() },
        { "reserved_bytes", disk.space ? JSONValue(disk.space->reserved) : JSONValue() },
        { "access", std::string(accessWord(disk.access)) },
        { "snapshot_days", disk.snapshotDays },
        { "latest_snapshot", AgentFormat::isoDate(disk.latestSnapshot) },
        { "used_change_since_yesterday", changeJSON(disk.sinceYesterday) },
        { "used_change_over_month", changeJSON(disk.overMonth) },
        { "forecast", forecast ? JSONValue(forecast->text(calendar)) : JSONValue() },
        { "runs_out", forecast && !forecast->isBeyondHorizon() ? AgentFormat::isoDate(forecast->runOutDate()) : JSONValue() },
        { "forecast_note", forecast ? JSONValue() : JSONValue(forecastText(disk, calendar)) },
    };
}

std::string diskText(const Disk& disk, const Calendar& calendar)
{
    const MountInfo& mount = disk.disk.mount;
    std::string text = EchoedText::shown(mount.mountPoint) + " (" + EchoedText::shown(mount.fileSystemType) + " on " + EchoedText::shown(mount.deviceName)
        + (disk.disk.isDiskImage ? ", a disk image" : "") + "): ";
    text += disk.space ? ByteFormat::format(disk.space->total) + ", " + ByteFormat::format(disk.space->available)
            + " available. Reserved for the system: " + ByteFormat::format(disk.space->reserved) + ". "
                       : "capacity unknown. ";
    text += std::string(accessText(disk.access));
    if (disk.snapshotDays > 0)
        text += "\n  Snapshots on " + std::to_string(disk.snapshotDays) + (disk.snapshotDays == 1 ? " day" : " days");
    else
        text += "\n  No snapshots yet";
    text += disk.latestSnapshot ? ", the latest " + Phrases::localTime(*disk.latestSnapshot) + "." : ".";
    auto change = [](const std::optional<UsedChange>& used) {
        return used ? Phrases::signedSize(used->bytes) + " since " + Phrases::localTime(used->since) : std::string("unknown");
    };
    if (disk.sinceYesterday || disk.overMonth)
        text += "\n  Used space: " + change(disk.sinceYesterday) + " (yesterday), " + change(disk.overMonth) + " (month).";
    text += "\n  " + forecastText(disk, calendar);
    return text;
}

}

// The first `shown` disks, in the mount table's order.
AgentResult page(const DisksAnswer& answer, int shown)
{
    const auto count = static_cast<std::size_t>(shown);
    std::string text;
    JSONValue::Array list;
    for (std::size_t i = 0; i < count; ++i) {
        text += (text.empty() ? "" : "\n") + diskText(answer.disks[i], answer.calendar);
        list.push_back(diskJSON(answer.disks[i], answer.calendar));
    }
    if (answer.disks.empty())
        text = "Tarnwick lists no disks on this computer.";
    const bool shrunk = count < answer.disks.size();
    if (shrunk)
        text += "\nListed " + std::to_string(count) + " of " + std::to_string(answer.disks.size()) + " disks to fit 8 KB.";
    return AgentResult::success(text, JSONValue(JSONValue::Object { { "disks", list }, { "shrunk_to_fit", shrunk } }));
}

}
