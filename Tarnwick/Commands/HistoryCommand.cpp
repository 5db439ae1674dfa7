#include "SnapshotCommands.hpp"

#include "Agent/AgentErrorCode.hpp"
#include "Agent/AgentFormat.hpp"
#include "Agent/EchoedText.hpp"
#include "Support/Phrases.hpp"
#include "Support/ByteFormat.hpp"
#include "AgentPlaces.hpp"
#include "History/HistoryChanges.hpp"
#include "History/SnapshotLoader.hpp"
#include "History/VolumeTimeline.hpp"
#include "Platform/MountTable.hpp"
#include "Platform/UserFolders.hpp"
#include "SnapshotPlaces.hpp"

namespace tarnwick::SnapshotCommands {

namespace {

// One snapshot of the place's history: its size there, or why there is none.
struct Row {
    Date date {};
    std::optional<HistoryQueries::SizePoint> point; // absent for a snapshot that couldn't be read
};

struct SizeHistory {
    HistoryPlaces::Located located;
    std::vector<Row> points;
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
    std::string text = EchoedText::shown(place) + ": " + std::to_string(history.points.size()) + (history.points.size() == 1 ? " snapshot" : " snapshots")
        + ", oldest first; sizes are comparable with the latest (a scan that read less of it doesn't count as growth).";
    if (first > 0)
        text += "\nThe latest " + std::to_string(shown) + " to fit 8 KB; " + std::to_string(first) + " earlier ones left out.";
    if (!history.located.isInLatest())
        text += "\nIt is not in the latest snapshot, of " + Phrases::localTime(history.located.current->date)
            + ": deleted, moved or now under 10 MB.";
    JSONValue::Array points;
    for (std::size_t i = first; i < history.points.size(); ++i) {
        const Row& row = history.points[i];
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
    if (history.disk) {
        text += "\nAvailable space of the disk at the latest scan of each of the past " + std::to_string(VolumeTimeline::pastDays) + " days:";
        if (history.available.empty())
            text += "\n  none measured in that time.";
        for (const VolumeTimeline::Point& point : history.available)
            text += "\n  " + Phrases::localDay(point.date) + "  " + ByteFormat::format(point.available) + " of " + ByteFormat::format(point.total);
    }
    JSONValue::Object json {
        { "path", place },
        { "history_of", history.located.record.source.path },
        { "snapshot_count", static_cast<std::int64_t>(history.points.size()) },
        { "in_latest_snapshot", history.located.isInLatest() },
        { "points", points },
        { "shrunk_to_fit", first > 0 },
        { "disk", diskJSON(history) },
    };
    return AgentResult::success(text, JSONValue(json));
}

// The place's size at every snapshot. Each file is first read for the place alone; only
// when some scan didn't read all of it are the snapshots read whole, to match its folders.
bool readPoints(HistoryStore& store, SizeHistory& history)
{
    OutlineCache cache(UserFolders::cacheFolder() + "/history", store.directory(), history.located.record.folder, history.located.place);
    std::vector<SnapshotLoader::OutlineItem> outlines = SnapshotLoader::outlineSeries(store, history.located.record, history.located.place, &cache);
    std::vector<SnapshotOutline> intactOutlines;
    for (const SnapshotLoader::OutlineItem& item : outlines) {
        if (item.outline)
            intactOutlines.push_back(*item.outline);
    }
    if (auto sizes = HistoryQueries::sizeHistory(intactOutlines)) {
        std::size_t next = 0;
        for (const SnapshotLoader::OutlineItem& item : outlines)
            history.points.push_back(Row { item.entry.date, item.outline ? std::optional((*sizes)[next++]) : std::nullopt });
        return true;
    }
    std::vector<SnapshotLoader::Item> series = SnapshotLoader::series(store, history.located.record);
    std::vector<std::shared_ptr<const Snapshot>> intact;
    for (const SnapshotLoader::Item& item : series) {
        if (item.snapshot)
            intact.push_back(item.snapshot);
    }
    std::vector<HistoryQueries::SizePoint> sizes = HistoryQueries::sizeHistory(intact, history.located.place);
    if (sizes.size() != intact.size())
        return false;
    std::size_t next = 0;
    for (const SnapshotLoader::Item& item : series)
        history.points.push_back(Row { item.entry.date, item.snapshot ? std::optional(sizes[next++]) : std::nullopt });
    return true;
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

    SizeHistory history { std::move(*located), {}, MountTable::mountedAt(HistoryPlaces::pathForms(*path)), {} };
    if (!readPoints(*store, history))
        return SnapshotPlaces::noHistory();
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
