#pragma once

#include "Scanning/TreeDate.hpp"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace tarnwick {

// One page of the largest items below a folder that match find's filters.
struct FindAnswer {
    struct Item {
        std::string path;
        std::int64_t allocated = 0;
        std::int64_t logical = 0;
        bool incomplete = false; // sizes are lower bounds
        std::optional<Date> lastChangeInside;
        std::optional<std::string> hardLinkNote;
        std::optional<std::string> hardLinkCountedAt;
    };

    std::string below;
    std::int64_t matchCount = 0;
    std::int64_t matchedBytes = 0;
    bool matchedIncomplete = false;
    bool stillScanning = false; // from a first scan's preview
    std::int64_t start = 0;     // the cursor: how many matches earlier pages held
    std::vector<Item> items;    // this page's, as many as asked for
};

}
