#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string_view>

namespace tarnwick {

// What kind of content an item holds, guessed from names. Raw values are stored
// (colour totals, snapshots); keep the order.
enum class ContentCategory : std::uint8_t {
    video = 0,
    photos = 1,
    music = 2,
    documents = 3,
    apps = 4,
    developer = 5,
    ai = 6,
    virtualMachines = 7,
    archives = 8,
    caches = 9,
    logs = 10,
    system = 11,
    other = 12,
};

inline constexpr std::array<ContentCategory, 13> allContentCategories {
    ContentCategory::video, ContentCategory::photos, ContentCategory::music, ContentCategory::documents,
    ContentCategory::apps, ContentCategory::developer, ContentCategory::ai, ContentCategory::virtualMachines,
    ContentCategory::archives, ContentCategory::caches, ContentCategory::logs, ContentCategory::system,
    ContentCategory::other,
};

namespace ContentCategories {

inline constexpr std::size_t count = allContentCategories.size();
// Byte values kept where a category byte is stored.
inline constexpr std::uint8_t noCategory = 13;
inline constexpr std::uint8_t notSet = 255;

constexpr std::uint8_t raw(ContentCategory category) { return static_cast<std::uint8_t>(category); }

// A stored byte outside 0..12 is not a category.
constexpr std::optional<ContentCategory> fromRaw(std::uint8_t value)
{
    if (value >= count)
        return std::nullopt;
    return static_cast<ContentCategory>(value);
}

// What the map legend and lists show.
std::string_view displayLabel(ContentCategory category);
// What the agent command line reports.
std::string_view agentKey(ContentCategory category);
std::optional<ContentCategory> fromAgentKey(std::string_view key);

}

}
