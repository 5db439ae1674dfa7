#pragma once

#include "Classification/ColorMode.hpp"
#include "Classification/ContentMap.hpp"
#include "Classification/OwnerMap.hpp"
#include "Classification/ModeMaps.hpp"
#include "Scanning/ScanTree.hpp"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

// What `types` reports of a place in one colour mode: the groups of its bytes with their
// largest places, or for the ratio mode the on-disk / size ratio and its extremes. Works on
// any tree: the result on screen, or one made from a snapshot.
namespace tarnwick::TypeGroups {

inline constexpr int maximumPlaces = 10;

struct Place {
    std::string path;
    std::int64_t bytes = 0; // of the group
};

struct Group {
    std::string key;   // stable, for agents: "developer", "past_7_days", an owner's id
    std::string label; // as the legend shows it
    std::int64_t bytes = 0;
    // Where the group's bytes are below the place, most first, at most maximumPlaces: the
    // items the group holds at least half of whose parent (inside the place) is not of the
    // group, as the map colours them, and the mixed items directly inside the place that
    // hold some of it.
    std::vector<Place> places;
    // For other apps: the apps folded into it, largest first.
    std::vector<Place> apps;
};

// The maps a tree's modes are read from; for a tree without them all (a snapshot's, a running
// scan's preview) what is missing is made when a mode needs it, date groups by today's
// calendar, and kept for the next question.
using Maps = ModeMaps;

// Groups with bytes, largest first (equal ones in the legend's order). Absent when the tree
// has no data for the mode; the ratio mode has no groups and gives none.
std::optional<std::vector<Group>> groups(const std::shared_ptr<const ScanTree>& tree, NodeID place, ColorMode mode, Maps& maps);

struct Ratio {
    std::string path;
    std::int64_t allocated = 0;
    std::int64_t logical = 0;
    std::optional<double> ratio; // unknown when the logical size is below 1 byte or incomplete
    bool allocatedIncomplete = false; // the sizes are lower bounds
    bool logicalIncomplete = false;
};

struct Extremes {
    Ratio place;
    // Items below the place of at least 10 MB (on disk or logical) with a known ratio.
    std::vector<Ratio> lowest;  // lowest ratio first, at most maximumPlaces
    std::vector<Ratio> highest; // highest ratio first, at most maximumPlaces
};

Extremes ratios(const ScanTree& tree, NodeID place);

}
