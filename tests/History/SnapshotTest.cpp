#include "History/Snapshot.hpp"

#include "History/SnapshotEncoder.hpp"
#include "History/SnapshotFixture.hpp"

#include <gtest/gtest.h>

#include <functional>

using namespace tarnwick;
using namespace tarnwick::testing;

namespace {

using Item = TreeFixture::Item;

// root
//   Projects/            41,345,678 + 3,000,000 + 9,999,999
//     app.mp4            25,000,123 (video, changed 3 days ago)
//     notes.txt           3,000,000
//     Build/             12,345,678 (one archive)
//     small/              9,999,999 (not kept, and nothing under it)
//   Exact/               10,000,000 (kept as 10,000,000)
//   Almost/              19,999,999 (kept as 10,000,000)
//   .cache/              15,000,000 (hidden)
//   Nine/                 9,999,999 (not kept)
//   movie.mkv            50,000,000 (a file: never kept one by one)
std::shared_ptr<const ScanTree> sampleTree()
{
    TreeFixture tree;
    addSampleProjects(tree);
    tree.add(Item { "Projects/small/big.bin", 9'999'999 });
    tree.add(Item { "Exact/file.bin", 10'000'000 });
    tree.add(Item { "Almost/file.bin", 19'999'999 });
    tree.add(Item { ".cache/blob", 15'000'000 });
    tree.add(Item { "Nine/file.bin", 9'999'999 });
    tree.add(Item { "movie.mkv", 50'000'000 });
    return tree.finish();
}

std::int32_t indexOf(const Snapshot& snapshot, std::string_view name)
{
    for (std::int32_t i = 0; i < snapshot.nodeCount(); ++i) {
        if (snapshot.names[static_cast<std::size_t>(i)] == name)
            return i;
    }
    return -1;
}

Snapshot decoded(const std::vector<std::uint8_t>& bytes)
{
    auto result = Snapshot::decode(bytes);
    EXPECT_TRUE(result.has_value());
    return result.value_or(Snapshot {});
}

}

TEST(Snapshot, ReductionKeepsFoldersFromTheThresholdRoundedDown)
{
    Snapshot snapshot = reduceWithoutColors(sampleTree());
    ASSERT_TRUE(snapshot.isConsistent());
    struct Case {
        const char* name;
        std::int64_t allocated; // -1: not kept
    };
    const Case cases[] = {
        { "Projects", 50'000'000 }, { "Build", 10'000'000 }, { "Exact", 10'000'000 }, { "Almost", 10'000'000 },
        { ".cache", 10'000'000 }, { "small", -1 }, { "Nine", -1 }, { "movie.mkv", -1 }, { "app.mp4", -1 },
    };
    for (const Case& c : cases) {
        std::int32_t index = indexOf(snapshot, c.name);
        if (c.allocated < 0) {
            EXPECT_EQ(index, -1) << c.name;
            continue;
        }
        ASSERT_GE(index, 0) << c.name;
        EXPECT_EQ(snapshot.allocated[static_cast<std::size_t>(index)], c.allocated) << c.name;
    }
    EXPECT_EQ(snapshot.nodeCount(), 6);
    EXPECT_EQ(snapshot.allocated[0], 150'000'000); // 155,345,798 rounded down
    EXPECT_EQ(snapshot.rootPath, "/scan");
    EXPECT_FALSE(snapshot.hasColors);
    EXPECT_TRUE(snapshot.preciseAllocated.empty());
}

TEST(Snapshot, ReductionIsPreOrderWithParentsFirst)
{
    Snapshot snapshot = reduceWithoutColors(sampleTree());
    // Largest first below each parent, each subtree before the next sibling.
    std::vector<std::string> expected { "root", "Projects", "Build", "Almost", ".cache", "Exact" };
    EXPECT_EQ(snapshot.names, expected);
    EXPECT_EQ(snapshot.parents, (std::vector<std::int32_t> { -1, 0, 1, 0, 0, 0 }));
}

TEST(Snapshot, RootUnderTheThresholdGivesARootOnlySnapshot)
{
    TreeFixture tree;
    tree.add("Docs/a.txt", 6'000'000);
    tree.add("Docs/Inner/b.txt", 3'000'000);
    auto scan = tree.finish();
    for (const Snapshot& snapshot : { reduceWithoutColors(scan), reduceWithColors(scan) }) {
        EXPECT_EQ(snapshot.nodeCount(), 1);
        EXPECT_EQ(snapshot.allocated[0], 0);
        auto bytes = snapshot.encode();
        ASSERT_TRUE(bytes);
        EXPECT_EQ(decoded(*bytes), snapshot);
    }
    EXPECT_EQ(reduceWithColors(scan).preciseAllocated[0], 9'000'000);
}

TEST(Snapshot, ColorsKeepPreciseSizesDaysAndRests)
{
    Snapshot snapshot = reduceWithColors(sampleTree());
    ASSERT_TRUE(snapshot.hasColors);
    ASSERT_TRUE(snapshot.isConsistent());
    const auto projects = static_cast<std::size_t>(indexOf(snapshot, "Projects"));
    EXPECT_EQ(snapshot.preciseAllocated[projects], 50'345'800);
    EXPECT_EQ(snapshot.logical[projects], 24'000'000 + 3'000'000 + 12'345'678 + 9'999'999);
    EXPECT_TRUE(snapshot.hidden[static_cast<std::size_t>(indexOf(snapshot, ".cache"))]);
    EXPECT_FALSE(snapshot.hidden[projects]);

    // Local days in UTC+2: the fixture's now (12:00 UTC) is day 8552 counted from 2001-01-01.
    const std::int32_t today = static_cast<std::int32_t>((fixtureNowUnix - TreeDate::referenceUnixSeconds + fixtureZoneOffset) / 86400);
    EXPECT_EQ(snapshot.lastChangeDays[projects], today);
    EXPECT_EQ(snapshot.oldestItemDays[projects], today - 400);
    EXPECT_EQ(snapshot.restDays.front(), today);
    EXPECT_EQ(snapshot.ownCreationDay(static_cast<std::int32_t>(projects)), std::nullopt); // folders made by the fixture have no date

    // What lies in Projects besides Build: the video, the text and the small folder.
    std::span<const RestPart> parts = snapshot.restContent.of(static_cast<std::int32_t>(projects));
    auto bytesOf = [&](RestMode mode, std::uint8_t key) {
        std::int64_t total = 0;
        for (const RestPart& part : parts)
            total += part.mode == mode && part.key == key ? part.bytes : 0;
        return total;
    };
    EXPECT_EQ(bytesOf(RestMode::content, static_cast<std::uint8_t>(ContentCategory::video)), 25'000'123);
    EXPECT_EQ(bytesOf(RestMode::content, static_cast<std::uint8_t>(ContentCategory::documents)), 3'000'000);
    EXPECT_EQ(bytesOf(RestMode::modified, DateGroup::past7Days), 25'000'123);
    EXPECT_EQ(bytesOf(RestMode::modified, DateGroup::pastYear), 3'000'000);
    EXPECT_EQ(bytesOf(RestMode::hidden, 0), 38'000'122);
    // The rests of every mode add up to what the kept children leave over.
    for (RestMode mode : { RestMode::content, RestMode::modified, RestMode::created, RestMode::hidden }) {
        std::int64_t sum = 0;
        for (const RestPart& part : parts)
            sum += part.mode == mode ? part.bytes : 0;
        EXPECT_EQ(sum, 50'345'800 - 12'345'678) << static_cast<int>(mode);
    }
}

TEST(Snapshot, RoundTripWithColorsKeepsTheRootExactAndOthersTo100000Bytes)
{
    Snapshot snapshot = reduceWithColors(sampleTree());
    auto bytes = snapshot.encode(Snapshot::Colors::with);
    ASSERT_TRUE(bytes);
    Snapshot back = decoded(*bytes);
    EXPECT_EQ(back, afterColorRoundTrip(snapshot));
    EXPECT_EQ(back.preciseAllocated[0], 155'345'798);
    EXPECT_EQ(back.preciseAllocated[static_cast<std::size_t>(indexOf(back, "Almost"))], 19'900'000);
    EXPECT_EQ(back.logical[static_cast<std::size_t>(indexOf(back, "Almost"))], 19'999'999);
    EXPECT_EQ(back.allocated, snapshot.allocated);
}

TEST(Snapshot, RoundTripWithoutColors)
{
    Snapshot colored = reduceWithColors(sampleTree());
    Snapshot plain = reduceWithoutColors(sampleTree());
    auto fromPlain = plain.encode();
    auto fromColored = colored.encode(Snapshot::Colors::without);
    ASSERT_TRUE(fromPlain && fromColored);
    EXPECT_EQ(decoded(*fromPlain), plain);
    Snapshot stripped = decoded(*fromColored);
    stripped.volume = plain.volume; // the only difference between the two reductions
    EXPECT_EQ(stripped, plain);
}

TEST(Snapshot, FlagsKeptByEachEncoding)
{
    TreeFixture tree;
    tree.add("Locked/", 0);
    tree.add("Locked/data", 30'000'000);
    tree.builder().markContentsUnready(tree.id("Locked"));
    tree.builder().recordIssue(tree.id("Locked"), IssueKind::permissionDenied, 13, "denied");
    tree.builder().markScanning(tree.id("Locked"));
    auto scan = tree.finish();
    const std::uint8_t raw = scan->flags(tree.id("Locked")).raw;
    ASSERT_NE(raw & 0x80, 0);
    Snapshot colored = reduceWithColors(scan);
    Snapshot plain = reduceWithoutColors(scan);
    EXPECT_EQ(colored.flags[1].raw, raw & 0x7F);
    EXPECT_EQ(plain.flags[1].raw, raw & 0x15);
    EXPECT_TRUE(plain.flags[1].contains(NodeFlag::contentsUnread));
    EXPECT_EQ(decoded(colored.encode().value()).flags[1], colored.flags[1]);
    EXPECT_EQ(decoded(colored.encode(Snapshot::Colors::without).value()).flags[1], plain.flags[1]);
}

TEST(Snapshot, HeaderKeysInTheirOrder)
{
    Snapshot snapshot = reduceWithColors(sampleTree());
    snapshot.coverage.readableFolders = { "/scan/Projects" };
    Snapshot::Header header = SnapshotEncoder::header(snapshot, true);
    header.timestamps = std::vector<Snapshot::Timestamps> { { 1, 2, 3 } };
    std::string json = header.json();
    std::size_t last = 0;
    for (const char* key : { "\"date\":", "\"detail\":0", "\"threshold\":10000000", "\"rootPath\":\"/scan\"", "\"volumeTotal\":",
             "\"volumeAvailable\":", "\"nodeCount\":6", "\"dayOrigin\":", "\"hasColors\":true", "\"restDays\":[", "\"coverage\":[",
             "\"timestamps\":[{\"modified\":1,\"oldest\":2,\"created\":3}]" }) {
        std::size_t at = json.find(key);
        ASSERT_NE(at, std::string::npos) << key << " in " << json;
        EXPECT_GE(at, last) << key;
        last = at;
    }
    // 2024-06-01 12:00:00 UTC is 738,936,000 seconds after 2001-01-01.
    EXPECT_EQ(json.rfind("{\"date\":738936000", 0), 0U) << json;
    EXPECT_EQ(Snapshot::Header::parse(json), header);
}

TEST(Snapshot, EncodedForTheStoreKeepsColorsInBothFiles)
{
    Snapshot snapshot = reduceWithColors(sampleTree());
    auto encoded = Snapshot::encodeForStore(snapshot);
    ASSERT_TRUE(encoded);
    EXPECT_EQ(encoded->snapshot, snapshot);
    EXPECT_TRUE(decoded(encoded->current).hasColors);
    EXPECT_TRUE(decoded(encoded->day).hasColors);
}

TEST(Snapshot, InconsistentSnapshotsAreNotWritten)
{
    Snapshot good = reduceWithoutColors(sampleTree());
    std::vector<std::pair<const char*, std::function<void(Snapshot&)>>> breakages {
        { "no nodes", [](Snapshot& s) { s = Snapshot {}; } },
        { "short names", [](Snapshot& s) { s.names.pop_back(); } },
        { "parent after child", [](Snapshot& s) { s.parents[2] = 4; } },
        { "root with a parent", [](Snapshot& s) { s.parents[0] = 0; } },
        { "zero threshold", [](Snapshot& s) { s.threshold = 0; } },
        { "colour data without colours", [](Snapshot& s) { s.logical.assign(s.names.size(), 0); } },
    };
    for (auto& [what, breakIt] : breakages) {
        Snapshot broken = good;
        breakIt(broken);
        auto bytes = broken.encode();
        ASSERT_FALSE(bytes) << what;
        EXPECT_EQ(bytes.error(), Snapshot::EncodingError::inconsistent) << what;
    }
}

TEST(Snapshot, PathsAndLookups)
{
    Snapshot snapshot = reduceWithoutColors(sampleTree());
    const std::int32_t build = indexOf(snapshot, "Build");
    EXPECT_EQ(snapshot.path(build), "/scan/Projects/Build");
    EXPECT_EQ(snapshot.path(0), "/scan");
    EXPECT_EQ(snapshot.node("/scan/Projects/Build"), build);
    EXPECT_EQ(snapshot.node("Projects/Build/"), build);
    EXPECT_EQ(snapshot.node("/scan"), 0);
    EXPECT_EQ(snapshot.node("/scan/Projects/small"), std::nullopt);
    EXPECT_EQ(snapshot.node("/elsewhere/Projects"), std::nullopt);
}

// The example of History/SNAPSHOT-FORMAT.md, byte for byte.
TEST(Snapshot, WorkedExampleOfTheFormat)
{
    Snapshot s;
    s.date = Date(std::chrono::seconds(1'717'243'200));
    s.rootPath = "/home/ann";
    s.names = { "ann", "Movies" };
    s.parents = { -1, 0 };
    s.kinds = { NodeKind::directory, NodeKind::directory };
    s.flags = { NodeFlags(), NodeFlags() };
    s.allocated = { 120'000'000, 100'000'000 };
    s.hasColors = true;
    s.preciseAllocated = { 123'456'789, 100'000'000 };
    s.logical = { 120'000'000, 100'000'000 };
    s.hidden = { false, false };
    s.lastChangeDays = { 8552, 8550 };
    s.oldestItemDays = { 8000, Snapshot::unknownDay };
    s.ownCreationDays = { { 0, 7000 } };
    s.restDays = { 8552, 8545, 8522, 8186 };
    s.restContent.firstPart = { 0, 4, 8 };
    const std::int64_t rest = 23'456'789, movies = 100'000'000;
    s.restContent.parts = {
        { RestMode::content, 3, rest }, { RestMode::modified, 0, rest }, { RestMode::created, 4, rest }, { RestMode::hidden, 0, rest },
        { RestMode::content, 0, movies }, { RestMode::modified, 1, movies }, { RestMode::created, 1, movies }, { RestMode::hidden, 0, movies },
    };
    const std::string header = R"({"date":738936000.0,"detail":0,"threshold":10000000,"rootPath":"/home/ann","nodeCount":2,)"
                               R"("dayOrigin":8552,"hasColors":true,"restDays":[8552,8545,8522,8186]})";
    std::vector<std::uint8_t> expected { 0x9c, 0x01 };
    expected.insert(expected.end(), header.begin(), header.end());
    const std::vector<std::uint8_t> records {
        0x00, 0x00, 0x00, 0x95, 0x9a, 0xef, 0x3a, 0xa9, 0xfc, 0xa5, 0x03, 0x03, 'a', 'n', 'n', 0x01, 0xd0, 0x08, 0xa0, 0x18,
        0x03, 0x95, 0xd8, 0x97, 0x0b, 0x10, 0x95, 0xd8, 0x97, 0x0b, 0x24, 0x95, 0xd8, 0x97, 0x0b, 0x30, 0x95, 0xd8, 0x97, 0x0b, 0x7f,
        0x01, 0x00, 0x00, 0xe8, 0x07, 0x00, 0x06, 'M', 'o', 'v', 'i', 'e', 's', 0x04, 0x00, 0x00,
        0x00, 0xe8, 0x07, 0x11, 0xe8, 0x07, 0x21, 0xe8, 0x07, 0x30, 0xe8, 0x07, 0x7f,
    };
    expected.insert(expected.end(), records.begin(), records.end());
    EXPECT_EQ(SnapshotEncoder::body(s, Snapshot::Colors::with).value(), expected);
    EXPECT_EQ(decoded(s.encode().value()), s);
}
