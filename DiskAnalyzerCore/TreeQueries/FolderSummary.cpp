#include "TreeQueries/FolderSummary.hpp"

#include "Scanning/ScanTree.hpp"
#include "Support/SaturatingMath.hpp"

#include <algorithm>

namespace tarnwick {

FolderSummary FolderSummary::make(const ScanTree& tree, NodeID folder, int limit)
{
    FolderSummary summary;
    summary.node = folder;
    summary.allocated = tree.allocatedSize(folder);
    summary.logical = tree.logicalSize(folder);
    summary.incomplete = tree.isIncomplete(folder);
    summary.childCount = tree.childCount(folder);

    // The tree keeps children in display order already; nothing is sorted here.
    ScanTree::Children children = tree.children(folder);
    auto listed = static_cast<std::size_t>(std::clamp(limit, 0, summary.childCount));
    summary.entries.reserve(listed);
    for (NodeID child : children.first(listed)) {
        NodeFlags flags = tree.flags(child);
        std::int64_t allocated = tree.allocatedSize(child);
        summary.entries.push_back(Entry {
            .node = child,
            .name = std::string(tree.name(child)),
            .kind = tree.kind(child),
            .allocated = allocated,
            .logical = tree.logicalSize(child),
            .share = summary.allocated < 1 ? 0.0 : static_cast<double>(allocated) / static_cast<double>(summary.allocated),
            .incomplete = flags.contains(NodeFlag::incomplete),
            .hasIssue = flags.contains(NodeFlag::hasIssue),
        });
    }
    summary.otherCount = summary.childCount - static_cast<std::int32_t>(listed);
    for (NodeID child : children.subspan(listed))
        SaturatingMath::add(summary.otherAllocated, tree.allocatedSize(child));
    return summary;
}

}
