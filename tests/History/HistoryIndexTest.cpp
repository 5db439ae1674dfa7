#include "History/HistoryStore.hpp"
#include "History/HistoryTestSupport.hpp"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

using namespace tarnwick;
using fixtures::utc;
using Index = HistoryStore::Index;

namespace {

HistoryEntry fullEntry()
{
    HistoryEntry entry;
    entry.id = 7;
    entry.date = utc(2025, 3, 10, 9) + std::chrono::microseconds(250);
    entry.total = 87'000'000'000;
    entry.volumeTotal = 994'662'584'320;
    entry.volumeAvailable = 0;
    entry.isKept = true;
    entry.note = "before the clean-up \"ü\"";
    entry.file = "7.snap";
    entry.bytes = 4096;
    entry.outOfDate = false;
    entry.issueCount = 0;
    entry.hasAllowableIssues = true;
    entry.outOfDatePaths = std::vector<std::string> { "/home/ann/a", "/home/ann/b" };
    return entry;
}

HistoryEntry bareEntry()
{
    HistoryEntry entry;
    entry.id = 8;
    entry.date = utc(2000, 12, 31, 23, 59, 59); // before the reference date
    entry.total = 0;
    entry.file = "current.snap";
    entry.bytes = 0;
    return entry;
}

Index sampleIndex()
{
    Index index;
    index.nextID = 9;
    index.sources.push_back({ { "/home/ann", "3c1e-uuid" }, "ann-0123456789abcdef", { fullEntry() }, bareEntry() });
    index.sources.push_back({ { "/srv", "dev:8:3" }, "srv-0123456789abcdef", {}, std::nullopt });
    return index;
}

}

TEST(HistoryIndex, RoundTripsEveryField)
{
    const Index index = sampleIndex();
    const std::string text = index.encoded();
    EXPECT_EQ(Index::decode(text), index);

    auto json = nlohmann::json::parse(text);
    const auto& record = json["sources"][0];
    EXPECT_EQ(json["nextID"], 9);
    EXPECT_EQ(record["folder"], "ann-0123456789abcdef");
    EXPECT_EQ(record["source"]["volume"], "3c1e-uuid");
    EXPECT_DOUBLE_EQ(record["entries"][0]["date"].get<double>(), 763290000.00025);
    EXPECT_EQ(record["entries"][0]["outOfDatePaths"].size(), 2u);
    EXPECT_DOUBLE_EQ(record["current"]["date"].get<double>(), -1.0);
    // Unknown values are left out, not written as null or zero.
    for (const char* key : { "volumeTotal", "volumeAvailable", "note", "outOfDate", "issueCount", "hasAllowableIssues", "outOfDatePaths" })
        EXPECT_FALSE(record["current"].contains(key)) << key;
    EXPECT_FALSE(json["sources"][1].contains("current"));
    // Sorted keys, so that the file reads the same every time.
    EXPECT_LT(text.find("\"entries\""), text.find("\"folder\""));
    EXPECT_LT(text.find("\"folder\""), text.find("\"source\""));
}

TEST(HistoryIndex, ReadsNullAsAbsentAndRaisesALaggingCounter)
{
    const std::string text = R"({"nextID": 2, "sources": [{"source": {"path": "/a", "volume": "v"}, "folder": "a-1",
        "entries": [{"id": 40, "date": 10.5, "total": 1, "isKept": false, "file": "40.snap", "bytes": 3, "note": null,
                     "issueCount": null}],
        "current": null}]})";
    auto index = Index::decode(text);
    ASSERT_TRUE(index);
    EXPECT_EQ(index->nextID, 41);
    ASSERT_EQ(index->sources[0].entries.size(), 1u);
    EXPECT_FALSE(index->sources[0].entries[0].note);
    EXPECT_FALSE(index->sources[0].entries[0].issueCount);
    EXPECT_FALSE(index->sources[0].current);
    EXPECT_EQ(index->sources[0].entries[0].date, utc(2001, 1, 1, 0, 0, 10) + std::chrono::milliseconds(500));
}

TEST(HistoryIndex, RejectsWhatIsNotAnIndex)
{
    const std::string entry = R"({"id": 1, "date": 1, "total": 1, "isKept": false, "file": "1.snap", "bytes": 1})";
    auto withRecord = [](const std::string& record) { return R"({"nextID": 5, "sources": [)" + record + "]}"; };
    auto record = [&](const std::string& folder, const std::string& entryText) {
        return R"({"source": {"path": "/a", "volume": "v"}, "folder": ")" + folder + R"(", "entries": [)" + entryText + "]}";
    };
    const std::string cases[] = {
        "",
        "[]",
        "{\"nextID\": 1}",
        "{\"nextID\": \"1\", \"sources\": []}",
        "{\"nextID\": 1, \"sources\": {}}",
        withRecord(record("../outside", entry)),
        withRecord(record("a/b", entry)),
        withRecord(record(".hidden", entry)),
        withRecord(record("Volumes", entry)),
        withRecord(record("a", R"({"id": 1, "date": 1, "total": 1, "isKept": false, "file": "../1.snap", "bytes": 1})")),
        withRecord(record("a", R"({"id": 1, "date": "today", "total": 1, "isKept": false, "file": "1.snap", "bytes": 1})")),
        withRecord(record("a", R"({"id": 1, "date": 1e300, "total": 1, "isKept": false, "file": "1.snap", "bytes": 1})")),
        withRecord(record("a", R"({"id": 1.5, "date": 1, "total": 1, "isKept": false, "file": "1.snap", "bytes": 1})")),
        withRecord(record("a", R"({"id": 1, "date": 1, "total": 1, "file": "1.snap", "bytes": 1})")),
        withRecord(record("a", R"({"id": 1, "date": 1, "total": 1, "isKept": false, "file": "1.snap", "bytes": 1, "note": 3})")),
        withRecord(record("a", R"({"id": 1, "date": 1, "total": 1, "isKept": false, "file": "1.snap", "bytes": 1, "outOfDatePaths": [1]})")),
        withRecord(record("a", entry) + "," + R"({"source": {"path": "/b", "volume": "v"}, "folder": "a", "entries": []})"),
        withRecord(record("a", entry) + "," + record("b", entry)), // the same place twice
    };
    for (const std::string& text : cases)
        EXPECT_FALSE(Index::decode(text)) << text;
    EXPECT_TRUE(Index::decode(withRecord(record("a", entry))));
}
