#pragma once

#include "Classification/ContentCategory.hpp"

#include <array>
#include <cstdint>

namespace tarnwick {

// A node's bytes split by content category, indexed by the category's raw value.
struct ContentTotals {
    std::int64_t bytes = 0;
    std::array<std::int64_t, ContentCategories::count> categories {};

    [[nodiscard]] std::int64_t operator[](ContentCategory category) const { return categories[ContentCategories::raw(category)]; }
    bool operator==(const ContentTotals&) const = default;
};

}
