#include "AppCommands.hpp"

#include "Agent/AgentErrorCode.hpp"
#include "Agent/AgentFormat.hpp"
#include "Agent/EchoedText.hpp"
#include "Agent/OutputLimit.hpp"
#include "AgentPlaces.hpp"
#include "Classification/ContentCategory.hpp"
#include "Geometry/VolumeCapacity.hpp"
#include "Platform/VolumeIdentity.hpp"
#include "PlaceFacts.hpp"
#include "Scanning/NodeStatus.hpp"
#include "Scanning/ScopeResolver.hpp"
#include "Support/Phrases.hpp"
#include "TreeQueries/FolderSummary.hpp"
#include "TreeQueries/HardLinkNote.hpp"

namespace tarnwick::AppCommands {

namespace {

constexpr int defaultLimit = 20;

std::string_view kindWord(NodeKind kind)
{
    switch (kind) {
    case NodeKind::directory:
        return "folder";
    case NodeKind::package:
        return "package";
    case NodeKind::file:
        return "file";
    case NodeKind::symlink:
        return "symlink";
    case NodeKind::alias:
        return "alias";
    case NodeKind::mountPoint:
        return "mount_point";
    case NodeKind::other:
        return "other";
    }
    return "other";
}

JSONValue statusValue(const ScanTree& tree, NodeID node)
{
    auto word = NodeStatus::word(tree, node);
    return word ? JSONValue(std::string(*word)) : JSONValue();
}

JSONValue::Object itemJSON(const ScanTree& tree, const FolderSummary::Entry& entry)
{
    return JSONValue::Object {
        { "name", entry.name },
        { "path", EchoedText::shortened(ScopeResolver::displayPath(tree.path(entry.node))) },
        { "kind", std::string(kindWord(entry.kind)) },
        { "size_bytes", entry.allocated },
        { "logical_bytes", entry.logical },
        { "share", entry.share },
        { "incomplete", entry.incomplete },
        { "status", statusValue(tree, entry.node) },
        { "last_change_inside", AgentFormat::isoDate(tree.lastChangeInside(entry.node)) },
        { "oldest_item", AgentFormat::isoDate(tree.oldestItem(entry.node)) },
        { "hard_link_counted_at", [&] { auto at = HardLinkNote::countedAt(tree, entry.node); return at ? JSONValue(*at) : JSONValue(); }() },
    };
}

// The content types of the folder, largest first, for the text and the JSON.
double shareOf(std::int64_t bytes, std::int64_t total)
{
    return total > 0 ? static_cast<double>(bytes) / static_cast<double>(total) : 0;
}

void addContentTypes(const ScanView& view, NodeID folder, std::string& text, JSONValue::Object& json)
{
    const ContentMap* content = view.analysis ? view.analysis->content().get() : nullptr;
    if (!content) {
        json["content_types"] = JSONValue();
        return;
    }
    std::vector<ContentShare> shares = content->shares(folder);
    std::sort(shares.begin(), shares.end(), [](const ContentShare& a, const ContentShare& b) { return a.bytes > b.bytes; });
    std::int64_t total = view.tree->allocatedSize(folder);
    JSONValue::Array types;
    std::string line;
    for (const ContentShare& share : shares) {
        double fraction = total > 0 ? static_cast<double>(share.bytes) / static_cast<double>(total) : 0;
        types.push_back(JSONValue::Object { { "type", std::string(ContentCategories::agentKey(share.category)) }, { "size_bytes", share.bytes },
            { "share", fraction } });
        if (types.size() <= 5)
            line += (line.empty() ? "" : ", ") + std::string(ContentCategories::displayLabel(share.category)) + " " + AgentFormat::percent(fraction);
    }
    json["content_types"] = types;
    if (!line.empty())
        text += "\nContent: " + line + ".";
}

void addOwnersCachesHidden(const PlaceFacts& facts, std::int64_t total, std::string& text, JSONValue::Object& json)
{
    json["owners"] = JSONValue();
    if (facts.owners) {
        JSONValue::Array owners;
        std::string line;
        for (const PlaceFacts::Share& owner : *facts.owners) {
            double share = shareOf(owner.bytes, total);
            owners.push_back(JSONValue::Object { { "key", owner.key }, { "label", owner.label }, { "size_bytes", owner.bytes }, { "share", share } });
            if (owners.size() <= 3)
                line += (line.empty() ? "" : ", ") + EchoedText::visible(owner.label) + " " + AgentFormat::percent(share);
        }
        json["owners"] = owners;
        if (!line.empty())
            text += "\nOwners: " + line + ".";
    }
    auto addShare = [&](const std::optional<std::int64_t>& bytes, const std::string& key, const std::string& title) {
        json[key + "_bytes"] = bytes ? JSONValue(*bytes) : JSONValue();
        json[key + "_share"] = bytes ? JSONValue(shareOf(*bytes, total)) : JSONValue();
        return bytes ? title + " " + AgentFormat::size(*bytes) + " (" + AgentFormat::percent(shareOf(*bytes, total)) + ")" : std::string();
    };
    std::string caches = addShare(facts.cacheBytes, "cache", "Caches");
    std::string hidden = addShare(facts.hiddenBytes, "hidden", "hidden");
    if (!caches.empty() && !hidden.empty())
        text += "\n" + caches + ", " + hidden + ".";
    else if (!hidden.empty())
        text += "\nHidden: " + hidden.substr(7) + ".";
}

void addRatios(const PlaceFacts& facts, std::string& text, JSONValue::Object& json)
{
    json["ratio"] = facts.ratio.ratio ? JSONValue(*facts.ratio.ratio) : JSONValue();
    auto list = [&](const std::vector<TypeGroups::Ratio>& ratios, std::string& line) {
        JSONValue::Array array;
        for (const TypeGroups::Ratio& ratio : ratios) {
            array.push_back(JSONValue::Object { { "path", EchoedText::shortened(ratio.path) }, { "size_bytes", ratio.allocated },
                { "logical_bytes", ratio.logical }, { "ratio", ratio.ratio ? JSONValue(*ratio.ratio) : JSONValue() } });
            line += (line.empty() ? "" : ", ") + EchoedText::shown(ratio.path, 200) + " " + Phrases::ratio(ratio.ratio);
        }
        return array;
    };
    std::string low;
    std::string high;
    json["ratio_lowest"] = list(facts.lowest, low);
    json["ratio_highest"] = list(facts.highest, high);
    text += "\nOn disk / size: " + Phrases::ratio(facts.ratio.ratio) + ".";
    if (!low.empty())
        text += " Far less on disk (sparse or compressed): " + low + ".";
    if (!high.empty())
        text += " Far more on disk (small files): " + high + ".";
}

void addDiskFacts(const ScanTree& tree, const ScanView& view, std::string& text, JSONValue::Object& json)
{
    json["capacity_bytes"] = JSONValue();
    json["available_bytes"] = JSONValue();
    json["reserved_bytes"] = JSONValue();
    json["unaccounted_bytes"] = JSONValue();
    if (view.scope.kind == SourceKind::folder || view.stillScanning)
        return;
    std::optional<VolumeIdentity::Space> space = VolumeIdentity::space(tree.rootPath());
    if (!space)
        return;
    VolumeCapacity capacity { space->total, space->available, space->reserved };
    std::int64_t unaccounted = capacity.unaccounted(tree.allocatedSize(NodeID::root()));
    json["capacity_bytes"] = capacity.total;
    json["available_bytes"] = capacity.available;
    json["reserved_bytes"] = capacity.reserved;
    json["unaccounted_bytes"] = unaccounted;
    text += "\nDisk: " + AgentFormat::size(capacity.total) + ", " + AgentFormat::size(capacity.available) + " available; "
        + AgentFormat::size(unaccounted) + " used that the scan doesn't account for. Reserved for the system: "
        + AgentFormat::size(capacity.reserved) + ".";
}

struct SummaryInput {
    const AppModel& model;
    const ScanView& view;
    NodeID folder;
    const PlaceFacts& facts;
};

std::string headline(const SummaryInput& input, const FolderSummary& summary, const std::string& path)
{
    const ScanTree& tree = *input.view.tree;
    bool lowerBound = summary.incomplete || input.view.stillScanning;
    std::int64_t inAll = static_cast<std::int64_t>(tree.count() - 1);
    std::string text = EchoedText::shown(path) + ": " + AgentFormat::size(summary.allocated, lowerBound) + " on disk, "
        + AgentFormat::size(summary.logical, lowerBound || tree.flags(input.folder).contains(NodeFlag::logicalIncomplete)) + " logical, "
        + AgentFormat::counted(static_cast<std::int64_t>(summary.childCount), "item", "items") + " inside"
        + (input.folder == NodeID::root() ? ", " + std::to_string(inAll) + " in all." : ".");
    if (input.view.stillScanning)
        text += "\nThe scan is still running: these are what it has found so far, and sizes are lower bounds (≥). Run wait for the full answer.";
    return text;
}

AgentResult summaryAnswer(const SummaryInput& input, int limit, bool shrunk)
{
    const ScanView& view = input.view;
    const ScanTree& tree = *view.tree;
    NodeID folder = input.folder;
    bool atRoot = folder == NodeID::root() && !view.stillScanning;
    std::optional<std::int64_t> before = input.model.sizeBeforeRescan();
    FolderSummary summary = FolderSummary::make(tree, folder, limit);
    std::string path = ScopeResolver::displayPath(tree.path(folder));
    std::string text = headline(input, summary, path);
    JSONValue::Object json {
        { "path", EchoedText::shortened(path) },
        { "kind", std::string(kindWord(tree.kind(folder))) },
        { "size_bytes", summary.allocated },
        { "logical_bytes", summary.logical },
        { "incomplete", summary.incomplete || view.stillScanning },
        { "still_scanning", view.stillScanning },
        { "item_count", static_cast<std::int64_t>(summary.childCount) },
        { "items_in_all", input.folder == NodeID::root() ? JSONValue(static_cast<std::int64_t>(tree.count() - 1)) : JSONValue() },
        { "status", statusValue(tree, folder) },
        { "last_change_inside", AgentFormat::isoDate(tree.lastChangeInside(folder)) },
        { "oldest_item", AgentFormat::isoDate(tree.oldestItem(folder)) },
        { "size_before_bytes", before && atRoot ? JSONValue(*before) : JSONValue() },
    };
    if (before && atRoot)
        text += "\nBefore the rescan: " + AgentFormat::size(*before) + ".";
    if (atRoot)
        addDiskFacts(tree, view, text, json);
    addContentTypes(view, folder, text, json);
    addOwnersCachesHidden(input.facts, summary.allocated, text, json);
    addRatios(input.facts, text, json);
    JSONValue::Array items;
    int rank = 0;
    for (const FolderSummary::Entry& entry : summary.entries) {
        items.push_back(itemJSON(tree, entry));
        auto status = NodeStatus::word(tree, entry.node);
        auto note = HardLinkNote::text(tree, entry.node);
        text += "\n" + std::to_string(++rank) + ". " + EchoedText::visible(entry.name) + (isContainer(entry.kind) ? "/" : "") + "  "
            + AgentFormat::size(entry.allocated, entry.incomplete || view.stillScanning) + "  " + AgentFormat::percent(entry.share)
            + (status ? "  (" + std::string(*status) + ")" : "") + (note ? "  (" + EchoedText::visible(*note) + ")" : "");
    }
    json["items"] = items;
    json["other_items"] = JSONValue::Object { { "count", static_cast<std::int64_t>(summary.otherCount) }, { "size_bytes", summary.otherAllocated } };
    if (summary.otherCount > 0)
        text += "\nOther items: " + std::to_string(summary.otherCount) + ", " + AgentFormat::size(summary.otherAllocated) + ".";
    std::int64_t unreadable = 0;
    for (const ScanIssue& issue : tree.issues())
        unreadable += issue.node == folder || tree.isAncestor(folder, issue.node) ? 1 : 0;
    json["unreadable_places"] = unreadable;
    if (unreadable > 0)
        text += "\n" + std::to_string(unreadable) + (unreadable == 1 ? " place" : " places") + " here couldn't be read, so sizes marked ≥ are lower bounds.";
    json["shrunk_to_fit"] = shrunk;
    if (shrunk)
        text += "\nListed " + AgentFormat::counted(static_cast<std::int64_t>(summary.entries.size()), "item", "items") + " to fit 8 KB; ask about a folder for more.";
    return AgentResult::success(text, JSONValue(json));
}

}

AgentResult summary(const AppModel& model, const AgentCommands::Request& request)
{
    auto view = AgentPlaces::scanView(model);
    if (!view)
        return view.error();
    auto folder = AgentPlaces::scannedNode(*view, AgentPlaces::argument(request.arguments, "path"));
    if (!folder)
        return folder.error();
    int limit = static_cast<int>(AgentPlaces::integer(request.arguments, "limit", defaultLimit));
    int available = std::min(limit, static_cast<int>(view->tree->childCount(*folder)));
    PlaceFacts facts = PlaceFacts::make(view->tree, *folder, view->analysis.get());
    SummaryInput input { model, *view, *folder, facts };
    auto fitting = AgentFormat::largestFitting(available, [&](int shown) { return summaryAnswer(input, shown, shown < available); });
    if (!fitting)
        return AgentResult::failure(AgentErrorCode::outputTooLarge, OutputLimit::summaryTooLarge);
    return *fitting;
}

}
