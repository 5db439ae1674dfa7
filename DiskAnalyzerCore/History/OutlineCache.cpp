#include "History/OutlineCache.hpp"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <functional>
#include <vector>

namespace tarnwick {

namespace {

using nlohmann::json;

// The cache's shape; another version is ignored and written anew.
constexpr int version = 1;

std::string hex(std::uint64_t value)
{
    char buffer[17];
    std::snprintf(buffer, sizeof buffer, "%016llx", static_cast<unsigned long long>(value));
    return buffer;
}

std::int64_t nanoseconds(Date date)
{
    return std::chrono::duration_cast<std::chrono::nanoseconds>(date.time_since_epoch()).count();
}

json encoded(const HistoryFiles::FileSignature& file, const SnapshotOutline& outline)
{
    json entry {
        { "file", { file.device, file.inode, file.size, file.modifiedSeconds, file.modifiedNanoseconds } },
        { "date", nanoseconds(outline.date) },
        { "rootSize", outline.rootSize },
        { "hasColors", outline.hasColors },
        { "coversWhole", outline.coversWhole },
        { "preciseSize", outline.preciseSize },
        { "roundedSize", outline.roundedSize },
        { "isIncomplete", outline.isIncomplete },
        { "readWholeBelow", outline.readWholeBelow },
        { "needsWholeSnapshot", outline.needsWholeSnapshot },
    };
    if (outline.volume)
        entry["volume"] = { outline.volume->total, outline.volume->available };
    if (outline.node)
        entry["node"] = *outline.node;
    return entry;
}

// Throws (json's own errors) on anything of the wrong shape; the caller drops the file then.
std::pair<HistoryFiles::FileSignature, SnapshotOutline> decoded(const json& entry)
{
    const json& file = entry.at("file");
    HistoryFiles::FileSignature signature { file.at(0).get<std::uint64_t>(), file.at(1).get<std::uint64_t>(), file.at(2).get<std::int64_t>(),
        file.at(3).get<std::int64_t>(), file.at(4).get<std::int64_t>() };
    SnapshotOutline outline;
    outline.date = Date(std::chrono::duration_cast<Date::duration>(std::chrono::nanoseconds(entry.at("date").get<std::int64_t>())));
    outline.rootSize = entry.at("rootSize").get<std::int64_t>();
    outline.hasColors = entry.at("hasColors").get<bool>();
    outline.coversWhole = entry.at("coversWhole").get<bool>();
    outline.preciseSize = entry.at("preciseSize").get<std::int64_t>();
    outline.roundedSize = entry.at("roundedSize").get<std::int64_t>();
    outline.isIncomplete = entry.at("isIncomplete").get<bool>();
    outline.readWholeBelow = entry.at("readWholeBelow").get<bool>();
    outline.needsWholeSnapshot = entry.at("needsWholeSnapshot").get<bool>();
    if (entry.contains("volume"))
        outline.volume = Snapshot::Volume { entry["volume"].at(0).get<std::int64_t>(), entry["volume"].at(1).get<std::int64_t>() };
    if (entry.contains("node"))
        outline.node = entry["node"].get<std::int32_t>();
    return { signature, outline };
}

}

OutlineCache::OutlineCache(std::string folder, std::string_view storeDirectory, std::string_view placeFolder, std::string_view place)
    : m_folder(std::move(folder))
{
    std::string key = std::string(storeDirectory) + '\0' + std::string(place);
    std::string name(placeFolder.substr(0, 40));
    std::replace_if(name.begin(), name.end(), [](char c) { return c == '/' || c == '\0'; }, '_');
    m_path = m_folder + "/" + name + "-" + hex(std::hash<std::string> {}(key)) + ".json";
    read();
}

void OutlineCache::read()
{
    auto bytes = HistoryFiles::readWhole(m_path);
    if (!bytes)
        return;
    json document = json::parse(bytes->begin(), bytes->end(), nullptr, false);
    if (!document.is_object() || document.value("version", 0) != version)
        return;
    try {
        for (const auto& [id, entry] : document.at("entries").items()) {
            auto [file, outline] = decoded(entry);
            m_kept[std::stoll(id)] = Kept { file, outline };
        }
    } catch (const std::exception&) {
        m_kept.clear();
    }
}

std::optional<SnapshotOutline> OutlineCache::find(std::int64_t entryID, const HistoryFiles::FileSignature& file) const
{
    auto found = m_kept.find(entryID);
    if (found == m_kept.end() || found->second.file != file)
        return std::nullopt;
    return found->second.outline;
}

void OutlineCache::put(std::int64_t entryID, const HistoryFiles::FileSignature& file, const SnapshotOutline& outline)
{
    m_kept[entryID] = Kept { file, outline };
    m_changed = true;
}

void OutlineCache::save(const std::vector<std::int64_t>& listed)
{
    for (auto kept = m_kept.begin(); kept != m_kept.end();) {
        if (std::find(listed.begin(), listed.end(), kept->first) == listed.end()) {
            kept = m_kept.erase(kept);
            m_changed = true;
        } else {
            ++kept;
        }
    }
    if (!m_changed || !HistoryFiles::makeFolder(m_folder))
        return;
    json entries = json::object();
    for (const auto& [id, kept] : m_kept)
        entries[std::to_string(id)] = encoded(kept.file, kept.outline);
    json document { { "version", version }, { "entries", std::move(entries) } };
    if (HistoryFiles::writeAtomically(m_path, document.dump()))
        m_changed = false;
    prune();
}

void OutlineCache::prune() const
{
    std::error_code error;
    std::vector<std::pair<std::filesystem::file_time_type, std::filesystem::path>> files;
    for (std::filesystem::directory_iterator entry(m_folder, error), end; !error && entry != end; entry.increment(error)) {
        std::error_code fileError;
        if (entry->is_regular_file(fileError) && entry->path().extension() == ".json")
            files.emplace_back(entry->last_write_time(fileError), entry->path());
    }
    if (files.size() <= maximumFiles)
        return;
    std::sort(files.begin(), files.end());
    for (std::size_t i = 0; i + maximumFiles < files.size(); ++i)
        std::filesystem::remove(files[i].second, error);
}

}
