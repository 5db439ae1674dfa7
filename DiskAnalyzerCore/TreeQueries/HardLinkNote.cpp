#include "TreeQueries/HardLinkNote.hpp"

#include "Scanning/ScanTree.hpp"
#include "Scanning/ScopeResolver.hpp"

namespace tarnwick::HardLinkNote {

std::optional<std::string> countedAt(const ScanTree& tree, NodeID node)
{
    std::optional<NodeID> carrier = tree.hardLinkCarrier(node);
    if (!carrier)
        return std::nullopt;
    return ScopeResolver::displayPath(tree.path(*carrier));
}

std::optional<std::string> text(const ScanTree& tree, NodeID node)
{
    std::optional<std::string> path = countedAt(tree, node);
    if (!path)
        return std::nullopt;
    return "Hard link: counted at " + *path;
}

}
