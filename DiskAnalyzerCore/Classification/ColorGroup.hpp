#pragma once

#include "Classification/ContentCategory.hpp"
#include "Classification/DateGroup.hpp"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

namespace tarnwick {

// What one bucket of a colour mode stands for: an owner, a content category, a date
// group, one of the special owner groups, hidden or visible, or unknown.
class ColorGroup {
public:
    enum class Kind : std::uint8_t { owner, content, date, macOS, noOwner, otherApps, hidden, visible, unknown };

    static ColorGroup owner(std::string identifier);
    static ColorGroup content(ContentCategory category) { return ColorGroup(Kind::content, static_cast<std::uint8_t>(category)); }
    static ColorGroup date(DateGroup group) { return ColorGroup(Kind::date, group.raw()); }
    static ColorGroup macOS() { return ColorGroup(Kind::macOS); }
    static ColorGroup noOwner() { return ColorGroup(Kind::noOwner); }
    static ColorGroup otherApps() { return ColorGroup(Kind::otherApps); }
    static ColorGroup hidden() { return ColorGroup(Kind::hidden); }
    static ColorGroup visible() { return ColorGroup(Kind::visible); }
    static ColorGroup unknown() { return ColorGroup(Kind::unknown); }

    [[nodiscard]] Kind kind() const { return m_kind; }
    // Set for owner groups only.
    [[nodiscard]] std::optional<std::string_view> ownerIdentifier() const;
    [[nodiscard]] std::optional<ContentCategory> contentCategory() const;
    [[nodiscard]] std::optional<DateGroup> dateGroup() const;

    // The stable key of an owner-mode group: the owner's identifier, or "system:macos",
    // "system:no-owner", "system:other-apps". Absent for groups of other modes.
    [[nodiscard]] std::optional<std::string> key() const;
    [[nodiscard]] bool isOwnerModeGroup() const;

    bool operator==(const ColorGroup& other) const;

private:
    explicit ColorGroup(Kind kind, std::uint8_t raw = 0)
        : m_kind(kind)
        , m_raw(raw)
    {
    }

    Kind m_kind;
    std::uint8_t m_raw = 0;
    // Shared so that colours handed out per node copy a pointer, not the text.
    std::shared_ptr<const std::string> m_owner;
};

}
