#include "Scanning/PreviewMaker.hpp"

#include "Support/SaturatingMath.hpp"

#include <vector>

namespace tarnwick::PreviewMaker {

namespace {

struct SubtreeTotals {
    std::vector<std::int64_t> allocated;
    std::vector<std::int64_t> logical;
    std::vector<bool> lowerBound;
};

SubtreeTotals totalsOf(const TreeBuilder& builder, const PendingFolders& pending)
{
    auto n = static_cast<std::size_t>(builder.count());
    SubtreeTotals totals { std::vector<std::int64_t>(n), std::vector<std::int64_t>(n), std::vector<bool>(n) };
    constexpr std::uint8_t unknown = static_cast<std::uint8_t>(NodeFlag::allocatedUnknown) | static_cast<std::uint8_t>(NodeFlag::logicalUnknown)
        | static_cast<std::uint8_t>(NodeFlag::contentsUnread);
    for (std::size_t i = 0; i < n; ++i) {
        NodeID node { static_cast<std::int32_t>(i) };
        totals.allocated[i] = builder.ownAllocated(node);
        totals.logical[i] = builder.ownLogical(node);
        totals.lowerBound[i] = (builder.flags(node).raw & unknown) != 0;
    }
    for (auto [folder, started] : pending)
        totals.lowerBound[static_cast<std::size_t>(folder)] = true;
    for (std::size_t i = n - 1; i >= 1; --i) {
        auto p = static_cast<std::size_t>(builder.parent(NodeID { static_cast<std::int32_t>(i) })->value);
        SaturatingMath::add(totals.allocated[p], totals.allocated[i]);
        SaturatingMath::add(totals.logical[p], totals.logical[i]);
        if (totals.lowerBound[i])
            totals.lowerBound[p] = true;
    }
    return totals;
}

std::optional<std::int64_t> ownSize(NodeFlags flags, NodeFlag unknownFlag, std::int64_t size)
{
    if (flags.contains(unknownFlag))
        return std::nullopt;
    return size;
}

}

std::shared_ptr<const ScanPreview> make(const TreeBuilder& builder, const PendingFolders& pending, const std::string& rootPath,
    std::uint64_t version, std::int32_t budget)
{
    auto n = static_cast<std::size_t>(builder.count());
    SubtreeTotals totals = totalsOf(builder, pending);
    // A place below this share of the whole would not show on the map anyway.
    std::int64_t threshold = std::max<std::int64_t>(1, totals.allocated[0] / 20000);

    NodeID root = NodeID::root();
    TreeBuilder preview(builder.name(root), builder.kind(root), builder.fileID(root), 0);
    preview.setMetadata(root, TreeDate::decode(builder.modifiedSeconds(root)), TreeDate::decode(builder.createdSeconds(root)), builder.ownHidden(root));
    std::vector<std::int32_t> mapped(n, -1);
    mapped[0] = 0;
    for (std::size_t i = 1; i < n; ++i) {
        NodeID node { static_cast<std::int32_t>(i) };
        std::int32_t parent = mapped[static_cast<std::size_t>(builder.parent(node)->value)];
        if (parent < 0)
            continue;
        NodeID into { parent };
        // Unfinished folders stay visible, however small, so the map can show where the scan is.
        bool wanted = totals.allocated[i] >= threshold || pending.contains(node.value);
        if (!wanted || preview.count() >= budget) {
            preview.addSizesWithoutNodes(into, totals.allocated[i], totals.logical[i], totals.lowerBound[i]);
            continue;
        }
        NodeFlags flags = builder.flags(node);
        NodeID added = preview.addNode(into, builder.name(node), builder.kind(node),
            ownSize(flags, NodeFlag::allocatedUnknown, builder.ownAllocated(node)), ownSize(flags, NodeFlag::logicalUnknown, builder.ownLogical(node)),
            builder.fileID(node), builder.modifiedSeconds(node), builder.createdSeconds(node), builder.ownHidden(node));
        if (flags.contains(NodeFlag::contentsUnread))
            preview.markContentsUnready(added);
        mapped[i] = added.value;
    }
    for (const ScanIssue& issue : builder.issues()) {
        std::int32_t node = mapped[issue.node.index()];
        if (node >= 0)
            preview.recordIssue(NodeID { node }, issue.kind, issue.code, issue.message);
    }
    for (auto [folder, started] : pending) {
        std::int32_t node = mapped[static_cast<std::size_t>(folder)];
        if (node < 0)
            continue;
        if (started)
            preview.markScanning(NodeID { node });
        else
            preview.markContentsUnready(NodeID { node });
    }
    auto result = std::make_shared<ScanPreview>();
    result->tree = std::move(preview).finalize(rootPath, ScanCoverage::whole(), TreeBuilder::Metadata::included);
    result->version = version;
    result->itemCount = builder.count();
    return result;
}

}
