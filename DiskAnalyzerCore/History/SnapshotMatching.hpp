#pragma once

#include <cstdint>
#include <vector>

namespace tarnwick {

struct Snapshot;

// The kept folders of two snapshots of the same place, matched by parent and name: the
// roots match, and a folder matches the folder of the same name (byte for byte) under the
// match of its parent. One pass in node order, parents before children, no recursion.
class SnapshotMatching {
public:
    SnapshotMatching(const Snapshot& earlier, const Snapshot& later);

    // The match of a node, or -1.
    [[nodiscard]] std::int32_t laterOf(std::int32_t earlierNode) const;
    [[nodiscard]] std::int32_t earlierOf(std::int32_t laterNode) const;

private:
    std::vector<std::int32_t> m_toLater;
    std::vector<std::int32_t> m_toEarlier;
};

}
