#pragma once

#include "Classification/ColorMode.hpp"
#include "Classification/TypeGroups.hpp"
#include "Scanning/TreeDate.hpp"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace tarnwick {

// A place's bytes in one colour mode: a page of its groups with their largest places, or in
// the ratio mode its on-disk / size ratio and the items that stand out.
struct TypesAnswer {
    struct Groups {
        std::vector<TypeGroups::Group> groups; // from the cursor on, at most as many as asked for
        std::size_t first = 0;                 // the cursor: the index of the first of them
        std::size_t count = 0;                 // groups of the place in all
        std::size_t perGroup = 0;              // places asked for in each
    };
    struct Ratios {
        TypeGroups::Extremes extremes;
        std::size_t perExtreme = 0; // items asked for in each list
    };

    std::string path; // absolute
    ColorMode mode = ColorMode::contentType;
    std::optional<Date> snapshotDate; // absent for the scan on screen
    std::int64_t bytes = 0;           // on disk
    bool incomplete = false;          // bytes is a lower bound
    std::variant<Groups, Ratios> listing;
};

}
