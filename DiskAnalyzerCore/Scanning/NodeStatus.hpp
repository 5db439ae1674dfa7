#pragma once

#include "Scanning/NodeID.hpp"

#include <optional>
#include <string_view>
#include <vector>

namespace tarnwick {

class ScanTree;

// The words every front end shows for a node's state, so that the list, the inspector and
// the command line agree.
namespace NodeStatus {

// One short word, by the first condition that holds: an issue, partly read, a mount point,
// still scanning, unknown size, contents not scanned, then the kinds that are not followed.
// Absent for an ordinary, fully read node.
std::optional<std::string_view> word(const ScanTree& tree, NodeID node);

// The longer texts for the inspector, one per condition that holds, in a fixed order.
std::vector<std::string_view> explanations(const ScanTree& tree, NodeID node);

}

}
