#include "AgentPlaces.hpp"

#include "Agent/AgentErrorCode.hpp"
#include "AgentMessages.hpp"
#include "Scanning/ScopeResolver.hpp"

#include <cstdlib>

namespace tarnwick::AgentPlaces {

std::expected<std::string, AgentResult> expand(const std::string& argument)
{
    std::string path = argument;
    if (path == "~" || path.starts_with("~/")) {
        const char* home = std::getenv("HOME");
        path = std::string(home ? home : "") + path.substr(1);
    }
    if (path.empty() || path.front() != '/')
        return std::unexpected(AgentResult::failure(AgentErrorCode::invalidPath, AgentMessages::notAbsolute(argument)));
    return ScopeResolver::standardizedPath(path);
}

std::expected<NodeID, AgentResult> scannedNode(const AppModel& model, const std::optional<std::string>& argument)
{
    const auto& result = model.result();
    if (!result)
        return std::unexpected(AgentResult::failure(AgentErrorCode::notScanned, AgentMessages::nothingScanned));
    if (!argument)
        return model.openFolder();
    auto path = expand(*argument);
    if (!path)
        return std::unexpected(path.error());
    const ScanTree& tree = *result->tree;
    std::string real = ScopeResolver::realPath(*path);
    for (const std::string& candidate : { *path, real }) {
        if (auto node = tree.node(candidate))
            return *node;
    }
    return std::unexpected(AgentResult::failure(AgentErrorCode::notScanned, AgentMessages::notInScan(*path, tree.rootPath())));
}

std::optional<std::string> argument(const std::map<std::string, std::string>& arguments, const std::string& key)
{
    auto found = arguments.find(key);
    if (found == arguments.end())
        return std::nullopt;
    return found->second;
}

long long integer(const std::map<std::string, std::string>& arguments, const std::string& key, long long fallback)
{
    auto value = argument(arguments, key);
    return value ? std::strtoll(value->c_str(), nullptr, 10) : fallback;
}

}
