// The record of each volume's space: one log a volume in the store's "Volumes" folder.
#include "History/HistoryDate.hpp"
#include "History/HistoryStore.hpp"

#include <cerrno>

namespace tarnwick {

using StoreError = HistoryStore::StoreError;

std::expected<void, StoreError> HistoryStore::recordMeasurement(std::string_view volume, const VolumeMeasurement& measurement)
{
    {
        std::lock_guard guard(m_mutex);
        HistoryFiles::ScopedLock lock(m_lock);
        if (auto locked = lock.lock(); !locked)
            return std::unexpected(StoreError::writeFailed(locked.error()));
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
    }
    notify();
    return {};
}

std::expected<std::vector<VolumeMeasurement>, StoreError> HistoryStore::measurements(std::string_view volume)
{
    const std::string file = path(volumesFolderName) + "/" + VolumeMeasurement::logFileName(volume);
    auto bytes = HistoryFiles::readWhole(file);
    if (!bytes) {
        if (bytes.error().error == ENOENT)
            return std::vector<VolumeMeasurement> {};
        return std::unexpected(StoreError::readFailed(bytes.error()));
    }
    return VolumeMeasurement::parseLog(std::string_view(reinterpret_cast<const char*>(bytes->data()), bytes->size()));
}

}
