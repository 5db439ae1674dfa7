#pragma once

#include "Alerts/SpaceAlert.hpp"

#include <vector>

namespace tarnwick {

// The alerts just removed: the one named by its ID, or every alert on a place.
struct AlertsRemovedAnswer {
    std::vector<SpaceAlert> removed; // at least one
};

}
