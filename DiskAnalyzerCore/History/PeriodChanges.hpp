#pragma once

#include "History/HistoryChanges.hpp"
#include "History/HistoryEntry.hpp"
#include "History/HistoryPeriod.hpp"
#include "History/HistorySource.hpp"
#include "Scanning/NodeID.hpp"

#include <cstdint>
#include <expected>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>

namespace tarnwick {

class HistoryStore;
class ScanTree;

// The current scan of a place compared with the day snapshot at the start of a period: the
// two snapshots, ready for the comparison of any folder inside, and the change of every place
// they keep, by the node it has in the scan's tree, for the map.
//
// The current scan's own snapshot is the place's current.snap, which the history saves after
// the scan ends; until it is there, loading tells notSavedYet.
class PeriodChanges {
public:
    enum class Problem {
        notSavedYet, // the history has no snapshot of this scan yet
        unreadable,  // a snapshot file could not be read or decoded
    };

    struct NodeChange {
        std::int64_t change = 0;
        bool isUncertain = false;
        bool operator==(const NodeChange&) const = default;
    };

    static std::string_view problemText(Problem problem);

    // Loads the snapshots of source: its current one, which must be no older than the scan
    // that finished at scanFinishedAt, and the day snapshot at the start of period.
    static std::expected<PeriodChanges, Problem> load(HistoryStore& store, const HistorySource& source, HistoryPeriod period,
        Date scanFinishedAt);
    // The same from a day the user picked (one of the place's day snapshots) rather than the
    // start of a period; a day that can no longer be read is unreadable, never replaced.
    static std::expected<PeriodChanges, Problem> loadSince(HistoryStore& store, const HistorySource& source, const HistoryEntry& day,
        Date scanFinishedAt);

    [[nodiscard]] HistoryPeriod period() const { return m_period; }
    [[nodiscard]] const HistoryEntry& start() const { return m_start; }
    [[nodiscard]] const HistoryEntry& current() const { return m_current; }
    [[nodiscard]] const std::shared_ptr<const Snapshot>& from() const { return m_from; }
    [[nodiscard]] const std::shared_ptr<const Snapshot>& to() const { return m_to; }
    // Whether the start snapshot is the current scan's own day snapshot: nothing to compare yet.
    [[nodiscard]] bool startsWithThisScan() const;

    // A folder (absolute path) from the period's start to now.
    [[nodiscard]] std::expected<HistoryQueries::Changes, HistoryQueries::ChangesError> at(std::string_view place) const;

    // Every changed place the snapshots keep, by its node in tree (the scan the current
    // snapshot was made of); places the tree does not hold are left out. A grown folder's files
    // changed since the start carry its growth, uncertain. Linear in the sizes of the kept
    // folders' child lists.
    [[nodiscard]] std::unordered_map<NodeID, NodeChange> onTree(const ScanTree& tree) const;

private:
    void markChangedFiles(const ScanTree& tree, NodeID folder, std::int64_t growth, std::unordered_map<NodeID, NodeChange>& changes) const;

    HistoryPeriod m_period;
    HistoryEntry m_start;
    HistoryEntry m_current;
    std::shared_ptr<const Snapshot> m_from;
    std::shared_ptr<const Snapshot> m_to;
};

}
