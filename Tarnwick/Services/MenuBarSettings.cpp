#include "MenuBarSettings.hpp"

#include "DailyScans.hpp"
#include "Platform/SystemLog.hpp"
#include "Platform/UserDefaults.hpp"

namespace tarnwick::MenuBarSettings {

MenuBarStyle style(UserDefaults& defaults)
{
    std::optional<nlohmann::json> stored = defaults.value(MenuBarStyle::styleKey);
    if (!stored)
        return {};
    auto decoded = MenuBarStyle::fromJSON(*stored);
    if (!decoded) {
        SystemLog::write(SystemLog::Level::error, "menu bar", "the saved style can't be read: " + decoded.error().text());
        return {};
    }
    return *decoded;
}

std::expected<void, std::string> setStyle(UserDefaults& defaults, const MenuBarStyle& style)
{
    if (auto saved = defaults.set(MenuBarStyle::styleKey, style.toJSON()); !saved)
        return std::unexpected(saved.error().text());
    return {};
}

bool isShown(UserDefaults& defaults)
{
    std::optional<nlohmann::json> shown = defaults.value(DailyScans::menuBarItemShownKey);
    return shown && shown->is_boolean() && shown->get<bool>();
}

std::expected<void, std::string> setShown(UserDefaults& defaults, bool shown)
{
    auto saved = defaults.update([shown](nlohmann::json& settings) {
        settings[std::string(DailyScans::menuBarItemShownKey)] = shown;
        // Shown or hidden by the user from now on, whatever the daily snapshot does.
        settings[std::string(DailyScans::showsMenuBarItemKey)] = false;
    });
    if (!saved)
        return std::unexpected(saved.error().text());
    return {};
}

}
