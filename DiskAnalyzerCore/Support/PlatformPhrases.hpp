#pragma once

#include <string>
#include <string_view>

// The few phrases of the command line's texts that name something of the desktop system.
// The texts were first written for macOS; these are their Linux forms, kept together so that
// another platform changes them in one place. Everything around them stays word for word.
namespace tarnwick::PlatformPhrases {

// macOS: "this Mac".
inline constexpr std::string_view thisComputer = "this computer";

// Opens a folder in the running app's window (starting the app when needed) and scans it.
inline std::string openCommand(std::string_view tool)
{
    return std::string(tool) + " --open";
}

// macOS: "a macOS notification".
inline constexpr std::string_view notification = "a desktop notification";

// macOS: "Finder", counting a disk's used space.
inline constexpr std::string_view fileManager = "the file manager";

// macOS: "in the menu bar", where the app stays with the daily snapshot on.
inline constexpr std::string_view statusArea = "in the system tray";

// macOS stops a sandboxed app started inside another sandbox with status 133 or 134. On Linux
// the app is not sandboxed; an agent's sandbox can only keep the tool from reaching or starting
// it, which ends with APP_NOT_RUNNING.
inline constexpr std::string_view sandboxRule
    = "Tarnwick can't reach its app from inside an agent's own sandbox (APP_NOT_RUNNING, exit status 4): run it outside.";
inline constexpr std::string_view sandboxSkillParagraph
    = "Tarnwick's app runs outside any sandbox, and an agent's own sandbox can keep the command line from reaching it: "
      "there it fails with APP_NOT_RUNNING and exit status 4. Run it outside your sandbox, asking the user for that "
      "permission when you have to (in Codex, a rule in ~/.codex/rules allows it).";

}
