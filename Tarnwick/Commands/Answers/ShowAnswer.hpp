#pragma once

#include "Classification/ColorMode.hpp"
#include "ScanAnswer.hpp"

#include <optional>
#include <string>

namespace tarnwick {

// What show put on the map, or will once the running scan has finished: a folder opened, or
// a file selected in the folder that holds it.
struct ShowAnswer {
    std::string path;
    bool folder = true;
    ColorMode colorMode = ColorMode::contentType;
    bool whenScanFinishes = false; // a scan of the place is running: it is shown in its result
    std::optional<WindowPresence> window; // set by whoever knows of the window
};

}
