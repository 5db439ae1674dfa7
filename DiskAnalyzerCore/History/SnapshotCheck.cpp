#include "History/SnapshotCheck.hpp"

#include "History/Snapshot.hpp"
#include "History/SnapshotMatching.hpp"
#include "History/SnapshotPaths.hpp"
#include "History/SnapshotReducer.hpp"

#include <unordered_set>

namespace tarnwick::SnapshotCheck {

namespace {

std::string joined(const std::vector<std::string_view>& components)
{
    std::string path;
    for (std::string_view component : components) {
        if (!path.empty())
            path += '/';
        path += component;
    }
    return path;
}

std::string parentOf(const std::string& relative)
{
    std::size_t slash = relative.rfind('/');
    return slash == std::string::npos ? std::string() : relative.substr(0, slash);
}

std::string absolute(const Snapshot& snapshot, const std::string& relative)
{
    std::string root = snapshot.rootPath;
    while (root.size() > 1 && root.back() == '/')
        root.pop_back();
    if (relative.empty())
        return root;
    return root == "/" ? "/" + relative : root + "/" + relative;
}

}

std::vector<Difference> compare(const Snapshot& snapshot, const Snapshot& other)
{
    std::vector<Difference> result;
    if (!snapshot.isConsistent() || !other.isConsistent())
        return result;
    const SnapshotMatching matching(snapshot, other);
    for (std::int32_t node = 1; node < snapshot.nodeCount(); ++node) {
        if (matching.laterOf(node) < 0 && matching.laterOf(snapshot.parents[static_cast<std::size_t>(node)]) >= 0)
            result.push_back(Difference::disappeared(snapshot.path(node)));
    }
    for (std::int32_t node = 1; node < other.nodeCount(); ++node) {
        if (matching.earlierOf(node) < 0 && matching.earlierOf(other.parents[static_cast<std::size_t>(node)]) >= 0)
            result.push_back(Difference::appeared(other.path(node)));
    }
    return result;
}

std::vector<Difference> compare(const Snapshot& snapshot, const ScanTree& tree)
{
    return compare(snapshot, SnapshotReducer::reduce(tree, SnapshotReducer::Options {}));
}

std::vector<Difference> compare(const Snapshot& snapshot, std::span<const std::string> folders)
{
    std::vector<Difference> result;
    if (!snapshot.isConsistent())
        return result;
    std::unordered_set<std::string> listed;
    std::vector<std::string> listedInOrder;
    for (const std::string& folder : folders) {
        auto components = SnapshotPaths::components(snapshot.rootPath, folder);
        if (!components || components->empty())
            continue;
        std::string relative = joined(*components);
        if (listed.insert(relative).second)
            listedInOrder.push_back(std::move(relative));
    }
    const auto n = static_cast<std::size_t>(snapshot.nodeCount());
    std::vector<std::string> kept(n);
    std::unordered_set<std::string> keptSet;
    std::vector<bool> gone(n, false);
    for (std::size_t i = 1; i < n; ++i) {
        auto parent = static_cast<std::size_t>(snapshot.parents[i]);
        kept[i] = parent == 0 ? snapshot.names[i] : kept[parent] + "/" + snapshot.names[i];
        keptSet.insert(kept[i]);
        gone[i] = !listed.contains(kept[i]);
        if (gone[i] && !gone[parent])
            result.push_back(Difference::disappeared(absolute(snapshot, kept[i])));
    }
    for (const std::string& relative : listedInOrder) {
        if (keptSet.contains(relative))
            continue;
        // Reported unless its parent is itself a new folder of the list.
        std::string parent = parentOf(relative);
        if (parent.empty() || keptSet.contains(parent) || !listed.contains(parent))
            result.push_back(Difference::appeared(absolute(snapshot, relative)));
    }
    return result;
}

}
