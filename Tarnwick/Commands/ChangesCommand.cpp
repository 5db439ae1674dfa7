#include "SnapshotCommands.hpp"

#include "Agent/AgentErrorCode.hpp"
#include "AgentPlaces.hpp"
#include "History/ChangeOverPeriod.hpp"
#include "History/HistoryChanges.hpp"
#include "Platform/MountTable.hpp"
#include "SnapshotPlaces.hpp"

#include <algorithm>
#include <cmath>

namespace tarnwick::SnapshotCommands {

namespace {

using namespace HistoryQueries;

constexpr long long defaultLimit = 15;

// The types whose size changed, largest change (either way) first.
std::vector<TypeChange> changedTypes(const Changes& changes)
{
    std::vector<TypeChange> types;
    for (const TypeChange& type : changes.byType) {
        if (type.change() != 0)
            types.push_back(type);
    }
    std::stable_sort(types.begin(), types.end(), [](const TypeChange& a, const TypeChange& b) {
        return std::abs(static_cast<double>(a.change())) > std::abs(static_cast<double>(b.change()));
    });
    return types;
}

ChangesAnswer::Place placeOf(const HistoryPlaces::Located& located, ChangeOverPeriod over)
{
    Changes& changes = over.changes;
    ChangesAnswer::Place place;
    place.path = changes.place;
    place.historyOf = located.record.source.path;
    place.period = over.period;
    place.from = changes.from->date;
    place.to = changes.to->date;
    place.snapshotCount = over.snapshotCount;
    place.historyStart = over.historyStart;
    place.coversPeriod = over.reachesPeriod;
    if (over.unreadableStart)
        place.unreadableStart = over.unreadableStart->date;
    if (!located.latestIsCurrent && !located.skipped.empty())
        place.unreadableLatest = located.skipped.front().date;
    if (!located.isInLatest())
        place.lastKept = located.keptIn->date;
    place.presence = changes.presence;
    place.sizes = changes.sizes;
    place.sizeBefore = changes.sizeBefore;
    place.sizeAfter = changes.sizeAfter;
    place.beforeIncomplete = changes.beforeIncomplete;
    place.afterIncomplete = changes.afterIncomplete;
    place.change = changes.change;
    place.isUncertain = changes.isUncertain;
    place.inside = std::move(changes.inside);
    place.moreInside = changes.moreInside;
    place.rest = changes.rest;
    place.grewMost = std::move(changes.grewMost);
    if (changes.from->hasColors && changes.to->hasColors)
        place.byType = changedTypes(changes);
    place.readByOneScan = std::move(changes.readByOneScan);
    return place;
}

Answered<ChangesAnswer::Place> compare(HistoryStore& store, const std::string& path, HistoryPeriod period, std::size_t limit)
{
    auto located = SnapshotPlaces::locate(&store, path);
    if (!located)
        return std::unexpected(located.error());
    auto over = ChangeOverPeriod::of(store, *located, period, limit);
    if (!over)
        return std::unexpected(AgentResult::failure(AgentErrorCode::noHistory, ChangeTexts::message(over.error())));
    return placeOf(*located, std::move(*over));
}

}

Answered<ChangesAnswer> changes(const Request& request, const Context& context)
{
    HistoryPeriod period = SnapshotPlaces::period(request.arguments);
    ChangesAnswer answer;
    answer.limit = static_cast<std::size_t>(AgentPlaces::integer(request.arguments, "limit", defaultLimit));
    std::vector<std::string> paths;
    if (auto argument = AgentPlaces::argument(request.arguments, "path")) {
        auto path = AgentPlaces::expand(*argument);
        if (!path)
            return std::unexpected(path.error());
        paths.push_back(*path);
    } else if (context.openFolder) {
        paths.push_back(*context.openFolder);
    } else {
        answer.everyDisk = true;
        for (const DiskMount& disk : MountTable::disks())
            paths.push_back(disk.mount.mountPoint);
    }

    std::unique_ptr<HistoryStore> owned;
    HistoryStore* store = SnapshotPlaces::history(context, owned);
    if (!store)
        return std::unexpected(SnapshotPlaces::noHistory());
    for (const std::string& path : paths) {
        auto place = compare(*store, path, period, answer.limit);
        if (place)
            answer.places.push_back(std::move(*place));
        else if (!answer.everyDisk)
            return std::unexpected(place.error());
    }
    if (answer.places.empty())
        return std::unexpected(SnapshotPlaces::noHistory());
    return answer;
}

}
