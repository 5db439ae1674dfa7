#pragma once

#include "Scanning/InaccessibleArea.hpp"
#include "Scanning/NodeID.hpp"

#include <string>
#include <vector>

namespace tarnwick {

class ScanTree;

// A place the scan was not allowed to read.
struct InaccessibleItem {
    std::string path; // the tree's path of the node
    int code = 0;     // the system error number

    bool operator==(const InaccessibleItem&) const = default;
};

// The unreadable places of a subtree grouped by area, for the access help.
struct InaccessibleSummary {
    static constexpr std::size_t maxExamples = 3;

    struct Group {
        InaccessibleArea area = InaccessibleArea::noPermission;
        // Items, except for app data and cloud storage, which count apps and folders.
        int count = 0;
        std::vector<std::string> examples; // shallowest places first, at most maxExamples

        // "3 items without permission", "data of another app", …
        [[nodiscard]] std::string phrase() const;
        bool operator==(const Group&) const = default;
    };

    std::vector<Group> groups; // in the order of the areas; empty areas are left out

    [[nodiscard]] bool isEmpty() const { return groups.empty(); }
    bool operator==(const InaccessibleSummary&) const = default;
};

// Permission failures recorded on under or inside it, in recording order.
std::vector<InaccessibleItem> inaccessibleItems(const ScanTree& tree, NodeID under);
InaccessibleSummary inaccessibleSummary(const ScanTree& tree, NodeID under, const std::string& home);

// Permission failures inside the home folder that the user can grant access to: everything
// there but the places macOS guards whatever the user's rights. Nodes ascending, each once;
// items in recording order.
std::vector<NodeID> nodesWithAllowableItems(const ScanTree& tree, const std::string& home);
std::vector<InaccessibleItem> allowableInaccessibleItems(const ScanTree& tree, const std::string& home);

}
