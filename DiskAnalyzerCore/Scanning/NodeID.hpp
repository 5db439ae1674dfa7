#pragma once

#include <compare>
#include <cstdint>
#include <functional>

namespace tarnwick {

// A node's number in a scan tree. The root is 0 and a parent's number is always
// smaller than its children's, which lets roll-ups and ancestor walks run as plain loops.
struct NodeID {
    std::int32_t value = 0;

    static constexpr NodeID root() { return NodeID { 0 }; }
    constexpr auto operator<=>(const NodeID&) const = default;
    [[nodiscard]] constexpr std::size_t index() const { return static_cast<std::size_t>(value); }
};

}

template <>
struct std::hash<tarnwick::NodeID> {
    std::size_t operator()(tarnwick::NodeID id) const noexcept { return std::hash<std::int32_t> {}(id.value); }
};
