#pragma once

#include "BackgroundWorker.hpp"
#include "Metrics/MetricFamily.hpp"
#include "Metrics/TextfileWriter.hpp"

#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tarnwick {

class HistoryStore;
class UserDefaults;

// Keeps "tarnwick.prom" current for node_exporter's textfile collector: after every snapshot
// the app saves, when the user defaults name a folder under folderKey, the history's metrics
// are written there. Saves come from the recorder's thread and the daily pass's, so writes are
// taken one at a time; a failure is logged once per folder and cause, not at every save.
class MetricsTextfile {
public:
    static constexpr std::string_view folderKey = "MetricsTextfileDirectory";

    MetricsTextfile(HistoryStore& store, std::string defaultsPath);

    // The folder the setting names; absent when it is unset, empty or not a string.
    static std::optional<std::string> folder(UserDefaults& defaults);
    // The figures as they stand now: the history, and every alert measured now.
    static std::vector<MetricFamily> figures(HistoryStore& store, UserDefaults& defaults);

    // Writes the file when the setting names a folder. Returns the failure, if any.
    std::optional<TextfileWriter::Failure> snapshotSaved();
    // The same, on a thread of its own: at the app's start the file still holds what an
    // earlier run wrote, perhaps before a reboot, and the alerts' readings are as old.
    void writeSoon() { m_worker.post([this] { (void)snapshotSaved(); }); }

private:
    HistoryStore& m_store;
    std::string m_defaultsPath;
    std::mutex m_mutex; // one write at a time; guards m_told
    std::optional<std::pair<std::string, TextfileWriter::Failure::Case>> m_told;
    BackgroundWorker m_worker; // last, so it finishes before the rest goes
};

}
