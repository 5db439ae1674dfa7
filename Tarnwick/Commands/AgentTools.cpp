#include "AgentTools.hpp"

#include "Agent/AgentCommands.hpp"
#include "Agent/AgentErrorCode.hpp"
#include "Agent/AgentFormat.hpp"
#include "AgentPlaces.hpp"
#include "AppCommands.hpp"
#include "AppHandoff.hpp"
#include "HistoryRecorder.hpp"
#include "AppModel.hpp"
#include "MainExecutor.hpp"
#include "SnapshotAnswers.hpp"

#include <array>
#include <thread>

namespace tarnwick {

namespace {

constexpr long long defaultWaitSeconds = 60;
constexpr auto pollInterval = std::chrono::milliseconds(100);

using Request = AgentCommands::Request;
using MainHandler = AgentResult (*)(AppModel&, const Request&);

// The commands that run on the main executor against the model, by name.
constexpr std::array<std::pair<std::string_view, MainHandler>, 6> mainHandlers { {
    { "status", [](AppModel& model, const Request&) { return AppCommands::status(model); } },
    { "scan", AppCommands::scan },
    { "rescan", [](AppModel& model, const Request&) { return AppCommands::rescan(model); } },
    { "show", AppCommands::show },
    { "summary", [](AppModel& model, const Request& request) { return AppCommands::summary(model, request); } },
    { "find", [](AppModel& model, const Request& request) { return AppCommands::find(model, request); } },
} };

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

AgentResult AgentTools::onMain(const Request& request)
{
    if (request.command == "status")
        return AppCommands::status(m_model, historyNotes());
    for (const auto& [name, handler] : mainHandlers) {
        if (name != request.command)
            continue;
        AgentResult result = handler(m_model, request);
        if (name == "show" && !result.isError)
            showWindow(result);
        return result;
    }
    return AgentResult::failure(AgentErrorCode::unknownCommand, "Tarnwick has no command " + request.command + ".");
}

// What show opened is only seen when the window is: an app started by the command line keeps
// its window hidden or minimised until asked, so show brings it forward, or says there is none.
void AgentTools::showWindow(AgentResult& result)
{
    if (m_window)
        m_window->bringToFront();
    result.text += m_window ? " The window is in front." : " Tarnwick runs without a window here (no display), so nothing is shown.";
    if (const JSONValue::Object* fields = result.structured ? result.structured->objectValue() : nullptr) {
        JSONValue::Object withWindow = *fields;
        withWindow["window"] = m_window != nullptr;
        result.structured = JSONValue(std::move(withWindow));
    }
}

// A second start of the app: the window comes to the front, on the place asked for.
AgentResult AgentTools::handOff(const Request& request)
{
    std::string windowLine = m_window ? "Tarnwick's window is in front."
                                      : "Tarnwick runs without a window here (no display); the command line works with it.";
    if (m_window)
        m_window->bringToFront();
    if (request.command == AppHandoff::showCommand) {
        return AgentResult::success("Tarnwick is already running. " + windowLine,
            JSONValue::Object { { "running", true }, { "window", m_window != nullptr } });
    }
    Request scan { "scan", {}, false };
    if (auto path = AgentPlaces::argument(request.arguments, "path"))
        scan.arguments["path"] = *path;
    std::expected<Request, AgentCommands::RequestError> checked = AgentCommands::validated(scan);
    if (!checked)
        return AgentResult::failure(AgentErrorCode::invalidRequest, checked.error().message);
    AgentResult result = AppCommands::scan(m_model, *checked);
    if (!result.isError)
        result.text += "\n" + windowLine;
    return AgentFormat::withinLimit(std::move(result));
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
    return m_executor.runAndWait<AgentResult>([&] { return AppCommands::status(m_model, historyNotes()); });
}

}
