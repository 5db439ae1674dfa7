#pragma once

#include "Classification/BucketShare.hpp"
#include "Scanning/NodeID.hpp"

#include <cstdint>
#include <span>
#include <unordered_map>
#include <vector>

namespace tarnwick {

// The colour modes whose groups a rest part can name.
enum class RestMode : std::uint8_t { content, modified, created, hidden };

// Says that bytes of a folder which no child node accounts for belong to the group key of
// the given mode: a content category, a date group (5 for no date), or 0 visible / 1 hidden.
struct RestPart {
    RestMode mode = RestMode::content;
    std::uint8_t key = 0;
    std::int64_t bytes = 0;

    bool operator==(const RestPart&) const = default;
};

// Rest parts per folder. A tree made from a snapshot, which keeps only large folders, uses
// them to say what lay below the folders it kept.
struct RestBuckets {
    std::unordered_map<NodeID, std::vector<RestPart>> parts;

    void add(NodeID folder, RestPart part) { parts[folder].push_back(part); }
    [[nodiscard]] bool empty() const { return parts.empty(); }
    // The parts of one mode as the rests a bucket map of that mode takes, in their order.
    // Parts without bytes are left out.
    [[nodiscard]] std::unordered_map<NodeID, std::vector<BucketShare>> shares(RestMode mode) const;

    bool operator==(const RestBuckets&) const = default;
};

}
