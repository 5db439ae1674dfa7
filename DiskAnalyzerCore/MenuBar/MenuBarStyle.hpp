#pragma once

#include <nlohmann/json.hpp>

#include <expected>
#include <string>
#include <string_view>
#include <vector>

namespace tarnwick {

// What the menu bar item (on Linux, the tray icon) shows of the user's disks. Kept in the user
// defaults under styleKey as JSON; the disk choice is a keyed case, the chosen list under "_0":
//
//     {"disks": {"chosen": {"_0": ["3c1e0f9a-…", "dev:8:17"]}}, "layout": "each",
//      "showsChange": true, "showsFreeBytes": false, "showsFreePercent": true}
//
//     {"disks": {"physical": {}}, "layout": "mostNotable", ...}
struct MenuBarStyle {
    struct DecodingError {
        enum class Case { invalidNumberOfKeys, unknownCase, invalidValue };
        Case reason = Case::invalidValue;
        std::string key; // the unknown case, or the key whose value is missing or wrong

        [[nodiscard]] std::string text() const;
        bool operator==(const DecodingError&) const = default;
    };

    struct Disks {
        enum class Kind { chosen, all, physical };
        Kind kind = Kind::physical;
        std::vector<std::string> chosen; // disk identifiers, for chosen only

        static Disks all() { return { Kind::all, {} }; }
        static Disks physical() { return { Kind::physical, {} }; }
        static Disks choosing(std::vector<std::string> identifiers) { return { Kind::chosen, std::move(identifiers) }; }

        [[nodiscard]] nlohmann::json toJSON() const;
        static std::expected<Disks, DecodingError> fromJSON(const nlohmann::json& json);
        bool operator==(const Disks&) const = default;
    };

    enum class Layout { mostNotable, each };

    static constexpr std::string_view styleKey = "MenuBarStyle";

    Disks disks = Disks::physical();
    bool showsFreePercent = true;
    bool showsFreeBytes = false;
    bool showsChange = true;
    Layout layout = Layout::mostNotable;

    static std::string_view rawValue(Layout layout);

    [[nodiscard]] nlohmann::json toJSON() const;
    static std::expected<MenuBarStyle, DecodingError> fromJSON(const nlohmann::json& json);
    bool operator==(const MenuBarStyle&) const = default;
};

}
