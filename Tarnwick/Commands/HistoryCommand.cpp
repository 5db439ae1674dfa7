#include "SnapshotCommands.hpp"

#include "AgentPlaces.hpp"
#include "History/HistoryChanges.hpp"
#include "History/SnapshotLoader.hpp"
#include "History/VolumeTimeline.hpp"
#include "Platform/MountTable.hpp"
#include "Platform/UserFolders.hpp"
#include "SnapshotPlaces.hpp"

namespace tarnwick::SnapshotCommands {

namespace {

// The place's size at every snapshot. Each file is first read for the place alone; only
// when some scan didn't read all of it are the snapshots read whole, to match its folders.
bool readPoints(HistoryStore& store, const HistoryPlaces::Located& located, HistoryAnswer& history)
{
    OutlineCache cache(UserFolders::cacheFolder() + "/history", store.directory(), located.record.folder, located.place);
    std::vector<SnapshotLoader::OutlineItem> outlines = SnapshotLoader::outlineSeries(store, located.record, located.place, &cache);
    std::vector<SnapshotOutline> intactOutlines;
    for (const SnapshotLoader::OutlineItem& item : outlines) {
        if (item.outline)
            intactOutlines.push_back(*item.outline);
    }
    if (auto sizes = HistoryQueries::sizeHistory(intactOutlines)) {
        std::size_t next = 0;
        for (const SnapshotLoader::OutlineItem& item : outlines)
            history.rows.push_back(HistoryAnswer::Row { item.entry.date, item.outline ? std::optional((*sizes)[next++]) : std::nullopt });
        return true;
    }
    std::vector<SnapshotLoader::Item> series = SnapshotLoader::series(store, located.record);
    std::vector<std::shared_ptr<const Snapshot>> intact;
    for (const SnapshotLoader::Item& item : series) {
        if (item.snapshot)
            intact.push_back(item.snapshot);
    }
    std::vector<HistoryQueries::SizePoint> sizes = HistoryQueries::sizeHistory(intact, located.place);
    if (sizes.size() != intact.size())
        return false;
    std::size_t next = 0;
    for (const SnapshotLoader::Item& item : series)
        history.rows.push_back(HistoryAnswer::Row { item.entry.date, item.snapshot ? std::optional(sizes[next++]) : std::nullopt });
    return true;
}

}

Answered<HistoryAnswer> history(const Request& request, const Context& context)
{
    auto path = AgentPlaces::expand(AgentPlaces::argument(request.arguments, "path").value_or(""));
    if (!path)
        return std::unexpected(path.error());
    std::unique_ptr<HistoryStore> owned;
    HistoryStore* store = SnapshotPlaces::history(context, owned);
    auto located = SnapshotPlaces::locate(store, *path);
    if (!located)
        return std::unexpected(located.error());

    HistoryAnswer history { located->place, located->record.source.path, located->isInLatest(), located->current->date, {}, {} };
    if (!readPoints(*store, *located, history) || history.rows.empty())
        return std::unexpected(SnapshotPlaces::noHistory());
    if (std::optional<MountEntry> disk = MountTable::mountedAt(HistoryPlaces::pathForms(*path))) {
        history.disk = HistoryAnswer::Disk { disk->mountPoint, {} };
        if (auto measurements = store->measurements(located->record.source.volume))
            history.disk->available = VolumeTimeline::make(*measurements, store->now(), store->calendar()).points;
    }
    return history;
}

}
