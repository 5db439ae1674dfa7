#include "History/HistoryPlaces.hpp"

#include "History/SnapshotLoader.hpp"
#include "Platform/VolumeIdentity.hpp"
#include "Scanning/ScopeResolver.hpp"
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

std::optional<Located> locate(HistoryStore& store, std::span<const std::string> pathForms, std::optional<std::string_view> volume)
{
    HistoryStore::Index index = store.index();
    std::vector<std::pair<std::string, HistoryStore::SourceRecord>> candidates;
    for (const std::string& place : pathForms) {
        for (HistoryStore::SourceRecord& record : holding(index.sources, place, volume))
            candidates.emplace_back(place, std::move(record));
    }
    std::vector<std::optional<SnapshotLoader::Latest>> latests;
    for (auto& [place, record] : candidates) {
        latests.push_back(SnapshotLoader::latest(store, record));
        const auto& latest = latests.back();
        if (!latest)
            continue;
        if (auto node = latest->loaded.snapshot->node(place)) {
            return Located { record, latest->loaded.snapshot, latest->loaded.entry, latest->isCurrent, latest->skipped, place,
                latest->loaded.snapshot, latest->loaded.entry, *node };
        }
    }
    // Not in any latest snapshot: the newest older day snapshot that kept it.
    for (std::size_t c = 0; c < candidates.size(); ++c) {
        const auto& [place, record] = candidates[c];
        const auto& latest = latests[c];
        if (!latest)
            continue;
        for (auto entry = record.entries.rbegin(); entry != record.entries.rend(); ++entry) {
            if (entry->date >= latest->loaded.entry.date)
                continue;
            auto loaded = SnapshotLoader::load(store, record.source, *entry);
            if (!loaded)
                continue;
            if (auto node = loaded->snapshot->node(place)) {
                return Located { record, latest->loaded.snapshot, latest->loaded.entry, latest->isCurrent, latest->skipped, place,
                    loaded->snapshot, loaded->entry, *node };
            }
        }
    }
    return std::nullopt;
}

std::vector<std::string> pathForms(const std::string& path)
{
    std::vector<std::string> forms { path };
    std::string real = ScopeResolver::realPath(path);
    if (real != path)
        forms.push_back(real);
    return forms;
}

std::optional<Located> locate(HistoryStore& store, const std::string& path)
{
    std::vector<std::string> forms = pathForms(path);
    return locate(store, forms, VolumeIdentity::identifier(forms.back()));
}

}
