#pragma once

#include "Support/MappedColumn.hpp"

#include <cstdint>
#include <string_view>
#include <vector>

namespace tarnwick {

// Every node's name, back to back in large byte segments with a 32-bit start per name.
// A new segment starts before a segment would pass 4 GiB, so the 32-bit starts never
// overflow however many names there are.
class NameArena {
public:
    NameArena();

    void append(std::string_view name);
    void reserve(std::size_t names);
    [[nodiscard]] std::string_view operator[](std::size_t index) const;
    [[nodiscard]] std::size_t size() const { return m_starts.size(); }
    [[nodiscard]] std::size_t byteCount() const;
    void shrinkToFit();

private:
    static constexpr std::uint64_t segmentLimit = 0xFFFF'FFFFull;

    struct Segment {
        std::size_t firstName = 0;
        MappedColumn<char> bytes;
    };
    [[nodiscard]] std::size_t segmentOf(std::size_t index) const;

    std::vector<Segment> m_segments;
    MappedColumn<std::uint32_t> m_starts;
};

}
