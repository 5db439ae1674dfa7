#pragma once

#include "Scanning/ScanTree.hpp"
#include "Scanning/TreeBuilder.hpp"

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tarnwick::testing {

// Builds small scan trees from relative paths. Missing folders on the way are created as
// plain directories; a path ending in "/" is a folder itself.
class TreeFixture {
public:
    struct Item {
        std::string path;
        std::int64_t allocated = 0;
        NodeKind kind = NodeKind::file;
        std::optional<std::int64_t> logical;
        std::int32_t modified = TreeDate::noDate;
        std::int32_t created = TreeDate::noDate;
        bool hidden = false;
    };

    explicit TreeFixture(std::string rootName = "root", NodeKind rootKind = NodeKind::directory)
        : m_builder(rootName, rootKind, std::nullopt)
    {
        m_ids[""] = NodeID::root();
    }

    NodeID add(const Item& item)
    {
        std::string path = item.path;
        bool isFolder = !path.empty() && path.back() == '/';
        if (isFolder)
            path.pop_back();
        NodeID parent = folder(parentPath(path));
        NodeKind kind = isFolder && !isContainer(item.kind) ? NodeKind::directory : item.kind;
        NodeID id = m_builder.addNode(parent, leafName(path), kind, item.allocated, item.logical.value_or(item.allocated), 0,
            item.modified, item.created, item.hidden);
        m_ids[path] = id;
        return id;
    }
    NodeID add(std::string path, std::int64_t allocated = 0) { return add(Item { std::move(path), allocated }); }

    std::shared_ptr<const ScanTree> finish(TreeBuilder::Metadata metadata = TreeBuilder::Metadata::included, std::string rootPath = "/scan")
    {
        return std::move(m_builder).finalize(std::move(rootPath), ScanCoverage::whole(), metadata);
    }

    [[nodiscard]] NodeID id(const std::string& path) const { return m_ids.at(path); }
    TreeBuilder& builder() { return m_builder; }

private:
    static std::string parentPath(const std::string& path)
    {
        std::size_t slash = path.rfind('/');
        return slash == std::string::npos ? std::string() : path.substr(0, slash);
    }
    static std::string leafName(const std::string& path)
    {
        std::size_t slash = path.rfind('/');
        return slash == std::string::npos ? path : path.substr(slash + 1);
    }
    // Walks down creating missing folders; a loop over the path's components, no recursion.
    NodeID folder(const std::string& path)
    {
        if (auto found = m_ids.find(path); found != m_ids.end())
            return found->second;
        NodeID current = NodeID::root();
        std::string sofar;
        std::size_t start = 0;
        while (start <= path.size()) {
            std::size_t slash = path.find('/', start);
            std::string component = path.substr(start, slash == std::string::npos ? std::string::npos : slash - start);
            sofar = sofar.empty() ? component : sofar + "/" + component;
            auto found = m_ids.find(sofar);
            if (found == m_ids.end()) {
                current = m_builder.addNode(current, component, NodeKind::directory, std::nullopt, std::nullopt, 0, TreeDate::noDate,
                    TreeDate::noDate, false);
                m_ids[sofar] = current;
            } else {
                current = found->second;
            }
            if (slash == std::string::npos)
                break;
            start = slash + 1;
        }
        return current;
    }

    TreeBuilder m_builder;
    std::map<std::string, NodeID> m_ids;
};

}
