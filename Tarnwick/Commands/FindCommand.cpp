#include "AppCommands.hpp"

#include "Agent/AgentCommands.hpp"
#include "Agent/AgentErrorCode.hpp"
#include "Agent/AgentFormat.hpp"
#include "Agent/EchoedText.hpp"
#include "Agent/OutputLimit.hpp"
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

struct Page {
    const ScanTree& tree;
    std::string below;
    const TreeSearch::Found& found;
    std::size_t start;
    bool stillScanning;
};

std::string itemsPhrase(std::int64_t count)
{
    return AgentFormat::counted(count, "item", "items");
}

AgentResult pageAnswer(const Page& page, std::size_t shown, bool shrunk)
{
    std::size_t end = std::min(page.found.items.size(), page.start + shown);
    JSONValue::Array items;
    std::string text = itemsPhrase(page.found.matchCount) + " below " + EchoedText::shown(page.below)
        + (page.found.matchCount == 1 ? " matches, " : " match, ")
        + AgentFormat::size(page.found.matchedBytes, page.found.matchedIncomplete || page.stillScanning) + " in all.";
    if (page.stillScanning)
        text += "\nThe scan is still running: these are what it has found so far (≥). Run wait for the full answer.";
    for (std::size_t i = page.start; i < end; ++i) {
        NodeID node = page.found.items[i].node;
        bool lowerBound = page.tree.isIncomplete(node);
        std::string path = ScopeResolver::displayPath(page.tree.path(node));
        std::optional<std::string> countedAt = HardLinkNote::countedAt(page.tree, node);
        items.push_back(JSONValue::Object { { "path", path }, { "size_bytes", page.tree.allocatedSize(node) },
            { "logical_bytes", page.tree.logicalSize(node) }, { "incomplete", lowerBound || page.stillScanning },
            { "last_change_inside", AgentFormat::isoDate(page.tree.lastChangeInside(node)) },
            { "hard_link_counted_at", countedAt ? JSONValue(EchoedText::shortened(*countedAt)) : JSONValue() } });
        text += "\n" + AgentFormat::size(page.tree.allocatedSize(node), lowerBound || page.stillScanning) + "  " + EchoedText::visible(path);
        if (auto note = HardLinkNote::text(page.tree, node))
            text += "  (" + EchoedText::visible(*note) + ")";
    }
    bool more = static_cast<std::int64_t>(end) < page.found.matchCount;
    JSONValue cursor = more ? JSONValue(std::to_string(end)) : JSONValue();
    if (shrunk)
        text += "\nListed " + itemsPhrase(static_cast<std::int64_t>(end - std::min(end, page.start))) + " to fit 8 KB.";
    if (more)
        text += "\nMore with --cursor " + std::to_string(end) + ".";
    return AgentResult::success(text,
        JSONValue(JSONValue::Object { { "path", EchoedText::shortened(page.below) }, { "match_count", page.found.matchCount },
            { "matched_bytes", page.found.matchedBytes }, { "incomplete", page.found.matchedIncomplete || page.stillScanning }, { "items", items }, { "next_cursor", cursor }, { "shrunk_to_fit", shrunk }, { "still_scanning", page.stillScanning } }));
}

bool pageHoldsNothing(const AgentResult& page)
{
    const JSONValue* items = page.structured ? page.structured->member("items") : nullptr;
    return items == nullptr || items->arrayValue() == nullptr || items->arrayValue()->empty();
}

}

AgentResult find(const AppModel& model, const AgentCommands::Request& request)
{
    auto view = AgentPlaces::scanView(model);
    if (!view)
        return view.error();
    auto below = AgentPlaces::scannedNode(*view, AgentPlaces::argument(request.arguments, "path"));
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
    // The parser has checked the range of the days already.
    if (auto days = AgentPlaces::argument(request.arguments, "older_than_days"))
        age.changedBefore = std::chrono::system_clock::now() - std::chrono::days(AgentCommands::parseInteger(*days).value_or(0));
    long long start = 0;
    if (auto cursor = AgentPlaces::argument(request.arguments, "cursor")) {
        std::optional<std::int64_t> number = AgentCommands::parseInteger(*cursor);
        if (!number || *number < 0 || *number > maximumCursor)
            return AgentResult::failure(AgentErrorCode::invalidArgument, "The cursor " + EchoedText::shown(*cursor) + " is not one find printed.");
        start = *number;
    }
    int limit = static_cast<int>(AgentPlaces::integer(request.arguments, "limit", defaultLimit));
    std::int64_t minimum = AgentPlaces::integer(request.arguments, "min_size", 0);
    const ScanTree& tree = *view->tree;
    auto found = TreeSearch::largestItems(tree, *below, kindsFor(AgentPlaces::argument(request.arguments, "kind").value_or("file")), minimum, pattern,
        age, static_cast<int>(std::min<long long>(start + limit, maximumCursor)));
    Page page { tree, ScopeResolver::displayPath(tree.path(*below)), found, static_cast<std::size_t>(start), view->stillScanning };
    std::size_t onPage = found.items.size() > page.start ? std::min<std::size_t>(limit, found.items.size() - page.start) : 0;
    auto fitting = AgentFormat::largestFitting(static_cast<int>(onPage), [&](int shown) {
        return pageAnswer(page, static_cast<std::size_t>(shown), static_cast<std::size_t>(shown) < onPage);
    });
    // A page that cannot hold even its first item would name the same cursor again forever.
    if (!fitting || (onPage > 0 && pageHoldsNothing(*fitting)))
        return AgentResult::failure(AgentErrorCode::outputTooLarge, OutputLimit::findPathTooLong);
    return *fitting;
}

}
