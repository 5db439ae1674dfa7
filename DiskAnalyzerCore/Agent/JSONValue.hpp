#pragma once

#include <nlohmann/json_fwd.hpp>

#include <concepts>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace tarnwick {

// The structured half of an agent's answer: a small JSON tree that handlers build and the
// tool prints with --json. Byte counts go in as integers, dates as ISO 8601 strings, and an
// unknown fact as null, never left out.
class JSONValue {
public:
    using Array = std::vector<JSONValue>;
    using Object = std::map<std::string, JSONValue>;

    enum class Kind { null, boolean, integer, real, string, array, object };

    JSONValue() = default;
    JSONValue(std::nullptr_t) { }
    JSONValue(bool value)
        : m_storage(value)
    {
    }
    template<std::integral Integer>
        requires(!std::same_as<Integer, bool>)
    JSONValue(Integer value)
        : m_storage(static_cast<std::int64_t>(value))
    {
    }
    JSONValue(double value)
        : m_storage(value)
    {
    }
    JSONValue(const char* value)
        : m_storage(std::string(value))
    {
    }
    JSONValue(std::string_view value)
        : m_storage(std::string(value))
    {
    }
    JSONValue(std::string value)
        : m_storage(std::move(value))
    {
    }
    // JSONValue::Object { { "error", code }, { "message", text } } is the dictionary literal.
    JSONValue(Array value)
        : m_storage(std::move(value))
    {
    }
    JSONValue(Object value)
        : m_storage(std::move(value))
    {
    }

    [[nodiscard]] Kind kind() const { return static_cast<Kind>(m_storage.index()); }
    [[nodiscard]] bool isNull() const { return kind() == Kind::null; }

    // Null when the value is of another kind.
    [[nodiscard]] const bool* boolValue() const { return std::get_if<bool>(&m_storage); }
    [[nodiscard]] const std::int64_t* intValue() const { return std::get_if<std::int64_t>(&m_storage); }
    [[nodiscard]] const double* doubleValue() const { return std::get_if<double>(&m_storage); }
    [[nodiscard]] const std::string* stringValue() const { return std::get_if<std::string>(&m_storage); }
    [[nodiscard]] const Array* arrayValue() const { return std::get_if<Array>(&m_storage); }
    [[nodiscard]] const Object* objectValue() const { return std::get_if<Object>(&m_storage); }
    // The member under key of an object; null for a missing key or a value that is no object.
    [[nodiscard]] const JSONValue* member(std::string_view key) const;

    // Integers and floats are different kinds: 1 and 1.0 are not equal.
    bool operator==(const JSONValue&) const = default;

private:
    std::variant<std::nullptr_t, bool, std::int64_t, double, std::string, Array, Object> m_storage;
};

enum class JSONLayout { compact, pretty };

namespace JSONCoding {

// Sorted keys, "/" as is, invalid UTF-8 in strings replaced by U+FFFD. A value that JSON
// cannot hold (an infinite or NaN float) fails, and the whole text is then "null".
std::string render(const JSONValue& value, JSONLayout layout);

// The nlohmann form, for records that embed a value. Absent for a non-finite float.
std::optional<nlohmann::json> toJSON(const JSONValue& value);
// Absent for a tree nested more than maximumDepth levels deep, which only a broken or hostile
// peer sends.
std::optional<JSONValue> fromJSON(const nlohmann::json& json);

inline constexpr int maximumDepth = 512;

}

}
