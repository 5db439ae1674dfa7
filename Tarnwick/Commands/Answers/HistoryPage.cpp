#include "AnswerPages.hpp"

#include "Agent/AgentFormat.hpp"
#include "Agent/EchoedText.hpp"
#include "HistoryAnswer.hpp"
#include "Support/ByteFormat.hpp"
#include "Support/Phrases.hpp"

namespace tarnwick::AnswerPages {

namespace {

JSONValue diskJSON(const HistoryAnswer& answer)
{
    if (!answer.disk)
        return JSONValue();
    JSONValue::Array days;
    for (const VolumeTimeline::Point& point : answer.disk->available) {
        days.push_back(JSONValue::Object { { "date", AgentFormat::isoDate(point.date) }, { "available_bytes", point.available },
            { "capacity_bytes", point.total } });
    }
    return JSONValue::Object { { "mount_point", EchoedText::shortened(answer.disk->mountPoint) }, { "available_by_day", days } };
}

}

// The latest `shown` rows: the recent past matters most, and the latest is what the others
// are made comparable with.
AgentResult page(const HistoryAnswer& answer, int shown)
{
    std::size_t count = answer.rows.size();
    std::size_t first = count - static_cast<std::size_t>(shown);
    std::string text = EchoedText::shown(answer.place) + ": " + AgentFormat::counted(static_cast<std::int64_t>(count), "snapshot", "snapshots")
        + ", oldest first; sizes are comparable with the latest (a scan that read less of it doesn't count as growth).";
    if (first > 0)
        text += "\nThe latest " + std::to_string(shown) + " to fit 8 KB; " + std::to_string(first) + " earlier ones left out.";
    if (!answer.inLatest)
        text += "\nIt is not in the latest snapshot, of " + Phrases::localTime(answer.latestDate) + ": deleted, moved or now under 10 MB.";
    JSONValue::Array points;
    for (std::size_t i = first; i < count; ++i) {
        const HistoryAnswer::Row& row = answer.rows[i];
        JSONValue::Object json { { "date", AgentFormat::isoDate(row.date) } };
        std::string size;
        if (!row.point) {
            json["size_bytes"] = JSONValue();
            json["state"] = "damaged";
            size = "damaged: this snapshot couldn't be read";
        } else if (!row.point->isKept) {
            json["size_bytes"] = JSONValue();
            json["state"] = "under_10_mb";
            size = "under 10 MB";
        } else {
            json["size_bytes"] = row.point->bytes;
            json["state"] = "kept";
            json["incomplete"] = row.point->isIncomplete;
            size = AgentFormat::size(row.point->bytes, row.point->isIncomplete);
        }
        points.push_back(std::move(json));
        text += "\n  " + Phrases::localTime(row.date) + "  " + size;
    }
    if (answer.disk) {
        text += "\nAvailable space of the disk at the latest scan of each of the past " + std::to_string(VolumeTimeline::pastDays) + " days:";
        if (answer.disk->available.empty())
            text += "\n  none measured in that time.";
        for (const VolumeTimeline::Point& point : answer.disk->available)
            text += "\n  " + Phrases::localDay(point.date) + "  " + ByteFormat::format(point.available) + " of " + ByteFormat::format(point.total);
    }
    JSONValue::Object json {
        { "path", EchoedText::shortened(answer.place) },
        { "history_of", EchoedText::shortened(answer.historyOf) },
        { "snapshot_count", static_cast<std::int64_t>(count) },
        { "in_latest_snapshot", answer.inLatest },
        { "points", points },
        { "shrunk_to_fit", first > 0 },
        { "disk", diskJSON(answer) },
    };
    return AgentResult::success(text, JSONValue(json));
}

}
