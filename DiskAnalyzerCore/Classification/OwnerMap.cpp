#include "Classification/OwnerMap.hpp"

#include "Scanning/ScanTree.hpp"
#include "Support/SaturatingMath.hpp"

#include <algorithm>
#include <span>

namespace tarnwick {

namespace {

// Owner numbers shifted so that the system and no owner index a vector too.
constexpr std::int32_t ownerOffset = 2;
std::size_t slot(OwnerPlaces::Owner owner) { return static_cast<std::size_t>(owner + ownerOffset); }

// Each owner's own bytes, from the nodes' owners: a node whose owner differs from its
// parent's moves its whole size from the parent's owner to its own.
std::vector<std::int64_t> ownerTotals(const ScanTree& tree, const std::vector<OwnerPlaces::Owner>& owners, std::size_t appCount)
{
    std::vector<std::int64_t> totals(appCount + ownerOffset, 0);
    std::span<const std::int64_t> sizes = tree.allocatedSizes();
    std::span<const std::int32_t> parents = tree.parents();
    totals[slot(owners[0])] = sizes[0];
    for (std::size_t node = 1; node < owners.size(); ++node) {
        OwnerPlaces::Owner parentOwner = owners[static_cast<std::size_t>(parents[node])];
        if (owners[node] == parentOwner)
            continue;
        SaturatingMath::add(totals[slot(owners[node])], sizes[node]);
        SaturatingMath::add(totals[slot(parentOwner)], -sizes[node]);
    }
    // Sizes that saturated or were read unknown can leave a parent smaller than its children.
    for (std::int64_t& total : totals)
        total = std::max<std::int64_t>(total, 0);
    return totals;
}

// The apps that hold bytes, largest first (by id on equal bytes).
std::vector<std::int32_t> appsBySize(const std::vector<std::int64_t>& totals, const OwnerIndex& index)
{
    std::vector<std::int32_t> apps;
    for (std::size_t app = 0; app < index.apps().size(); ++app) {
        if (totals[app + ownerOffset] > 0)
            apps.push_back(static_cast<std::int32_t>(app));
    }
    const std::vector<OwnerIndex::App>& entries = index.apps();
    std::sort(apps.begin(), apps.end(), [&](std::int32_t a, std::int32_t b) {
        std::int64_t bytesA = totals[slot(a)];
        std::int64_t bytesB = totals[slot(b)];
        return bytesA != bytesB ? bytesA > bytesB : entries[static_cast<std::size_t>(a)].id < entries[static_cast<std::size_t>(b)].id;
    });
    return apps;
}

}

OwnerMap OwnerMap::build(const ScanTree& tree, const OwnerPlaces& places, Options options)
{
    const OwnerIndex& index = places.index();
    const auto count = static_cast<std::size_t>(tree.count());
    std::vector<OwnerPlaces::Owner> owners(count, OwnerPlaces::noOwner);
    if (count > 0) {
        // The states live only through the pass: 2 bytes a node.
        std::vector<OwnerPlaces::State> states(count);
        OwnerPlaces::Step root = places.start(tree.rootPath());
        states[0] = root.state;
        owners[0] = root.owner;
        std::span<const std::int32_t> parents = tree.parents();
        for (std::size_t node = 1; node < count; ++node) {
            auto parent = static_cast<std::size_t>(parents[node]);
            if (states[parent] == OwnerPlaces::settled) {
                owners[node] = owners[parent];
                continue;
            }
            OwnerPlaces::Step step = places.step({ states[parent], owners[parent] }, tree.name(NodeID { static_cast<std::int32_t>(node) }));
            states[node] = step.state;
            owners[node] = step.owner;
        }
    }
    std::vector<std::int64_t> totals = ownerTotals(tree, owners, index.apps().size());
    const std::int64_t treeBytes = count > 0 ? tree.allocatedSize(NodeID::root()) : 0;
    const double threshold = options.minimumShare * static_cast<double>(treeBytes);

    // The largest apps make groups of their own as long as they are large enough.
    std::vector<std::int32_t> apps = appsBySize(totals, index);
    std::size_t keptCount = 0;
    // Three buckets follow the apps, and a bucket map has at most 254.
    const std::size_t maximumOwners = std::min<std::size_t>(options.maximumOwners, 251);
    while (keptCount < apps.size() && keptCount < maximumOwners
        && static_cast<double>(totals[slot(apps[keptCount])]) >= threshold)
        ++keptCount;
    const auto systemBucket = static_cast<std::uint8_t>(keptCount);
    const auto otherBucket = static_cast<std::uint8_t>(keptCount + 2);

    OwnerMap map;
    std::vector<std::uint8_t> bucketOfOwner(totals.size(), 0);
    std::int64_t otherBytes = 0;
    for (std::size_t rank = 0; rank < apps.size(); ++rank) {
        const OwnerIndex::App& entry = index.apps()[static_cast<std::size_t>(apps[rank])];
        Owner owner { ColorGroup::owner(entry.id), entry.displayName, totals[slot(apps[rank])] };
        if (rank < keptCount) {
            bucketOfOwner[slot(apps[rank])] = static_cast<std::uint8_t>(rank);
            map.m_owners.push_back(std::move(owner));
        } else {
            bucketOfOwner[slot(apps[rank])] = otherBucket;
            SaturatingMath::add(otherBytes, owner.bytes);
            map.m_folded.push_back(std::move(owner));
        }
    }
    bucketOfOwner[slot(OwnerPlaces::system)] = systemBucket;
    bucketOfOwner[slot(OwnerPlaces::noOwner)] = static_cast<std::uint8_t>(systemBucket + 1);
    map.m_owners.push_back({ ColorGroup::macOS(), index.systemName(), totals[slot(OwnerPlaces::system)] });
    map.m_owners.push_back({ ColorGroup::noOwner(), std::string(noOwnerName), totals[slot(OwnerPlaces::noOwner)] });
    map.m_owners.push_back({ ColorGroup::otherApps(), std::string(otherAppsName), otherBytes });

    map.m_nodeBuckets.resize(count);
    for (std::size_t node = 0; node < count; ++node)
        map.m_nodeBuckets[node] = bucketOfOwner[slot(owners[node])];
    return map;
}

std::optional<int> OwnerMap::bucket(const ColorGroup& group) const
{
    for (std::size_t bucket = 0; bucket < m_owners.size(); ++bucket) {
        if (m_owners[bucket].group == group)
            return static_cast<int>(bucket);
    }
    return std::nullopt;
}

std::optional<std::string_view> OwnerMap::displayName(const ColorGroup& group) const
{
    for (const std::vector<Owner>* list : { &m_owners, &m_folded }) {
        for (const Owner& owner : *list) {
            if (owner.group == group)
                return std::string_view(owner.displayName);
        }
    }
    return std::nullopt;
}

OwnerBuckets::Assignment OwnerMap::assignment() const
{
    OwnerBuckets::Assignment assignment;
    for (const Owner& owner : m_owners)
        assignment.groups.push_back(owner.group);
    // A file's bucket and a folder's own bytes both go to the node's owner.
    assignment.categories = m_nodeBuckets;
    assignment.fallbacks = m_nodeBuckets;
    assignment.unknown = static_cast<int>(m_owners.size()) - 2;
    return assignment;
}

std::shared_ptr<const OwnerBuckets> OwnerMap::buckets(std::shared_ptr<const ScanTree> tree) const
{
    return OwnerBuckets::build(std::move(tree), assignment());
}

}
