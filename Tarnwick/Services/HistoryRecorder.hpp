#pragma once

#include "AppModel.hpp"
#include "BackgroundWorker.hpp"
#include "History/HistoryStore.hpp"

#include <functional>
#include <memory>

namespace tarnwick {

// Saves every finished scan of the app into the history, off the main executor, and
// tells the app when a save is done (for the folder alerts that read the new snapshot).
class HistoryRecorder {
public:
    using Saved = std::function<void(const HistorySource&)>;

    HistoryRecorder(HistoryStore& store, Saved saved);
    void record(const AppModel::Result& result);

private:
    HistoryStore& m_store;
    Saved m_saved;
    BackgroundWorker m_worker; // last, so it finishes before the rest goes
};

}
