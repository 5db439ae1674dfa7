#pragma once

#include "Classification/ContentRule.hpp"

#include <optional>
#include <string_view>

namespace tarnwick {

// One rule of the folder-name table: the rule, and where a folder of that name must
// stand for it to apply.
struct FolderNameRule {
    ContentRule rule;
    // Only inside a folder of exactly this name.
    std::optional<std::string_view> parent;
    // Only directly under the scan root.
    bool topLevelOnly = false;

    constexpr bool operator==(const FolderNameRule&) const = default;
};

}
