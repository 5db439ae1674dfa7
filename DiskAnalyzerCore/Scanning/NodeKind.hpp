#pragma once

#include <cstdint>

namespace tarnwick {

// Raw values are stored in snapshots; keep the order.
enum class NodeKind : std::uint8_t {
    directory = 0,
    package = 1,
    file = 2,
    symlink = 3,
    alias = 4,
    mountPoint = 5,
    other = 6,
};

// Only folders and packages have children; everything else is a leaf that is never followed.
constexpr bool isContainer(NodeKind kind)
{
    return kind == NodeKind::directory || kind == NodeKind::package;
}

// Kinds whose own sizes are ignored because their totals come from the roll-up only.
constexpr bool hasOnlyRolledUpSize(NodeKind kind)
{
    return isContainer(kind) || kind == NodeKind::mountPoint;
}

}
