#include "History/ChangeOverPeriod.hpp"

#include "History/HistoryStore.hpp"
#include "History/SnapshotLoader.hpp"

namespace tarnwick {

namespace {

std::size_t snapshotsOf(const HistoryStore::SourceRecord& record)
{
    std::size_t count = record.entries.size();
    if (record.current && (record.entries.empty() || record.current->date > record.entries.back().date))
        ++count;
    return count;
}

}

std::expected<ChangeOverPeriod, HistoryQueries::ChangesError> ChangeOverPeriod::of(
    HistoryStore& store, const HistoryPlaces::Located& located, HistoryPeriod period, std::size_t insideCount)
{
    auto start = SnapshotLoader::start(store, located.record, period);
    std::shared_ptr<const Snapshot> from = start ? start->loaded.snapshot : located.current;
    if (!located.isInLatest() && !from->node(located.place))
        from = located.keptIn;
    auto compared = HistoryQueries::changes(from, located.current, located.place, insideCount);
    if (!compared)
        return std::unexpected(compared.error());
    ChangeOverPeriod result { std::move(*compared), period };
    if (start) {
        result.unreadableStart = start->replaced;
        result.reachesPeriod = start->reachesPeriod;
    }
    const HistoryStore::SourceRecord& record = located.record;
    result.historyStart = record.entries.empty() ? located.latest.date : record.entries.front().date;
    result.snapshotCount = snapshotsOf(record);
    return result;
}

}
