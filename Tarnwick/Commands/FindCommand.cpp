#include "AppCommands.hpp"

#include "Agent/AgentCommands.hpp"
#include "Agent/AgentErrorCode.hpp"
#include "AgentMessages.hpp"
#include "AgentPlaces.hpp"
#include "Scanning/ScopeResolver.hpp"
#include "TreeQueries/HardLinkNote.hpp"
#include "TreeQueries/TreeSearch.hpp"

namespace tarnwick::AppCommands {

namespace {

constexpr int defaultLimit = 20;
// The search keeps the largest items up to the cursor plus the page; past this it would hold
// more than a scan of millions of items could name.
constexpr std::int64_t maximumCursor = 1'000'000;

NodeKindSet kindsFor(const std::string& kind)
{
    if (kind == "folder")
        return { NodeKind::directory };
    if (kind == "package")
        return { NodeKind::package };
    if (kind == "any")
        return NodeKindSet::all();
    return { NodeKind::file };
}

}

Answered<FindAnswer> find(const AppModel& model, const AgentCommands::Request& request)
{
    auto view = AgentPlaces::scanView(model);
    if (!view)
        return std::unexpected(view.error());
    auto below = AgentPlaces::scannedNode(*view, AgentPlaces::argument(request.arguments, "path"));
    if (!below)
        return std::unexpected(below.error());
    std::optional<NamePattern> pattern;
    if (auto name = AgentPlaces::argument(request.arguments, "name")) {
        auto compiled = NamePattern::compile(*name);
        if (!compiled)
            return std::unexpected(AgentResult::failure(AgentErrorCode::invalidArgument, std::string(NamePattern::message(compiled.error()))));
        pattern = std::move(*compiled);
    }
    TreeSearch::AgeFilter age;
    // The parser has checked the range of the days already.
    if (auto days = AgentPlaces::argument(request.arguments, "older_than_days"))
        age.changedBefore = std::chrono::system_clock::now() - std::chrono::days(AgentCommands::parseInteger(*days).value_or(0));
    long long start = 0;
    if (auto cursor = AgentPlaces::argument(request.arguments, "cursor")) {
        std::optional<std::int64_t> number = AgentCommands::parseInteger(*cursor);
        if (!number || *number < 0 || *number > maximumCursor)
            return std::unexpected(AgentResult::failure(AgentErrorCode::invalidArgument, AgentMessages::notACursor(*cursor)));
        start = *number;
    }
    int limit = static_cast<int>(AgentPlaces::integer(request.arguments, "limit", defaultLimit));
    std::int64_t minimum = AgentPlaces::integer(request.arguments, "min_size", 0);
    const ScanTree& tree = *view->tree;
    auto found = TreeSearch::largestItems(tree, *below, kindsFor(AgentPlaces::argument(request.arguments, "kind").value_or("file")), minimum, pattern,
        age, static_cast<int>(std::min<long long>(start + limit, maximumCursor)));
    FindAnswer answer { ScopeResolver::displayPath(tree.path(*below)), found.matchCount, found.matchedBytes, found.matchedIncomplete,
        view->stillScanning, start, {} };
    for (std::size_t i = static_cast<std::size_t>(start); i < found.items.size() && answer.items.size() < static_cast<std::size_t>(limit); ++i) {
        NodeID node = found.items[i].node;
        answer.items.push_back(FindAnswer::Item { ScopeResolver::displayPath(tree.path(node)), tree.allocatedSize(node), tree.logicalSize(node),
            tree.isIncomplete(node), tree.lastChangeInside(node), HardLinkNote::text(tree, node), HardLinkNote::countedAt(tree, node) });
    }
    return answer;
}

}
