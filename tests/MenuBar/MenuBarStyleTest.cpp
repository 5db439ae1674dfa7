#include "MenuBar/MenuBarStyle.hpp"

#include <gtest/gtest.h>

using namespace tarnwick;
using nlohmann::json;

TEST(MenuBarStyle, EncodesWithTheKeyedDiskCase)
{
    MenuBarStyle chosen { MenuBarStyle::Disks::choosing({ "3c1e-uuid", "dev:8:17" }), true, false, true, MenuBarStyle::Layout::each };
    EXPECT_EQ(chosen.toJSON(), json::parse(R"({"disks": {"chosen": {"_0": ["3c1e-uuid", "dev:8:17"]}}, "showsFreePercent": true,
        "showsFreeBytes": false, "showsChange": true, "layout": "each"})"));
    MenuBarStyle physical { MenuBarStyle::Disks::physical(), false, true, false, MenuBarStyle::Layout::mostNotable };
    EXPECT_EQ(physical.toJSON(), json::parse(R"({"disks": {"physical": {}}, "showsFreePercent": false,
        "showsFreeBytes": true, "showsChange": false, "layout": "mostNotable"})"));
    EXPECT_EQ(MenuBarStyle::Disks::all().toJSON(), json::parse(R"({"all": {}})"));

    for (const MenuBarStyle& style : { chosen, physical, MenuBarStyle {} })
        EXPECT_EQ(MenuBarStyle::fromJSON(json::parse(style.toJSON().dump())), style);
}

TEST(MenuBarStyle, RefusesWhatIsNotAStyle)
{
    using Case = MenuBarStyle::DecodingError::Case;
    json good = MenuBarStyle {}.toJSON();
    struct Bad {
        std::string key;
        json value;
        Case reason;
        std::string text;
    };
    const Bad cases[] {
        { "disks", json::object(), Case::invalidNumberOfKeys, "Invalid number of keys found, expected one." },
        { "disks", json::parse(R"({"all": {}, "physical": {}})"), Case::invalidNumberOfKeys, "Invalid number of keys found, expected one." },
        { "disks", json::parse(R"({"some": {}})"), Case::unknownCase, "Unknown case \"some\"." },
        { "disks", json::parse(R"({"chosen": {}})"), Case::invalidValue, "Missing or invalid value for \"_0\"." },
        { "disks", json::parse(R"({"chosen": {"_0": [1]}})"), Case::invalidValue, "Missing or invalid value for \"_0\"." },
        { "disks", json::parse(R"({"all": true})"), Case::invalidValue, "Missing or invalid value for \"all\"." },
        { "disks", "all", Case::invalidValue, "Missing or invalid value for \"disks\"." },
        { "showsChange", 1, Case::invalidValue, "Missing or invalid value for \"showsChange\"." },
        { "layout", "every", Case::invalidValue, "Missing or invalid value for \"layout\"." },
    };
    for (const Bad& bad : cases) {
        json changed = good;
        changed[bad.key] = bad.value;
        auto decoded = MenuBarStyle::fromJSON(changed);
        ASSERT_FALSE(decoded) << changed.dump();
        EXPECT_EQ(decoded.error().reason, bad.reason) << changed.dump();
        EXPECT_EQ(decoded.error().text(), bad.text);
    }
    json missing = good;
    missing.erase("showsFreeBytes");
    EXPECT_FALSE(MenuBarStyle::fromJSON(missing));
    EXPECT_FALSE(MenuBarStyle::fromJSON(json::array()));
}
