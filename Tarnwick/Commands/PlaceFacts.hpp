#pragma once

#include "Classification/ScanAnalysis.hpp"
#include "Classification/TypeGroups.hpp"
#include "Scanning/ScanTree.hpp"

#include <memory>
#include <optional>
#include <vector>

namespace tarnwick {

// The brief facts `summary` gives of a place beside its largest items, read from the same
// colour totals as the map's modes: who owns its bytes, how much is caches and how much is
// hidden, and where on-disk size and logical size part notably.
struct PlaceFacts {
    struct Share {
        std::string key;
        std::string label;
        std::int64_t bytes = 0;
    };

    // The largest owners first, at most maximumOwners; absent without colour totals.
    std::optional<std::vector<Share>> owners;
    std::optional<std::int64_t> cacheBytes;
    std::optional<std::int64_t> hiddenBytes;
    TypeGroups::Ratio ratio;                 // of the place itself
    std::vector<TypeGroups::Ratio> lowest;   // below lowRatio, lowest first
    std::vector<TypeGroups::Ratio> highest;  // above highRatio, highest first

    static constexpr std::size_t maximumOwners = 10;
    static constexpr std::size_t maximumRatios = 3;
    // Below this much on disk per byte of content an item is sparse or compressed; above
    // the high mark it is mostly block slack of small files.
    static constexpr double lowRatio = 0.5;
    static constexpr double highRatio = 1.5;

    // analysis is the finished scan's; without it (a scan still running or cut short) the
    // owners and caches stay unknown, and the hidden share is worked out from the tree for
    // this answer alone.
    static PlaceFacts make(const std::shared_ptr<const ScanTree>& tree, NodeID place, const ScanAnalysis* analysis);
};

}
