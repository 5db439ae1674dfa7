#include "Scanning/ScanTree.hpp"

#include "Support/UnicodeNames.hpp"

#include <cassert>
#include <cstdio>
#include <cstdlib>

namespace tarnwick {

std::size_t ScanTree::checked(NodeID node) const
{
    if (node.value < 0 || node.value >= count()) {
        std::fprintf(stderr, "tarnwick: node %d is not in a tree of %d nodes\n", node.value, count());
        std::abort();
    }
    return node.index();
}

std::optional<NodeID> ScanTree::parent(NodeID node) const
{
    std::int32_t p = m_parents[checked(node)];
    if (p < 0)
        return std::nullopt;
    return NodeID { p };
}

ScanTree::Children ScanTree::children(NodeID node) const
{
    std::size_t i = checked(node);
    auto start = static_cast<std::size_t>(m_childStart[i]);
    auto end = static_cast<std::size_t>(m_childStart[i + 1]);
    return Children(m_orderedChildren.data() + start, end - start);
}

std::int32_t ScanTree::childCount(NodeID node) const
{
    std::size_t i = checked(node);
    return m_childStart[i + 1] - m_childStart[i];
}

int ScanTree::depth(NodeID node) const
{
    int depth = 0;
    for (std::int32_t p = m_parents[checked(node)]; p >= 0; p = m_parents[static_cast<std::size_t>(p)])
        ++depth;
    return depth;
}

std::optional<bool> ScanTree::isHiddenFromFinder(NodeID node) const
{
    if (node.value < 0 || static_cast<std::size_t>(node.value) >= m_finderHidden.size())
        return std::nullopt;
    return (m_finderHidden[node.index()] & 2) != 0;
}

bool ScanTree::hasOwnHiddenAttribute(NodeID node) const
{
    if (node.value < 0 || static_cast<std::size_t>(node.value) >= m_finderHidden.size())
        return false;
    return (m_finderHidden[node.index()] & 1) != 0;
}

std::optional<std::uint64_t> ScanTree::fileIdentifier(NodeID node) const
{
    std::uint64_t id = m_fileIDs[checked(node)];
    if (id == 0)
        return std::nullopt;
    return id;
}

const ScanIssue* ScanTree::issue(NodeID node) const
{
    (void)checked(node);
    auto found = m_firstIssueByNode.find(node.value);
    if (found == m_firstIssueByNode.end())
        return nullptr;
    return &m_issues[static_cast<std::size_t>(found->second)];
}

std::optional<NodeID> ScanTree::hardLinkCarrier(NodeID node) const
{
    (void)checked(node);
    auto found = m_hardLinkCarriers.find(node.value);
    if (found == m_hardLinkCarriers.end())
        return std::nullopt;
    return NodeID { found->second };
}

bool ScanTree::isAncestor(NodeID ancestor, NodeID node) const
{
    (void)checked(ancestor);
    for (std::int32_t p = m_parents[checked(node)]; p >= 0 && p >= ancestor.value; p = m_parents[static_cast<std::size_t>(p)]) {
        if (p == ancestor.value)
            return true;
    }
    return false;
}

std::optional<NodeID> ScanTree::topmostAncestor(NodeID node, NodeID below) const
{
    (void)checked(below);
    std::int32_t current = static_cast<std::int32_t>(checked(node));
    while (current > below.value) {
        std::int32_t p = m_parents[static_cast<std::size_t>(current)];
        if (p == below.value)
            return NodeID { current };
        current = p;
    }
    return std::nullopt;
}

std::vector<NodeID> ScanTree::chain(NodeID node) const
{
    std::vector<NodeID> nodes;
    for (std::int32_t current = static_cast<std::int32_t>(checked(node)); current >= 0; current = m_parents[static_cast<std::size_t>(current)])
        nodes.push_back(NodeID { current });
    return { nodes.rbegin(), nodes.rend() };
}

std::string ScanTree::relativePath(NodeID node) const
{
    std::vector<NodeID> nodes = chain(node);
    std::string path;
    for (std::size_t i = 1; i < nodes.size(); ++i) {
        if (i > 1)
            path += '/';
        path += name(nodes[i]);
    }
    return path;
}

std::string ScanTree::path(NodeID node) const
{
    std::string relative = relativePath(node);
    if (relative.empty())
        return m_rootPath;
    if (!m_rootPath.empty() && m_rootPath.back() == '/')
        return m_rootPath + relative;
    return m_rootPath + "/" + relative;
}

std::optional<NodeID> ScanTree::node(std::string_view atPath) const
{
    std::string_view rest = atPath;
    std::string_view root = m_rootPath;
    while (root.size() > 1 && root.back() == '/')
        root.remove_suffix(1);
    if (!rest.empty() && rest.front() == '/') {
        if (root == "/") {
            rest.remove_prefix(1);
        } else {
            if (!UnicodeNames::hasPathPrefix(rest, root))
                return std::nullopt;
            rest = UnicodeNames::dropPathPrefix(rest, root);
        }
    }
    NodeID current = NodeID::root();
    while (!rest.empty()) {
        std::size_t slash = rest.find('/');
        std::string_view component = rest.substr(0, slash);
        rest = slash == std::string_view::npos ? std::string_view {} : rest.substr(slash + 1);
        if (component.empty() || component == ".")
            continue;
        std::optional<NodeID> found;
        for (NodeID child : children(current)) {
            if (name(child) == component) {
                found = child;
                break;
            }
        }
        if (!found) {
            std::string wanted = UnicodeNames::normalized(component);
            for (NodeID child : children(current)) {
                if (UnicodeNames::normalized(name(child)) == wanted) {
                    found = child;
                    break;
                }
            }
        }
        if (!found)
            return std::nullopt;
        current = *found;
    }
    return current;
}

bool ScanTree::leadsToCoverage(NodeID node) const
{
    if (m_coverage.isWhole())
        return true;
    std::string here = path(node);
    for (const std::string& readable : m_coverage.readableFolders) {
        if (UnicodeNames::hasPathPrefix(readable, here) || UnicodeNames::hasPathPrefix(here, readable))
            return true;
    }
    return false;
}

bool ScanTree::isPartlyReadable(NodeID node) const
{
    if (m_coverage.isWhole() || !isContainer(kind(node)))
        return false;
    std::string here = path(node);
    bool leads = false;
    for (const std::string& readable : m_coverage.readableFolders) {
        if (UnicodeNames::hasPathPrefix(here, readable))
            return false; // inside a place read in full
        if (UnicodeNames::hasPathPrefix(readable, here))
            leads = true;
    }
    return leads;
}

std::size_t ScanTree::byteCount() const
{
    std::size_t n = m_kinds.size();
    return m_names.byteCount() + n * (4 + 4 + 1 + 1 + 8 + 8 + 4 + 4 + 4 + 8 + 4 + 4) + m_finderHidden.size()
        + m_issues.size() * sizeof(ScanIssue) + m_firstIssueByNode.size() * 32;
}

}
