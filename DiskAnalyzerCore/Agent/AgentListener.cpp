#include "Agent/AgentListener.hpp"

#include "Agent/AgentChannel.hpp"
#include "Agent/AgentErrorCode.hpp"
#include "Agent/LineListener.hpp"
#include "Platform/SystemLog.hpp"
#include "Platform/UserFolders.hpp"

#include <condition_variable>
#include <map>
#include <mutex>
#include <thread>
#include <vector>

namespace tarnwick {

namespace {

constexpr std::string_view logCategory = "agents";

struct Session {
    std::thread thread;
    std::shared_ptr<LineConnection> connection;
};

}

struct AgentListener::State {
    Configuration configuration;
    std::unique_ptr<LineListener> listener;
    std::thread acceptThread;

    std::mutex mutex;
    std::condition_variable changed; // a command's result arrived, or the listener is stopping
    bool stopping = false;
    bool stopped = false;
    std::uint64_t nextSession = 0;
    std::map<std::uint64_t, Session> sessions;
    std::vector<std::uint64_t> finished; // sessions whose thread has ended and awaits a join
};

namespace {

using State = AgentListener::State;

// A handler that throws must not take the app down with it: the request fails, the app and
// its other connections go on.
AgentResult guardedAnswer(const AgentListener::Handler& handler, const AgentCommands::Request& request)
{
    try {
        return handler(request);
    } catch (const std::exception& error) {
        SystemLog::write(SystemLog::Level::error, logCategory, "a command failed: " + std::string(error.what()));
    } catch (...) {
        SystemLog::write(SystemLog::Level::error, logCategory, "a command failed");
    }
    return AgentResult::failure(AgentErrorCode::generic, "Tarnwick couldn't answer this request; the app goes on running.");
}

// Runs the command through the executor and waits for its result; absent when the listener
// stops first.
std::optional<AgentResult> answer(const std::shared_ptr<State>& state, const std::string& line)
{
    std::optional<AgentCommands::Request> request = AgentCommands::Request::decoded(line);
    if (!request)
        return AgentResult::failure(AgentErrorCode::invalidRequest, AgentErrorCode::Messages::invalidRequest);
    auto slot = std::make_shared<std::optional<AgentResult>>();
    auto task = [state, slot, request = std::move(*request)] {
        {
            std::lock_guard guard(state->mutex);
            if (state->stopping)
                return;
        }
        AgentResult result = guardedAnswer(state->configuration.handler, request);
        {
            std::lock_guard guard(state->mutex);
            *slot = std::move(result);
        }
        state->changed.notify_all();
    };
    if (state->configuration.executor)
        state->configuration.executor(std::move(task));
    else
        task();
    std::unique_lock lock(state->mutex);
    state->changed.wait(lock, [&] { return slot->has_value() || state->stopping; });
    return *slot;
}

void serve(const std::shared_ptr<State>& state, LineConnection& connection)
{
    for (;;) {
        std::optional<std::string> line = connection.readLine();
        if (!line || line->empty())
            return;
        std::optional<AgentResult> result = answer(state, *line);
        if (!result || !connection.writeLine(result->encoded()))
            return;
    }
}

void joinFinished(State& state)
{
    std::vector<std::thread> threads;
    {
        std::lock_guard guard(state.mutex);
        for (std::uint64_t id : state.finished) {
            auto found = state.sessions.find(id);
            threads.push_back(std::move(found->second.thread));
            state.sessions.erase(found);
        }
        state.finished.clear();
    }
    for (std::thread& thread : threads)
        thread.join();
}

bool isAllowed(const AgentListener::Configuration& configuration, const CodeIdentity::Signer& peer)
{
    if (peer == configuration.allowedPeer)
        return true;
    return !configuration.executablePath.empty() && CodeIdentity::ofExecutable(configuration.executablePath) == peer;
}

void acceptLoop(const std::shared_ptr<State>& state)
{
    while (std::unique_ptr<LineConnection> accepted = state->listener->accept()) {
        joinFinished(*state);
        std::optional<CodeIdentity::Signer> peer = CodeIdentity::peer(accepted->descriptor());
        if (!peer || !isAllowed(state->configuration, *peer)) {
            SystemLog::write(SystemLog::Level::error, logCategory, "refused a connection from another program");
            continue;
        }
        std::shared_ptr<LineConnection> connection = std::move(accepted);
        std::lock_guard guard(state->mutex);
        if (state->stopping)
            return;
        std::uint64_t id = state->nextSession++;
        Session& session = state->sessions[id];
        session.connection = connection;
        session.thread = std::thread([state, connection, id] {
            serve(state, *connection);
            connection->shutdown();
            std::lock_guard guard(state->mutex);
            state->finished.push_back(id);
        });
    }
}

std::string parentFolder(const std::string& path)
{
    std::size_t slash = path.rfind('/');
    if (slash == std::string::npos)
        return ".";
    return slash == 0 ? "/" : path.substr(0, slash);
}

}

AgentListener::AgentListener(std::shared_ptr<State> state)
    : m_state(std::move(state))
{
}

AgentListener::~AgentListener()
{
    stop();
}

std::unique_ptr<AgentListener> AgentListener::start(Configuration configuration)
{
    auto state = std::make_shared<State>();
    UserFolders::ensureFolder(parentFolder(configuration.socketPath));
    state->listener = LineListener::create(configuration.socketPath);
    if (!state->listener) {
        SystemLog::write(SystemLog::Level::error, logCategory, "can't listen on the socket");
        return nullptr;
    }
    SystemLog::write(SystemLog::Level::info, logCategory, "listening");
    state->configuration = std::move(configuration);
    state->acceptThread = std::thread([state] { acceptLoop(state); });
    return std::unique_ptr<AgentListener>(new AgentListener(std::move(state)));
}

std::unique_ptr<AgentListener> AgentListener::startForApp(Handler handler, Executor executor)
{
    std::optional<CodeIdentity::Signer> own = CodeIdentity::own();
    if (!own) {
        SystemLog::write(SystemLog::Level::error, logCategory, "the app isn't signed; no command line");
        return nullptr;
    }
    return start({ AgentChannel::socketPath(), *own, std::move(handler), std::move(executor), CodeIdentity::ownExecutablePath().value_or("") });
}

void AgentListener::stop()
{
    State& state = *m_state;
    {
        std::lock_guard guard(state.mutex);
        if (state.stopped)
            return;
        state.stopped = true;
        state.stopping = true;
        for (auto& [id, session] : state.sessions)
            session.connection->shutdown();
    }
    state.changed.notify_all();
    state.listener->stopAccepting();
    state.acceptThread.join();
    std::map<std::uint64_t, Session> sessions;
    {
        std::lock_guard guard(state.mutex);
        sessions = std::move(state.sessions);
        state.finished.clear();
    }
    for (auto& [id, session] : sessions)
        session.thread.join();
    state.listener->close();
}

}
