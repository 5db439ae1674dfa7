#include "Alerts/SpaceAlert.hpp"

#include "Alerts/AlertPeriods.hpp"

#include <array>
#include <cctype>
#include <cerrno>
#include <limits>
#include <random>
#include <sys/random.h>

namespace tarnwick {

namespace {

using Json = nlohmann::json;
using Condition = SpaceAlert::Condition;
using Error = SpaceAlert::DecodingError;

std::unexpected<Error> invalid(std::string key)
{
    return std::unexpected(Error { Error::Case::invalidValue, std::move(key) });
}

std::optional<std::int64_t> integerField(const Json& payload, const char* key)
{
    auto found = payload.find(key);
    if (found == payload.end())
        return std::nullopt;
    if (found->is_number_integer() && !found->is_number_unsigned())
        return found->get<std::int64_t>();
    if (found->is_number_unsigned() && found->get<std::uint64_t>() <= std::numeric_limits<std::int64_t>::max())
        return static_cast<std::int64_t>(found->get<std::uint64_t>());
    return std::nullopt;
}

std::optional<int> percentField(const Json& payload)
{
    auto value = integerField(payload, "percent");
    if (!value || *value < std::numeric_limits<int>::min() || *value > std::numeric_limits<int>::max())
        return std::nullopt;
    return static_cast<int>(*value);
}

std::expected<Condition, Error> decodePayload(const std::string& name, const Json& payload)
{
    if (!payload.is_object())
        return invalid(name);
    if (name == "diskUsed" || name == "share") {
        auto percent = percentField(payload);
        if (!percent)
            return invalid("percent");
        if (name == "share")
            return Condition { Condition::Share { *percent } };
        return Condition { Condition::DiskUsed { *percent } };
    }
    if (name != "size" && name != "growth")
        return std::unexpected(Error { Error::Case::unknownCondition, name });
    auto bytes = integerField(payload, "bytes");
    if (!bytes)
        return invalid("bytes");
    if (name == "size")
        return Condition { Condition::Size { *bytes } };
    auto period = payload.find("period");
    if (period == payload.end() || !period->is_string() || !AlertPeriods::isRawValue(period->get<std::string>()))
        return invalid("period");
    return Condition { Condition::Growth { *bytes, period->get<std::string>() } };
}

}

std::string SpaceAlert::DecodingError::text() const
{
    switch (reason) {
    case Case::invalidNumberOfKeys:
        return "Invalid number of keys found, expected one.";
    case Case::unknownCondition:
        return "Unknown alert condition \"" + key + "\".";
    case Case::invalidValue:
        break;
    }
    return "Missing or invalid value for \"" + key + "\".";
}

std::string_view Condition::caseName() const
{
    static constexpr std::array<std::string_view, 4> names { "diskUsed", "size", "share", "growth" };
    return names[value.index()];
}

bool Condition::replaces(const Condition& other) const
{
    if (kind() != other.kind())
        return false;
    if (const auto* growth = std::get_if<Growth>(&value))
        return growth->period == std::get<Growth>(other.value).period;
    return true;
}

double Condition::limit() const
{
    return std::visit([](const auto& payload) -> double {
        if constexpr (requires { payload.percent; })
            return payload.percent;
        else
            return static_cast<double>(payload.bytes);
    }, value);
}

Json Condition::toJSON() const
{
    Json payload = std::visit([](const auto& fields) -> Json {
        using Fields = std::decay_t<decltype(fields)>;
        if constexpr (std::is_same_v<Fields, Growth>)
            return { { "bytes", fields.bytes }, { "period", fields.period } };
        else if constexpr (std::is_same_v<Fields, Size>)
            return { { "bytes", fields.bytes } };
        else
            return { { "percent", fields.percent } };
    }, value);
    return { { std::string(caseName()), std::move(payload) } };
}

std::expected<Condition, Error> Condition::fromJSON(const Json& json)
{
    if (!json.is_object())
        return invalid("condition");
    if (json.size() != 1)
        return std::unexpected(Error { Error::Case::invalidNumberOfKeys, {} });
    return decodePayload(json.begin().key(), json.begin().value());
}

std::string SpaceAlert::shortForm(std::string_view id)
{
    std::string form;
    for (char c : id.substr(0, 8))
        form += static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return form;
}

std::string SpaceAlert::newID()
{
    std::array<unsigned char, 16> bytes {};
    std::size_t filled = 0;
    while (filled < bytes.size()) {
        ssize_t count = ::getrandom(bytes.data() + filled, bytes.size() - filled, 0);
        if (count < 0 && errno == EINTR)
            continue;
        if (count <= 0)
            break;
        filled += static_cast<std::size_t>(count);
    }
    if (filled < bytes.size()) {
        std::random_device device;
        for (unsigned char& byte : bytes)
            byte = static_cast<unsigned char>(device());
    }
    bytes[6] = static_cast<unsigned char>((bytes[6] & 0x0F) | 0x40); // version 4
    bytes[8] = static_cast<unsigned char>((bytes[8] & 0x3F) | 0x80); // RFC 4122 variant
    static constexpr char digits[] = "0123456789ABCDEF";
    std::string id;
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        if (i == 4 || i == 6 || i == 8 || i == 10)
            id += '-';
        id += digits[bytes[i] >> 4];
        id += digits[bytes[i] & 0x0F];
    }
    return id;
}

std::optional<std::string> SpaceAlert::canonicalID(std::string_view text)
{
    if (text.size() != 36)
        return std::nullopt;
    std::string id;
    for (std::size_t i = 0; i < text.size(); ++i) {
        unsigned char c = static_cast<unsigned char>(text[i]);
        bool dash = i == 8 || i == 13 || i == 18 || i == 23;
        if (dash ? c != '-' : !std::isxdigit(c))
            return std::nullopt;
        id += static_cast<char>(std::toupper(c));
    }
    return id;
}

Json SpaceAlert::toJSON() const
{
    return { { "id", id }, { "path", path }, { "condition", condition.toJSON() } };
}

std::expected<SpaceAlert, Error> SpaceAlert::fromJSON(const Json& json)
{
    if (!json.is_object())
        return invalid("alert");
    auto id = json.find("id");
    std::optional<std::string> canonical = id != json.end() && id->is_string() ? canonicalID(id->get<std::string>()) : std::nullopt;
    if (!canonical)
        return invalid("id");
    auto path = json.find("path");
    if (path == json.end() || !path->is_string())
        return invalid("path");
    auto condition = json.find("condition");
    if (condition == json.end())
        return invalid("condition");
    auto decoded = Condition::fromJSON(*condition);
    if (!decoded)
        return std::unexpected(decoded.error());
    return SpaceAlert { std::move(*canonical), path->get<std::string>(), std::move(*decoded) };
}

}
