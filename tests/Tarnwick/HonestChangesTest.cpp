// What changes and history say when the snapshots cannot tell everything: a single
// snapshot, a folder a snapshot doesn't keep, a folder gone since, a history shorter than
// the period.
#include "Agent/DataHome.hpp"
#include "Agent/AgentFormat.hpp"
#include "History/HistoryTestSupport.hpp"
#include "SavedScans.hpp"
#include "SnapshotAnswers.hpp"
#include "Support/TempFolder.hpp"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

using namespace tarnwick;
using namespace tarnwick::testing;
using fixtures::utc;

namespace {

using Files = std::vector<std::pair<std::string, std::int64_t>>;

class HonestChangesTest : public ::testing::Test {
protected:
    // The answers' caches go with the test, not into the user's.
    fixtures::DataHome home;

    void SetUp() override
    {
        store = std::move(*HistoryStore::open(folder / "History", Calendar::fixed(0), HistoryStore::defaultSizeLimit, [this] { return now; }));
    }

    void scan(int day, const Files& files, int hour = 9)
    {
        saveWithColors(*store, place, treeOf("/data", files), utc(2024, 6, day, hour));
    }

    struct Answer {
        std::string text;
        nlohmann::json json;
        bool isError = false;
    };

    Answer ask(const std::string& command, const std::string& path, const std::string& period = "")
    {
        std::map<std::string, std::string> arguments { { "path", path } };
        if (!period.empty())
            arguments["period"] = period;
        SnapshotAnswers::Context context;
        context.store = store.get();
        AgentResult result = SnapshotAnswers::answer(AgentCommands::Request { command, arguments, true }, context);
        return { result.text, nlohmann::json::parse(result.encoded())["structured"], result.isError };
    }

    static std::string iso(Date date) { return *AgentFormat::isoDate(date).stringValue(); }

    fixtures::TempFolder folder;
    Date now = utc(2024, 6, 10, 12);
    HistorySource place { "/data", "volume-1" };
    std::unique_ptr<HistoryStore> store;
};

bool contains(const std::string& text, const std::string& part)
{
    return text.find(part) != std::string::npos;
}

}

TEST_F(HonestChangesTest, TheOneSnapshotSentenceOnlyWhenThereIsOneSnapshot)
{
    const std::string sentence = "Tarnwick has one snapshot of this place so far";
    scan(10, { { "a/x", 20 * MB } });
    Answer single = ask("changes", "/data");
    ASSERT_FALSE(single.isError) << single.text;
    EXPECT_TRUE(contains(single.text, sentence));
    EXPECT_EQ(single.json["one_snapshot_only"], true);

    // A morning later: the newest day snapshot is the current one, and there are two.
    now = utc(2024, 6, 11, 9, 30);
    scan(11, { { "a/x", 30 * MB } });
    for (const std::string period : { "", "yesterday", "week", "all" }) {
        Answer answer = ask("changes", "/data", period);
        ASSERT_FALSE(answer.isError) << answer.text;
        EXPECT_FALSE(contains(answer.text, sentence)) << period << ": " << answer.text;
        EXPECT_EQ(answer.json["one_snapshot_only"], false) << period;
        EXPECT_EQ(answer.json["change_bytes"], 10 * MB) << period;
    }
}

TEST_F(HonestChangesTest, AFolderUnder10MBIsNotKnownAndCrossingTheThresholdIsNotGrowth)
{
    scan(8, { { "src/a", 5 * MB }, { "big/b", 40 * MB } });
    scan(9, { { "src/a", 12'800'000 }, { "big/b", 40 * MB } });
    scan(10, { { "src/a", 12'800'000 }, { "big/b", 40 * MB } });

    Answer whole = ask("changes", "/data", "day-before-yesterday");
    ASSERT_FALSE(whole.isError) << whole.text;
    EXPECT_TRUE(contains(whole.text, "  src: under 10 MB → 12.8 MB")) << whole.text;
    bool listed = false;
    for (const auto& inside : whole.json["inside"]) {
        if (inside["name"] != "src")
            continue;
        listed = true;
        EXPECT_TRUE(inside["size_before_bytes"].is_null());
        EXPECT_TRUE(inside["change_bytes"].is_null());
        EXPECT_EQ(inside["size_after_bytes"], 12'800'000);
        EXPECT_EQ(inside["unknown_size_reason"], "under_10_mb");
    }
    EXPECT_TRUE(listed) << whole.json.dump();

    Answer src = ask("changes", "/data/src", "day-before-yesterday");
    ASSERT_FALSE(src.isError) << src.text;
    EXPECT_TRUE(src.text.starts_with("/data/src: under 10 MB at ")) << src.text;
    EXPECT_FALSE(contains(src.text, "0 B")) << src.text;
    EXPECT_TRUE(src.json["size_before_bytes"].is_null());
    EXPECT_TRUE(src.json["change_bytes"].is_null());

    Answer history = ask("history", "/data/src");
    ASSERT_FALSE(history.isError) << history.text;
    EXPECT_EQ(history.json["points"][0]["state"], "under_10_mb");
    EXPECT_TRUE(history.json["points"][0]["size_bytes"].is_null());
    EXPECT_TRUE(contains(history.text, "under 10 MB")) << history.text;
}

TEST_F(HonestChangesTest, AFolderGoneFromTheLatestSnapshotAnswersFromTheOnesThatKeptIt)
{
    for (int day = 1; day <= 8; ++day)
        scan(day, { { "old/a", 30 * MB }, { "keep/b", 20 * MB } });
    scan(9, { { "keep/b", 20 * MB } });
    scan(10, { { "keep/b", 20 * MB } });

    Answer history = ask("history", "/data/old");
    ASSERT_FALSE(history.isError) << history.text;
    EXPECT_EQ(history.json["in_latest_snapshot"], false);
    EXPECT_TRUE(contains(history.text, "It is not in the latest snapshot")) << history.text;
    int kept = 0;
    for (const auto& point : history.json["points"])
        kept += point["state"] == "kept" ? 1 : 0;
    EXPECT_EQ(kept, 8);

    Answer week = ask("changes", "/data/old", "week");
    ASSERT_FALSE(week.isError) << week.text;
    EXPECT_EQ(week.json["in_latest_snapshot"], false);
    EXPECT_EQ(week.json["size_before_bytes"], 30 * MB);
    EXPECT_TRUE(week.json["size_after_bytes"].is_null());
    EXPECT_TRUE(contains(week.text, "not in the latest snapshot")) << week.text;

    // Gone before the period began: compared from the last snapshot that kept it.
    Answer yesterday = ask("changes", "/data/old", "yesterday");
    ASSERT_FALSE(yesterday.isError) << yesterday.text;
    EXPECT_EQ(yesterday.json["from"], iso(utc(2024, 6, 8, 9)));

    // Never kept at all: still no history.
    EXPECT_TRUE(ask("history", "/data/never").isError);
}

TEST_F(HonestChangesTest, AHistoryShorterThanThePeriodSaysWhereItStarts)
{
    scan(8, { { "a/x", 20 * MB } });
    scan(9, { { "a/x", 30 * MB } });
    scan(10, { { "a/x", 40 * MB } });
    struct Case {
        std::string period;
        bool covers;
    };
    for (const Case& c : { Case { "yesterday", true }, Case { "day-before-yesterday", true }, Case { "week", false }, Case { "month", false }, Case { "all", true } }) {
        Answer answer = ask("changes", "/data", c.period);
        ASSERT_FALSE(answer.isError) << answer.text;
        EXPECT_EQ(answer.json["covers_period"], c.covers) << c.period;
        EXPECT_EQ(answer.json["history_starts"], iso(utc(2024, 6, 8, 9))) << c.period;
        EXPECT_EQ(contains(answer.text, "The history starts on 2024-06-08, so it is shorter than this period."), !c.covers)
            << c.period << ": " << answer.text;
    }
}

TEST_F(HonestChangesTest, AFolderOnlyOneScanReadIsNamedAsTheOtherPlacesAre)
{
    // The earlier scan could not list a folder in Shared, whose name holds a terminal's escape.
    const std::string shared = "Sha\x1b[2Jred";
    TreeFixture earlier;
    earlier.add(shared + "/doc.txt", 20 * MB);
    earlier.add(shared + "/Locked/", 0);
    earlier.builder().markContentsUnready(earlier.id(shared + "/Locked"));
    saveWithColors(*store, place, earlier.finish(TreeBuilder::Metadata::included, "/data"), utc(2024, 6, 9, 9));
    scan(10, { { shared + "/doc.txt", 20 * MB }, { shared + "/Locked/data.bin", 18 * MB } });

    Answer answer = ask("changes", "/data");
    ASSERT_FALSE(answer.isError) << answer.text;
    ASSERT_EQ(answer.json["read_by_one_scan"].size(), 1u) << answer.text;
    EXPECT_EQ(answer.json["read_by_one_scan"][0]["path"], "/data/" + shared);
    EXPECT_TRUE(contains(answer.text, "\n  /data/Sha\\x1b[2Jred (read in full by the later scan only)")) << answer.text;
    EXPECT_FALSE(contains(answer.text, "\x1b")) << answer.text;
}
