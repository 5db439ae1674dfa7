#pragma once

#include "MenuBar/MenuBarStyle.hpp"

#include <expected>
#include <string>

namespace tarnwick {

class UserDefaults;

// The tray item's settings in the user defaults: whether it is shown ("MenuBarItemShown") and
// its style (MenuBarStyle::styleKey). A stored style that cannot be read counts as the default
// one, and is logged.
namespace MenuBarSettings {

MenuBarStyle style(UserDefaults& defaults);
std::expected<void, std::string> setStyle(UserDefaults& defaults, const MenuBarStyle& style);

bool isShown(UserDefaults& defaults);
std::expected<void, std::string> setShown(UserDefaults& defaults, bool shown);

}

}
