#include "AppCommands.hpp"

#include "Agent/AgentErrorCode.hpp"
#include "Agent/AgentFormat.hpp"
#include "Agent/OutputLimit.hpp"
#include "AgentPlaces.hpp"
#include "Classification/ContentCategory.hpp"
#include "Geometry/VolumeCapacity.hpp"
#include "Platform/VolumeIdentity.hpp"
#include "Scanning/NodeStatus.hpp"
#include "Scanning/ScopeResolver.hpp"
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
        { "path", ScopeResolver::displayPath(tree.path(entry.node)) },
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
void addContentTypes(const AppModel& model, NodeID folder, std::string& text, JSONValue::Object& json)
{
    const auto& content = model.result()->content;
    if (!content) {
        json["content_types"] = JSONValue();
        return;
    }
    std::vector<ContentShare> shares = content->shares(folder);
    std::sort(shares.begin(), shares.end(), [](const ContentShare& a, const ContentShare& b) { return a.bytes > b.bytes; });
    std::int64_t total = model.result()->tree->allocatedSize(folder);
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

void addDiskFacts(const ScanTree& tree, const AppModel& model, std::string& text, JSONValue::Object& json)
{
    json["capacity_bytes"] = JSONValue();
    json["available_bytes"] = JSONValue();
    json["reserved_bytes"] = JSONValue();
    json["unaccounted_bytes"] = JSONValue();
    if (model.result()->scope.kind == SourceKind::folder)
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

AgentResult summaryAnswer(const AppModel& model, NodeID folder, int limit, bool shrunk)
{
    const ScanTree& tree = *model.result()->tree;
    FolderSummary summary = FolderSummary::make(tree, folder, limit);
    std::string path = ScopeResolver::displayPath(tree.path(folder));
    std::string text = path + ": " + AgentFormat::size(summary.allocated, summary.incomplete) + " on disk, "
        + AgentFormat::size(summary.logical, tree.flags(folder).contains(NodeFlag::logicalIncomplete)) + " logical, "
        + std::to_string(summary.childCount) + " items inside"
        + (folder == NodeID::root() ? ", " + std::to_string(tree.count() - 1) + " in all." : ".");
    JSONValue::Object json {
        { "path", path },
        { "kind", std::string(kindWord(tree.kind(folder))) },
        { "size_bytes", summary.allocated },
        { "logical_bytes", summary.logical },
        { "incomplete", summary.incomplete },
        { "item_count", static_cast<std::int64_t>(summary.childCount) },
        { "status", statusValue(tree, folder) },
        { "last_change_inside", AgentFormat::isoDate(tree.lastChangeInside(folder)) },
        { "oldest_item", AgentFormat::isoDate(tree.oldestItem(folder)) },
        { "size_before_bytes", model.sizeBeforeRescan() && folder == NodeID::root() ? JSONValue(*model.sizeBeforeRescan()) : JSONValue() },
    };
    if (model.sizeBeforeRescan() && folder == NodeID::root())
        text += "\nBefore the rescan: " + AgentFormat::size(*model.sizeBeforeRescan()) + ".";
    if (folder == NodeID::root())
        addDiskFacts(tree, model, text, json);
    addContentTypes(model, folder, text, json);
    JSONValue::Array items;
    int rank = 0;
    for (const FolderSummary::Entry& entry : summary.entries) {
        items.push_back(itemJSON(tree, entry));
        auto status = NodeStatus::word(tree, entry.node);
        auto note = HardLinkNote::text(tree, entry.node);
        text += "\n" + std::to_string(++rank) + ". " + entry.name + (isContainer(entry.kind) ? "/" : "") + "  "
            + AgentFormat::size(entry.allocated, entry.incomplete) + "  " + AgentFormat::percent(entry.share)
            + (status ? "  (" + std::string(*status) + ")" : "") + (note ? "  (" + *note + ")" : "");
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
        text += "\nListed " + std::to_string(summary.entries.size()) + " items to fit 8 KB; ask about a folder for more.";
    return AgentResult::success(text, JSONValue(json));
}

}

AgentResult summary(const AppModel& model, const AgentCommands::Request& request)
{
    auto folder = AgentPlaces::scannedNode(model, AgentPlaces::argument(request.arguments, "path"));
    if (!folder)
        return folder.error();
    int limit = static_cast<int>(AgentPlaces::integer(request.arguments, "limit", defaultLimit));
    int available = std::min(limit, static_cast<int>(model.result()->tree->childCount(*folder)));
    auto fitting = AgentFormat::largestFitting(available, [&](int shown) { return summaryAnswer(model, *folder, shown, shown < available); });
    if (!fitting)
        return AgentResult::failure(AgentErrorCode::outputTooLarge, OutputLimit::summaryTooLarge);
    return *fitting;
}

}
