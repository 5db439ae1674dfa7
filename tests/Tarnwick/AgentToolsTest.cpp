#include "AgentTools.hpp"
#include "SnapshotAnswers.hpp"

#include "Agent/AgentCommands.hpp"
#include "Agent/DataHome.hpp"

#include "AppModel.hpp"
#include "MainExecutor.hpp"
#include "Scanning/ScopeResolver.hpp"

#include "Support/ScopedEnvironment.hpp"
#include "Support/TempFolder.hpp"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <fcntl.h>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

using namespace tarnwick;
using AgentCommands::Request;

namespace {

// The app's handlers on a scanned tree, without a socket: requests arrive on the test's
// thread as they would on a connection's, and the model lives on a main executor of its own.
class AgentToolsTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        m_place.makeFile("big/video.mov", 300'000);
        m_place.makeFile("new\nline/tab\there\x1b[31m.txt", 5'000);
        m_place.makeFile("small.txt", 10);
        m_loop = std::thread([this] { m_executor.run(); });
        auto scope = ScopeResolver::resolve(m_place.path());
        ASSERT_TRUE(scope.has_value());
        m_executor.runAndWait<bool>([&] { m_model.scan(*scope); return true; });
        for (int i = 0; i < 500 && !m_executor.runAndWait<bool>([&] { return m_model.result().has_value(); }); ++i)
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    void TearDown() override
    {
        m_executor.stop();
        m_loop.join();
    }

    // Scans place through the scan command, as the tool would, and waits for the result.
    void scanThroughCommand(const std::string& place)
    {
        ASSERT_FALSE(ask("scan", { { "path", place } }).isError);
        for (int i = 0; i < 500; ++i) {
            bool done = m_executor.runAndWait<bool>([&] { return !m_model.runningScan() && m_model.result() && m_model.result()->tree->rootPath() == place; });
            if (done)
                return;
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        }
        FAIL() << "the scan of " << place << " did not finish";
    }

    AgentResult ask(std::string command, std::map<std::string, std::string> arguments, bool json = false)
    {
        return m_tools.handle(Request { std::move(command), std::move(arguments), json });
    }

    fixtures::TempFolder m_place;
    MainExecutor m_executor;
    AppModel m_model { m_executor };
    AgentTools m_tools { m_model, m_executor };
    std::thread m_loop;
};

}

// Date groups belong to a day: after midnight the scan on screen is grouped by the new day,
// for the commands as for the window, and only its date maps are made again.
TEST_F(AgentToolsTest, AfterMidnightTheScanOnScreenIsGroupedByTheNewDay)
{
    auto firstGroup = [&] {
        AgentResult types = ask("types", { { "color", "modified" } }, true);
        EXPECT_FALSE(types.isError) << types.text;
        if (!types.structured)
            return std::string();
        nlohmann::json answer = nlohmann::json::parse(JSONCoding::render(*types.structured, JSONLayout::pretty));
        return answer["groups"].empty() ? std::string() : answer["groups"][0]["key"].get<std::string>();
    };
    using Analysis = std::shared_ptr<const ScanAnalysis>;
    auto analysis = [&] { return m_executor.runAndWait<Analysis>([&] { return m_model.result()->analysis; }); };
    const Analysis scanned = analysis();
    ASSERT_NE(scanned, nullptr);
    EXPECT_EQ(firstGroup(), "today") << "everything was just written";

    // Asked on the day of the scan, nothing changes.
    m_executor.runAndWait<bool>([&] { m_model.keepDatesCurrent(scanned->boundaries().dates[0] + std::chrono::hours(23)); return true; });
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    EXPECT_EQ(analysis(), scanned);

    const Date twoDaysLater = scanned->boundaries().dates[0] + std::chrono::hours(2 * 24 + 12);
    m_executor.runAndWait<bool>([&] { m_model.keepDatesCurrent(twoDaysLater); return true; });
    for (int i = 0; i < 500 && analysis() == scanned; ++i)
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    const Analysis redated = analysis();
    ASSERT_NE(redated, scanned);
    EXPECT_EQ(redated->boundaries(), DateGroup::Boundaries::make(twoDaysLater, TimeZone::system()));
    EXPECT_EQ(firstGroup(), "past_7_days");
    EXPECT_EQ(redated->content(), scanned->content());
    EXPECT_EQ(redated->owners(), scanned->owners());
    EXPECT_EQ(redated->hidden(), scanned->hidden());
}

TEST_F(AgentToolsTest, RequestsTheToolWouldNotSendAreRefusedWithItsUsageText)
{
    struct Case {
        std::string command;
        std::map<std::string, std::string> arguments;
        std::string expected;
    };
    const Case cases[] {
        { "find", { { "older_than_days", "x" } }, "INVALID_REQUEST: --older-than doesn't take x: " },
        { "find", { { "older_than_days", "99999999999999999999" } }, "INVALID_REQUEST: --older-than doesn't take 99999999999999999999: " },
        { "find", { { "kind", "dir" } }, "INVALID_REQUEST: --kind doesn't take dir: file, folder, package or any; file by default." },
        { "find", { { "min_size", "-1G" } }, "INVALID_REQUEST: --min-size doesn't take -1G: " },
        { "summary", { { "limit", "abc" } }, "INVALID_REQUEST: --limit doesn't take abc: " },
        { "summary", { { "limit", "0" } }, "INVALID_REQUEST: --limit doesn't take 0: " },
        { "summary", { { "verbose", "1" } }, "INVALID_REQUEST: summary has no option verbose. Run help summary." },
        { "status", { { "path", "/" } }, "INVALID_REQUEST: status takes no path." },
        { "show", {}, "INVALID_REQUEST: show needs a path: show PATH [--color MODE]." },
        { "wait", { { "timeout_s", "1e3" } }, "INVALID_REQUEST: --timeout doesn't take 1e3: " },
        { "add-alert", { { "path", "/" }, { "larger_than", "abc" } }, "INVALID_REQUEST: --larger-than doesn't take abc: " },
        { "add-alert", { { "path", "/" }, { "fuller_than_percent", "999" } }, "INVALID_REQUEST: --fuller-than doesn't take 999: " },
        { "add-alert", { { "path", "/" } }, "INVALID_REQUEST: add-alert needs one limit: " },
        { "frobnicate", {}, "UNKNOWN_COMMAND: Tarnwick has no command frobnicate. Run help for the list." },
        { "find", { { "cursor", "-5" } }, "INVALID_ARGUMENT: The cursor -5 is not one find printed." },
        { "find", { { "cursor", "99999999999999999999" } }, "INVALID_ARGUMENT: The cursor " },
    };
    for (const Case& c : cases) {
        AgentResult result = ask(c.command, c.arguments);
        EXPECT_TRUE(result.isError) << c.command;
        EXPECT_TRUE(result.text.starts_with(c.expected)) << result.text;
    }
    // The app is still there, and the well-formed forms of the same requests work.
    EXPECT_FALSE(ask("status", {}).isError);
    EXPECT_FALSE(ask("find", { { "older_than_days", "0" }, { "kind", "any" } }).isError);
    EXPECT_FALSE(ask("summary", { { "limit", "+3" } }).isError);
}

TEST_F(AgentToolsTest, OddNamesAreEscapedInTextAndExactInJSON)
{
    AgentResult text = ask("find", { { "path", m_place.path() }, { "kind", "any" } });
    ASSERT_FALSE(text.isError) << text.text;
    EXPECT_NE(text.text.find("new\\nline/tab\\there\\x1b[31m.txt"), std::string::npos) << text.text;
    EXPECT_EQ(text.text.find('\x1b'), std::string::npos);
    for (std::size_t line = 0; line < text.text.size(); line = text.text.find('\n', line + 1))
        EXPECT_NE(text.text.substr(line, 6), "\nline/");

    AgentResult summary = ask("summary", { { "path", m_place.path() } });
    EXPECT_NE(summary.text.find("new\\nline/"), std::string::npos) << summary.text;
    auto json = nlohmann::json::parse(JSONCoding::render(*ask("find", { { "path", m_place.path() }, { "kind", "file" } }, true).structured, JSONLayout::pretty));
    bool exact = false;
    for (const auto& item : json["items"])
        exact = exact || item["path"] == m_place / "new\nline/tab\there\x1b[31m.txt";
    EXPECT_TRUE(exact) << json.dump();
}

TEST_F(AgentToolsTest, LongPathsInRequestsStayWithin8KB)
{
    const std::string longPath = "/" + std::string(100'000, 'y');
    for (const char* command : { "summary", "find", "show", "scan" }) {
        AgentResult result = ask(command, { { "path", longPath } });
        EXPECT_TRUE(result.fits()) << command << ": " << result.text.size();
        EXPECT_NE(result.text.find("…"), std::string::npos) << command;
    }
    AgentResult summary = ask("summary", { { "path", m_place.path() }, { "limit", "100" } }, true);
    EXPECT_TRUE(summary.fits());
}

TEST_F(AgentToolsTest, SummaryGivesOwnersCachesHiddenAndRatios)
{
    AgentResult summary = ask("summary", { { "path", m_place.path() } }, true);
    ASSERT_FALSE(summary.isError) << summary.text;
    auto json = nlohmann::json::parse(JSONCoding::render(*summary.structured, JSONLayout::pretty));
    for (const char* key : { "owners", "cache_bytes", "cache_share", "hidden_bytes", "hidden_share", "ratio", "ratio_lowest", "ratio_highest" })
        EXPECT_TRUE(json.contains(key)) << key;
    EXPECT_TRUE(json["owners"].is_array());
    EXPECT_EQ(json["hidden_bytes"], 0);
    EXPECT_NE(summary.text.find("Owners: "), std::string::npos) << summary.text;
    EXPECT_NE(summary.text.find("On disk / size: "), std::string::npos) << summary.text;
}

// The command table alone decides who answers: every command it routes to the app or the
// history has its handler there, so none is answered "no such command".
TEST_F(AgentToolsTest, EveryRoutedCommandHasItsHandler)
{
    // The history's commands read and write the user's settings and history: these go to
    // folders of the test's own.
    fixtures::DataHome home;
    fixtures::ScopedEnvironment config { { "XDG_CONFIG_HOME", home.folder() / "config" } };
    for (const AgentCommands::Command& command : AgentCommands::table()) {
        if (command.route != AgentCommands::Route::app && command.route != AgentCommands::Route::history)
            continue;
        AgentResult answer = command.route == AgentCommands::Route::history
            ? SnapshotAnswers::answer(Request { command.name, { { "path", m_place.path() } }, true })
            : ask(command.name, command.path.kind == AgentCommands::PathArgument::Kind::none ? std::map<std::string, std::string> {}
                                                                                               : std::map<std::string, std::string> { { "path", m_place.path() } }, true);
        EXPECT_EQ(answer.text.find("has no command"), std::string::npos) << command.name << ": " << answer.text;
    }
}

// The owners of a finished scan are attributed once, with it: the summary and the types by
// owner read those, and the two agree with each other.
TEST_F(AgentToolsTest, OwnersComeWithTheScanAndServeEveryAnswer)
{
    auto owners = m_executor.runAndWait<std::shared_ptr<const OwnerMap>>([&] { return m_model.result()->analysis->owners(); });
    ASSERT_TRUE(owners);
    const std::int64_t total = m_executor.runAndWait<std::int64_t>([&] { return m_model.result()->tree->allocatedSize(NodeID::root()); });
    std::int64_t attributed = 0;
    for (const OwnerMap::Owner& owner : owners->owners())
        attributed += owner.bytes;
    EXPECT_LE(attributed, total);

    auto summary = nlohmann::json::parse(JSONCoding::render(*ask("summary", { { "path", m_place.path() } }, true).structured, JSONLayout::pretty));
    auto types = nlohmann::json::parse(JSONCoding::render(*ask("types", { { "path", m_place.path() }, { "color", "owner" } }, true).structured, JSONLayout::pretty));
    ASSERT_FALSE(summary["owners"].empty());
    ASSERT_TRUE(types.contains("groups")) << types.dump();
    EXPECT_EQ(summary["owners"][0]["key"], types["groups"][0]["key"]) << types.dump();
    EXPECT_EQ(summary["owners"][0]["size_bytes"], types["groups"][0]["size_bytes"]) << types.dump();
}

TEST_F(AgentToolsTest, FindBelowAPathLongerThan8KBSaysSoInsteadOfPagingForever)
{
    // Forty folders of 240 bytes each: a path of about 10 KB, made one folder at a time
    // because no single path call takes one that long.
    fixtures::TempFolder deep;
    int folder = open(deep.path().c_str(), O_DIRECTORY | O_RDONLY);
    ASSERT_GE(folder, 0);
    std::string path = deep.path();
    for (int level = 0; level < 40; ++level) {
        std::string name = std::to_string(level) + std::string(240, 'd');
        ASSERT_EQ(mkdirat(folder, name.c_str(), 0755), 0);
        int inner = openat(folder, name.c_str(), O_DIRECTORY | O_RDONLY);
        close(folder);
        folder = inner;
        path += "/" + name;
    }
    int file = openat(folder, "file.bin", O_CREAT | O_WRONLY, 0644);
    ASSERT_EQ(write(file, std::string(50'000, 'x').data(), 50'000), 50'000);
    close(file);
    close(folder);
    scanThroughCommand(deep.path());

    AgentResult found = ask("find", { { "path", deep.path() } });
    EXPECT_EQ(found.text, "OUTPUT_TOO_LARGE: One matching path is too long to return within the 8 KB output limit.");
    AgentResult summary = ask("summary", { { "path", deep.path() } });
    EXPECT_FALSE(summary.isError) << summary.text;
    EXPECT_TRUE(summary.fits());
}
