#include "Scanning/InaccessibleSummary.hpp"

#include "Scanning/ScanTree.hpp"
#include "Scanning/ScopeResolver.hpp"
#include "Support/UnicodeNames.hpp"

#include <algorithm>
#include <array>

namespace tarnwick {

namespace {

// Only a refusal is something the access help can do anything about; missing or
// unreadable items are reported by their own issues.
bool isInaccessible(const ScanIssue& issue)
{
    return issue.kind == IssueKind::permissionDenied;
}

std::string counted(int count, std::string_view one, std::string_view many)
{
    if (count == 1)
        return std::string(one);
    return std::to_string(count) + " " + std::string(many);
}

std::string lastComponent(const std::string& path)
{
    std::size_t slash = path.rfind('/');
    return slash == std::string::npos ? path : path.substr(slash + 1);
}

std::size_t depth(const std::string& path)
{
    return static_cast<std::size_t>(std::ranges::count(path, '/'));
}

bool isAllowable(const std::string& path, const std::string& home)
{
    if (home.empty() || !UnicodeNames::hasPathPrefix(ScopeResolver::displayPath(path), ScopeResolver::displayPath(home)))
        return false;
    return InaccessibleAreas::place(path, home).area != InaccessibleArea::protectedByMacOS;
}

}

std::string InaccessibleSummary::Group::phrase() const
{
    switch (area) {
    case InaccessibleArea::noPermission:
    case InaccessibleArea::system:
        return counted(count, "an item without permission", "items without permission");
    case InaccessibleArea::protectedByMacOS:
        return counted(count, "an item macOS protects", "items macOS protects");
    case InaccessibleArea::cloudStorage:
        return counted(count, "a cloud storage folder", "cloud storage folders");
    case InaccessibleArea::otherApps: {
        if (count == 1)
            return "data of another app";
        std::string names;
        for (const std::string& example : examples)
            names += (names.empty() ? "" : ", ") + lastComponent(example);
        if (static_cast<std::size_t>(count) > examples.size())
            names += ", …";
        return "data of other apps (" + names + ")";
    }
    case InaccessibleArea::desktop:
        return "Desktop";
    case InaccessibleArea::documents:
        return "Documents";
    case InaccessibleArea::downloads:
        return "Downloads";
    case InaccessibleArea::iCloudDrive:
        return "iCloud Drive";
    }
    return {};
}

std::vector<InaccessibleItem> inaccessibleItems(const ScanTree& tree, NodeID under)
{
    std::vector<InaccessibleItem> items;
    for (const ScanIssue& issue : tree.issues()) {
        if (isInaccessible(issue) && (issue.node == under || tree.isAncestor(under, issue.node)))
            items.push_back({ tree.path(issue.node), issue.code });
    }
    return items;
}

InaccessibleSummary inaccessibleSummary(const ScanTree& tree, NodeID under, const std::string& home)
{
    constexpr std::size_t areaCount = static_cast<std::size_t>(InaccessibleArea::noPermission) + 1;
    std::array<std::vector<std::string>, areaCount> places; // distinct, in first-seen order
    for (const InaccessibleItem& item : inaccessibleItems(tree, under)) {
        InaccessibleAreas::Placement placement = InaccessibleAreas::place(item.path, home);
        auto& list = places[static_cast<std::size_t>(placement.area)];
        if (std::ranges::find(list, placement.place) == list.end())
            list.push_back(std::move(placement.place));
    }
    InaccessibleSummary summary;
    for (std::size_t area = 0; area < areaCount; ++area) {
        auto& list = places[area];
        if (list.empty())
            continue;
        int count = static_cast<int>(list.size());
        std::ranges::stable_sort(list, {}, depth);
        list.resize(std::min(list.size(), InaccessibleSummary::maxExamples));
        summary.groups.push_back({ static_cast<InaccessibleArea>(area), count, std::move(list) });
    }
    return summary;
}

std::vector<NodeID> nodesWithAllowableItems(const ScanTree& tree, const std::string& home)
{
    std::vector<NodeID> nodes;
    for (const ScanIssue& issue : tree.issues()) {
        if (!isInaccessible(issue))
            continue;
        if (isAllowable(tree.path(issue.node), home))
            nodes.push_back(issue.node);
    }
    std::ranges::sort(nodes);
    auto [first, last] = std::ranges::unique(nodes);
    nodes.erase(first, last);
    return nodes;
}

std::vector<InaccessibleItem> allowableInaccessibleItems(const ScanTree& tree, const std::string& home)
{
    std::vector<InaccessibleItem> items;
    for (const ScanIssue& issue : tree.issues()) {
        if (!isInaccessible(issue))
            continue;
        std::string path = tree.path(issue.node);
        if (isAllowable(path, home))
            items.push_back({ std::move(path), issue.code });
    }
    return items;
}

}
