#include "AgentTools.hpp"

#include "Agent/AgentErrorCode.hpp"
#include "AgentPlaces.hpp"
#include "AppCommands.hpp"
#include "AppModel.hpp"
#include "HistoryRecorder.hpp"
#include "MainExecutor.hpp"
#include "SnapshotAnswers.hpp"

#include <thread>

namespace tarnwick {

namespace {

constexpr long long defaultWaitSeconds = 60;
constexpr auto pollInterval = std::chrono::milliseconds(100);

}

AgentTools::AgentTools(AppModel& model, MainExecutor& executor, HistoryStore* store, const HistoryRecorder* recorder)
    : m_model(model)
    , m_executor(executor)
    , m_store(store)
    , m_recorder(recorder)
{
}

AgentResult AgentTools::handle(const AgentCommands::Request& request)
{
    if (request.command == "wait")
        return waitForScan(request);
    if (SnapshotAnswers::handles(request.command)) {
        SnapshotAnswers::Context context = m_executor.runAndWait<SnapshotAnswers::Context>([&] { return snapshotContext(); });
        return SnapshotAnswers::answer(request, context);
    }
    return m_executor.runAndWait<AgentResult>([&] { return onMain(request); });
}

AgentResult AgentTools::onMain(const AgentCommands::Request& request)
{
    const std::string& command = request.command;
    if (command == "status")
        return AppCommands::status(m_model, historyNotes());
    if (command == "scan")
        return AppCommands::scan(m_model, request);
    if (command == "rescan")
        return AppCommands::rescan(m_model);
    if (command == "show")
        return AppCommands::show(m_model, request);
    if (command == "summary")
        return AppCommands::summary(m_model, request);
    if (command == "find")
        return AppCommands::find(m_model, request);
    return AgentResult::failure(AgentErrorCode::unknownCommand, "Tarnwick has no command " + command + ".");
}

AppCommands::HistoryNotes AgentTools::historyNotes() const
{
    AppCommands::HistoryNotes notes;
    if (m_recorder)
        notes.saveProblem = m_recorder->saveProblem();
    if (m_store)
        notes.recovery = m_store->recoveryNotice();
    return notes;
}

SnapshotAnswers::Context AgentTools::snapshotContext() const
{
    SnapshotAnswers::Context context;
    context.store = m_store;
    if (const auto& result = m_model.result()) {
        context.tree = result->tree;
        context.content = result->content;
        context.openFolder = result->tree->path(m_model.openFolder());
    }
    return context;
}

AgentResult AgentTools::waitForScan(const AgentCommands::Request& request)
{
    auto timeout = std::chrono::seconds(AgentPlaces::integer(request.arguments, "timeout_s", defaultWaitSeconds));
    auto deadline = std::chrono::steady_clock::now() + timeout;
    auto busy = [&] { return m_executor.runAndWait<bool>([&] { return m_model.runningScan().has_value() && !m_model.isWaitingForUser(); }); };
    while (busy() && std::chrono::steady_clock::now() < deadline)
        std::this_thread::sleep_for(pollInterval);
    // A finished scan is done once its snapshot is saved, or known not to be.
    while (m_recorder && m_recorder->isSaving() && std::chrono::steady_clock::now() < deadline)
        std::this_thread::sleep_for(pollInterval);
    return m_executor.runAndWait<AgentResult>([&] { return AppCommands::status(m_model, historyNotes()); });
}

}
