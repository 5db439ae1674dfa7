#include "AgentTools.hpp"

#include "Agent/AgentErrorCode.hpp"
#include "AgentPlaces.hpp"
#include "AppCommands.hpp"
#include "AppModel.hpp"
#include "MainExecutor.hpp"
#include "SnapshotAnswers.hpp"

#include <thread>

namespace tarnwick {

namespace {

constexpr long long defaultWaitSeconds = 60;
constexpr auto pollInterval = std::chrono::milliseconds(100);

}

AgentTools::AgentTools(AppModel& model, MainExecutor& executor, HistoryStore* store)
    : m_model(model)
    , m_executor(executor)
    , m_store(store)
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
        return AppCommands::status(m_model);
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
    return m_executor.runAndWait<AgentResult>([&] { return AppCommands::status(m_model); });
}

}
