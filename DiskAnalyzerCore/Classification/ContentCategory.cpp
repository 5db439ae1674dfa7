#include "Classification/ContentCategory.hpp"

namespace tarnwick::ContentCategories {

namespace {

struct Texts {
    std::string_view label;
    std::string_view agentKey;
};

constexpr std::array<Texts, count> texts { {
    { "Video", "video" },
    { "Photos & Design", "photos_and_design" },
    { "Music & Audio", "music_and_audio" },
    { "Documents & Mail", "documents" },
    { "Apps & Games", "apps_and_games" },
    { "Developer", "developer" },
    { "AI & Agents", "ai_and_agents" },
    { "Virtual Machines", "virtual_machines" },
    { "Archives & Backups", "archives_and_backups" },
    { "Caches", "caches" },
    { "Logs", "logs" },
    { "System", "system" },
    { "Other", "other" },
} };

}

std::string_view displayLabel(ContentCategory category)
{
    return texts[raw(category) < count ? raw(category) : raw(ContentCategory::other)].label;
}

std::string_view agentKey(ContentCategory category)
{
    return texts[raw(category) < count ? raw(category) : raw(ContentCategory::other)].agentKey;
}

std::optional<ContentCategory> fromAgentKey(std::string_view key)
{
    for (ContentCategory category : allContentCategories) {
        if (texts[raw(category)].agentKey == key)
            return category;
    }
    return std::nullopt;
}

}
