#include "History/HistoryRecovery.hpp"

#include "History/HistoryDate.hpp"
#include "History/Snapshot.hpp"
#include "Platform/VolumeIdentity.hpp"

#include <algorithm>
#include <charconv>
#include <unordered_set>

namespace tarnwick::HistoryRecovery {

namespace {

// The id of a day snapshot file name, "{id}.snap"; absent for any other name.
std::optional<std::int64_t> dayFileID(std::string_view name)
{
    if (!name.ends_with(".snap"))
        return std::nullopt;
    std::string_view digits = name.substr(0, name.size() - 5);
    std::int64_t id = 0;
    auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), id);
    if (digits.empty() || error != std::errc {} || end != digits.data() + digits.size() || id <= 0)
        return std::nullopt;
    return id;
}

bool isPlaceFolderName(const std::string& name)
{
    return !name.empty() && name.front() != '.' && name != HistoryStore::volumesFolderName && name != HistoryStore::indexFileName
        && !name.starts_with(std::string(HistoryStore::indexFileName) + ".");
}

std::optional<std::string> snapshotRoot(const std::string& path)
{
    auto bytes = HistoryFiles::readWhole(path);
    if (!bytes)
        return std::nullopt;
    auto snapshot = Snapshot::decode(*bytes);
    if (!snapshot || !snapshot->isConsistent())
        return std::nullopt;
    return snapshot->rootPath;
}

// The place a folder keeps: its source.json, or when that is damaged the root of its
// snapshots on the volume that holds that path now.
std::optional<HistorySource> sourceOf(const std::string& folder, const std::vector<std::string>& names)
{
    if (auto text = HistoryFiles::readWhole(folder + "/" + std::string(HistoryStore::sourceFileName))) {
        if (auto source = HistoryStore::decodeSource(std::string_view(reinterpret_cast<const char*>(text->data()), text->size())))
            return source;
    }
    for (const std::string& name : names) {
        if (!name.ends_with(".snap"))
            continue;
        if (auto root = snapshotRoot(folder + "/" + name))
            return HistorySource { *root, VolumeIdentity::identifier(*root).value_or("unknown") };
    }
    return std::nullopt;
}

void carryKeptMarks(HistoryStore::SourceRecord& record, const HistoryStore::Index& previous)
{
    // By place, or by folder when the place's source.json could not be read back.
    const HistoryStore::SourceRecord* old = previous.record(record.source);
    if (!old) {
        auto byFolder = std::find_if(previous.sources.begin(), previous.sources.end(),
            [&](const HistoryStore::SourceRecord& each) { return each.folder == record.folder; });
        old = byFolder != previous.sources.end() ? &*byFolder : nullptr;
    }
    if (!old)
        return;
    for (HistoryEntry& entry : record.entries) {
        auto found = std::find_if(old->entries.begin(), old->entries.end(), [&](const HistoryEntry& e) { return e.file == entry.file; });
        if (found != old->entries.end()) {
            entry.isKept = found->isKept;
            entry.note = found->note;
        }
    }
}

}

std::optional<HistoryEntry> entryFromFile(const std::string& path, std::int64_t id, std::string file, Damaged damaged)
{
    HistoryFiles::FileSignature signature;
    auto bytes = HistoryFiles::readWhole(path, &signature);
    if (!bytes)
        return std::nullopt;
    auto snapshot = Snapshot::decode(*bytes);
    if (!snapshot || !snapshot->isConsistent() || snapshot->nodeCount() == 0) {
        if (damaged == Damaged::leaveOut)
            return std::nullopt;
        HistoryEntry entry;
        entry.id = id;
        entry.date = HistoryDate::normalized(Date(std::chrono::seconds(signature.modifiedSeconds)));
        entry.file = std::move(file);
        entry.bytes = static_cast<std::int64_t>(bytes->size());
        entry.isUnreadable = true;
        return entry;
    }
    HistoryEntry entry;
    entry.id = id;
    entry.date = HistoryDate::normalized(snapshot->date);
    entry.total = snapshot->size(0);
    if (snapshot->volume) {
        entry.volumeTotal = snapshot->volume->total;
        entry.volumeAvailable = snapshot->volume->available;
    }
    entry.file = std::move(file);
    entry.bytes = static_cast<std::int64_t>(bytes->size());
    return entry;
}

namespace {

// One place folder as its files tell it, with the day snapshots' ids from their file names and
// no current entry yet (its id is handed out once every day snapshot's is known).
std::optional<HistoryStore::SourceRecord> recordOf(const std::string& directory, const std::string& name)
{
    const std::string folder = directory + "/" + name;
    if (!isPlaceFolderName(name))
        return std::nullopt;
    std::vector<std::string> names = HistoryFiles::list(folder);
    auto source = sourceOf(folder, names);
    if (!source)
        return std::nullopt;
    HistoryStore::SourceRecord record { *source, name, {}, std::nullopt };
    for (const std::string& file : names) {
        if (auto id = dayFileID(file)) {
            if (auto entry = entryFromFile(folder + "/" + file, *id, file, Damaged::list))
                record.entries.push_back(std::move(*entry));
        }
    }
    std::sort(record.entries.begin(), record.entries.end(), [](const HistoryEntry& a, const HistoryEntry& b) { return a.date < b.date; });
    return record;
}

// Adds the records of the given folders to index, giving ids that are taken already new ones.
void addRecords(const std::string& directory, HistoryStore::Index& index, const std::vector<std::string>& folders)
{
    std::unordered_set<std::int64_t> ids;
    for (const HistoryStore::SourceRecord& record : index.sources) {
        for (const HistoryEntry& entry : record.entries)
            ids.insert(entry.id);
        if (record.current)
            ids.insert(record.current->id);
    }
    std::vector<HistoryStore::SourceRecord> added;
    for (const std::string& name : folders) {
        auto record = recordOf(directory, name);
        if (!record || index.record(record->source))
            continue;
        for (HistoryEntry& entry : record->entries) {
            index.nextID = std::max(index.nextID, entry.id + 1);
            if (!ids.insert(entry.id).second)
                entry.id = -1; // renumbered below, once nextID is past every file's id
        }
        added.push_back(std::move(*record));
    }
    for (HistoryStore::SourceRecord& record : added) {
        for (HistoryEntry& entry : record.entries) {
            if (entry.id < 0)
                entry.id = index.nextID++;
        }
        const std::string file(HistoryStore::currentFileName);
        if (auto current = entryFromFile(directory + "/" + record.folder + "/" + file, index.nextID, file)) {
            record.current = std::move(*current);
            ++index.nextID;
        }
        if (!record.entries.empty() || record.current)
            index.sources.push_back(std::move(record));
    }
}

}

HistoryStore::Index rebuild(const std::string& directory, const HistoryStore::Index& previous)
{
    HistoryStore::Index index;
    std::vector<std::string> folders = HistoryFiles::list(directory);
    std::sort(folders.begin(), folders.end());
    addRecords(directory, index, folders);
    for (HistoryStore::SourceRecord& record : index.sources)
        carryKeptMarks(record, previous);
    index.nextID = std::max(index.nextID, previous.nextID);
    return index;
}

bool adoptUnlistedFolders(const std::string& directory, HistoryStore::Index& index)
{
    std::unordered_set<std::string> listed;
    for (const HistoryStore::SourceRecord& record : index.sources)
        listed.insert(record.folder);
    std::vector<std::string> unlistedFolders;
    for (const std::string& name : HistoryFiles::list(directory)) {
        if (isPlaceFolderName(name) && !listed.contains(name) && HistoryFiles::exists(directory + "/" + name + "/" + std::string(HistoryStore::sourceFileName)))
            unlistedFolders.push_back(name);
    }
    if (unlistedFolders.empty())
        return false;
    std::sort(unlistedFolders.begin(), unlistedFolders.end());
    std::size_t before = index.sources.size();
    addRecords(directory, index, unlistedFolders);
    return index.sources.size() != before;
}

std::vector<HistoryEntry> unlisted(const std::string& folder, const HistoryStore::SourceRecord& record, std::int64_t& nextID)
{
    std::unordered_set<std::string> listed;
    for (const HistoryEntry& entry : record.entries)
        listed.insert(entry.file);
    std::vector<HistoryEntry> found;
    for (const std::string& name : HistoryFiles::list(folder)) {
        auto id = dayFileID(name);
        if (!id || listed.contains(name))
            continue;
        if (auto entry = entryFromFile(folder + "/" + name, *id, name)) {
            nextID = std::max(nextID, *id + 1);
            found.push_back(std::move(*entry));
        }
    }
    return found;
}

bool hasPlaceFolders(const std::string& directory)
{
    for (const std::string& name : HistoryFiles::list(directory)) {
        if (isPlaceFolderName(name) && HistoryFiles::exists(directory + "/" + name + "/" + std::string(HistoryStore::sourceFileName)))
            return true;
    }
    return false;
}

HistoryStore::Index keptOnly(const HistoryStore::Index& index)
{
    HistoryStore::Index kept;
    for (const HistoryStore::SourceRecord& record : index.sources) {
        HistoryStore::SourceRecord marks { record.source, record.folder, {}, std::nullopt };
        for (const HistoryEntry& entry : record.entries) {
            if (entry.isKept)
                marks.entries.push_back(entry);
        }
        if (!marks.entries.empty())
            kept.sources.push_back(std::move(marks));
    }
    return kept;
}

HistoryStore::Index readKept(const std::string& directory)
{
    auto bytes = HistoryFiles::readWhole(directory + "/" + std::string(HistoryStore::keptFileName));
    if (!bytes)
        return {};
    auto index = HistoryStore::Index::decode(std::string_view(reinterpret_cast<const char*>(bytes->data()), bytes->size()));
    return index ? keptOnly(*index) : HistoryStore::Index {};
}

}
