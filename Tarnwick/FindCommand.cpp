#include "AppCommands.hpp"

#include "Agent/AgentErrorCode.hpp"
#include "Agent/AgentFormat.hpp"
#include "TreeQueries/HardLinkNote.hpp"
#include "Agent/OutputLimit.hpp"
#include "AgentPlaces.hpp"
#include "Scanning/ScopeResolver.hpp"
#include "TreeQueries/TreeSearch.hpp"

namespace tarnwick::AppCommands {

namespace {

constexpr int defaultLimit = 20;

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

struct Page {
    const ScanTree& tree;
    std::string below;
    const TreeSearch::Found& found;
    std::size_t start;
};

AgentResult pageAnswer(const Page& page, std::size_t shown)
{
    std::size_t end = std::min(page.found.items.size(), page.start + shown);
    JSONValue::Array items;
    std::string text = std::to_string(page.found.matchCount) + " items below " + page.below + " match, "
        + AgentFormat::size(page.found.matchedBytes, page.found.matchedIncomplete) + " in all.";
    for (std::size_t i = page.start; i < end; ++i) {
        NodeID node = page.found.items[i].node;
        bool lowerBound = page.tree.isIncomplete(node);
        std::string path = ScopeResolver::displayPath(page.tree.path(node));
        std::optional<std::string> countedAt = HardLinkNote::countedAt(page.tree, node);
        items.push_back(JSONValue::Object { { "path", path }, { "size_bytes", page.tree.allocatedSize(node) },
            { "logical_bytes", page.tree.logicalSize(node) }, { "incomplete", lowerBound },
            { "last_change_inside", AgentFormat::isoDate(page.tree.lastChangeInside(node)) },
            { "hard_link_counted_at", countedAt ? JSONValue(*countedAt) : JSONValue() } });
        text += "\n" + AgentFormat::size(page.tree.allocatedSize(node), lowerBound) + "  " + path;
        if (auto note = HardLinkNote::text(page.tree, node))
            text += "  (" + *note + ")";
    }
    bool more = static_cast<std::int64_t>(end) < page.found.matchCount;
    JSONValue cursor = more ? JSONValue(std::to_string(end)) : JSONValue();
    if (more)
        text += "\nMore with --cursor " + std::to_string(end) + ".";
    return AgentResult::success(text,
        JSONValue(JSONValue::Object { { "path", page.below }, { "match_count", page.found.matchCount }, { "matched_bytes", page.found.matchedBytes },
            { "incomplete", page.found.matchedIncomplete },
            { "items", items }, { "next_cursor", cursor } }));
}

}

AgentResult find(const AppModel& model, const AgentCommands::Request& request)
{
    auto below = AgentPlaces::scannedNode(model, AgentPlaces::argument(request.arguments, "path"));
    if (!below)
        return below.error();
    std::optional<NamePattern> pattern;
    if (auto name = AgentPlaces::argument(request.arguments, "name")) {
        auto compiled = NamePattern::compile(*name);
        if (!compiled)
            return AgentResult::failure(AgentErrorCode::invalidArgument, std::string(NamePattern::message(compiled.error())));
        pattern = std::move(*compiled);
    }
    TreeSearch::AgeFilter age;
    if (auto days = AgentPlaces::argument(request.arguments, "older_than_days"))
        age.changedBefore = std::chrono::system_clock::now() - std::chrono::days(std::stoll(*days));
    long long start = 0;
    if (auto cursor = AgentPlaces::argument(request.arguments, "cursor")) {
        char* end = nullptr;
        start = std::strtoll(cursor->c_str(), &end, 10);
        if (cursor->empty() || *end != '\0' || start < 0)
            return AgentResult::failure(AgentErrorCode::invalidArgument, "The cursor " + *cursor + " is not one find printed.");
    }
    int limit = static_cast<int>(AgentPlaces::integer(request.arguments, "limit", defaultLimit));
    std::int64_t minimum = AgentPlaces::integer(request.arguments, "min_size", 0);
    const ScanTree& tree = *model.result()->tree;
    auto found = TreeSearch::largestItems(tree, *below, kindsFor(AgentPlaces::argument(request.arguments, "kind").value_or("file")), minimum, pattern,
        age, static_cast<int>(std::min<long long>(start + limit, 1'000'000)));
    Page page { tree, ScopeResolver::displayPath(tree.path(*below)), found, static_cast<std::size_t>(start) };
    auto fitting = AgentFormat::largestFitting(limit, [&](int shown) { return pageAnswer(page, static_cast<std::size_t>(shown)); });
    if (!fitting || (fitting->structured && limit > 0 && found.items.size() > page.start && fitting->text.find('\n') == std::string::npos))
        return AgentResult::failure(AgentErrorCode::outputTooLarge, OutputLimit::findPathTooLong);
    return *fitting;
}

}
