#include "History/SnapshotLoader.hpp"

#include "History/HistoryDate.hpp"

#include <algorithm>
#include <cerrno>

namespace tarnwick::SnapshotLoader {

namespace {

// The facts an index entry holds, as the snapshot file itself has them.
HistoryEntry withFactsOf(HistoryEntry entry, const Snapshot& snapshot)
{
    const Date date = HistoryDate::normalized(snapshot.date);
    if (date == entry.date)
        return entry;
    entry.date = date;
    entry.total = snapshot.size(0);
    entry.volumeTotal = snapshot.volume ? std::optional(snapshot.volume->total) : std::nullopt;
    entry.volumeAvailable = snapshot.volume ? std::optional(snapshot.volume->available) : std::nullopt;
    entry.outOfDate.reset();
    entry.issueCount.reset();
    entry.hasAllowableIssues.reset();
    entry.outOfDatePaths.reset();
    return entry;
}

std::chrono::nanoseconds distance(Date a, Date b)
{
    return a > b ? a - b : b - a;
}

}

std::expected<Loaded, Problem> load(HistoryStore& store, const HistorySource& source, const HistoryEntry& entry)
{
    auto bytes = store.load(source, entry.id);
    if (!bytes) {
        bool gone = bytes.error().reason == HistoryStore::StoreError::Case::unknownEntry;
        return std::unexpected(gone ? Problem::missing : Problem::damaged);
    }
    auto snapshot = Snapshot::decode(*bytes);
    if (!snapshot || !snapshot->isConsistent() || snapshot->nodeCount() == 0)
        return std::unexpected(Problem::damaged);
    HistoryEntry facts = withFactsOf(entry, *snapshot);
    return Loaded { std::move(facts), std::make_shared<const Snapshot>(std::move(*snapshot)) };
}

std::optional<Latest> latest(HistoryStore& store, const HistoryStore::SourceRecord& record)
{
    Latest result;
    if (record.current) {
        if (auto loaded = load(store, record.source, *record.current)) {
            result.loaded = std::move(*loaded);
            return result;
        }
        result.skipped.push_back(*record.current);
    }
    result.isCurrent = false;
    for (auto entry = record.entries.rbegin(); entry != record.entries.rend(); ++entry) {
        if (auto loaded = load(store, record.source, *entry)) {
            result.loaded = std::move(*loaded);
            return result;
        }
        result.skipped.push_back(*entry);
    }
    return std::nullopt;
}

std::optional<Start> start(HistoryStore& store, const HistoryStore::SourceRecord& record, HistoryPeriod period)
{
    std::optional<HistoryEntry> wanted = period.startEntry(record.entries, store.now(), store.calendar());
    if (!wanted)
        return std::nullopt;
    const bool reaches = period == HistoryPeriod::all || period.reachesBack(wanted->date, store.now(), store.calendar());
    if (auto loaded = load(store, record.source, *wanted))
        return Start { std::move(*loaded), std::nullopt, reaches };
    // Nearest first; of two as near, the earlier, which reaches back as far as was asked.
    // The day of the latest scan comes last: it would compare that scan with itself.
    std::vector<HistoryEntry> others;
    for (const HistoryEntry& entry : record.entries) {
        if (entry.id != wanted->id)
            others.push_back(entry);
    }
    auto isLatestDay = [&](const HistoryEntry& entry) {
        return record.current && store.calendar().isSameDay(entry.date, record.current->date);
    };
    std::stable_sort(others.begin(), others.end(), [&](const HistoryEntry& a, const HistoryEntry& b) {
        if (isLatestDay(a) != isLatestDay(b))
            return isLatestDay(b);
        auto da = distance(a.date, wanted->date), db = distance(b.date, wanted->date);
        return da != db ? da < db : a.date < b.date;
    });
    for (const HistoryEntry& entry : others) {
        if (auto loaded = load(store, record.source, entry))
            return Start { std::move(*loaded), wanted, reaches };
    }
    return std::nullopt;
}

std::vector<Item> series(HistoryStore& store, const HistoryStore::SourceRecord& record)
{
    std::vector<HistoryEntry> entries = record.entries;
    if (record.current && (entries.empty() || record.current->date > entries.back().date))
        entries.push_back(*record.current);
    std::vector<Item> items;
    items.reserve(entries.size());
    for (const HistoryEntry& entry : entries) {
        auto loaded = load(store, record.source, entry);
        if (loaded)
            items.push_back(Item { std::move(loaded->entry), std::move(loaded->snapshot) });
        else
            items.push_back(Item { entry, nullptr });
    }
    // A damaged current snapshot that is the day's own adds nothing once its day is listed.
    if (items.size() >= 2 && !items.back().snapshot && record.current && items.back().entry.id == record.current->id)
        items.pop_back();
    return items;
}

}
