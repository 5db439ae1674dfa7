#pragma once

#include "Agent/AgentRequest.hpp"
#include "Agent/AgentResult.hpp"
#include "Platform/CodeIdentity.hpp"

#include <functional>
#include <memory>
#include <string>

namespace tarnwick {

// The app's end of the command line: listens on the socket, lets in only the app's own
// executable run by the same user, and answers each request line with one result line.
//
// One exchange on a connection:
//   → {"arguments":{"path":"/home/ada/Projects"},"command":"summary","json":false}
//   ← {"isError":false,"structured":{...},"text":"Projects: 2.31 GB ..."}
// A line that is no request is answered with INVALID_REQUEST and the connection stays open;
// an empty line or the end of the stream ends it.
//
// Threads: one accepts connections, and each connection has its own, which blocks in reads
// and while its command runs; none of them is the app's main executor.
class AgentListener {
public:
    using Handler = std::function<AgentResult(const AgentCommands::Request&)>;
    // Hands a task to the app's main executor to run later; must not wait for it, because the
    // main executor may itself be stopping the listener. Empty: tasks run on the connection's
    // own thread.
    using Executor = std::function<void(std::function<void()>)>;

    struct Configuration {
        std::string socketPath;
        CodeIdentity::Signer allowedPeer; // every other peer is refused without an answer
        Handler handler;
        Executor executor;
        // Where the app's executable was installed when it started. The file there now is let
        // in too: after an upgrade replaced it, the new tool still reaches the running app,
        // which alone may hold the socket until it ends.
        std::string executablePath;
    };

    // Listens at the configured path (creating its folder) and logs "listening". Null, with
    // the failure logged, when the socket cannot be created.
    static std::unique_ptr<AgentListener> start(Configuration configuration);
    // The app's listener: at the channel's socket path, letting in peers that are this very
    // executable. Null, logged, when the app cannot identify itself.
    static std::unique_ptr<AgentListener> startForApp(Handler handler, Executor executor);

    // Stops on destruction.
    ~AgentListener();
    AgentListener(const AgentListener&) = delete;
    AgentListener& operator=(const AgentListener&) = delete;

    // Stops accepting, ends every connection (a command still running finishes, unanswered),
    // waits for the threads, and removes the socket file unless another instance took it.
    void stop();

    struct State;

private:
    explicit AgentListener(std::shared_ptr<State> state);

    std::shared_ptr<State> m_state;
};

}
