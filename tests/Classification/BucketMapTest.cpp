#include "Classification/BucketMap.hpp"

#include "Classification/TreeFixture.hpp"

#include <gtest/gtest.h>

#include <limits>

using namespace tarnwick;
using tarnwick::testing::TreeFixture;

namespace {

struct TestFile {
    std::string path;
    std::int64_t bytes;
    std::uint8_t bucket;
};

// A tree of files, each with its bucket; folders take `fallback` for uncovered bytes.
struct Fixture {
    TreeFixture tree;
    std::shared_ptr<const ScanTree> scan;
    std::vector<std::uint8_t> categories;
    std::vector<std::uint8_t> fallbacks;

    explicit Fixture(const std::vector<TestFile>& files, const std::vector<std::pair<std::string, std::int64_t>>& uncovered = {},
        std::uint8_t fallback = 0)
    {
        std::vector<std::pair<NodeID, std::uint8_t>> buckets;
        for (const TestFile& file : files) {
            NodeID id = tree.add(file.path, file.bytes);
            buckets.emplace_back(id, file.bucket);
        }
        for (const auto& [path, bytes] : uncovered)
            tree.builder().addSizesWithoutNodes(tree.id(path), bytes, bytes, false);
        scan = tree.finish();
        categories.assign(static_cast<std::size_t>(scan->count()), BucketMap::noBucket);
        fallbacks.assign(static_cast<std::size_t>(scan->count()), fallback);
        for (auto [id, bucket] : buckets)
            categories[id.index()] = bucket;
    }

    std::shared_ptr<const BucketMap> build(int width, int unknown, BucketMap::Rests rests = {}, BucketMap::StoredTotals stored = {},
        std::int64_t retention = BucketMap::retentionSize) const
    {
        return BucketMap::build(scan, width, unknown, BucketMap::Input { categories, fallbacks, std::move(stored), std::move(rests), retention });
    }

    NodeID operator[](const std::string& path) const { return tree.id(path); }
};

// Folders three deep, some with bytes of their own that no file covers; bucket 1 takes those.
Fixture nestedFolders()
{
    return Fixture(
        {
            { "a/x", 300, 0 },
            { "a/b/y", 200, 1 },
            { "a/b/c/z", 50, 2 },
            { "a/b/c/w", 7, 0 },
            { "a/d/v", 11, 1 },
            { "e/u", 13, 2 },
            { "e/empty/", 0, 0 },
        },
        { { "a/b", 40 }, { "a/b/c", 3 }, { "e", 5 } }, 1);
}

}

TEST(BucketMap, DominantBucketNeedsHalfTheBytes)
{
    struct Case {
        std::vector<std::int64_t> bytes; // per bucket 0, 1, 2
        std::optional<int> dominant;
    };
    const Case cases[] = {
        { { 60, 40, 0 }, 0 },
        { { 50, 50, 0 }, 0 },          // a tie goes to the lower bucket
        { { 0, 50, 50 }, 1 },
        { { 50, 25, 25 }, 0 },         // exactly half is enough
        { { 40, 30, 30 }, std::nullopt },
        { { 30, 40, 30 }, std::nullopt },
        { { 34, 33, 33 }, std::nullopt },
        { { 0, 0, 1 }, 2 },
        { { 0, 0, 0 }, std::nullopt }, // nothing to weigh
    };
    for (const Case& c : cases) {
        std::vector<TestFile> files;
        for (std::uint8_t b = 0; b < 3; ++b)
            files.push_back({ "f/file" + std::to_string(b), c.bytes[b], b });
        Fixture fixture(files);
        auto map = fixture.build(3, 2);
        ASSERT_NE(map, nullptr);
        EXPECT_EQ(map->dominantBucket(fixture["f"]), c.dominant) << c.bytes[0] << "/" << c.bytes[1] << "/" << c.bytes[2];
        EXPECT_EQ(map->categories()[fixture["f"].index()], c.dominant ? *c.dominant : BucketMap::noBucket);
    }
}

TEST(BucketMap, RowsAreKeptForTheRootAndLargeFoldersOnly)
{
    Fixture fixture({
        { "small/a", 9'999'999, 1 },
        { "edge/a", 10'000'000, 2 },
        { "edge/inner/a", 0, 0 },
    });
    auto map = fixture.build(3, 0);
    ASSERT_NE(map, nullptr);
    const auto& stored = map->storedTotals();
    EXPECT_FALSE(stored.contains(fixture["small"]));
    EXPECT_EQ(map->dominantBucket(fixture["small"]), 1);
    EXPECT_EQ(map->totals(fixture["small"]), (std::vector<std::int64_t> { 0, 9'999'999, 0 }));
    ASSERT_TRUE(stored.contains(fixture["edge"]));
    EXPECT_EQ(stored.at(fixture["edge"]), (BucketTotals { 10'000'000, { 0, 0, 10'000'000 } }));
    EXPECT_FALSE(stored.contains(fixture["edge/inner"]));
    ASSERT_TRUE(stored.contains(NodeID::root()));
    EXPECT_EQ(stored.at(NodeID::root()).bytes, 19'999'999);

    Fixture tiny({ { "a", 5, 1 } });
    auto tinyMap = tiny.build(3, 0);
    EXPECT_EQ(tinyMap->storedTotals().size(), 1u); // the root keeps its row whatever its size
    EXPECT_EQ(tinyMap->storedTotals().at(NodeID::root()), (BucketTotals { 5, { 0, 5, 0 } }));
}

TEST(BucketMap, UncoveredBytesGoToRestsInProportionOrToTheFallback)
{
    struct Case {
        std::vector<BucketShare> parts;
        std::vector<std::int64_t> row; // of folder f: 100 bytes of its own plus a 10-byte file in bucket 0
    };
    const Case cases[] = {
        { {}, { 10, 0, 0, 100 } },                                    // no rests: the fallback, bucket 3
        { { { 1, 3 }, { 2, 1 } }, { 10, 75, 25, 0 } },                  // 3:1
        { { { 1, 1 }, { 2, 1 }, { 0, 1 } }, { 44, 33, 33, 0 } },        // the last part takes what remains
        { { { 2, 1 }, { 1, 0 } }, { 10, 0, 100, 0 } },
        { { { 1, 0 }, { 2, 0 } }, { 10, 0, 0, 100 } },                  // parts without bytes: the fallback
        { { { 9, 1 } }, { 10, 0, 0, 100 } },                            // a bucket beyond the width: unknown
    };
    for (const Case& c : cases) {
        Fixture fixture({ { "f/file", 10, 0 } }, { { "f", 100 } }, 3);
        auto map = fixture.build(4, 3, { { fixture["f"], c.parts } });
        ASSERT_NE(map, nullptr);
        EXPECT_EQ(map->totals(fixture["f"]), c.row) << c.parts.size() << " parts";
        EXPECT_EQ(map->totals(NodeID::root()), c.row);
    }
}

TEST(BucketMap, SmallFolderTotalsWorkedOutAgainMatchTheBuild)
{
    Fixture fixture = nestedFolders();
    BucketMap::Rests rests { { fixture["a/b/c"], { { 2, 1 }, { 0, 2 } } } };
    auto keptEverywhere = fixture.build(3, 0, rests, {}, 0);
    auto keptAtRoot = fixture.build(3, 0, rests);
    ASSERT_NE(keptEverywhere, nullptr);
    ASSERT_NE(keptAtRoot, nullptr);
    EXPECT_EQ(keptAtRoot->storedTotals().size(), 1u);
    for (const char* path : { "a", "a/b", "a/b/c", "a/d", "e", "e/empty" }) {
        NodeID folder = fixture[path];
        ASSERT_TRUE(keptEverywhere->storedTotals().contains(folder)) << path;
        EXPECT_EQ(keptAtRoot->totals(folder), keptEverywhere->storedTotals().at(folder).buckets) << path;
        EXPECT_EQ(keptAtRoot->dominantBucket(folder), keptEverywhere->dominantBucket(folder)) << path;
    }
    EXPECT_EQ(keptAtRoot->totals(fixture["a/b/c"]), (std::vector<std::int64_t> { 9, 0, 51 }));
    EXPECT_EQ(keptAtRoot->totals(fixture["a/b"]), (std::vector<std::int64_t> { 9, 240, 51 }));
    EXPECT_EQ(keptAtRoot->bytes(1, fixture["a"]), 251);
}

TEST(BucketMap, SharesCountNestedNodesOnce)
{
    Fixture fixture({
        { "A/x", 10, 0 },
        { "A/B/y", 20, 1 },
        { "A/B/C/z", 5, 0 },
        { "D/w", 7, 2 },
    });
    auto map = fixture.build(3, 0);
    ASSERT_NE(map, nullptr);
    using Shares = std::vector<BucketShare>;
    struct Case {
        std::vector<std::string> paths;
        Shares shares;
    };
    const Case cases[] = {
        { { "A" }, { { 0, 15 }, { 1, 20 } } },
        { { "A", "A/B" }, { { 0, 15 }, { 1, 20 } } },
        { { "A/B/C", "A/B", "A" }, { { 0, 15 }, { 1, 20 } } },
        { { "A/B", "A/B/C/z", "D" }, { { 0, 5 }, { 1, 20 }, { 2, 7 } } },
        { { "A/x", "A/x" }, { { 0, 10 } } },
        { {}, {} },
    };
    for (const Case& c : cases) {
        std::vector<NodeID> nodes;
        for (const std::string& path : c.paths)
            nodes.push_back(fixture[path]);
        EXPECT_EQ(map->shares(nodes), c.shares) << c.paths.size();
    }

    // Totals read back from elsewhere need not agree: an inner node is taken out of an outer
    // one entry by entry, never below zero.
    auto inconsistent = fixture.build(3, 0, {}, { { fixture["A"], BucketTotals { 2, { 1, 1, 0 } } } });
    const NodeID nested[] = { fixture["A"], fixture["A/B"] };
    EXPECT_EQ(inconsistent->shares(nested), (Shares { { 0, 5 }, { 1, 20 } }));
}

TEST(BucketMap, SuppliedTotalsStandForTheirSubtree)
{
    Fixture fixture({ { "A/x", 10, 0 }, { "B/y", 10, 1 } });
    auto map = fixture.build(3, 0, {}, { { fixture["A"], BucketTotals { 10, { 0, 0, 10 } } } });
    EXPECT_EQ(map->totals(fixture["A"]), (std::vector<std::int64_t> { 0, 0, 10 }));
    EXPECT_EQ(map->totals(NodeID::root()), (std::vector<std::int64_t> { 0, 10, 10 }));
    EXPECT_EQ(map->dominantBucket(fixture["A"]), 2);
}

TEST(BucketMap, OtherNodesHaveTheirOwnBucket)
{
    Fixture fixture({ { "f/a", 10, 1 }, { "f/b", 4, BucketMap::noBucket }, { "f/c", 3, 200 } });
    auto map = fixture.build(3, 2);
    EXPECT_EQ(map->totals(fixture["f/a"]), (std::vector<std::int64_t> { 0, 10, 0 }));
    EXPECT_EQ(map->bytes(1, fixture["f/a"]), 10);
    EXPECT_EQ(map->bytes(0, fixture["f/a"]), 0);
    EXPECT_EQ(map->dominantBucket(fixture["f/a"]), 1);
    // Without a bucket of their own, bytes still count, in the unknown bucket.
    EXPECT_EQ(map->totals(fixture["f/b"]), (std::vector<std::int64_t> { 0, 0, 4 }));
    EXPECT_EQ(map->dominantBucket(fixture["f/b"]), std::nullopt);
    EXPECT_EQ(map->dominantBucket(fixture["f/c"]), std::nullopt);
    EXPECT_EQ(map->totals(fixture["f"]), (std::vector<std::int64_t> { 0, 10, 7 }));
    EXPECT_EQ(map->bytes(5, fixture["f"]), 0);
    EXPECT_EQ(map->totals(NodeID { 999 }), (std::vector<std::int64_t> { 0, 0, 0 }));
}

TEST(BucketMap, SumsSaturate)
{
    constexpr std::int64_t huge = std::numeric_limits<std::int64_t>::max() - 10;
    Fixture fixture({ { "f/a", huge, 0 }, { "f/b", huge, 0 }, { "f/c", 5, 1 } });
    auto map = fixture.build(2, 0);
    ASSERT_NE(map, nullptr);
    EXPECT_EQ(map->totals(fixture["f"]), (std::vector<std::int64_t> { std::numeric_limits<std::int64_t>::max(), 5 }));
    EXPECT_EQ(map->storedTotals().at(NodeID::root()).bytes, std::numeric_limits<std::int64_t>::max());
    EXPECT_EQ(map->dominantBucket(fixture["f"]), 0);
}

TEST(BucketMap, BadParametersBuildNoMap)
{
    Fixture fixture({ { "a", 1, 0 } });
    EXPECT_EQ(fixture.build(0, 0), nullptr);
    EXPECT_EQ(fixture.build(255, 0), nullptr);
    EXPECT_EQ(fixture.build(3, 3), nullptr);
    EXPECT_EQ(fixture.build(3, -1), nullptr);
    EXPECT_NE(fixture.build(254, 253), nullptr);
    EXPECT_NE(fixture.build(1, 0), nullptr);
    BucketMap::Input shortInput { { 0 }, fixture.fallbacks, {}, {} };
    EXPECT_EQ(BucketMap::build(fixture.scan, 3, 0, shortInput), nullptr);
    EXPECT_EQ(BucketMap::build(nullptr, 3, 0, {}), nullptr);
}

// Maps built together in one pass are each the map built alone: their rows sit side by side
// in the pass, so a slip in where one ends shows in another's totals.
TEST(BucketMap, MapsBuiltTogetherAreEachAsBuiltAlone)
{
    Fixture fixture = nestedFolders();
    auto shifted = [&](int by, int width) {
        std::vector<std::uint8_t> bytes = fixture.categories;
        for (std::uint8_t& byte : bytes)
            byte = byte == BucketMap::noBucket ? byte : static_cast<std::uint8_t>((byte + by) % width);
        return bytes;
    };
    auto plans = [&] {
        std::vector<BucketMap::Plan> made;
        made.push_back({ 3, 0, { fixture.categories, fixture.fallbacks, {}, { { fixture["a/b/c"], { { 2, 1 }, { 0, 2 } } } }, 0 } });
        made.push_back({ 0, 0, { fixture.categories, fixture.fallbacks, {}, {} } }); // refused, as build() refuses it
        made.push_back({ 5, 4, { shifted(3, 5), std::vector<std::uint8_t>(fixture.fallbacks.size(), 4),
                                  { { fixture["e"], BucketTotals { 18, { 0, 18, 0, 0, 0 } } } }, {} } });
        made.push_back({ 2, 1, { shifted(1, 2), fixture.fallbacks, {}, { { fixture["a/b"], { { 1, 1 } } } }, 100 } });
        return made;
    };
    std::vector<std::shared_ptr<const BucketMap>> together = BucketMap::buildTogether(fixture.scan, plans());
    ASSERT_EQ(together.size(), 4u);
    EXPECT_EQ(together[1], nullptr);
    std::vector<BucketMap::Plan> alone = plans();
    for (std::size_t k : { 0u, 2u, 3u }) {
        SCOPED_TRACE(k);
        BucketMap::Plan& plan = alone[k];
        auto expected = BucketMap::build(fixture.scan, plan.width, plan.unknown, std::move(plan.input));
        ASSERT_NE(expected, nullptr);
        ASSERT_NE(together[k], nullptr);
        EXPECT_EQ(together[k]->width(), expected->width());
        EXPECT_TRUE(std::ranges::equal(together[k]->categories(), expected->categories()));
        EXPECT_EQ(together[k]->storedTotals(), expected->storedTotals());
        for (NodeID node { 0 }; node.value < fixture.scan->count(); ++node.value)
            EXPECT_EQ(together[k]->totals(node), expected->totals(node)) << fixture.scan->path(node);
    }
    EXPECT_EQ(together[2]->totals(fixture["e"]), (std::vector<std::int64_t> { 0, 18, 0, 0, 0 })) << "a row given stands for its folder";
    EXPECT_EQ(BucketMap::buildTogether(nullptr, plans()), (std::vector<std::shared_ptr<const BucketMap>>(4)));
}
