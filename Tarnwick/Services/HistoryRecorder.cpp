#include "HistoryRecorder.hpp"

#include "History/ScanRecorder.hpp"
#include "Platform/SystemLog.hpp"

namespace tarnwick {

HistoryRecorder::HistoryRecorder(HistoryStore& store, Saved saved, Failed failed)
    : m_store(store)
    , m_saved(std::move(saved))
    , m_failed(std::move(failed))
{
}

void HistoryRecorder::record(const AppModel::Result& result)
{
    // A stopped scan read only part of the place; its snapshot would show space as gone.
    if (result.status.kind != ScanOutcome::Status::Kind::completed || !result.analysis)
        return;
    ++m_pending;
    m_worker.post([this, analysis = result.analysis, finishedAt = result.finishedAt] {
        const std::shared_ptr<const ScanTree>& tree = analysis->tree();
        auto recorded = ScanRecorder::record(m_store, analysis, finishedAt);
        if (recorded)
            saved(tree->rootPath(), {});
        else
            saved(tree->rootPath(), std::unexpected(recorded.error()));
        --m_pending;
        if (recorded && m_saved)
            m_saved(recorded->source);
    });
}

void HistoryRecorder::saved(const std::string& root, const std::expected<void, HistoryStore::StoreError>& outcome)
{
    std::optional<std::string> notify;
    {
        std::lock_guard guard(m_mutex);
        if (outcome) {
            m_problem.reset();
            m_toldCause.reset();
            return;
        }
        m_problem = std::string(notSavedPrefix) + outcome.error().message();
        // The same cause again (every scan on a read-only disk) is told once.
        if (m_toldCause != outcome.error()) {
            m_toldCause = outcome.error();
            notify = m_problem;
        }
    }
    SystemLog::write(SystemLog::Level::error, "history", "couldn't save the snapshot of " + root + ": " + outcome.error().message());
    if (notify && m_failed)
        m_failed(*notify);
}

std::optional<std::string> HistoryRecorder::saveProblem() const
{
    std::lock_guard guard(m_mutex);
    return m_problem;
}

}
