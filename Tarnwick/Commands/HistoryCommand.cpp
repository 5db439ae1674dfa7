#include "SnapshotCommands.hpp"

#include "Agent/AgentErrorCode.hpp"
#include "Agent/AgentFormat.hpp"
#include "Support/ByteFormat.hpp"
#include "AgentPlaces.hpp"
#include "History/HistoryChanges.hpp"
#include "History/VolumeTimeline.hpp"
#include "SnapshotPlaces.hpp"

namespace tarnwick::SnapshotCommands {

namespace {

struct SizeHistory {
    HistoryPlaces::Located located;
    std::vector<HistoryQueries::SizePoint> points;
    std::optional<MountEntry> disk;
    std::vector<VolumeTimeline::Point> available; // one a day, the past 30 days
};

JSONValue diskJSON(const SizeHistory& history)
{
    if (!history.disk)
        return JSONValue();
    JSONValue::Array days;
    for (const VolumeTimeline::Point& point : history.available) {
        days.push_back(JSONValue::Object { { "date", AgentFormat::isoDate(point.date) }, { "available_bytes", point.available },
            { "capacity_bytes", point.total } });
    }
    return JSONValue::Object { { "mount_point", history.disk->mountPoint }, { "available_by_day", days } };
}

// The latest `shown` points: the recent past matters most, and the latest is what the
// others are made comparable with.
AgentResult answerFor(const SizeHistory& history, std::size_t shown)
{
    const std::string& place = history.located.place;
    std::size_t first = history.points.size() - shown;
    std::string text = place + ": " + std::to_string(history.points.size()) + (history.points.size() == 1 ? " snapshot" : " snapshots")
        + ", oldest first; sizes are comparable with the latest (a scan that read less of it doesn't count as growth).";
    if (first > 0)
        text += "\nThe latest " + std::to_string(shown) + " to fit 8 KB; " + std::to_string(first) + " earlier ones left out.";
    JSONValue::Array points;
    for (std::size_t i = first; i < history.points.size(); ++i) {
        const HistoryQueries::SizePoint& point = history.points[i];
        points.push_back(JSONValue::Object { { "date", AgentFormat::isoDate(point.date) }, { "size_bytes", point.bytes } });
        text += "\n  " + SnapshotPlaces::localTime(point.date) + "  " + ByteFormat::format(point.bytes);
    }
    if (history.disk) {
        text += "\nAvailable space of the disk at the latest scan of each of the past " + std::to_string(VolumeTimeline::pastDays) + " days:";
        if (history.available.empty())
            text += "\n  none measured in that time.";
        for (const VolumeTimeline::Point& point : history.available)
            text += "\n  " + SnapshotPlaces::localDay(point.date) + "  " + ByteFormat::format(point.available) + " of " + ByteFormat::format(point.total);
    }
    JSONValue::Object json {
        { "path", place },
        { "history_of", history.located.record.source.path },
        { "snapshot_count", static_cast<std::int64_t>(history.points.size()) },
        { "points", points },
        { "shrunk_to_fit", first > 0 },
        { "disk", diskJSON(history) },
    };
    return AgentResult::success(text, JSONValue(json));
}

}

AgentResult history(const Request& request, const Context& context)
{
    auto path = AgentPlaces::expand(AgentPlaces::argument(request.arguments, "path").value_or(""));
    if (!path)
        return path.error();
    std::unique_ptr<HistoryStore> owned;
    HistoryStore* store = SnapshotPlaces::history(context, owned);
    auto located = SnapshotPlaces::locate(store, *path);
    if (!located)
        return located.error();

    SizeHistory history { std::move(*located), {}, SnapshotPlaces::mountAt(*path), {} };
    std::vector<std::shared_ptr<const Snapshot>> snapshots = HistoryPlaces::series(*store, history.located.record);
    history.points = HistoryQueries::sizeHistory(snapshots, history.located.place);
    if (history.points.empty())
        return SnapshotPlaces::noHistory();
    if (history.disk) {
        auto measurements = store->measurements(history.located.record.source.volume);
        if (measurements)
            history.available = VolumeTimeline::make(*measurements, store->now(), store->calendar()).points;
    }
    auto fitting = AgentFormat::largestFitting(static_cast<int>(history.points.size()),
        [&](int shown) { return answerFor(history, static_cast<std::size_t>(shown)); });
    if (!fitting)
        return AgentResult::failure(AgentErrorCode::outputTooLarge, "This history cannot fit within the 8 KB output limit.");
    return *fitting;
}

}
