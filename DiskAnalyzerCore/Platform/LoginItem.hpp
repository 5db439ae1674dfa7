#pragma once

#include <expected>
#include <string>
#include <string_view>

// Starting Tarnwick when the user logs in, for the daily snapshot: on Linux an XDG autostart
// entry, "autostart/tarnwick.desktop" in the user's configuration folder:
//
//     [Desktop Entry]
//     Type=Application
//     Name=Tarnwick
//     Comment=Takes a snapshot of your disks once a day
//     Exec="/opt/tarnwick/bin/tarnwick" --background
//     Terminal=false
//     NoDisplay=true
//     X-GNOME-Autostart-enabled=true
//
// The session starts the executable with "--background": the app without its window, in the
// system tray.
namespace tarnwick::LoginItem {

struct Error {
    std::string path;
    int code = 0; // errno

    [[nodiscard]] std::string text() const;
    bool operator==(const Error&) const = default;
};

// $XDG_CONFIG_HOME/autostart/tarnwick.desktop, or ~/.config/autostart/tarnwick.desktop.
std::string standardPath();

// The entry's text for an executable at an absolute path.
std::string entryText(std::string_view executable);
// An argument of the Exec key, quoted when it holds anything but plain characters.
std::string quotedArgument(std::string_view argument);

// Writes the entry (whole, then renamed into place), creating its folder.
std::expected<void, Error> install(const std::string& path, std::string_view executable);
// Removing an entry that is not there succeeds.
std::expected<void, Error> remove(const std::string& path);
bool isInstalled(const std::string& path);

}
