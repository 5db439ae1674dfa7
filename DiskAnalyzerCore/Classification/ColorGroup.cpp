#include "Classification/ColorGroup.hpp"

namespace tarnwick {

ColorGroup ColorGroup::owner(std::string identifier)
{
    ColorGroup group(Kind::owner);
    group.m_owner = std::make_shared<const std::string>(std::move(identifier));
    return group;
}

std::optional<std::string_view> ColorGroup::ownerIdentifier() const
{
    if (m_kind != Kind::owner || !m_owner)
        return std::nullopt;
    return std::string_view(*m_owner);
}

std::optional<ContentCategory> ColorGroup::contentCategory() const
{
    if (m_kind != Kind::content)
        return std::nullopt;
    return ContentCategories::fromRaw(m_raw);
}

std::optional<DateGroup> ColorGroup::dateGroup() const
{
    if (m_kind != Kind::date)
        return std::nullopt;
    return DateGroup::fromRaw(m_raw);
}

bool ColorGroup::isOwnerModeGroup() const
{
    return m_kind == Kind::owner || m_kind == Kind::macOS || m_kind == Kind::noOwner || m_kind == Kind::otherApps;
}

std::optional<std::string> ColorGroup::key() const
{
    switch (m_kind) {
    case Kind::owner:
        return m_owner ? *m_owner : std::string();
    case Kind::macOS:
        return "system:macos";
    case Kind::noOwner:
        return "system:no-owner";
    case Kind::otherApps:
        return "system:other-apps";
    default:
        return std::nullopt;
    }
}

bool ColorGroup::operator==(const ColorGroup& other) const
{
    if (m_kind != other.m_kind || m_raw != other.m_raw)
        return false;
    if (m_kind != Kind::owner)
        return true;
    return ownerIdentifier() == other.ownerIdentifier();
}

}
