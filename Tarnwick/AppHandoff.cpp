#include "AppHandoff.hpp"

#include "Agent/AgentChannel.hpp"
#include "Agent/AgentErrorCode.hpp"
#include "Agent/AgentOutput.hpp"

#include <filesystem>

namespace tarnwick::AppHandoff {

namespace {

// An app that holds the lock but was started a moment ago may not listen yet.
constexpr AgentChannel::Retry runningAppRetry { 25, std::chrono::milliseconds(200) };

int printed(const std::optional<AgentResult>& answer)
{
    AgentResult result = answer.value_or(AgentResult::failure(AgentErrorCode::appNotRunning, AgentErrorCode::Messages::appNotRunning));
    return AgentOutput::write(AgentOutput::print(result, OutputMode::text));
}

// The app runs in "/", so a folder named relative to the caller's folder is made absolute
// here; "~/..." stays for the app to expand like any command's path.
std::string absolutePath(const std::string& path)
{
    if (path.empty() || path.front() == '/' || path == "~" || path.starts_with("~/"))
        return path;
    std::error_code error;
    std::filesystem::path absolute = std::filesystem::absolute(path, error);
    return error ? path : absolute.lexically_normal().string();
}

}

int open(const std::string& path)
{
    AgentCommands::Request request { std::string(openCommand), { { "path", absolutePath(path) } }, false };
    return printed(AgentChannel::askStartingApp(request, AgentChannel::defaultSetup({})));
}

int showRunningApp()
{
    AgentCommands::Request request { std::string(showCommand), {}, false };
    return printed(AgentChannel::askRunningApp(request, AgentChannel::socketPath(), runningAppRetry));
}

}
