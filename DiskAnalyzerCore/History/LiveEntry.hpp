#pragma once

#include "Classification/RestBuckets.hpp"
#include "Scanning/NodeFlags.hpp"
#include "Scanning/NodeKind.hpp"
#include "Scanning/TreeDate.hpp"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace tarnwick {

// One item of a folder's current contents, listed beside a snapshot's folder. A subfolder
// is not looked into: its sizes are 0 and marked as lower bounds, its contents as unread.
struct LiveEntry {
    std::string name;
    NodeKind kind = NodeKind::file;
    std::int64_t allocated = 0;
    std::optional<Date> modified;
    std::optional<Date> created;
    std::optional<Date> oldestItem;
    std::int64_t logical = 0;
    bool hidden = false;
    NodeFlags flags;
    // For an item that is not a folder: its bytes as one content rest part, by the category
    // its name tells (other when it tells none).
    std::optional<std::vector<RestPart>> rests;

    bool operator==(const LiveEntry&) const = default;
};

}
