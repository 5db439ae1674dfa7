#pragma once

#include <string>
#include <string_view>

// What a start of the app does when an app of this user already runs: one app serves the
// window and every command line, so the new start hands what it was asked to the running
// one and ends.
//
// The request carries the start's own words as its command, which the tool's parser can
// never produce (a first word starting with "-" starts the app, not the tool):
//   → {"arguments":{"path":"/home/ada/Projects"},"command":"--open","json":false}
//   ← {"isError":false,"structured":{...},"text":"Scanning /home/ada/Projects in Tarnwick..."}
namespace tarnwick::AppHandoff {

inline constexpr std::string_view showCommand = "--show";
inline constexpr std::string_view openCommand = "--open";

// `tarnwick --open PATH`: asks the app (starting it in the background when none runs) to
// open PATH in its window, scanning it unless the scan on screen holds it; prints the
// answer and returns the exit status.
int open(const std::string& path);
// `tarnwick` while an app runs: brings its window to the front, or says that it runs without
// one. Returns the exit status.
int showRunningApp();

}
