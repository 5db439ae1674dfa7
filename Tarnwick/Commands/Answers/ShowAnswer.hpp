#pragma once

#include "Classification/ColorMode.hpp"
#include "ScanAnswer.hpp"

#include <optional>
#include <string>

namespace tarnwick {

// What show put on the map: a folder opened, or a file selected in the folder that holds it.
struct ShowAnswer {
    std::string path;
    bool folder = true;
    ColorMode colorMode = ColorMode::contentType;
    std::optional<WindowPresence> window; // set by whoever knows of the window
};

}
