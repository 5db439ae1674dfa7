#pragma once

#include "Classification/ContentCategory.hpp"

#include <cstdint>
#include <optional>
#include <string_view>

namespace tarnwick {

// What a folder's name says about everything inside it. A strong rule claims the
// whole subtree; a weak one only names files that say nothing themselves.
// Formats point into the classifier's constant tables and live as long as the process.
struct ContentRule {
    ContentCategory category = ContentCategory::other;
    bool isStrong = false;
    std::optional<std::string_view> format;

    // The context byte kept per folder: the category, with bit 7 set for a strong rule.
    [[nodiscard]] constexpr std::uint8_t contextByte() const
    {
        return static_cast<std::uint8_t>(static_cast<std::uint8_t>(category) | (isStrong ? 0x80 : 0));
    }
    constexpr bool operator==(const ContentRule&) const = default;
};

}
