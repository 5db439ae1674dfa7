#pragma once

#include "Classification/ColorGroup.hpp"

#include <optional>

namespace tarnwick {

// The colour of one node in one mode: a group, a share of bytes (0 to 1), a ratio of size
// on disk to logical size, mixed (no group holds half of a folder's bytes) or unknown.
class NodeColor {
public:
    enum class Kind : std::uint8_t { group, share, ratio, mixed, unknown };

    static NodeColor group(ColorGroup group) { return NodeColor(Kind::group, 0, std::move(group)); }
    static NodeColor share(double fraction) { return NodeColor(Kind::share, fraction); }
    static NodeColor ratio(double value) { return NodeColor(Kind::ratio, value); }
    static NodeColor mixed() { return NodeColor(Kind::mixed); }
    static NodeColor unknown() { return NodeColor(Kind::unknown); }

    [[nodiscard]] Kind kind() const { return m_kind; }
    // Set for a group colour.
    [[nodiscard]] const std::optional<ColorGroup>& colorGroup() const { return m_group; }
    // The fraction of a share or the value of a ratio; 0 otherwise.
    [[nodiscard]] double value() const { return m_value; }

    bool operator==(const NodeColor&) const = default;

private:
    explicit NodeColor(Kind kind, double value = 0, std::optional<ColorGroup> group = std::nullopt)
        : m_kind(kind)
        , m_value(value)
        , m_group(std::move(group))
    {
    }

    Kind m_kind;
    double m_value = 0;
    std::optional<ColorGroup> m_group;
};

}
