#include "MenuBar/MenuBarStyle.hpp"

namespace tarnwick {

namespace {

using Json = nlohmann::json;
using Error = MenuBarStyle::DecodingError;

std::unexpected<Error> invalid(std::string key)
{
    return std::unexpected(Error { Error::Case::invalidValue, std::move(key) });
}

std::expected<bool, Error> flag(const Json& json, const char* key)
{
    auto found = json.find(key);
    if (found == json.end() || !found->is_boolean())
        return invalid(key);
    return found->get<bool>();
}

}

std::string MenuBarStyle::DecodingError::text() const
{
    switch (reason) {
    case Case::invalidNumberOfKeys:
        return "Invalid number of keys found, expected one.";
    case Case::unknownCase:
        return "Unknown case \"" + key + "\".";
    case Case::invalidValue:
        break;
    }
    return "Missing or invalid value for \"" + key + "\".";
}

Json MenuBarStyle::Disks::toJSON() const
{
    switch (kind) {
    case Kind::all:
        return { { "all", Json::object() } };
    case Kind::physical:
        return { { "physical", Json::object() } };
    case Kind::chosen:
        break;
    }
    return { { "chosen", { { "_0", chosen } } } };
}

std::expected<MenuBarStyle::Disks, Error> MenuBarStyle::Disks::fromJSON(const Json& json)
{
    if (!json.is_object())
        return invalid("disks");
    if (json.size() != 1)
        return std::unexpected(Error { Error::Case::invalidNumberOfKeys, {} });
    const std::string& name = json.begin().key();
    const Json& payload = json.begin().value();
    if (!payload.is_object())
        return invalid(name);
    if (name == "all")
        return Disks::all();
    if (name == "physical")
        return Disks::physical();
    if (name != "chosen")
        return std::unexpected(Error { Error::Case::unknownCase, name });
    auto list = payload.find("_0");
    if (list == payload.end() || !list->is_array())
        return invalid("_0");
    std::vector<std::string> identifiers;
    for (const Json& identifier : *list) {
        if (!identifier.is_string())
            return invalid("_0");
        identifiers.push_back(identifier.get<std::string>());
    }
    return Disks::choosing(std::move(identifiers));
}

std::string_view MenuBarStyle::rawValue(Layout layout)
{
    return layout == Layout::each ? "each" : "mostNotable";
}

Json MenuBarStyle::toJSON() const
{
    return {
        { "disks", disks.toJSON() },
        { "showsFreePercent", showsFreePercent },
        { "showsFreeBytes", showsFreeBytes },
        { "showsChange", showsChange },
        { "layout", std::string(rawValue(layout)) },
    };
}

std::expected<MenuBarStyle, Error> MenuBarStyle::fromJSON(const Json& json)
{
    if (!json.is_object())
        return invalid("style");
    auto disksJSON = json.find("disks");
    if (disksJSON == json.end())
        return invalid("disks");
    auto disks = Disks::fromJSON(*disksJSON);
    if (!disks)
        return std::unexpected(disks.error());
    MenuBarStyle style;
    style.disks = std::move(*disks);
    for (auto [key, field] : { std::pair { "showsFreePercent", &style.showsFreePercent }, std::pair { "showsFreeBytes", &style.showsFreeBytes },
             std::pair { "showsChange", &style.showsChange } }) {
        auto value = flag(json, key);
        if (!value)
            return std::unexpected(value.error());
        *field = *value;
    }
    auto layout = json.find("layout");
    if (layout == json.end() || !layout->is_string())
        return invalid("layout");
    if (*layout == "each")
        style.layout = Layout::each;
    else if (*layout == "mostNotable")
        style.layout = Layout::mostNotable;
    else
        return invalid("layout");
    return style;
}

}
