#pragma once

#include "AppModel.hpp"
#include "BackgroundWorker.hpp"
#include "History/HistoryStore.hpp"

#include <atomic>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

namespace tarnwick {

// Saves every finished scan of the app into the history, off the main executor, and
// tells the app when a save is done (for the folder alerts that read the new snapshot).
//
// A save that fails (a read-only or full disk, an I/O error) is not silent: saveProblem()
// says why until a later save succeeds, for status and wait, and `failed` is called once per
// cause, for a notification. Nothing saved before is touched, and the next scan tries again.
class HistoryRecorder {
public:
    using Saved = std::function<void(const HistorySource&)>;
    using Failed = std::function<void(const std::string& text)>;

    static constexpr std::string_view notSavedPrefix = "The snapshot couldn't be saved: ";

    HistoryRecorder(HistoryStore& store, Saved saved, Failed failed = nullptr);
    void record(const AppModel::Result& result);

    // Whether a save handed in is not done yet.
    [[nodiscard]] bool isSaving() const { return m_pending.load() > 0; }
    // "The snapshot couldn't be saved: REASON", while the latest save failed.
    [[nodiscard]] std::optional<std::string> saveProblem() const;

private:
    void saved(const std::string& root, const std::expected<void, HistoryStore::StoreError>& outcome);

    HistoryStore& m_store;
    Saved m_saved;
    Failed m_failed;
    std::atomic<int> m_pending { 0 };
    mutable std::mutex m_mutex; // guards the two below
    std::optional<std::string> m_problem;
    std::optional<HistoryStore::StoreError> m_toldCause; // the cause last notified
    BackgroundWorker m_worker; // last, so it finishes before the rest goes
};

}
