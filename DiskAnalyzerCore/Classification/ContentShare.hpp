#pragma once

#include "Classification/ContentCategory.hpp"

#include <cstdint>

namespace tarnwick {

// Bytes of one content category inside a folder, for the inspector and the agent.
struct ContentShare {
    ContentCategory category = ContentCategory::other;
    std::int64_t bytes = 0;

    bool operator==(const ContentShare&) const = default;
};

}
