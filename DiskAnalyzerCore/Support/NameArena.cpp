#include "Support/NameArena.hpp"

#include <algorithm>
#include <cassert>

namespace tarnwick {

NameArena::NameArena()
{
    m_segments.emplace_back();
}

void NameArena::reserve(std::size_t names)
{
    m_starts.reserve(names);
}

void NameArena::append(std::string_view name)
{
    Segment* segment = &m_segments.back();
    if (segment->bytes.size() + name.size() > segmentLimit) {
        m_segments.push_back(Segment { m_starts.size(), {} });
        segment = &m_segments.back();
    }
    m_starts.push_back(static_cast<std::uint32_t>(segment->bytes.size()));
    segment->bytes.append(name.data(), name.size());
}

std::size_t NameArena::segmentOf(std::size_t index) const
{
    if (m_segments.size() == 1)
        return 0;
    auto after = std::upper_bound(m_segments.begin(), m_segments.end(), index,
        [](std::size_t value, const Segment& segment) { return value < segment.firstName; });
    return static_cast<std::size_t>(after - m_segments.begin()) - 1;
}

std::string_view NameArena::operator[](std::size_t index) const
{
    assert(index < m_starts.size() && "name index out of range");
    std::size_t s = segmentOf(index);
    const Segment& segment = m_segments[s];
    bool lastInSegment = index + 1 == m_starts.size() || (s + 1 < m_segments.size() && index + 1 == m_segments[s + 1].firstName);
    std::size_t end = lastInSegment ? segment.bytes.size() : m_starts[index + 1];
    return { segment.bytes.data() + m_starts[index], end - m_starts[index] };
}

std::size_t NameArena::byteCount() const
{
    std::size_t total = 0;
    for (const Segment& segment : m_segments)
        total += segment.bytes.size();
    return total;
}

void NameArena::shrinkToFit()
{
    m_starts.shrinkToFit();
    for (Segment& segment : m_segments)
        segment.bytes.shrinkToFit();
}

}
