#pragma once

#include <string>

namespace tarnwick::AppLauncher {

// The first word that makes the executable start as the app without coming to the front.
inline constexpr const char* backgroundWord = "--background";
// Asks the app for the daily snapshot while it runs, whatever the saved switch says: how a
// service manager runs it on a server, where nobody opens the window to turn it on.
inline constexpr const char* dailySnapshotWord = "--daily-snapshot";

// Starts executable with the single word "--background", detached from this process: in a
// session of its own, in "/", its standard streams on /dev/null and no other descriptor of
// this process, with this environment. True when the
// program was started; whether it then listens is for the caller to find out.
bool startInBackground(const std::string& executable);

}
