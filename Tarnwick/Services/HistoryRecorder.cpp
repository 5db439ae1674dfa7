#include "HistoryRecorder.hpp"

#include "History/ScanRecorder.hpp"
#include "Platform/SystemLog.hpp"

namespace tarnwick {

HistoryRecorder::HistoryRecorder(HistoryStore& store, Saved saved)
    : m_store(store)
    , m_saved(std::move(saved))
{
}

void HistoryRecorder::record(const AppModel::Result& result)
{
    // A stopped scan read only part of the place; its snapshot would show space as gone.
    if (result.status.kind != ScanOutcome::Status::Kind::completed || !result.tree)
        return;
    m_worker.post([this, tree = result.tree, content = result.content, finishedAt = result.finishedAt] {
        auto recorded = ScanRecorder::record(m_store, tree, content, finishedAt);
        if (!recorded) {
            SystemLog::write(SystemLog::Level::error, "history", "couldn't save the snapshot of " + tree->rootPath() + ": " + recorded.error().message());
            return;
        }
        if (m_saved)
            m_saved(recorded->source);
    });
}

}
