#include "Agent/AgentErrorCode.hpp"
#include "Agent/AgentOutput.hpp"
#include "Agent/AgentResult.hpp"
#include "Agent/OutputLimit.hpp"

#include <gtest/gtest.h>

using namespace tarnwick;

TEST(AgentResult, FailureCarriesItsCodeInTextAndStructure)
{
    AgentResult result = AgentResult::failure("NO_ACCESS", "Tarnwick may not read /root.");
    EXPECT_EQ(result.text, "NO_ACCESS: Tarnwick may not read /root.");
    EXPECT_TRUE(result.isError);
    EXPECT_EQ(result.structured, JSONValue(JSONValue::Object { { "error", "NO_ACCESS" }, { "message", "Tarnwick may not read /root." } }));
    EXPECT_EQ(result.errorCode(), "NO_ACCESS");
    EXPECT_EQ(result.exitStatus(), ExitStatus::failure);
}

TEST(AgentResult, ErrorCodeAndExitStatus)
{
    struct Case {
        const char* name;
        AgentResult result;
        std::optional<std::string> code;
        int status;
    };
    const Case cases[] {
        { "success", AgentResult::success("done"), std::nullopt, 0 },
        { "success with an error key", AgentResult::success("x", JSONValue::Object { { "error", "NO_ACCESS" } }), std::nullopt, 0 },
        { "app not running", AgentResult::failure(AgentErrorCode::appNotRunning, AgentErrorCode::Messages::appNotRunning), "APP_NOT_RUNNING", 4 },
        { "no structured value", AgentResult { "broken", std::nullopt, true }, "ERROR", 1 },
        { "structured not an object", AgentResult { "broken", JSONValue("APP_NOT_RUNNING"), true }, "ERROR", 1 },
        { "error not a string", AgentResult { "broken", JSONValue::Object { { "error", 4 } }, true }, "ERROR", 1 },
        { "structured code wins over text", AgentResult { "APP_NOT_RUNNING: x", JSONValue::Object { { "error", "NOT_SCANNED" } }, true }, "NOT_SCANNED", 1 },
    };
    for (const Case& c : cases) {
        EXPECT_EQ(c.result.errorCode(), c.code) << c.name;
        EXPECT_EQ(c.result.exitStatus(), c.status) << c.name;
    }
}

TEST(AgentResult, FitsBelow8192BytesAsTextAndAsPrettyJSON)
{
    EXPECT_TRUE(AgentResult::success(std::string(8'191, 'a')).fits());
    EXPECT_FALSE(AgentResult::success(std::string(8'192, 'a')).fits());
    // Bytes, not characters: 4,096 two-byte characters are 8,192 bytes.
    std::string wide;
    for (int i = 0; i < 4'096; ++i)
        wide += "\u00e9";
    EXPECT_FALSE(AgentResult::success(wide).fits());

    // The pretty rendering of a string is the string plus its two quotes.
    EXPECT_TRUE(AgentResult::success("short", JSONValue(std::string(8'189, 'b'))).fits());
    EXPECT_FALSE(AgentResult::success("short", JSONValue(std::string(8'190, 'b'))).fits());
}

TEST(AgentResult, WireRoundTrip)
{
    const AgentResult results[] {
        AgentResult::success("Projects: 2.31 GB\nsrc 1.20 GB", JSONValue::Object { { "path", "/home/ada/Projects" }, { "items", JSONValue::Array { 1, 2.5 } } }),
        AgentResult::success("plain"),
        AgentResult::failure("NOT_SCANNED", "Nothing is scanned yet."),
    };
    for (const AgentResult& result : results) {
        std::string line = result.encoded();
        EXPECT_EQ(line.find('\n'), std::string::npos);
        EXPECT_EQ(AgentResult::decoded(line), result) << line;
    }
    EXPECT_EQ(AgentResult::success("x").encoded(), R"({"isError":false,"text":"x"})");
}

TEST(AgentResult, DecodingRefusesWhatIsNoResult)
{
    EXPECT_EQ(AgentResult::decoded(R"({"text":"t","isError":false,"structured":null})"), AgentResult::success("t"));
    EXPECT_EQ(AgentResult::decoded(R"({"text":"t","isError":true,"extra":1})"), (AgentResult { "t", std::nullopt, true }));
    for (std::string_view line : { "", "null", "[]", "{\"text\":\"t\"}", "{\"isError\":false}", "{\"text\":1,\"isError\":false}",
             "{\"text\":\"t\",\"isError\":\"no\"}", "{\"text\":\"t\",\"isError\":false", "garbage" })
        EXPECT_FALSE(AgentResult::decoded(line)) << line;
}

TEST(AgentOutput, PrintingRules)
{
    AgentResult success = AgentResult::success("Projects: 2.31 GB", JSONValue::Object { { "allocated_bytes", 2'310'000'000 } });
    AgentResult failure = AgentResult::failure("NOT_SCANNED", "Nothing is scanned yet.");
    AgentResult notRunning = AgentResult::failure(AgentErrorCode::appNotRunning, AgentErrorCode::Messages::appNotRunning);
    AgentResult bareFailure { "broken", std::nullopt, true };

    EXPECT_EQ(AgentOutput::print(success, OutputMode::text), (PrintedOutput { "Projects: 2.31 GB\n", "", 0 }));
    EXPECT_EQ(AgentOutput::print(success, OutputMode::json), (PrintedOutput { "{\n  \"allocated_bytes\": 2310000000\n}\n", "", 0 }));
    EXPECT_EQ(AgentOutput::print(AgentResult::success("a/b"), OutputMode::json), (PrintedOutput { "{\n  \"message\": \"a/b\"\n}\n", "", 0 }));

    EXPECT_EQ(AgentOutput::print(failure, OutputMode::text), (PrintedOutput { "", "NOT_SCANNED: Nothing is scanned yet.\n", 1 }));
    EXPECT_EQ(AgentOutput::print(failure, OutputMode::json),
        (PrintedOutput { "{\n  \"error\": \"NOT_SCANNED\",\n  \"message\": \"Nothing is scanned yet.\"\n}\n", "", 1 }));
    EXPECT_EQ(AgentOutput::print(bareFailure, OutputMode::json), (PrintedOutput { "{\n  \"message\": \"broken\"\n}\n", "", 1 }));

    EXPECT_EQ(AgentOutput::print(notRunning, OutputMode::text).exitStatus, 4);
    EXPECT_EQ(AgentOutput::print(notRunning, OutputMode::json).exitStatus, 4);
    EXPECT_EQ(AgentOutput::print(notRunning, OutputMode::text).standardError,
        "APP_NOT_RUNNING: Tarnwick didn't start. Ask the user to open it, then try again.\n");
}

TEST(OutputLimit, TextsWithTheirCount)
{
    EXPECT_EQ(OutputLimit::placesLimited(3), "Places limited to 3 per group to fit 8 KB; narrow PATH for detail.");
}
