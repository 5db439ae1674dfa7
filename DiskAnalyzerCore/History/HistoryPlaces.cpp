#include "History/HistoryPlaces.hpp"

#include "Support/UnicodeNames.hpp"

#include <algorithm>

namespace tarnwick::HistoryPlaces {

namespace {

std::size_t depth(std::string_view path)
{
    while (path.size() > 1 && path.back() == '/')
        path.remove_suffix(1);
    if (path == "/")
        return 0;
    return static_cast<std::size_t>(std::count(path.begin(), path.end(), '/'));
}

Date savedAt(const HistoryStore::SourceRecord& record)
{
    if (record.current)
        return record.current->date;
    return record.entries.empty() ? Date {} : record.entries.back().date;
}

}

std::vector<HistoryStore::SourceRecord> holding(
    std::span<const HistoryStore::SourceRecord> records, std::string_view place, std::optional<std::string_view> volume)
{
    std::vector<HistoryStore::SourceRecord> found;
    for (const HistoryStore::SourceRecord& record : records) {
        if (UnicodeNames::hasPathPrefix(place, record.source.path))
            found.push_back(record);
    }
    std::stable_sort(found.begin(), found.end(), [&](const auto& a, const auto& b) {
        std::size_t da = depth(a.source.path), db = depth(b.source.path);
        if (da != db)
            return da > db;
        bool onA = volume && a.source.volume == *volume, onB = volume && b.source.volume == *volume;
        if (onA != onB)
            return onA;
        return savedAt(a) > savedAt(b);
    });
    return found;
}

std::shared_ptr<const Snapshot> load(HistoryStore& store, const HistorySource& source, std::int64_t entryID)
{
    auto bytes = store.load(source, entryID);
    if (!bytes)
        return nullptr;
    auto snapshot = Snapshot::decode(*bytes);
    if (!snapshot || !snapshot->isConsistent())
        return nullptr;
    return std::make_shared<const Snapshot>(std::move(*snapshot));
}

std::optional<Located> locate(HistoryStore& store, std::span<const std::string> pathForms, std::optional<std::string_view> volume)
{
    HistoryStore::Index index = store.index();
    for (const std::string& place : pathForms) {
        for (HistoryStore::SourceRecord& record : holding(index.sources, place, volume)) {
            if (!record.current)
                continue;
            std::shared_ptr<const Snapshot> current = load(store, record.source, record.current->id);
            if (!current)
                continue;
            if (auto node = current->node(place))
                return Located { std::move(record), std::move(current), place, *node };
        }
    }
    return std::nullopt;
}

std::vector<std::shared_ptr<const Snapshot>> series(HistoryStore& store, const HistoryStore::SourceRecord& record)
{
    std::vector<const HistoryEntry*> entries;
    for (const HistoryEntry& entry : record.entries)
        entries.push_back(&entry);
    if (record.current && (entries.empty() || record.current->date > entries.back()->date))
        entries.push_back(&*record.current);
    std::vector<std::shared_ptr<const Snapshot>> snapshots;
    snapshots.reserve(entries.size());
    for (const HistoryEntry* entry : entries) {
        if (auto snapshot = load(store, record.source, entry->id))
            snapshots.push_back(std::move(snapshot));
    }
    return snapshots;
}

}
