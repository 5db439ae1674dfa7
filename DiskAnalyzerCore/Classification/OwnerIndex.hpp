#pragma once

#include "Classification/DesktopEntry.hpp"
#include "Platform/ApplicationRoots.hpp"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace tarnwick {

// The installed applications and the names and places of their folders: desktop entries,
// Flatpak apps and their data, snaps, and the folders of coding agents. Built once per
// session; answers which application a folder name stands for.
class OwnerIndex {
public:
    struct App {
        // The desktop-file id ("org.gnome.Nautilus", "firefox"), a Flatpak app id, a snap
        // name, or "agent:" and the agent's name for a coding agent without a desktop entry.
        std::string id;
        std::string displayName;
        // Folder names taken as the app's own in ~/.config, ~/.local/share, ~/.cache,
        // ~/.var/app, ~/snap, /opt and as ~/.NAME, in folded form (see fold).
        std::vector<std::string> names;
        // Places relative to any home folder (".claude", ".config/opencode").
        std::vector<std::string> homePaths;
        // Absolute places ("/opt/zoom").
        std::vector<std::string> paths;
    };

    // How sure a name is: when two apps claim one name, the surer claim wins, and of
    // equal claims the first.
    enum class Strength : std::uint8_t { alias, displayName, icon, program, lastIDComponent, identifier };

    struct Skipped {
        std::string path;
        DesktopEntry::Error error;
    };

    // Reads the desktop entries, Flatpak installations and data, snaps and the system's
    // release file below the roots, then adds the agent places.
    static OwnerIndex build(const ApplicationRoots& roots);

    // An empty index for the given roots, filled by the add functions below.
    explicit OwnerIndex(ApplicationRoots roots = {});

    // The entry of a desktop id seen for the first time (the caller keeps the precedence
    // of folders). Entries of other types than "Application" are not apps.
    void addDesktopEntry(std::string_view id, const DesktopEntry& entry);
    // An app known by its Flatpak id: an installation's "app/ID" or the data in ~/.var/app/ID.
    void addFlatpak(std::string_view appID);
    // A snap by name. Base and platform snaps ("core22", "snapd", "gnome-42-2204") are part
    // of the system and make no app.
    void addSnap(std::string_view name);
    // A program installed under /opt: its folder there becomes the app's place.
    void addPlace(std::string_view appID, std::string path);
    // The coding agents' places in the home folder, each agent one app unless a desktop
    // entry already stands for it. A place in "Library/Application Support" also counts at
    // its Linux counterpart in ".config".
    void addAgentPlaces();
    // Extra folder names of a few well-known apps ("mozilla" for Firefox), given only to
    // apps that are present.
    void addAliases();
    void setSystemName(std::string name) { m_systemName = std::move(name); }

    [[nodiscard]] const std::vector<App>& apps() const { return m_apps; }
    [[nodiscard]] const ApplicationRoots& roots() const { return m_roots; }
    // The operating system's name, shown for the system's own folders.
    [[nodiscard]] const std::string& systemName() const { return m_systemName; }
    // Desktop entries that could not be used, and why.
    [[nodiscard]] const std::vector<Skipped>& skipped() const { return m_skipped; }

    // The app whose folder a name is, compared in folded form; a leading dot is ignored.
    [[nodiscard]] std::optional<std::int32_t> find(std::string_view folderName) const;
    [[nodiscard]] std::optional<std::int32_t> findID(std::string_view id) const;

    // ASCII letters lower-cased, digits and other bytes kept, and ASCII punctuation and
    // blanks dropped, so that "Visual Studio Code", "visual-studio-code" and
    // ".visualstudiocode" meet.
    static std::string fold(std::string_view name);
    // PRETTY_NAME, else NAME, of an os-release file; absent when it has neither.
    static std::optional<std::string> systemNameFromOSRelease(std::string_view text);
    static bool isPlatformSnap(std::string_view name);

    static constexpr std::string_view fallbackSystemName = "Linux";

private:
    std::int32_t addApp(std::string id, std::string displayName);
    void addName(std::int32_t app, std::string_view name, Strength strength);
    void readApplicationFolder(const std::string& folder, std::unordered_map<std::string, bool>& seen);
    void readDesktopFile(const std::string& path, std::string_view id);

    struct Claim {
        std::int32_t app;
        Strength strength;
    };

    ApplicationRoots m_roots;
    std::vector<App> m_apps;
    std::unordered_map<std::string, Claim> m_names;
    std::unordered_map<std::string, std::int32_t> m_ids;
    std::unordered_map<std::string, std::int32_t> m_snaps;
    std::string m_systemName { fallbackSystemName };
    std::vector<Skipped> m_skipped;
};

}
