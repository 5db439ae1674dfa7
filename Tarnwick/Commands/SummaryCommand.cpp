#include "AppCommands.hpp"

#include "AgentPlaces.hpp"
#include "Geometry/VolumeCapacity.hpp"
#include "Platform/VolumeIdentity.hpp"
#include "Scanning/NodeStatus.hpp"
#include "Scanning/ScopeResolver.hpp"
#include "TreeQueries/FolderSummary.hpp"
#include "TreeQueries/HardLinkNote.hpp"

#include <algorithm>

namespace tarnwick::AppCommands {

namespace {

constexpr int defaultLimit = 20;

std::optional<std::string> statusWord(const ScanTree& tree, NodeID node)
{
    auto word = NodeStatus::word(tree, node);
    return word ? std::optional<std::string>(*word) : std::nullopt;
}

// The disk's figures, for a finished scan of a whole disk.
std::optional<SummaryAnswer::Disk> diskFacts(const ScanTree& tree, const ScanView& view)
{
    if (view.scope.kind == SourceKind::folder || view.stillScanning)
        return std::nullopt;
    std::optional<VolumeIdentity::Space> space = VolumeIdentity::space(tree.rootPath());
    if (!space)
        return std::nullopt;
    VolumeCapacity capacity { space->total, space->available, space->reserved };
    return SummaryAnswer::Disk { capacity.total, capacity.available, capacity.reserved, capacity.unaccounted(tree.allocatedSize(NodeID::root())) };
}

std::optional<std::vector<ContentShare>> contentTypes(const ScanView& view, NodeID folder)
{
    if (!view.content)
        return std::nullopt;
    std::vector<ContentShare> shares = view.content->shares(folder);
    std::sort(shares.begin(), shares.end(), [](const ContentShare& a, const ContentShare& b) { return a.bytes > b.bytes; });
    return shares;
}

SummaryAnswer::Item itemOf(const ScanTree& tree, const FolderSummary::Entry& entry)
{
    return SummaryAnswer::Item {
        .name = entry.name,
        .path = ScopeResolver::displayPath(tree.path(entry.node)),
        .kind = entry.kind,
        .allocated = entry.allocated,
        .logical = entry.logical,
        .share = entry.share,
        .incomplete = entry.incomplete,
        .status = statusWord(tree, entry.node),
        .lastChangeInside = tree.lastChangeInside(entry.node),
        .oldestItem = tree.oldestItem(entry.node),
        .hardLinkNote = HardLinkNote::text(tree, entry.node),
        .hardLinkCountedAt = HardLinkNote::countedAt(tree, entry.node),
    };
}

}

Answered<SummaryAnswer> summary(const AppModel& model, const AgentCommands::Request& request)
{
    auto view = AgentPlaces::scanView(model);
    if (!view)
        return std::unexpected(view.error());
    auto found = AgentPlaces::scannedNode(*view, AgentPlaces::argument(request.arguments, "path"));
    if (!found)
        return std::unexpected(found.error());
    NodeID folder = *found;
    const ScanTree& tree = *view->tree;
    int limit = static_cast<int>(AgentPlaces::integer(request.arguments, "limit", defaultLimit));
    FolderSummary contents = FolderSummary::make(tree, folder, limit);
    bool atRoot = folder == NodeID::root();
    bool finishedRoot = atRoot && !view->stillScanning;
    std::optional<std::int64_t> before = model.sizeBeforeRescan();

    SummaryAnswer answer {
        .path = ScopeResolver::displayPath(tree.path(folder)),
        .kind = tree.kind(folder),
        .allocated = contents.allocated,
        .logical = contents.logical,
        .incomplete = contents.incomplete || view->stillScanning,
        .logicalIncomplete = tree.flags(folder).contains(NodeFlag::logicalIncomplete),
        .stillScanning = view->stillScanning,
        .childCount = static_cast<std::int64_t>(contents.childCount),
        .itemsInAll = atRoot ? std::optional(static_cast<std::int64_t>(tree.count() - 1)) : std::nullopt,
        .status = statusWord(tree, folder),
        .lastChangeInside = tree.lastChangeInside(folder),
        .oldestItem = tree.oldestItem(folder),
        .sizeBeforeRescan = finishedRoot ? before : std::nullopt,
        .disk = finishedRoot ? diskFacts(tree, *view) : std::nullopt,
        .contentTypes = contentTypes(*view, folder),
        .facts = PlaceFacts::make(view->tree, folder, view->content, view->owners),
        .items = {},
        .otherCount = static_cast<std::int64_t>(contents.otherCount),
        .otherAllocated = contents.otherAllocated,
        .unreadablePlaces = 0,
    };
    for (const FolderSummary::Entry& entry : contents.entries)
        answer.items.push_back(itemOf(tree, entry));
    for (const ScanIssue& issue : tree.issues())
        answer.unreadablePlaces += issue.node == folder || tree.isAncestor(folder, issue.node) ? 1 : 0;
    return answer;
}

}
