#include "Classification/TypeGroups.hpp"

#include "Classification/ModeBucketMaps.hpp"
#include "Classification/InstalledOwners.hpp"
#include "Classification/OwnerPlaces.hpp"
#include "Support/SaturatingMath.hpp"

#include <algorithm>
#include <numeric>
#include <unordered_set>

namespace tarnwick::TypeGroups {

namespace {

constexpr std::int64_t extremeFloor = 10'000'000; // the size snapshots keep folders from

// One mode's view of a tree: its bucket map and what each bucket is called. The caches mode
// has two groups made from the content map: the caches and everything else.
struct ModeView {
    std::shared_ptr<const BucketMap> map;
    std::vector<std::string> keys;
    std::vector<std::string> labels;
    bool cachesSplit = false;

    [[nodiscard]] std::vector<std::int64_t> totals(NodeID node) const
    {
        std::vector<std::int64_t> row = map->totals(node);
        if (!cachesSplit)
            return row;
        std::int64_t caches = row[ContentCategories::raw(ContentCategory::caches)];
        std::int64_t all = 0;
        for (std::int64_t bytes : row)
            SaturatingMath::add(all, bytes);
        return { caches, all - caches };
    }

    [[nodiscard]] int group(NodeID node) const
    {
        std::optional<int> dominant = map->dominantBucket(node);
        if (!cachesSplit)
            return dominant.value_or(-1);
        // Without a category holding half of it, the caches do not hold half either.
        return dominant == ContentCategories::raw(ContentCategory::caches) ? 0 : 1;
    }
};

std::string_view dateKey(DateGroup group)
{
    switch (group) {
    case DateGroup::today:
        return "today";
    case DateGroup::past7Days:
        return "past_7_days";
    case DateGroup::past30Days:
        return "past_30_days";
    case DateGroup::pastYear:
        return "past_year";
    case DateGroup::older:
        return "older";
    }
    return "older";
}

std::shared_ptr<const OwnerMap> ownersOf(const std::shared_ptr<const ScanTree>& tree)
{
    // The app passes the owners it made with the scan; the tool attributes them here.
    return std::make_shared<const OwnerMap>(OwnerMap::build(*tree, InstalledOwners::places()));
}

std::optional<ModeView> viewOf(const std::shared_ptr<const ScanTree>& tree, ColorMode mode, Maps& maps)
{
    ModeView view;
    switch (mode) {
    case ColorMode::contentType:
    case ColorMode::caches:
        if (!maps.content)
            maps.content = ContentMap::build(tree);
        if (!maps.content)
            return std::nullopt;
        view.map = std::shared_ptr<const BucketMap>(maps.content, &maps.content->buckets());
        view.cachesSplit = mode == ColorMode::caches;
        if (view.cachesSplit) {
            view.keys = { "caches", "not_caches" };
            view.labels = { std::string(ContentCategories::displayLabel(ContentCategory::caches)), "Everything else" };
            break;
        }
        for (ContentCategory category : allContentCategories) {
            view.keys.emplace_back(ContentCategories::agentKey(category));
            view.labels.emplace_back(ContentCategories::displayLabel(category));
        }
        break;
    case ColorMode::owner:
        if (!maps.owners)
            maps.owners = ownersOf(tree);
        if (!maps.ownerBuckets)
            maps.ownerBuckets = maps.owners->buckets(tree);
        if (!maps.ownerBuckets)
            return std::nullopt;
        view.map = std::shared_ptr<const BucketMap>(maps.ownerBuckets, &maps.ownerBuckets->buckets());
        for (const OwnerMap::Owner& owner : maps.owners->owners()) {
            view.keys.push_back(owner.group.key().value_or(owner.displayName));
            view.labels.push_back(owner.displayName);
        }
        break;
    case ColorMode::lastModified:
    case ColorMode::created: {
        bool modified = mode == ColorMode::lastModified;
        std::shared_ptr<const BucketMap>& dates = modified ? maps.modified : maps.created;
        if (!dates)
            dates = ModeBucketMaps::dates(tree, modified ? ModeBucketMaps::DateKind::modified : ModeBucketMaps::DateKind::created,
                DateGroup::Boundaries::current());
        view.map = dates;
        for (DateGroup group : allDateGroups) {
            view.keys.emplace_back(dateKey(group));
            view.labels.emplace_back(group.text(modified ? DateGroup::Form::changed : DateGroup::Form::created));
        }
        view.keys.emplace_back("no_date");
        view.labels.emplace_back("no date");
        break;
    }
    case ColorMode::hiddenFromFinder:
        if (!maps.hidden)
            maps.hidden = ModeBucketMaps::hidden(tree);
        view.map = maps.hidden;
        view.keys = { "visible", "hidden" };
        view.labels = { "Visible", "Hidden" };
        break;
    case ColorMode::onDiskVsSize:
        return std::nullopt;
    }
    if (!view.map || static_cast<int>(view.keys.size()) != (view.cachesSplit ? 2 : view.map->width()))
        return std::nullopt;
    return view;
}

// Keeps the largest entries seen, at most maximumPlaces.
struct Largest {
    std::vector<std::pair<std::int64_t, std::int32_t>> heap; // (bytes, node), smallest on top

    void offer(std::int64_t bytes, std::int32_t node)
    {
        auto greater = std::greater<> {};
        if (heap.size() < maximumPlaces) {
            heap.emplace_back(bytes, node);
            std::push_heap(heap.begin(), heap.end(), greater);
        } else if (bytes > heap.front().first) {
            std::pop_heap(heap.begin(), heap.end(), greater);
            heap.back() = { bytes, node };
            std::push_heap(heap.begin(), heap.end(), greater);
        }
    }
};

std::vector<Largest> largestPlaces(const ScanTree& tree, NodeID place, const ModeView& view, std::size_t groupCount)
{
    std::vector<Largest> largest(groupCount);
    const std::int32_t count = tree.count();
    std::span<const std::int32_t> parents = tree.parents();
    std::span<const std::int64_t> sizes = tree.allocatedSizes();
    // Parents come before their children, so one pass in node order finds everything inside.
    std::vector<std::uint8_t> inside(static_cast<std::size_t>(count), 0);
    std::vector<std::int16_t> groupOf(static_cast<std::size_t>(count), -1);
    inside[place.index()] = 1;
    groupOf[place.index()] = static_cast<std::int16_t>(view.group(place));
    for (std::int32_t node = place.value + 1; node < count; ++node) {
        std::int32_t parent = parents[static_cast<std::size_t>(node)];
        if (parent < 0 || !inside[static_cast<std::size_t>(parent)])
            continue;
        inside[static_cast<std::size_t>(node)] = 1;
        std::int64_t bytes = sizes[static_cast<std::size_t>(node)];
        if (bytes <= 0)
            continue;
        int group = view.group(NodeID { node });
        groupOf[static_cast<std::size_t>(node)] = static_cast<std::int16_t>(group);
        if (group < 0 || static_cast<std::size_t>(group) >= groupCount)
            continue;
        if (parent == place.value || groupOf[static_cast<std::size_t>(parent)] != group)
            largest[static_cast<std::size_t>(group)].offer(bytes, node);
    }
    return largest;
}

// The places of each group, measured by the group's bytes in them: the largest items that
// take the group, and the items directly inside the place that take none (mixed) but hold
// some of it, so that a group spread over mixed folders still says where it is.
std::vector<std::vector<Place>> placesByGroup(const ScanTree& tree, NodeID place, const ModeView& view, std::vector<Largest> largest)
{
    const std::size_t groupCount = largest.size();
    std::vector<std::vector<std::pair<std::int64_t, std::int32_t>>> candidates(groupCount);
    // A mixed item directly inside stands for all of the group within it.
    std::vector<std::unordered_set<std::int32_t>> mixedChildren(groupCount);
    for (NodeID child : tree.children(place)) {
        if (tree.allocatedSize(child) <= 0 || view.group(child) >= 0)
            continue;
        std::vector<std::int64_t> row = view.totals(child);
        for (std::size_t group = 0; group < std::min(groupCount, row.size()); ++group) {
            if (row[group] <= 0)
                continue;
            candidates[group].emplace_back(row[group], child.value);
            mixedChildren[group].insert(child.value);
        }
    }
    for (std::size_t group = 0; group < groupCount; ++group) {
        for (auto [size, node] : largest[group].heap) {
            std::optional<NodeID> child = tree.topmostAncestor(NodeID { node }, place);
            if (child && mixedChildren[group].contains(child->value))
                continue;
            candidates[group].emplace_back(view.totals(NodeID { node })[group], node);
        }
    }
    std::vector<std::vector<Place>> places(groupCount);
    for (std::size_t group = 0; group < groupCount; ++group) {
        auto& list = candidates[group];
        std::sort(list.begin(), list.end(), [](const auto& a, const auto& b) { return a.first != b.first ? a.first > b.first : a.second < b.second; });
        for (std::size_t i = 0; i < std::min<std::size_t>(list.size(), maximumPlaces); ++i)
            places[group].push_back(Place { tree.path(NodeID { list[i].second }), list[i].first });
    }
    return places;
}

std::optional<double> ratioOf(const ScanTree& tree, NodeID node)
{
    NodeFlags flags = tree.flags(node);
    if (tree.logicalSize(node) < 1 || flags.contains(NodeFlag::incomplete) || flags.contains(NodeFlag::logicalIncomplete))
        return std::nullopt;
    return static_cast<double>(tree.allocatedSize(node)) / static_cast<double>(tree.logicalSize(node));
}

}

std::optional<std::vector<Group>> groups(const std::shared_ptr<const ScanTree>& tree, NodeID place, ColorMode mode, Maps& maps)
{
    std::optional<ModeView> view = viewOf(tree, mode, maps);
    if (!view)
        return std::nullopt;
    std::vector<std::int64_t> totals = view->totals(place);
    std::vector<std::vector<Place>> places = placesByGroup(*tree, place, *view, largestPlaces(*tree, place, *view, totals.size()));
    std::vector<std::size_t> order(totals.size());
    std::iota(order.begin(), order.end(), 0);
    std::stable_sort(order.begin(), order.end(), [&](std::size_t a, std::size_t b) { return totals[a] > totals[b]; });
    std::vector<Group> result;
    for (std::size_t bucket : order) {
        if (totals[bucket] <= 0)
            continue;
        Group group { view->keys[bucket], view->labels[bucket], totals[bucket], std::move(places[bucket]), {} };
        if (mode == ColorMode::owner && maps.owners && view->keys[bucket] == "system:other-apps") {
            for (const OwnerMap::Owner& app : maps.owners->folded()) {
                if (group.apps.size() == maximumPlaces)
                    break;
                group.apps.push_back(Place { app.displayName, app.bytes });
            }
        }
        result.push_back(std::move(group));
    }
    return result;
}

Extremes ratios(const ScanTree& tree, NodeID place)
{
    auto ratioEntry = [&](NodeID node, std::optional<double> ratio) {
        return Ratio { tree.path(node), tree.allocatedSize(node), tree.logicalSize(node), ratio, tree.isIncomplete(node),
            tree.flags(node).contains(NodeFlag::logicalIncomplete) };
    };
    Extremes extremes { ratioEntry(place, ratioOf(tree, place)), {}, {} };
    std::vector<std::pair<double, std::int32_t>> known;
    std::vector<std::uint8_t> inside(static_cast<std::size_t>(tree.count()), 0);
    inside[place.index()] = 1;
    for (std::int32_t node = place.value + 1; node < tree.count(); ++node) {
        auto parent = tree.parents()[static_cast<std::size_t>(node)];
        if (parent < 0 || !inside[static_cast<std::size_t>(parent)])
            continue;
        inside[static_cast<std::size_t>(node)] = 1;
        NodeID id { node };
        if (std::max(tree.allocatedSize(id), tree.logicalSize(id)) < extremeFloor)
            continue;
        if (auto ratio = ratioOf(tree, id))
            known.emplace_back(*ratio, node);
    }
    auto take = [&](auto better) {
        std::size_t kept = std::min<std::size_t>(known.size(), maximumPlaces);
        std::partial_sort(known.begin(), known.begin() + static_cast<std::ptrdiff_t>(kept), known.end(), better);
        std::vector<Ratio> list;
        for (std::size_t i = 0; i < kept; ++i)
            list.push_back(ratioEntry(NodeID { known[i].second }, known[i].first));
        return list;
    };
    extremes.lowest = take([](const auto& a, const auto& b) { return a.first != b.first ? a.first < b.first : a.second < b.second; });
    extremes.highest = take([](const auto& a, const auto& b) { return a.first != b.first ? a.first > b.first : a.second < b.second; });
    return extremes;
}

}
