#pragma once

#include "Scanning/NodeID.hpp"

#include <optional>
#include <string>

namespace tarnwick {

class ScanTree;

// Where a hard-linked file is counted, for a name of it that shows 0 bytes because another of
// its names in the scan carries its size: "Hard link: counted at PATH".
namespace HardLinkNote {

// The path of the name that carries the size, as shown to the user; absent for every other node.
std::optional<std::string> countedAt(const ScanTree& tree, NodeID node);
std::optional<std::string> text(const ScanTree& tree, NodeID node);

}

}
