#pragma once

#include "Alerts/AlertReading.hpp"
#include "Alerts/SpaceAlert.hpp"

#include <cstddef>
#include <vector>

namespace tarnwick {

// Every alert that is set, each with its latest measurement.
struct AlertsAnswer {
    struct Item {
        SpaceAlert alert;
        AlertReading reading;
    };

    std::vector<Item> alerts;
    std::size_t unreadable = 0; // stored alerts this version can't read, kept as they are
    bool dailySnapshot = false; // whether the daily snapshot that measures them is on
};

}
