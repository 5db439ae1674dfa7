#pragma once

#include "Agent/EchoedText.hpp"

#include <string>
#include <string_view>

namespace tarnwick::AgentMessages {

// The app's own words in command answers, kept in one place.
inline constexpr std::string_view nothingScanned = "Nothing is scanned yet. Run scan PATH first.";
inline constexpr std::string_view scanRunning = "A scan is running; run wait first.";

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
inline std::string noSuchPlace(const std::string& path)
{
    return EchoedText::shown(path) + " doesn't exist.";
}
inline std::string noAccess(const std::string& path, const std::string& tool)
{
    return "Tarnwick may not read " + EchoedText::shown(path) + ". Run " + tool + " --open '" + EchoedText::shown(path)
        + "', which opens it in Tarnwick and starts the scan.";
}

}
