#include "History/SnapshotTree.hpp"

#include "Classification/RestBuckets.hpp"
#include "History/Snapshot.hpp"
#include "Scanning/ScanTree.hpp"
#include "Scanning/TreeBuilder.hpp"

#include <algorithm>

namespace tarnwick::SnapshotTree {

namespace {

// A local day back to the tree's stored seconds, at midday so that no offset of the zone
// moves it to a neighbouring day.
std::int32_t storedSeconds(std::int32_t day, const TimeZone& zone)
{
    if (day == Snapshot::unknownDay)
        return TreeDate::noDate;
    std::int64_t local = static_cast<std::int64_t>(day) * 86'400 + 43'200;
    std::int64_t offset = zone.offsetFromGMT(local + TreeDate::referenceUnixSeconds);
    return TreeDate::encodeUnixSeconds(local - offset + TreeDate::referenceUnixSeconds);
}

std::string_view lastComponent(std::string_view path)
{
    while (path.size() > 1 && path.back() == '/')
        path.remove_suffix(1);
    std::size_t slash = path.rfind('/');
    return slash == std::string_view::npos || path.size() == 1 ? path : path.substr(slash + 1);
}

template<typename T>
T at(const std::vector<T>& column, std::size_t index, T fallback)
{
    return index < column.size() ? column[index] : fallback;
}

}

std::shared_ptr<const ScanTree> make(const Snapshot& snapshot, const TimeZone& zone)
{
    const auto n = static_cast<std::size_t>(snapshot.nodeCount());
    const bool withLogical = snapshot.hasColors && snapshot.logical.size() == n;
    // What each node's kept children account for, so that the rest becomes the node's own.
    std::vector<std::int64_t> childBytes(n, 0), childLogical(n, 0);
    std::vector<bool> incompleteChild(n, false);
    for (std::size_t i = 1; i < n; ++i) {
        auto parent = static_cast<std::size_t>(snapshot.parents[i]);
        childBytes[parent] += snapshot.size(static_cast<std::int32_t>(i));
        childLogical[parent] += at(snapshot.logical, i, std::int64_t { 0 });
        incompleteChild[parent] = incompleteChild[parent] || snapshot.flags[i].contains(NodeFlag::incomplete);
    }

    TreeBuilder builder(lastComponent(snapshot.rootPath), n > 0 ? snapshot.kinds[0] : NodeKind::directory, std::nullopt, n);
    for (std::size_t i = 0; i < n; ++i) {
        NodeID node { static_cast<std::int32_t>(i) };
        std::int32_t modified = storedSeconds(at(snapshot.lastChangeDays, i, Snapshot::unknownDay), zone);
        std::int32_t created = storedSeconds(snapshot.ownCreationDay(static_cast<std::int32_t>(i)).value_or(Snapshot::unknownDay), zone);
        bool hidden = at(snapshot.hidden, i, false);
        if (i > 0) {
            builder.addNode(NodeID { snapshot.parents[i] }, snapshot.names[i], snapshot.kinds[i], std::nullopt, std::nullopt, 0, modified,
                created, hidden);
        } else {
            builder.setMetadata(node, TreeDate::decode(modified), TreeDate::decode(created), hidden);
        }
        std::int64_t own = std::max<std::int64_t>(0, snapshot.size(static_cast<std::int32_t>(i)) - childBytes[i]);
        std::int64_t ownLogical = withLogical ? std::max<std::int64_t>(0, snapshot.logical[i] - childLogical[i]) : 0;
        // A folder that a scan read only in part, with no kept child to carry that, is a lower
        // bound by itself.
        bool unknownInside = snapshot.flags[i].contains(NodeFlag::incomplete) && !incompleteChild[i];
        builder.addSizesWithoutNodes(node, own, ownLogical, unknownInside);
        if (snapshot.flags[i].contains(NodeFlag::contentsUnread))
            builder.markContentsUnready(node);
    }
    // Rests even without colours (then without parts): they tell the map that a folder's
    // bytes beyond its kept children are files and folders the snapshot did not keep.
    auto rests = std::make_shared<const RestBuckets>(snapshot.hasColors ? snapshot.restContent.buckets() : RestBuckets {});
    auto tree = std::move(builder).finalize(snapshot.rootPath, snapshot.coverage, TreeBuilder::Metadata::included, std::move(rests));
    return tree;
}

}
