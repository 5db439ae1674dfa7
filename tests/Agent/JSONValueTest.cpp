#include "Agent/JSONValue.hpp"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <cmath>
#include <limits>
#include <tuple>

using namespace tarnwick;

TEST(JSONValue, CompactRenderingSortsKeysAndKeepsSlashes)
{
    JSONValue value = JSONValue::Object {
        { "path", "/Users/ada/Library" },
        { "allocated_bytes", std::int64_t { 1'234'567'890 } },
        { "Zeta", true },
        { "ratio", 0.5 },
        { "unknown", nullptr },
        { "items", JSONValue::Array { 1, "two", JSONValue::Object {} } },
    };
    EXPECT_EQ(JSONCoding::render(value, JSONLayout::compact),
        R"({"Zeta":true,"allocated_bytes":1234567890,"items":[1,"two",{}],"path":"/Users/ada/Library","ratio":0.5,"unknown":null})");
}

TEST(JSONValue, PrettyRenderingIsIndentedAndParsesBack)
{
    JSONValue value = JSONValue::Object { { "b", JSONValue::Array { 1, 2 } }, { "a", "x/y" } };
    std::string pretty = JSONCoding::render(value, JSONLayout::pretty);
    EXPECT_EQ(pretty, "{\n  \"a\": \"x/y\",\n  \"b\": [\n    1,\n    2\n  ]\n}");
    EXPECT_EQ(JSONCoding::fromJSON(nlohmann::json::parse(pretty)), value);
}

// Limits of the scalars; a value JSON cannot hold renders the whole as null; a name that is not
// UTF-8 has its bad bytes replaced rather than failing the answer.
TEST(JSONValue, RenderingAtTheEdges)
{
    const std::tuple<JSONValue, JSONLayout, std::string_view> cases[] = {
        { std::numeric_limits<std::int64_t>::max(), JSONLayout::compact, "9223372036854775807" },
        { std::numeric_limits<std::int64_t>::min(), JSONLayout::compact, "-9223372036854775808" },
        { JSONValue(), JSONLayout::pretty, "null" },
        { "tab\there \"q\" \u00e9", JSONLayout::compact, "\"tab\\there \\\"q\\\" \u00e9\"" },
        { JSONValue::Object { { "ratio", std::nan("") }, { "name", "x" } }, JSONLayout::pretty, "null" },
        { JSONValue::Array { std::numeric_limits<double>::infinity() }, JSONLayout::compact, "null" },
        { JSONValue::Object { { "name", std::string("caf\xe9.txt") } }, JSONLayout::compact, "{\"name\":\"caf\xef\xbf\xbd.txt\"}" },
    };
    for (const auto& [value, layout, expected] : cases)
        EXPECT_EQ(JSONCoding::render(value, layout), expected);
}

TEST(JSONValue, KindsAndEquality)
{
    EXPECT_NE(JSONValue(1), JSONValue(1.0));
    EXPECT_NE(JSONValue(0), JSONValue(false));
    EXPECT_NE(JSONValue(), JSONValue(JSONValue::Object {}));
    EXPECT_EQ(JSONValue(std::uint32_t { 7 }), JSONValue(std::int64_t { 7 }));
    EXPECT_EQ(JSONValue("a").kind(), JSONValue::Kind::string);
    JSONValue object = JSONValue::Object { { "error", "NO_ACCESS" } };
    ASSERT_NE(object.member("error"), nullptr);
    EXPECT_EQ(*object.member("error")->stringValue(), "NO_ACCESS");
    EXPECT_EQ(object.member("message"), nullptr);
    EXPECT_EQ(JSONValue("text").member("error"), nullptr);
}

TEST(JSONValue, ReadingKeepsKindsAndRefusesDeepNesting)
{
    auto read = [](std::string_view text) { return JSONCoding::fromJSON(nlohmann::json::parse(text)); };
    EXPECT_EQ(read("[1, 1.5, true, null, \"s\", {\"k\": []}]"),
        JSONValue(JSONValue::Array { 1, 1.5, true, nullptr, "s", JSONValue::Object { { "k", JSONValue::Array {} } } }));
    // Past the signed range only a float can hold the number.
    EXPECT_EQ(read("18446744073709551615"), JSONValue(18446744073709551615.0));

    std::string deep(JSONCoding::maximumDepth + 1, '[');
    deep += std::string(JSONCoding::maximumDepth + 1, ']');
    EXPECT_FALSE(read(deep));
    std::string allowed(JSONCoding::maximumDepth, '[');
    allowed += std::string(JSONCoding::maximumDepth, ']');
    EXPECT_TRUE(read(allowed));
}
