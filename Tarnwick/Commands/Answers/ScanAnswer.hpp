#pragma once

#include <optional>
#include <string>

namespace tarnwick {

// Where a window is, for the answers that bring it forward: in front, or none at all
// because the app runs without a display.
enum class WindowPresence { inFront, none };

// What scan, rescan and a second start with a place did: opened the place in the finished
// scan that holds it, or started scanning it.
struct ScanAnswer {
    enum class Action { opened, started, startedAgain };

    std::string path; // the place opened, or the root of the scan started
    Action action = Action::started;
    std::optional<WindowPresence> window; // told only by a second start of the app
};

// What a second start of the app without a place did: brought the running app's window
// forward, when it has one.
struct AlreadyRunningAnswer {
    WindowPresence window = WindowPresence::none;
};

}
