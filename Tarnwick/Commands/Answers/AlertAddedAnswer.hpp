#pragma once

#include "Alerts/AlertReading.hpp"
#include "Alerts/SpaceAlert.hpp"

namespace tarnwick {

// An alert just set, or whose limit just changed, with its measurement now.
struct AlertAddedAnswer {
    SpaceAlert alert;
    AlertReading reading;
    bool replaced = false;      // the place had an alert of this kind, whose limit changed
    bool dailySnapshot = false; // whether the daily snapshot that measures it is on
};

}
