#pragma once

#include <nlohmann/json.hpp>

#include <cstdint>
#include <expected>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

namespace tarnwick {

// One alert: a disk or a folder and the limit it must not pass. Stored as JSON, for example
//
//     {"condition": {"growth": {"bytes": 10000000000, "period": "week"}},
//      "id": "3F2A9C1E-0B7D-4C55-8E21-6A9F0D3B7C10", "path": "/home/ada/Projects"}
//
// The condition is an object with exactly one key naming its case, whose value holds the case's
// fields.
struct SpaceAlert {
    // Why stored JSON is not an alert.
    struct DecodingError {
        enum class Case { invalidNumberOfKeys, unknownCondition, invalidValue };
        Case reason = Case::invalidValue;
        std::string key; // the unknown condition, or the key whose value is missing or wrong

        [[nodiscard]] std::string text() const;
        bool operator==(const DecodingError&) const = default;
    };

    struct Condition {
        // A disk whose used space is above percent of its capacity.
        struct DiskUsed {
            int percent = 0;
            bool operator==(const DiskUsed&) const = default;
        };
        // A folder or package whose size on disk is above bytes.
        struct Size {
            std::int64_t bytes = 0;
            bool operator==(const Size&) const = default;
        };
        // A folder or package whose size is above percent of its disk's capacity.
        struct Share {
            int percent = 0;
            bool operator==(const Share&) const = default;
        };
        // A folder or package that grew by more than bytes since the start of the period
        // (a history period's raw value, see AlertPeriods).
        struct Growth {
            std::int64_t bytes = 0;
            std::string period;
            bool operator==(const Growth&) const = default;
        };

        // In the order of the cases of value.
        enum class Kind { diskUsed, size, share, growth };

        std::variant<DiskUsed, Size, Share, Growth> value;

        [[nodiscard]] Kind kind() const { return static_cast<Kind>(value.index()); }
        // The JSON key of the case: "diskUsed", "size", "share" or "growth".
        [[nodiscard]] std::string_view caseName() const;
        // Whether the condition watches a disk rather than a folder.
        [[nodiscard]] bool watchesDisk() const { return kind() == Kind::diskUsed; }
        // Whether setting this condition on a place replaces other: a place holds one alert of
        // each kind, and one growth alert per period.
        [[nodiscard]] bool replaces(const Condition& other) const;
        // The limit in the unit of the readings: percent, or bytes.
        [[nodiscard]] double limit() const;

        [[nodiscard]] nlohmann::json toJSON() const;
        static std::expected<Condition, DecodingError> fromJSON(const nlohmann::json& json);

        bool operator==(const Condition&) const = default;
    };

    std::string id;   // a UUID in upper case, as "3F2A9C1E-0B7D-4C55-8E21-6A9F0D3B7C10"
    std::string path; // a folder's absolute path, or a disk's mount point
    Condition condition;

    // The 8 lower-case hexadecimal digits that lists and the command line show ("3f2a9c1e"):
    // the first group of the UUID.
    [[nodiscard]] std::string shortID() const { return shortForm(id); }
    static std::string shortForm(std::string_view id);
    // A new random (version 4) UUID.
    static std::string newID();
    // The canonical upper-case form of a UUID written in either case; absent for anything else.
    static std::optional<std::string> canonicalID(std::string_view text);

    [[nodiscard]] nlohmann::json toJSON() const;
    static std::expected<SpaceAlert, DecodingError> fromJSON(const nlohmann::json& json);

    bool operator==(const SpaceAlert&) const = default;
};

}
