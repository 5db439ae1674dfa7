#pragma once

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

namespace tarnwick {

struct Snapshot;

// Finding kept folders by path. A snapshot has no child index, so a lookup scans the nodes
// after each parent; it is meant for a handful of paths, not for every node.
namespace SnapshotPaths {

// The names below the root on the way to atPath (absolute, or relative to the root); absent
// when an absolute path lies outside the root.
std::optional<std::vector<std::string_view>> components(std::string_view rootPath, std::string_view atPath);

struct Location {
    std::int32_t deepest = 0;     // the deepest kept node on the way (the root at least)
    std::size_t matched = 0;      // how many components it took to get there
    [[nodiscard]] bool found(std::size_t componentCount) const { return matched == componentCount; }
};

// Names are compared byte for byte first, then after Unicode normalisation.
Location locate(const Snapshot& snapshot, const std::vector<std::string_view>& components);

}

}
