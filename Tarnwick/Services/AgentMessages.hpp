#pragma once

#include "Agent/EchoedText.hpp"

#include <pwd.h>
#include <sys/stat.h>

#include <string>
#include <string_view>

namespace tarnwick::AgentMessages {

// The app's own words in command answers, kept in one place.
inline constexpr std::string_view nothingScanned = "Nothing is scanned yet. Run scan PATH first.";

// Paths in these messages are shown as the text output shows names: control characters
// escaped, and at most EchoedText::longestEchoBytes of them.
inline std::string notAbsolute(const std::string& argument)
{
    return "'" + EchoedText::shown(argument) + "' is not a place: give an absolute path or one starting with ~/.";
}
inline std::string notInScan(const std::string& path, const std::string& root)
{
    return EchoedText::shown(path) + " is not in the scan of " + EchoedText::shown(root) + ". Run scan with it first.";
}
inline std::string notFoundYet(const std::string& path, const std::string& root)
{
    return EchoedText::shown(path) + " is not in what the scan of " + EchoedText::shown(root) + " has found so far. Run wait, then ask again.";
}
inline std::string justStarted(const std::string& root)
{
    return "The scan of " + EchoedText::shown(root) + " has only just started. Ask again in a second, or run wait.";
}
inline std::string noSuchPlace(const std::string& path)
{
    return EchoedText::shown(path) + " doesn't exist.";
}
inline std::string notACursor(const std::string& cursor)
{
    return "The cursor " + EchoedText::shown(cursor) + " is not one find printed.";
}
inline std::string unresolvable(const std::string& path, std::string_view title, const std::string& detail)
{
    return EchoedText::shown(path) + ": " + std::string(title) + ". " + detail;
}
inline std::string notAFolder(const std::string& path)
{
    return EchoedText::shown(path) + " is a file. A scan starts at a folder or a disk: scan the folder that holds it, then show the file.";
}
inline std::string noColorTotals(const std::string& path, std::string_view modeName)
{
    return "The snapshot of " + EchoedText::shown(path) + " keeps no color totals. Scan it again to see it by " + std::string(modeName) + ".";
}
inline std::string noTotalsFor(std::string_view title, const std::string& path)
{
    return "There are no " + std::string(title) + " totals for " + EchoedText::shown(path) + ".";
}
// A POSIX permission denial: no window of Tarnwick's can grant it, only the owner (or
// running as a user who has it) can.
inline std::string noPermission(const std::string& path, const std::string& missing, const struct stat* status)
{
    std::string owner;
    if (status != nullptr) {
        const passwd* entry = ::getpwuid(status->st_uid);
        owner = " (owned by " + (entry ? std::string(entry->pw_name) : "user " + std::to_string(status->st_uid)) + ")";
    }
    return "This user lacks " + missing + ", so Tarnwick may not read " + EchoedText::shown(path) + owner
        + ". Ask its owner to allow it, or scan it as a user who may read it (such as with sudo).";
}

}
