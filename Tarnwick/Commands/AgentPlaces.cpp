#include "AgentPlaces.hpp"

#include "Agent/AgentErrorCode.hpp"
#include "AgentMessages.hpp"
#include "Scanning/ScopeResolver.hpp"

#include <cerrno>
#include <cstdlib>
#include <pwd.h>
#include <unistd.h>
#include <sys/stat.h>

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

std::expected<ScanView, AgentResult> scanView(const AppModel& model)
{
    const auto& result = model.result();
    const auto& running = model.runningScan();
    // A scan of another place than the result's is a first scan: the window shows its
    // preview, and so do the answers. A rescan leaves the result on screen until it ends.
    bool firstScan = running && (!result || result->scope.scanRoot != running->scope.scanRoot);
    if (result && !firstScan)
        return ScanView { result->tree, result->analysis, result->scope, model.openFolder(), false };
    if (running) {
        if (auto preview = running->scanner->progress()->latestPreview(); preview && preview->tree)
            return ScanView { preview->tree, nullptr, running->scope, NodeID::root(), true };
        // The first preview comes a second into the scan.
        return std::unexpected(AgentResult::failure(AgentErrorCode::notScanned, AgentMessages::justStarted(running->scope.scanRoot)));
    }
    return std::unexpected(AgentResult::failure(AgentErrorCode::notScanned, AgentMessages::nothingScanned));
}

std::expected<NodeID, AgentResult> scannedNode(const AppModel& model, const std::optional<std::string>& argument)
{
    auto view = scanView(model);
    if (!view)
        return std::unexpected(view.error());
    return scannedNode(*view, argument);
}

std::expected<NodeID, AgentResult> scannedNode(const ScanView& view, const std::optional<std::string>& argument)
{
    if (!argument)
        return view.openFolder;
    auto path = expand(*argument);
    if (!path)
        return std::unexpected(path.error());
    const ScanTree& tree = *view.tree;
    std::string real = ScopeResolver::realPath(*path);
    for (const std::string& candidate : { *path, real }) {
        if (auto node = tree.node(candidate))
            return *node;
    }
    struct stat status;
    if (::lstat(path->c_str(), &status) != 0)
        return std::unexpected(AgentResult::failure(AgentErrorCode::invalidPath, AgentMessages::noSuchPlace(*path)));
    if (view.stillScanning)
        return std::unexpected(AgentResult::failure(AgentErrorCode::notScanned, AgentMessages::notFoundYet(*path, tree.rootPath())));
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
