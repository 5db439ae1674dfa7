#pragma once

#include "Scanning/NodeID.hpp"
#include "Scanning/NodeKind.hpp"

#include <cstdint>
#include <string>
#include <vector>

namespace tarnwick {

class ScanTree;

// What is in a folder: its totals, its first children in display order with their shares,
// and one line for the rest. Every front end lists a folder from this, so they all agree.
struct FolderSummary {
    struct Entry {
        NodeID node;
        std::string name;
        NodeKind kind = NodeKind::file;
        std::int64_t allocated = 0;
        std::int64_t logical = 0;
        double share = 0; // of the folder's allocated size; not rounded, need not add up to 1
        bool incomplete = false;
        bool hasIssue = false; // an issue on the child itself, not inside it

        bool operator==(const Entry&) const = default;
    };

    NodeID node;
    std::int64_t allocated = 0;
    std::int64_t logical = 0;
    bool incomplete = false;
    std::int32_t childCount = 0;
    std::vector<Entry> entries;
    std::int32_t otherCount = 0;
    std::int64_t otherAllocated = 0; // saturates at the largest 64-bit value

    // At most limit entries; a negative limit gives none.
    static FolderSummary make(const ScanTree& tree, NodeID folder, int limit);

    bool operator==(const FolderSummary&) const = default;
};

}
