// The record of each volume's space: one log a volume in the store's "Volumes" folder.
#include "History/HistoryDate.hpp"
#include "History/HistoryStore.hpp"

#include <algorithm>
#include <cerrno>
#include <set>

namespace tarnwick {

using StoreError = HistoryStore::StoreError;

std::expected<void, StoreError> HistoryStore::recordMeasurement(std::string_view volume, const VolumeMeasurement& measurement)
{
    {
        std::lock_guard guard(m_mutex);
        HistoryFiles::ScopedLock lock(m_lock);
        if (auto locked = lock.lock(); !locked)
            return std::unexpected(StoreError::writeFailed(locked.error()));
        if (auto appended = appendMeasurementLocked(volume, measurement); !appended)
            return appended;
    }
    notify();
    return {};
}

std::expected<void, StoreError> HistoryStore::appendMeasurementLocked(std::string_view volume, const VolumeMeasurement& measurement)
{
    const std::string folder = path(volumesFolderName);
    if (auto made = HistoryFiles::makeFolder(folder); !made)
        return std::unexpected(StoreError::writeFailed(made.error()));
    const std::string file = folder + "/" + VolumeMeasurement::logFileName(volume);
    auto existing = HistoryFiles::readWhole(file);
    if (!existing && existing.error().error != ENOENT)
        return std::unexpected(StoreError::readFailed(existing.error()));
    std::vector<std::uint8_t> log = existing ? std::move(*existing) : std::vector<std::uint8_t> {};
    if (!log.empty() && log.back() != '\n')
        log.push_back('\n'); // leave a line cut short by something else on a line of its own
    VolumeMeasurement normalized = measurement;
    normalized.date = HistoryDate::normalized(measurement.date);
    std::string line = normalized.logLine();
    log.insert(log.end(), line.begin(), line.end());
    if (auto written = HistoryFiles::writeAtomically(file, std::span(log)); !written)
        return std::unexpected(StoreError::writeFailed(written.error()));
    return {};
}

std::expected<std::vector<VolumeMeasurement>, StoreError> HistoryStore::measurements(std::string_view volume)
{
    const std::string file = path(volumesFolderName) + "/" + VolumeMeasurement::logFileName(volume);
    auto bytes = HistoryFiles::readWhole(file);
    if (!bytes && bytes.error().error != ENOENT)
        return std::unexpected(StoreError::readFailed(bytes.error()));
    std::vector<VolumeMeasurement> list;
    if (bytes)
        list = VolumeMeasurement::parseLog(std::string_view(reinterpret_cast<const char*>(bytes->data()), bytes->size()));
    // A save killed after its index was written has its snapshot but not its line.
    std::set<Date> logged;
    for (const VolumeMeasurement& measurement : list)
        logged.insert(measurement.date);
    std::vector<VolumeMeasurement> missing;
    for (const SourceRecord& record : index().sources) {
        if (record.source.volume != volume)
            continue;
        auto add = [&](const HistoryEntry& entry) {
            if (entry.volumeTotal && entry.volumeAvailable && logged.insert(entry.date).second)
                missing.push_back(VolumeMeasurement { entry.date, *entry.volumeTotal, *entry.volumeAvailable, entry.total });
        };
        for (const HistoryEntry& entry : record.entries)
            add(entry);
        if (record.current)
            add(*record.current);
    }
    if (!missing.empty()) {
        list.insert(list.end(), missing.begin(), missing.end());
        std::stable_sort(list.begin(), list.end(), [](const VolumeMeasurement& a, const VolumeMeasurement& b) { return a.date < b.date; });
    }
    return list;
}

}
