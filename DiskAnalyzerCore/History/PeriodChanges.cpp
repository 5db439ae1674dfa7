#include "History/PeriodChanges.hpp"

#include "History/HistoryStore.hpp"
#include "History/PlaceComparison.hpp"
#include "History/Snapshot.hpp"
#include "History/SnapshotLoader.hpp"
#include "History/SnapshotMatching.hpp"
#include "Scanning/ScanTree.hpp"

namespace tarnwick {

std::string_view PeriodChanges::problemText(Problem problem)
{
    switch (problem) {
    case Problem::notSavedYet:
        return "Saving this scan into the history…";
    case Problem::unreadable:
        break;
    }
    return "A snapshot of this place couldn't be read, so it can't be compared.";
}

std::expected<PeriodChanges, PeriodChanges::Problem> PeriodChanges::load(HistoryStore& store, const HistorySource& source,
    HistoryPeriod period, Date scanFinishedAt)
{
    std::optional<HistoryStore::SourceRecord> record = store.record(source);
    if (!record || !record->current || record->current->date < SnapshotDates::truncatedToMicroseconds(scanFinishedAt))
        return std::unexpected(Problem::notSavedYet);
    // The first scan of a day is also that day's snapshot, so there is always one once the
    // current one is saved. A damaged start gives way to the nearest intact day snapshot.
    if (record->entries.empty())
        return std::unexpected(Problem::notSavedYet);
    auto start = SnapshotLoader::start(store, *record, period);
    auto to = SnapshotLoader::load(store, source, *record->current);
    if (!start || !to)
        return std::unexpected(Problem::unreadable);
    PeriodChanges changes;
    changes.m_period = period;
    changes.m_start = start->loaded.entry;
    changes.m_current = to->entry;
    changes.m_from = std::move(start->loaded.snapshot);
    changes.m_to = std::move(to->snapshot);
    return changes;
}

std::expected<PeriodChanges, PeriodChanges::Problem> PeriodChanges::loadSince(HistoryStore& store, const HistorySource& source,
    const HistoryEntry& day, Date scanFinishedAt)
{
    std::optional<HistoryStore::SourceRecord> record = store.record(source);
    if (!record || !record->current || record->current->date < SnapshotDates::truncatedToMicroseconds(scanFinishedAt))
        return std::unexpected(Problem::notSavedYet);
    auto from = SnapshotLoader::load(store, source, day);
    auto to = SnapshotLoader::load(store, source, *record->current);
    if (!from || !to)
        return std::unexpected(Problem::unreadable);
    PeriodChanges changes;
    changes.m_period = HistoryPeriod::all;
    changes.m_start = from->entry;
    changes.m_current = to->entry;
    changes.m_from = std::move(from->snapshot);
    changes.m_to = std::move(to->snapshot);
    return changes;
}

bool PeriodChanges::startsWithThisScan() const
{
    return m_start.date == m_current.date;
}

std::expected<HistoryQueries::Changes, HistoryQueries::ChangesError> PeriodChanges::at(std::string_view place) const
{
    return HistoryQueries::changes(m_from, m_to, place);
}

std::unordered_map<NodeID, PeriodChanges::NodeChange> PeriodChanges::onTree(const ScanTree& tree) const
{
    std::unordered_map<NodeID, NodeChange> result;
    auto root = tree.node(m_to->rootPath);
    if (!root)
        return result;
    const SnapshotMatching matching(*m_from, *m_to);
    auto sizes = m_from->hasColors && m_to->hasColors ? HistoryQueries::SizeBasis::precise : HistoryQueries::SizeBasis::rounded;
    auto comparison = PlaceComparison::make(*m_from, *m_to, matching, {}, sizes);
    if (!comparison)
        return result;
    const auto& pairs = comparison->pairs();
    // Parents come before their children, so each pair finds its node under its parent's.
    std::vector<std::optional<NodeID>> nodes(pairs.size());
    std::unordered_map<std::int32_t, std::unordered_map<std::string_view, NodeID>> childrenByName;
    nodes[0] = *root;
    for (std::size_t p = 0; p < pairs.size(); ++p) {
        const PlaceComparison::Pair& pair = pairs[p];
        if (p > 0) {
            const std::optional<NodeID>& parent = nodes[static_cast<std::size_t>(pair.parent)];
            if (!parent)
                continue;
            auto [names, fresh] = childrenByName.try_emplace(pair.parent);
            if (fresh) {
                for (NodeID child : tree.children(*parent))
                    names->second.emplace(tree.name(child), child);
            }
            const std::string& name = pair.later >= 0 ? m_to->names[static_cast<std::size_t>(pair.later)]
                                                      : m_from->names[static_cast<std::size_t>(pair.earlier)];
            auto found = names->second.find(name);
            if (found == names->second.end())
                continue;
            nodes[p] = found->second;
        }
        std::int64_t change = comparison->after(p) - comparison->before(p);
        if (change != 0 || comparison->isUncertain(p))
            result.emplace(*nodes[p], NodeChange { change, comparison->isUncertain(p) });
        if (change > 0)
            markChangedFiles(tree, *nodes[p], change, result);
    }
    return result;
}

// Snapshots keep folders only, so a grown folder's files have no change of their own. Those
// changed since the start of the period (new, or written to) are where the growth most likely
// went: the largest of them carry it, each at most its size and together at most the folder's
// growth, marked uncertain.
void PeriodChanges::markChangedFiles(const ScanTree& tree, NodeID folder, std::int64_t growth, std::unordered_map<NodeID, NodeChange>& changes) const
{
    for (NodeID child : tree.children(folder)) {
        if (growth <= 0)
            return;
        if (isContainer(tree.kind(child)) || changes.contains(child))
            continue;
        std::optional<Date> changed = tree.lastChangeInside(child);
        if (!changed || *changed < m_start.date)
            continue;
        std::int64_t mark = std::min(tree.allocatedSize(child), growth);
        if (mark <= 0)
            continue;
        changes.emplace(child, NodeChange { mark, true });
        growth -= mark;
    }
}

}
