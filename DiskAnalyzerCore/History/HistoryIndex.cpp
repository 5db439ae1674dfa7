// The JSON form of the history index (index.json) and of a place's source.json.
#include "History/HistoryDate.hpp"
#include "History/HistoryStore.hpp"

#include <algorithm>
#include <nlohmann/json.hpp>
#include <unordered_set>
#include <utility>

namespace tarnwick {

namespace {

using nlohmann::json;

json encode(const HistorySource& source)
{
    return json { { "path", source.path }, { "volume", source.volume } };
}

json encode(const HistoryEntry& entry)
{
    json object {
        { "id", entry.id },
        { "date", HistoryDate::referenceSeconds(entry.date) },
        { "total", entry.total },
        { "isKept", entry.isKept },
        { "file", entry.file },
        { "bytes", entry.bytes },
    };
    if (entry.volumeTotal)
        object["volumeTotal"] = *entry.volumeTotal;
    if (entry.volumeAvailable)
        object["volumeAvailable"] = *entry.volumeAvailable;
    if (entry.note)
        object["note"] = *entry.note;
    if (entry.outOfDate)
        object["outOfDate"] = *entry.outOfDate;
    if (entry.issueCount)
        object["issueCount"] = *entry.issueCount;
    if (entry.hasAllowableIssues)
        object["hasAllowableIssues"] = *entry.hasAllowableIssues;
    if (entry.isUnreadable)
        object["isUnreadable"] = true;
    if (entry.outOfDatePaths)
        object["outOfDatePaths"] = *entry.outOfDatePaths;
    return object;
}

// A name inside the store's folder that cannot climb out of it or pass for a temporary file.
bool isPlainName(const std::string& name)
{
    return !name.empty() && name.front() != '.' && name.find('/') == std::string::npos && name.find('\0') == std::string::npos;
}

// Readers of one field: absent when the key is missing or of the wrong type. Optional
// fields also accept null, as absent.
const json* member(const json& object, const char* key)
{
    auto found = object.find(key);
    return found == object.end() ? nullptr : &*found;
}

std::optional<std::int64_t> integer(const json& object, const char* key)
{
    const json* value = member(object, key);
    if (!value || !value->is_number_integer())
        return std::nullopt;
    return value->get<std::int64_t>();
}

std::optional<std::string> text(const json& object, const char* key)
{
    const json* value = member(object, key);
    if (!value || !value->is_string())
        return std::nullopt;
    return value->get<std::string>();
}

std::optional<bool> boolean(const json& object, const char* key)
{
    const json* value = member(object, key);
    if (!value || !value->is_boolean())
        return std::nullopt;
    return value->get<bool>();
}

// Whether an optional field is either absent (missing or null) or of the expected kind.
bool absentOr(const json& object, const char* key, bool (json::*isKind)() const noexcept)
{
    const json* value = member(object, key);
    return !value || value->is_null() || (value->*isKind)();
}

std::optional<HistoryEntry> decodeEntry(const json& object)
{
    if (!object.is_object())
        return std::nullopt;
    const json* date = member(object, "date");
    HistoryEntry entry;
    auto id = integer(object, "id");
    auto total = integer(object, "total");
    auto isKept = boolean(object, "isKept");
    auto file = text(object, "file");
    auto bytes = integer(object, "bytes");
    if (!id || !date || !date->is_number() || !total || !isKept || !file || !isPlainName(*file) || !bytes)
        return std::nullopt;
    auto when = HistoryDate::fromReferenceSeconds(date->get<double>());
    if (!when)
        return std::nullopt;
    if (!absentOr(object, "volumeTotal", &json::is_number_integer) || !absentOr(object, "volumeAvailable", &json::is_number_integer)
        || !absentOr(object, "note", &json::is_string) || !absentOr(object, "outOfDate", &json::is_boolean)
        || !absentOr(object, "issueCount", &json::is_number_integer)
        || !absentOr(object, "hasAllowableIssues", &json::is_boolean) || !absentOr(object, "isUnreadable", &json::is_boolean) || !absentOr(object, "outOfDatePaths", &json::is_array))
        return std::nullopt;
    entry.id = *id;
    entry.date = *when;
    entry.total = *total;
    entry.volumeTotal = integer(object, "volumeTotal");
    entry.volumeAvailable = integer(object, "volumeAvailable");
    entry.isKept = *isKept;
    entry.note = text(object, "note");
    entry.file = *file;
    entry.bytes = *bytes;
    entry.outOfDate = boolean(object, "outOfDate");
    entry.issueCount = integer(object, "issueCount");
    entry.hasAllowableIssues = boolean(object, "hasAllowableIssues");
    entry.isUnreadable = boolean(object, "isUnreadable").value_or(false);
    if (const json* paths = member(object, "outOfDatePaths"); paths && paths->is_array()) {
        std::vector<std::string> list;
        for (const json& path : *paths) {
            if (!path.is_string())
                return std::nullopt;
            list.push_back(path.get<std::string>());
        }
        entry.outOfDatePaths = std::move(list);
    }
    return entry;
}

std::optional<HistorySource> decodeSource(const json& object)
{
    if (!object.is_object())
        return std::nullopt;
    auto path = text(object, "path");
    auto volume = text(object, "volume");
    if (!path || !volume)
        return std::nullopt;
    return HistorySource { *path, *volume };
}

std::optional<HistoryStore::SourceRecord> decodeRecord(const json& object)
{
    if (!object.is_object())
        return std::nullopt;
    const json* source = member(object, "source");
    const json* entries = member(object, "entries");
    auto folder = text(object, "folder");
    if (!source || !entries || !entries->is_array() || !folder || !isPlainName(*folder)
        || *folder == HistoryStore::volumesFolderName || *folder == HistoryStore::indexFileName)
        return std::nullopt;
    HistoryStore::SourceRecord record;
    auto decodedSource = decodeSource(*source);
    if (!decodedSource)
        return std::nullopt;
    record.source = std::move(*decodedSource);
    record.folder = *folder;
    for (const json& item : *entries) {
        auto entry = decodeEntry(item);
        if (!entry)
            return std::nullopt;
        record.entries.push_back(std::move(*entry));
    }
    std::stable_sort(record.entries.begin(), record.entries.end(),
        [](const HistoryEntry& a, const HistoryEntry& b) { return a.date < b.date; });
    if (const json* current = member(object, "current"); current && !current->is_null()) {
        record.current = decodeEntry(*current);
        if (!record.current)
            return std::nullopt;
    }
    return record;
}

}

const HistoryStore::SourceRecord* HistoryStore::Index::record(const HistorySource& source) const
{
    auto found = std::find_if(sources.begin(), sources.end(), [&](const SourceRecord& record) { return record.source == source; });
    return found == sources.end() ? nullptr : &*found;
}

HistoryStore::SourceRecord* HistoryStore::Index::record(const HistorySource& source)
{
    return const_cast<SourceRecord*>(std::as_const(*this).record(source));
}

std::string HistoryStore::Index::encoded() const
{
    json list = json::array();
    for (const SourceRecord& record : sources) {
        json entries = json::array();
        for (const HistoryEntry& entry : record.entries)
            entries.push_back(encode(entry));
        json object { { "source", encode(record.source) }, { "folder", record.folder }, { "entries", std::move(entries) } };
        if (record.current)
            object["current"] = encode(*record.current);
        list.push_back(std::move(object));
    }
    json root { { "nextID", nextID }, { "sources", std::move(list) } };
    return root.dump(2, ' ', false, json::error_handler_t::replace) + "\n";
}

std::optional<HistoryStore::Index> HistoryStore::Index::decode(std::string_view text)
{
    json root = json::parse(text, nullptr, false);
    if (root.is_discarded() || !root.is_object())
        return std::nullopt;
    auto nextID = integer(root, "nextID");
    const json* list = member(root, "sources");
    if (!nextID || !list || !list->is_array())
        return std::nullopt;
    Index index;
    index.nextID = *nextID;
    std::unordered_set<std::string> folders;
    for (const json& item : *list) {
        auto record = decodeRecord(item);
        if (!record || !folders.insert(record->folder).second || index.record(record->source))
            return std::nullopt;
        // Never hand out an id twice, even if the counter was written behind the entries.
        for (const HistoryEntry& entry : record->entries)
            index.nextID = std::max(index.nextID, entry.id + 1);
        if (record->current)
            index.nextID = std::max(index.nextID, record->current->id + 1);
        index.sources.push_back(std::move(*record));
    }
    return index;
}

std::string HistoryStore::encodedSource(const HistorySource& source)
{
    return encode(source).dump(2, ' ', false, json::error_handler_t::replace) + "\n";
}

std::optional<HistorySource> HistoryStore::decodeSource(std::string_view text)
{
    json root = json::parse(text, nullptr, false);
    if (root.is_discarded())
        return std::nullopt;
    return tarnwick::decodeSource(root);
}

}
