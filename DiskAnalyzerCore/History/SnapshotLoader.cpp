#include "History/SnapshotLoader.hpp"

#include "History/HistoryDate.hpp"
#include "History/SnapshotDecoder.hpp"

#include <algorithm>
#include <atomic>
#include <mutex>
#include <thread>
#include <cerrno>

namespace tarnwick::SnapshotLoader {

namespace {

// The facts an index entry holds, as the snapshot file itself has them.
HistoryEntry withFactsOf(HistoryEntry entry, Date fileDate, std::int64_t rootSize, const std::optional<Snapshot::Volume>& volume)
{
    const Date date = HistoryDate::normalized(fileDate);
    if (date == entry.date)
        return entry;
    entry.date = date;
    entry.total = rootSize;
    entry.volumeTotal = volume ? std::optional(volume->total) : std::nullopt;
    entry.volumeAvailable = volume ? std::optional(volume->available) : std::nullopt;
    entry.outOfDate.reset();
    entry.issueCount.reset();
    entry.hasAllowableIssues.reset();
    entry.outOfDatePaths.reset();
    return entry;
}

// Every day snapshot, and the current one when it is a later scan than the last of them.
std::vector<HistoryEntry> seriesEntries(const HistoryStore::SourceRecord& record)
{
    std::vector<HistoryEntry> entries = record.entries;
    if (record.current && (entries.empty() || record.current->date > entries.back().date))
        entries.push_back(*record.current);
    return entries;
}

// A damaged current snapshot that is the day's own adds nothing once its day is listed.
template <typename Item, typename IsRead>
void dropUnreadCurrent(std::vector<Item>& items, const HistoryStore::SourceRecord& record, IsRead isRead)
{
    if (items.size() >= 2 && !isRead(items.back()) && record.current && items.back().entry.id == record.current->id)
        items.pop_back();
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
    HistoryEntry facts = withFactsOf(entry, snapshot->date, snapshot->size(0), snapshot->volume);
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
    std::vector<Item> items;
    for (const HistoryEntry& entry : seriesEntries(record)) {
        auto loaded = load(store, record.source, entry);
        if (loaded)
            items.push_back(Item { std::move(loaded->entry), std::move(loaded->snapshot) });
        else
            items.push_back(Item { entry, nullptr });
    }
    dropUnreadCurrent(items, record, [](const Item& item) { return item.snapshot != nullptr; });
    return items;
}

std::vector<OutlineItem> outlineSeries(HistoryStore& store, const HistoryStore::SourceRecord& record, std::string_view place,
    OutlineCache* cache)
{
    std::vector<OutlineItem> items;
    std::vector<std::optional<HistoryFiles::FileSignature>> files;
    std::vector<std::int64_t> listed;
    for (const HistoryEntry& entry : seriesEntries(record)) {
        OutlineItem item { entry, std::nullopt };
        std::optional<HistoryFiles::FileSignature> file;
        if (cache) {
            if (auto signature = store.signature(record.source, entry.id))
                file = *signature;
            if (auto known = file ? cache->find(entry.id, *file) : std::nullopt)
                item.outline = std::move(*known);
        }
        items.push_back(std::move(item));
        files.push_back(file);
        listed.push_back(entry.id);
    }
    // Each file is read and decompressed on its own: a month of them shares the processors.
    std::atomic<std::size_t> next { 0 };
    std::mutex adding;
    auto work = [&] {
        for (std::size_t i = next++; i < items.size(); i = next++) {
            OutlineItem& item = items[i];
            if (item.outline)
                continue;
            HistoryFiles::FileSignature read {};
            auto bytes = store.load(record.source, item.entry.id, &read);
            if (!bytes)
                continue;
            if (auto outline = SnapshotDecoder::outline(*bytes, place)) {
                item.outline = std::move(*outline);
                // Only a file that did not change between its signature and its reading.
                if (cache && files[i] == read) {
                    std::lock_guard guard(adding);
                    cache->put(item.entry.id, read, *item.outline);
                }
            }
        }
    };
    const std::size_t helpers = std::min<std::size_t>(std::max(1u, std::thread::hardware_concurrency()), 4) - 1;
    std::vector<std::jthread> threads;
    for (std::size_t i = 0; i < std::min(helpers, items.size() / 2); ++i)
        threads.emplace_back(work);
    work();
    threads.clear();
    for (OutlineItem& item : items) {
        if (item.outline)
            item.entry = withFactsOf(item.entry, item.outline->date, item.outline->rootSize, item.outline->volume);
    }
    if (cache)
        cache->save(listed);
    dropUnreadCurrent(items, record, [](const OutlineItem& item) { return item.outline.has_value(); });
    return items;
}

}
