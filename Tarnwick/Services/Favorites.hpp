#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace tarnwick {

class UserDefaults;

// The folders the user pinned to the sidebar, in the order added, kept in the settings as a
// JSON array of absolute paths.
class Favorites {
public:
    static constexpr std::string_view key = "SidebarFavorites";

    explicit Favorites(UserDefaults& defaults);

    // Entries that are not strings are skipped; a damaged setting reads as none.
    [[nodiscard]] std::vector<std::string> paths() const;
    // False when the path is not absolute or the settings could not be written.
    bool add(const std::string& path);
    bool remove(const std::string& path);

private:
    UserDefaults& m_defaults;
};

}
