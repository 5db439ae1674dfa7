#pragma once

#include <string>
#include <string_view>

namespace tarnwick::AgentMessages {

// The app's own words in command answers, kept in one place.
inline constexpr std::string_view nothingScanned = "Nothing is scanned yet. Run scan PATH first.";
inline constexpr std::string_view scanRunning = "A scan is running; run wait first.";

inline std::string notAbsolute(const std::string& argument)
{
    return "'" + argument + "' is not a place: give an absolute path or one starting with ~/.";
}
inline std::string noSuchPlace(const std::string& path)
{
    return path + " names no folder or disk here.";
}
inline std::string notInScan(const std::string& path, const std::string& root)
{
    return path + " is not in the scan of " + root + ". Run scan with it first.";
}
inline std::string noAccess(const std::string& path, const std::string& tool)
{
    return "Tarnwick may not read " + path + ". Run " + tool + " --open '" + path + "', which opens it in Tarnwick and starts the scan.";
}

}
