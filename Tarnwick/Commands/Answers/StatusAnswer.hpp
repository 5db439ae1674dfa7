#pragma once

#include "Classification/ColorMode.hpp"
#include "Scanning/TreeDate.hpp"

#include <cstdint>
#include <optional>
#include <string>

namespace tarnwick {

// What status and wait tell: whether the app runs, the scan under way, the result on screen
// and what the window shows of it, and what went wrong with the last scan or save.
struct StatusAnswer {
    struct Scanning {
        std::string root;
        std::int64_t itemsSoFar = 0;
        std::string currentPath; // empty before the first folder is read
    };
    struct Scanned {
        std::string root;
        std::int64_t bytes = 0;
        bool incomplete = false;    // some of it couldn't be read: bytes is a lower bound
        std::int64_t inside = 0;    // the items directly inside, as in summary
        std::int64_t inAll = 0;     // every item below
        Date finishedAt {};
        std::string openFolder;
        std::optional<std::string> selection;
    };

    bool running = true; // false: the tool answers for an app that isn't running
    std::optional<Scanning> scanning;
    std::optional<Scanned> scanned;
    std::optional<std::string> lastFailure;
    std::optional<std::string> saveProblem; // why the latest snapshot couldn't be saved
    std::optional<std::string> recovery;    // that a damaged history index was rebuilt
    ColorMode colorMode = ColorMode::contentType;
    bool waitingForUser = false;
};

}
