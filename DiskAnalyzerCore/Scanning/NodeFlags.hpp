#pragma once

#include <cstdint>

namespace tarnwick {

enum class NodeFlag : std::uint8_t {
    allocatedUnknown = 1,   // own size on disk not known
    logicalUnknown = 2,     // own logical size not known
    incomplete = 4,         // allocated size is a lower bound
    logicalIncomplete = 8,  // logical size is a lower bound
    contentsUnread = 16,    // folder contents not (or not yet) listed
    hasIssue = 32,          // at least one read issue recorded on this node
    overflow = 64,          // a size addition saturated
    scanning = 128,         // folder was being listed when a preview was taken
};

// An 8-bit option set over NodeFlag; the raw value is what snapshots store.
struct NodeFlags {
    std::uint8_t raw = 0;

    constexpr NodeFlags() = default;
    constexpr explicit NodeFlags(std::uint8_t rawValue)
        : raw(rawValue)
    {
    }
    constexpr NodeFlags(NodeFlag flag)
        : raw(static_cast<std::uint8_t>(flag))
    {
    }

    [[nodiscard]] constexpr bool contains(NodeFlag flag) const { return (raw & static_cast<std::uint8_t>(flag)) != 0; }
    constexpr void insert(NodeFlag flag) { raw |= static_cast<std::uint8_t>(flag); }
    constexpr void remove(NodeFlag flag) { raw &= static_cast<std::uint8_t>(~static_cast<std::uint8_t>(flag)); }
    constexpr bool operator==(const NodeFlags&) const = default;
};

constexpr NodeFlags operator|(NodeFlag a, NodeFlag b)
{
    return NodeFlags(static_cast<std::uint8_t>(static_cast<std::uint8_t>(a) | static_cast<std::uint8_t>(b)));
}

}
