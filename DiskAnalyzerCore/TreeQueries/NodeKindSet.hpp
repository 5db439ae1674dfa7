#pragma once

#include "Scanning/NodeKind.hpp"

#include <cstdint>
#include <initializer_list>

namespace tarnwick {

// A set of node kinds, one bit per raw value, for filters such as "files and packages".
struct NodeKindSet {
    std::uint8_t raw = 0;

    constexpr NodeKindSet() = default;
    constexpr NodeKindSet(std::initializer_list<NodeKind> kinds)
    {
        for (NodeKind kind : kinds)
            insert(kind);
    }
    static constexpr NodeKindSet all()
    {
        return { NodeKind::directory, NodeKind::package, NodeKind::file, NodeKind::symlink, NodeKind::alias, NodeKind::mountPoint,
            NodeKind::other };
    }

    [[nodiscard]] constexpr bool contains(NodeKind kind) const { return (raw & bit(kind)) != 0; }
    constexpr void insert(NodeKind kind) { raw = static_cast<std::uint8_t>(raw | bit(kind)); }
    [[nodiscard]] constexpr bool empty() const { return raw == 0; }
    constexpr bool operator==(const NodeKindSet&) const = default;

private:
    static constexpr std::uint8_t bit(NodeKind kind) { return static_cast<std::uint8_t>(1u << static_cast<unsigned>(kind)); }
};

}
