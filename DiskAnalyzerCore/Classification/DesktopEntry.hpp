#pragma once

#include <cstddef>
#include <cstdint>
#include <expected>
#include <string>
#include <string_view>
#include <vector>

namespace tarnwick {

// What a desktop entry file (".desktop") says about the application it launches, as far
// as it helps to tell which folders are the application's own. Only the [Desktop Entry]
// group is read, and only untranslated keys.
struct DesktopEntry {
    enum class Error : std::uint8_t { unreadable, tooLarge, noDesktopEntryGroup };
    static std::string_view text(Error error);

    // Desktop entries are a few kilobytes; anything far larger is not one.
    static constexpr std::size_t maximumSize = 1 << 20;

    std::string type; // "Application", "Link" or "Directory"
    std::string name;
    std::string exec;
    std::string tryExec;
    std::string startupWMClass;
    std::string icon;
    std::string flatpakID; // X-Flatpak, set in the entries Flatpak exports
    std::string snapName;  // X-SnapInstanceName, set in the entries of snaps
    // Hidden=true: the entry counts as deleted and hides entries of the same id further down.
    bool hidden = false;

    // Lines that are neither a group, a comment nor "Key=Value" are skipped: one odd line
    // must not hide an application.
    static std::expected<DesktopEntry, Error> parse(std::string_view text);

    // The arguments of Exec, unquoted as the format says ("a b" and \" inside quotes).
    static std::vector<std::string> execArguments(std::string_view exec);
    // The name of the program Exec (or else TryExec) starts, without its folder: "vim" for
    // "vim %F"; "firefox" for "env MOZ_X=1 /usr/lib/firefox/firefox %u"; the script for an
    // interpreter ("tool" for "python3 /opt/tool/tool.py"); the command run in a Flatpak
    // sandbox. Empty when a shell or an opener runs it, which says nothing about the app.
    [[nodiscard]] std::string programName() const;
};

}
