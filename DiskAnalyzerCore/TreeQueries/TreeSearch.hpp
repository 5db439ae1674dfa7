#pragma once

#include "Scanning/NodeID.hpp"
#include "Scanning/TreeDate.hpp"
#include "TreeQueries/NamePattern.hpp"
#include "TreeQueries/NodeKindSet.hpp"

#include <cstdint>
#include <optional>
#include <vector>

namespace tarnwick {

class ScanTree;

// Searches over a finished scan tree: the largest items that match a filter, and the
// largest places, for "where did my space go". Each is one pass over the tree with
// explicit work lists and a bounded heap for the first N.
namespace TreeSearch {

// Filters on the last change inside (a file's own modification, a folder's latest anywhere
// below it), to the second. A node without a known date never passes a filter that is set.
struct AgeFilter {
    std::optional<Date> changedBefore; // last change strictly before this
    std::optional<Date> changedAfter;  // last change at or after this

    bool operator==(const AgeFilter&) const = default;
};

struct Item {
    NodeID node;
    std::int64_t allocated = 0;

    bool operator==(const Item&) const = default;
};

struct Found {
    std::vector<Item> items;       // largest size on disk first; at equal sizes the smaller node number first
    std::int64_t matchCount = 0;   // every match, including those past the limit
    std::int64_t matchedBytes = 0; // size on disk of all matches, a match inside another counted once; saturates
    bool matchedIncomplete = false; // matchedBytes is a lower bound: a counted match could not be read in full

    bool operator==(const Found&) const = default;
};

// The nodes strictly below `below` of one of the kinds, of at least minimumSize bytes on
// disk, whose name matches the pattern (when given) and whose last change passes the age
// filter; at most limit of them, the largest first.
Found largestItems(const ScanTree& tree, NodeID below, NodeKindSet kinds, std::int64_t minimumSize,
    const std::optional<NamePattern>& namePattern, const AgeFilter& age, int limit);

// A folder is a pass-through when one child folder or package holds at least this share of
// it: it only leads to that child, which says the same with a more precise path.
inline constexpr double passThroughShare = 0.9;

// The largest places strictly below `below`: folders and packages of at least minimumSize
// bytes (and at least 1) that are not pass-throughs. Packages are places but nothing inside
// them is, as on the map. Nested places are all listed (a folder and its large subfolder
// both answer "where"), largest first, at most limit. Only folders of at least minimumSize
// are visited, so a large minimum makes this cheap on any tree.
std::vector<Item> largestPlaces(const ScanTree& tree, NodeID below, std::int64_t minimumSize, int limit);

}

}
