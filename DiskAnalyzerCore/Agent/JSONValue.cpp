#include "Agent/JSONValue.hpp"

#include <nlohmann/json.hpp>

#include <cmath>

namespace tarnwick {

const JSONValue* JSONValue::member(std::string_view key) const
{
    const Object* object = objectValue();
    if (object == nullptr)
        return nullptr;
    auto found = object->find(std::string(key));
    return found == object->end() ? nullptr : &found->second;
}

namespace JSONCoding {

namespace {

std::optional<JSONValue> fromJSON(const nlohmann::json& json, int depth)
{
    if (depth >= maximumDepth)
        return std::nullopt;
    switch (json.type()) {
    case nlohmann::json::value_t::null:
    case nlohmann::json::value_t::discarded:
        return JSONValue();
    case nlohmann::json::value_t::boolean:
        return JSONValue(json.get<bool>());
    case nlohmann::json::value_t::number_integer:
        return JSONValue(json.get<std::int64_t>());
    case nlohmann::json::value_t::number_unsigned: {
        // Beyond the signed range an integer can only be kept as a float, as a JSON reader would.
        auto value = json.get<std::uint64_t>();
        if (value > static_cast<std::uint64_t>(INT64_MAX))
            return JSONValue(static_cast<double>(value));
        return JSONValue(static_cast<std::int64_t>(value));
    }
    case nlohmann::json::value_t::number_float:
        return JSONValue(json.get<double>());
    case nlohmann::json::value_t::string:
        return JSONValue(json.get_ref<const std::string&>());
    case nlohmann::json::value_t::binary:
        return std::nullopt;
    case nlohmann::json::value_t::array: {
        JSONValue::Array array;
        array.reserve(json.size());
        for (const nlohmann::json& element : json) {
            std::optional<JSONValue> value = fromJSON(element, depth + 1);
            if (!value)
                return std::nullopt;
            array.push_back(std::move(*value));
        }
        return JSONValue(std::move(array));
    }
    case nlohmann::json::value_t::object: {
        JSONValue::Object object;
        for (const auto& [key, element] : json.items()) {
            std::optional<JSONValue> value = fromJSON(element, depth + 1);
            if (!value)
                return std::nullopt;
            object.emplace(key, std::move(*value));
        }
        return JSONValue(std::move(object));
    }
    }
    return std::nullopt;
}

}

std::optional<nlohmann::json> toJSON(const JSONValue& value)
{
    switch (value.kind()) {
    case JSONValue::Kind::null:
        return nlohmann::json(nullptr);
    case JSONValue::Kind::boolean:
        return nlohmann::json(*value.boolValue());
    case JSONValue::Kind::integer:
        return nlohmann::json(*value.intValue());
    case JSONValue::Kind::real:
        if (!std::isfinite(*value.doubleValue()))
            return std::nullopt;
        return nlohmann::json(*value.doubleValue());
    case JSONValue::Kind::string:
        return nlohmann::json(*value.stringValue());
    case JSONValue::Kind::array: {
        nlohmann::json array = nlohmann::json::array();
        for (const JSONValue& element : *value.arrayValue()) {
            std::optional<nlohmann::json> json = toJSON(element);
            if (!json)
                return std::nullopt;
            array.push_back(std::move(*json));
        }
        return array;
    }
    case JSONValue::Kind::object: {
        nlohmann::json object = nlohmann::json::object();
        for (const auto& [key, element] : *value.objectValue()) {
            std::optional<nlohmann::json> json = toJSON(element);
            if (!json)
                return std::nullopt;
            object[key] = std::move(*json);
        }
        return object;
    }
    }
    return std::nullopt;
}

std::optional<JSONValue> fromJSON(const nlohmann::json& json)
{
    return fromJSON(json, 0);
}

std::string render(const JSONValue& value, JSONLayout layout)
{
    std::optional<nlohmann::json> json = toJSON(value);
    if (!json)
        return "null";
    // nlohmann keeps object keys in a std::map (sorted by bytes) and never escapes "/".
    int indent = layout == JSONLayout::pretty ? 2 : -1;
    return json->dump(indent, ' ', false, nlohmann::json::error_handler_t::replace);
}

}

}
