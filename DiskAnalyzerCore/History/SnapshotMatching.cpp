#include "History/SnapshotMatching.hpp"

#include "History/Snapshot.hpp"

#include <functional>
#include <string_view>

namespace tarnwick {

namespace {

// The later snapshot's folders by (parent, name): open addressing over node indices, so that
// building it allocates once and a lookup compares against the snapshot's own arrays.
class ChildIndex {
public:
    explicit ChildIndex(const Snapshot& snapshot)
        : m_snapshot(snapshot)
    {
        std::size_t capacity = 16;
        while (capacity < snapshot.names.size() * 2)
            capacity *= 2;
        m_slots.assign(capacity, -1);
        m_mask = capacity - 1;
        for (std::int32_t node = 1; node < snapshot.nodeCount(); ++node) {
            std::int32_t parent = snapshot.parents[static_cast<std::size_t>(node)];
            std::string_view name = snapshot.names[static_cast<std::size_t>(node)];
            std::size_t slot = hash(parent, name);
            // A second folder of the same name under one parent cannot come from a file
            // system; the first one keeps the name.
            bool taken = false;
            for (; m_slots[slot] >= 0; slot = (slot + 1) & m_mask) {
                if (isKey(m_slots[slot], parent, name)) {
                    taken = true;
                    break;
                }
            }
            if (!taken)
                m_slots[slot] = node;
        }
    }

    [[nodiscard]] std::int32_t find(std::int32_t parent, std::string_view name) const
    {
        for (std::size_t slot = hash(parent, name); m_slots[slot] >= 0; slot = (slot + 1) & m_mask) {
            if (isKey(m_slots[slot], parent, name))
                return m_slots[slot];
        }
        return -1;
    }

private:
    [[nodiscard]] std::size_t hash(std::int32_t parent, std::string_view name) const
    {
        std::size_t value = std::hash<std::string_view> {}(name) ^ (static_cast<std::size_t>(parent) * 0x9E3779B97F4A7C15ull);
        return (value ^ (value >> 29)) & m_mask;
    }
    [[nodiscard]] bool isKey(std::int32_t node, std::int32_t parent, std::string_view name) const
    {
        return m_snapshot.parents[static_cast<std::size_t>(node)] == parent && m_snapshot.names[static_cast<std::size_t>(node)] == name;
    }

    const Snapshot& m_snapshot;
    std::vector<std::int32_t> m_slots;
    std::size_t m_mask = 0;
};

}

SnapshotMatching::SnapshotMatching(const Snapshot& earlier, const Snapshot& later)
    : m_toLater(static_cast<std::size_t>(earlier.nodeCount()), -1)
    , m_toEarlier(static_cast<std::size_t>(later.nodeCount()), -1)
{
    if (earlier.nodeCount() == 0 || later.nodeCount() == 0)
        return;
    m_toLater[0] = 0;
    m_toEarlier[0] = 0;
    const ChildIndex laterChildren(later);
    for (std::size_t i = 1; i < m_toLater.size(); ++i) {
        std::int32_t parent = m_toLater[static_cast<std::size_t>(earlier.parents[i])];
        if (parent < 0)
            continue;
        std::int32_t match = laterChildren.find(parent, earlier.names[i]);
        if (match >= 0 && m_toEarlier[static_cast<std::size_t>(match)] < 0) {
            m_toLater[i] = match;
            m_toEarlier[static_cast<std::size_t>(match)] = static_cast<std::int32_t>(i);
        }
    }
}

std::int32_t SnapshotMatching::laterOf(std::int32_t earlierNode) const
{
    return earlierNode >= 0 && static_cast<std::size_t>(earlierNode) < m_toLater.size() ? m_toLater[static_cast<std::size_t>(earlierNode)] : -1;
}

std::int32_t SnapshotMatching::earlierOf(std::int32_t laterNode) const
{
    return laterNode >= 0 && static_cast<std::size_t>(laterNode) < m_toEarlier.size() ? m_toEarlier[static_cast<std::size_t>(laterNode)] : -1;
}

}
