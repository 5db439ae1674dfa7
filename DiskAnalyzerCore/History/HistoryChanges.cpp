#include "History/HistoryChanges.hpp"

#include "History/PlaceComparison.hpp"
#include "History/SnapshotMatching.hpp"
#include "Support/SaturatingMath.hpp"

#include <algorithm>
#include <array>
#include <cassert>
#include <cstdlib>

namespace tarnwick::HistoryQueries {

namespace {

// Whether the node of a snapshot (none below 0) stands for a place its scan could not read in full.
bool isIncomplete(const Snapshot& snapshot, std::int32_t node)
{
    return node >= 0 && static_cast<std::size_t>(node) < snapshot.flags.size() && snapshot.flags[static_cast<std::size_t>(node)].contains(NodeFlag::incomplete);
}

std::int64_t magnitude(std::int64_t value) { return value < 0 ? (value == INT64_MIN ? INT64_MAX : -value) : value; }

// Largest change either way first; equal changes by path, so the order never depends on
// the order of the snapshots' nodes.
bool largerChangeFirst(const PlaceChange& a, const PlaceChange& b)
{
    std::int64_t ma = magnitude(a.change()), mb = magnitude(b.change());
    return ma != mb ? ma > mb : a.path < b.path;
}

void listInside(Changes& result, const PlaceComparison& comparison, std::size_t insideCount)
{
    const auto& pairs = comparison.pairs();
    std::int64_t keptBefore = 0, keptAfter = 0;
    std::vector<std::size_t> changed;
    for (std::size_t p = 1; p < pairs.size(); ++p) {
        if (pairs[p].parent != 0)
            continue;
        SaturatingMath::add(keptBefore, comparison.before(p));
        SaturatingMath::add(keptAfter, comparison.after(p));
        if (comparison.before(p) != comparison.after(p))
            changed.push_back(p);
    }
    std::vector<PlaceChange> inside;
    inside.reserve(changed.size());
    for (std::size_t p : changed)
        inside.push_back(comparison.change(p));
    const std::size_t kept = std::min(inside.size(), insideCount);
    std::partial_sort(inside.begin(), inside.begin() + static_cast<std::ptrdiff_t>(kept), inside.end(), largerChangeFirst);
    result.moreInside = static_cast<std::int64_t>(inside.size() - kept);
    inside.resize(kept);
    result.inside = std::move(inside);
    result.rest = RestChange { result.sizeBefore - keptBefore, result.sizeAfter - keptAfter, result.isUncertain };
}

// A place that grew is listed unless one of the places kept directly inside it grew by at
// least half as much: then the growth is better explained further down.
void findGrewMost(Changes& result, const PlaceComparison& comparison)
{
    const auto& pairs = comparison.pairs();
    const std::size_t n = pairs.size();
    std::vector<std::int64_t> largestChildGrowth(n, 0);
    for (std::size_t p = n; p-- > 1;) {
        std::int64_t growth = comparison.after(p) - comparison.before(p);
        auto parent = static_cast<std::size_t>(pairs[p].parent);
        largestChildGrowth[parent] = std::max(largestChildGrowth[parent], growth);
    }
    std::vector<std::pair<std::int64_t, std::size_t>> candidates;
    for (std::size_t p = 1; p < n; ++p) {
        std::int64_t growth = comparison.after(p) - comparison.before(p);
        if (growth > 0 && growth - largestChildGrowth[p] > largestChildGrowth[p])
            candidates.emplace_back(growth, p);
    }
    const std::size_t kept = std::min(candidates.size(), grewMostLimit);
    std::partial_sort(candidates.begin(), candidates.begin() + static_cast<std::ptrdiff_t>(kept), candidates.end(),
        [](const auto& a, const auto& b) { return a.first != b.first ? a.first > b.first : a.second < b.second; });
    for (std::size_t i = 0; i < kept; ++i)
        result.grewMost.push_back(comparison.change(candidates[i].second));
}

// Every kept folder's content rest is what it holds beyond its kept subfolders, so the rests
// of all folders of a subtree add up to the subtree's content totals.
void sumByType(Changes& result, const PlaceComparison& comparison)
{
    std::array<std::int64_t, ContentCategories::count> before {}, after {};
    auto add = [](std::array<std::int64_t, ContentCategories::count>& totals, const Snapshot& snapshot, std::int32_t node) {
        if (node < 0)
            return;
        for (const RestPart& part : snapshot.restContent.of(node)) {
            if (part.mode == RestMode::content && part.key < totals.size())
                SaturatingMath::add(totals[part.key], part.bytes);
        }
    };
    for (const PlaceComparison::Pair& pair : comparison.pairs()) {
        add(before, *result.from, pair.earlier);
        add(after, *result.to, pair.later);
    }
    for (ContentCategory category : allContentCategories) {
        auto raw = ContentCategories::raw(category);
        if (before[raw] > 0 || after[raw] > 0)
            result.byType.push_back(TypeChange { category, before[raw], after[raw] });
    }
    std::stable_sort(result.byType.begin(), result.byType.end(),
        [](const TypeChange& a, const TypeChange& b) { return magnitude(a.change()) > magnitude(b.change()); });
}

SizeBasis basisFor(bool allHaveColors) { return allHaveColors ? SizeBasis::precise : SizeBasis::rounded; }

// Whether a scan read every place it keeps in full.
bool isReadWhole(const Snapshot& snapshot)
{
    return snapshot.coverage.isWhole() && std::none_of(snapshot.flags.begin(), snapshot.flags.end(), [](NodeFlags flags) {
        return flags.contains(NodeFlag::incomplete) || flags.contains(NodeFlag::contentsUnread);
    });
}

}

namespace ChangeTexts {

std::string_view message(ChangesError error)
{
    switch (error) {
    case ChangesError::outsideSnapshots:
        return "This place isn't inside the place these snapshots were taken of.";
    case ChangesError::notKept:
        return "Neither snapshot lists this folder. Snapshots keep folders of 10 MB and more, rounded down to 10 MB.";
    case ChangesError::inconsistent:
        return "A snapshot's folders don't fit together, so it can't be compared.";
    }
    return "The snapshots can't be compared.";
}

}

std::expected<Changes, ChangesError> changes(
    std::shared_ptr<const Snapshot> from, std::shared_ptr<const Snapshot> to, std::string_view place, std::size_t insideCount)
{
    assert(from && to && "comparing a missing snapshot");
    if (!from || !to || !from->isConsistent() || !to->isConsistent())
        return std::unexpected(ChangesError::inconsistent);
    const SizeBasis sizes = basisFor(from->hasColors && to->hasColors);
    const SnapshotMatching matching(*from, *to);
    auto comparison = PlaceComparison::make(*from, *to, matching, place, sizes);
    if (!comparison)
        return std::unexpected(comparison.error());

    Changes result;
    result.from = std::move(from);
    result.to = std::move(to);
    result.sizes = sizes;
    result.place = comparison->path(0);
    const PlaceComparison::Pair& place0 = comparison->pairs()[0];
    result.presence = place0.earlier < 0 ? Presence::laterOnly : place0.later < 0 ? Presence::earlierOnly : Presence::both;
    result.sizeBefore = comparison->before(0);
    result.sizeAfter = comparison->after(0);
    result.beforeIncomplete = isIncomplete(*result.from, place0.earlier);
    result.afterIncomplete = isIncomplete(*result.to, place0.later);
    result.change = result.sizeAfter - result.sizeBefore;
    result.isUncertain = comparison->isUncertain(0);
    listInside(result, *comparison, insideCount);
    findGrewMost(result, *comparison);
    if (sizes == SizeBasis::precise)
        sumByType(result, *comparison);
    for (const PlaceComparison::OneScanPair& entry : comparison->readByOneScan())
        result.readByOneScan.push_back(OneScanPlace { comparison->path(entry.pair), entry.readBy });
    return result;
}

std::vector<SizePoint> sizeHistory(std::span<const std::shared_ptr<const Snapshot>> snapshots, std::string_view place)
{
    std::vector<SizePoint> points;
    if (snapshots.empty() || !snapshots.back() || !snapshots.back()->isConsistent())
        return points;
    const Snapshot& latest = *snapshots.back();
    const bool allHaveColors = std::all_of(snapshots.begin(), snapshots.end(), [](const auto& s) { return s && s->hasColors; });
    const SizeBasis sizes = basisFor(allHaveColors);
    const bool latestReadWhole = isReadWhole(latest);
    for (const std::shared_ptr<const Snapshot>& snapshot : snapshots) {
        if (!snapshot || !snapshot->isConsistent())
            continue;
        SizePoint point { snapshot->date, 0 };
        // Two scans that both read everything need no matching of their folders: nothing
        // was read by one scan only, so the place's size is its size.
        if (latestReadWhole && isReadWhole(*snapshot) && (snapshot->node(place) || latest.node(place))) {
            auto node = snapshot->node(place);
            point.isKept = node.has_value();
            point.isIncomplete = node && isIncomplete(*snapshot, *node);
            if (node)
                point.bytes = sizes == SizeBasis::precise ? snapshot->size(*node) : snapshot->allocated[static_cast<std::size_t>(*node)];
            points.push_back(point);
            continue;
        }
        const SnapshotMatching matching(*snapshot, latest);
        auto comparison = PlaceComparison::make(*snapshot, latest, matching, place, sizes);
        point.isKept = comparison && comparison->pairs()[0].earlier >= 0;
        point.isIncomplete = comparison && isIncomplete(*snapshot, comparison->pairs()[0].earlier);
        if (comparison) {
            point.bytes = comparison->before(0);
            // Folders only one of the two scans read count as the latest saw them; an outer
            // one comes first and already includes whatever is listed inside it.
            std::vector<bool> corrected(comparison->pairs().size(), false);
            for (const PlaceComparison::OneScanPair& entry : comparison->readByOneScan()) {
                std::int32_t parent = comparison->pairs()[entry.pair].parent;
                bool inside = false;
                for (; parent >= 0; parent = comparison->pairs()[static_cast<std::size_t>(parent)].parent)
                    inside = inside || corrected[static_cast<std::size_t>(parent)];
                if (inside)
                    continue;
                corrected[entry.pair] = true;
                point.bytes += comparison->after(entry.pair) - comparison->before(entry.pair);
            }
        }
        points.push_back(point);
    }
    return points;
}

std::optional<std::vector<SizePoint>> sizeHistory(std::span<const SnapshotOutline> outlines)
{
    if (outlines.empty())
        return std::vector<SizePoint> {};
    const bool allReadWhole = std::all_of(outlines.begin(), outlines.end(), [](const SnapshotOutline& outline) {
        return outline.coversWhole && outline.readWholeBelow && !outline.needsWholeSnapshot;
    });
    if (!allReadWhole)
        return std::nullopt;
    const bool allHaveColors = std::all_of(outlines.begin(), outlines.end(), [](const SnapshotOutline& outline) { return outline.hasColors; });
    const SizeBasis sizes = basisFor(allHaveColors);
    std::vector<SizePoint> points;
    points.reserve(outlines.size());
    for (const SnapshotOutline& outline : outlines) {
        SizePoint point { outline.date, 0 };
        point.isKept = outline.node.has_value();
        point.isIncomplete = outline.node && outline.isIncomplete;
        if (outline.node)
            point.bytes = sizes == SizeBasis::precise ? outline.preciseSize : outline.roundedSize;
        points.push_back(point);
    }
    return points;
}

}
