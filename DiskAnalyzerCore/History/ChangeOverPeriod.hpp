#pragma once

#include "History/HistoryChanges.hpp"
#include "History/HistoryEntry.hpp"
#include "History/HistoryPeriod.hpp"
#include "History/HistoryPlaces.hpp"

#include <cstddef>
#include <expected>
#include <optional>

namespace tarnwick {

class HistoryStore;

// A place's change from the start of a period to its latest intact snapshot: the one query
// behind the changes command, growth alerts and the tray's change since yesterday, so that
// they agree on which snapshots are compared and what the answer admits about them.
struct ChangeOverPeriod {
    HistoryQueries::Changes changes;
    HistoryPeriod period = HistoryPeriod::defaultPeriod;
    // The day snapshot the period asked for, when it could not be read and a neighbour stood in.
    std::optional<HistoryEntry> unreadableStart;
    // false when the history is shorter than the period: the start is its first snapshot.
    bool reachesPeriod = true;
    Date historyStart {};
    // The distinct snapshots of the place's history: day snapshots, and the current one when
    // it is a later scan than the last of them.
    std::size_t snapshotCount = 0;

    // Whether the start is an earlier scan than the latest one; not when both are one snapshot.
    [[nodiscard]] bool startsEarlier() const { return changes.from->date < changes.to->date; }

    // Without a readable day snapshot (a history thinned to nothing) the latest stands alone;
    // a place gone before the period began is compared from the last snapshot that kept it.
    static std::expected<ChangeOverPeriod, HistoryQueries::ChangesError> of(HistoryStore& store,
        const HistoryPlaces::Located& located, HistoryPeriod period, std::size_t insideCount = HistoryQueries::insideLimit);
};

}
