#include "Agent/AgentCommands.hpp"
#include "Alerts/AlertPeriods.hpp"
#include "Alerts/SpaceAlert.hpp"

#include <gtest/gtest.h>

#include <set>

using namespace tarnwick;
using nlohmann::json;
using Condition = SpaceAlert::Condition;

namespace {
constexpr std::string_view someID = "3F2A9C1E-0B7D-4C55-8E21-6A9F0D3B7C10";
}

TEST(SpaceAlert, EncodesEachConditionAsOneKeyNamingItsCase)
{
    const std::pair<Condition, std::string_view> cases[] {
        { { Condition::DiskUsed { 90 } }, R"({"diskUsed":{"percent":90}})" },
        { { Condition::Size { 30'000'000'000 } }, R"({"size":{"bytes":30000000000}})" },
        { { Condition::Share { 5 } }, R"({"share":{"percent":5}})" },
        { { Condition::Growth { 10'000'000'000, "dayBeforeYesterday" } },
            R"({"growth":{"bytes":10000000000,"period":"dayBeforeYesterday"}})" },
    };
    for (const auto& [condition, text] : cases) {
        SpaceAlert alert { std::string(someID), "/home/ada/Projects", condition };
        json encoded = alert.toJSON();
        EXPECT_EQ(encoded.dump(), R"({"condition":)" + std::string(text) + R"(,"id":")" + std::string(someID)
                + R"(","path":"/home/ada/Projects"})");
        auto decoded = SpaceAlert::fromJSON(json::parse(encoded.dump()));
        ASSERT_TRUE(decoded) << text;
        EXPECT_EQ(*decoded, alert);
    }
}

TEST(SpaceAlert, RejectsStoredAlertsThatAreNotOne)
{
    using Case = SpaceAlert::DecodingError::Case;
    auto alertWith = [](json condition) {
        return json { { "id", someID }, { "path", "/" }, { "condition", std::move(condition) } };
    };
    const std::pair<json, SpaceAlert::DecodingError> cases[] {
        { alertWith(json::object()), { Case::invalidNumberOfKeys, "" } },
        { alertWith({ { "size", { { "bytes", 1 } } }, { "share", { { "percent", 1 } } } }), { Case::invalidNumberOfKeys, "" } },
        { alertWith({ { "inodes", { { "count", 1 } } } }), { Case::unknownCondition, "inodes" } },
        { alertWith({ { "diskUsed", { { "percent", 90.5 } } } }), { Case::invalidValue, "percent" } },
        { alertWith({ { "size", { { "bytes", "30G" } } } }), { Case::invalidValue, "bytes" } },
        { alertWith({ { "size", { { "bytes", 18'446'744'073'709'551'615ULL } } } }), { Case::invalidValue, "bytes" } },
        { alertWith({ { "growth", { { "bytes", 1 }, { "period", "3-months" } } } }), { Case::invalidValue, "period" } },
        { alertWith({ { "size", 5 } }), { Case::invalidValue, "size" } },
        { alertWith("size"), { Case::invalidValue, "condition" } },
        { { { "id", "3f2a9c1e" }, { "path", "/" }, { "condition", { { "size", { { "bytes", 1 } } } } } }, { Case::invalidValue, "id" } },
        { { { "id", someID }, { "condition", { { "size", { { "bytes", 1 } } } } } }, { Case::invalidValue, "path" } },
    };
    for (const auto& [stored, error] : cases) {
        auto decoded = SpaceAlert::fromJSON(stored);
        ASSERT_FALSE(decoded) << stored.dump();
        EXPECT_EQ(decoded.error(), error) << stored.dump();
    }
    EXPECT_EQ(SpaceAlert::DecodingError { Case::invalidNumberOfKeys }.text(), "Invalid number of keys found, expected one.");
}

TEST(SpaceAlert, IDsAreUUIDsShownByTheirFirstEightDigits)
{
    EXPECT_EQ(SpaceAlert::shortForm(someID), "3f2a9c1e");
    EXPECT_EQ(SpaceAlert::canonicalID("3f2a9c1e-0b7d-4c55-8e21-6a9f0d3b7c10"), std::string(someID));
    EXPECT_FALSE(SpaceAlert::canonicalID("3f2a9c1e"));
    EXPECT_FALSE(SpaceAlert::canonicalID("3F2A9C1E-0B7D-4C55-8E21-6A9F0D3B7C1G"));
    EXPECT_FALSE(SpaceAlert::canonicalID("3F2A9C1E00B7D-4C55-8E21-6A9F0D3B7C10"));

    std::set<std::string> seen;
    for (int i = 0; i < 100; ++i) {
        std::string id = SpaceAlert::newID();
        EXPECT_EQ(SpaceAlert::canonicalID(id), id);
        EXPECT_EQ(id[14], '4');                                 // version 4
        EXPECT_NE(std::string_view("89AB").find(id[19]), std::string_view::npos); // RFC 4122 variant
        seen.insert(id);
    }
    EXPECT_EQ(seen.size(), 100u);
}

TEST(AlertPeriods, CommandLineNamesMapToTheStoredValues)
{
    // The command line offers the same periods in the same order after --period.
    const std::string_view rawValues[] {
        "yesterday", "dayBeforeYesterday", "week", "month", "threeMonths", "sixMonths", "year", "all",
    };
    ASSERT_EQ(AgentCommands::periods.size(), std::size(rawValues));
    for (std::size_t i = 0; i < std::size(rawValues); ++i) {
        EXPECT_EQ(AlertPeriods::fromCommandLineName(AgentCommands::periods[i]), rawValues[i]);
        EXPECT_EQ(AlertPeriods::commandLineName(rawValues[i]), AgentCommands::periods[i]);
    }
    for (std::string_view notAName : { "dayBeforeYesterday", "threeMonths", "Week", "" })
        EXPECT_FALSE(AlertPeriods::fromCommandLineName(notAName)) << notAName;
    EXPECT_TRUE(AlertPeriods::isRawValue(AlertPeriods::defaultRawValue));
}
