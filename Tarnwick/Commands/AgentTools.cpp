#include "AgentTools.hpp"

#include "Agent/AgentCommands.hpp"
#include "Agent/AgentErrorCode.hpp"
#include "Agent/AgentFormat.hpp"
#include "AgentPlaces.hpp"
#include "Answers/AnswerRenderer.hpp"
#include "AppCommands.hpp"
#include "AppHandoff.hpp"
#include "HistoryRecorder.hpp"
#include "AppModel.hpp"
#include "MainExecutor.hpp"
#include "SnapshotAnswers.hpp"

#include <functional>
#include <thread>

namespace tarnwick {

namespace {

constexpr long long defaultWaitSeconds = 60;
constexpr auto pollInterval = std::chrono::milliseconds(100);

using Request = AgentCommands::Request;
using AnswerRenderer::rendered;

}

AgentTools::AgentTools(AppModel& model, MainExecutor& executor, HistoryStore* store, const HistoryRecorder* recorder)
    : m_model(model)
    , m_executor(executor)
    , m_store(store)
    , m_recorder(recorder)
{
}

AgentResult AgentTools::handle(const Request& request)
{
    if (request.command == AppHandoff::showCommand || request.command == AppHandoff::openCommand)
        return m_executor.runAndWait<AgentResult>([&] { return handOff(request); });
    std::expected<Request, AgentCommands::RequestError> checked = AgentCommands::validated(request);
    if (!checked) {
        bool unknown = checked.error().kind == AgentCommands::RequestError::Kind::unknownCommand;
        return AgentResult::failure(unknown ? AgentErrorCode::unknownCommand : AgentErrorCode::invalidRequest, checked.error().message);
    }
    return AgentFormat::withinLimit(handleChecked(*checked));
}

AgentResult AgentTools::handleChecked(const Request& request)
{
    if (request.command == "wait")
        return waitForScan(request);
    const AgentCommands::Command* command = AgentCommands::find(request.command);
    if (command && command->route == AgentCommands::Route::history) {
        SnapshotAnswers::Context context = m_executor.runAndWait<SnapshotAnswers::Context>([&] { return snapshotContext(); });
        return SnapshotAnswers::answer(request, context);
    }
    return m_executor.runAndWait<AgentResult>([&] { return onMain(request); });
}

// The commands answered on the main executor against the model the window shows.
AgentResult AgentTools::onMain(const Request& request)
{
    const std::pair<std::string_view, std::function<AgentResult()>> commands[] = {
        { "status", [&] { return rendered(AppCommands::status(m_model, historyNotes())); } },
        { "scan", [&] { return rendered(AppCommands::scan(m_model, request)); } },
        { "rescan", [&] { return rendered(AppCommands::rescan(m_model)); } },
        { "show", [&] { return rendered(withWindow(AppCommands::show(m_model, request))); } },
        { "summary", [&] { return rendered(AppCommands::summary(m_model, request)); } },
        { "find", [&] { return rendered(AppCommands::find(m_model, request)); } },
    };
    for (const auto& [name, answer] : commands) {
        if (name == request.command)
            return answer();
    }
    return AgentResult::failure(AgentErrorCode::unknownCommand, "Tarnwick has no command " + request.command + ".");
}

WindowPresence AgentTools::bringWindowForward()
{
    if (!m_window)
        return WindowPresence::none;
    m_window->bringToFront();
    return WindowPresence::inFront;
}

// What show opened is only seen when the window is, so show brings it forward.
Answered<ShowAnswer> AgentTools::withWindow(Answered<ShowAnswer> shown)
{
    if (shown)
        shown->window = bringWindowForward();
    return shown;
}

// A second start of the app: the window comes to the front, on the place asked for.
AgentResult AgentTools::handOff(const Request& request)
{
    if (request.command == AppHandoff::showCommand)
        return rendered(AlreadyRunningAnswer { bringWindowForward() });
    Request scan { "scan", {}, false };
    if (auto path = AgentPlaces::argument(request.arguments, "path"))
        scan.arguments["path"] = *path;
    std::expected<Request, AgentCommands::RequestError> checked = AgentCommands::validated(scan);
    if (!checked)
        return AgentResult::failure(AgentErrorCode::invalidRequest, checked.error().message);
    Answered<ScanAnswer> scanned = AppCommands::scan(m_model, *checked);
    if (scanned)
        scanned->window = bringWindowForward();
    return rendered(scanned);
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
        context.analysis = result->analysis;
        context.openFolder = result->tree->path(m_model.openFolder());
    }
    return context;
}

AgentResult AgentTools::waitForScan(const Request& request)
{
    auto timeout = std::chrono::seconds(AgentPlaces::integer(request.arguments, "timeout_s", defaultWaitSeconds));
    auto deadline = std::chrono::steady_clock::now() + timeout;
    auto busy = [&] { return m_executor.runAndWait<bool>([&] { return m_model.runningScan().has_value() && !m_model.isWaitingForUser(); }); };
    while (busy() && std::chrono::steady_clock::now() < deadline)
        std::this_thread::sleep_for(pollInterval);
    // A finished scan is done once its snapshot is saved, or known not to be.
    while (m_recorder && m_recorder->isSaving() && std::chrono::steady_clock::now() < deadline)
        std::this_thread::sleep_for(pollInterval);
    return m_executor.runAndWait<AgentResult>([&] { return rendered(AppCommands::status(m_model, historyNotes())); });
}

}
