#include "Classification/ColorMap.hpp"
#include "Classification/OwnerMap.hpp"
#include "Classification/TreeFixture.hpp"
#include "Scanning/FileScanner.hpp"
#include "Support/DiskUsage.hpp"
#include "Support/TempFolder.hpp"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <map>
#include <sys/stat.h>

using namespace tarnwick;
using tarnwick::fixtures::duTotal;
using tarnwick::fixtures::TempFolder;
using tarnwick::testing::TreeFixture;

namespace {

void writeText(const std::string& path, std::string_view text)
{
    std::filesystem::create_directories(std::filesystem::path(path).parent_path());
    std::ofstream(path) << text;
}

std::map<std::string, std::int64_t> bytesByKey(const OwnerMap& map)
{
    std::map<std::string, std::int64_t> bytes;
    for (const OwnerMap::Owner& owner : map.owners())
        bytes[*owner.group.key()] = owner.bytes;
    return bytes;
}

std::vector<std::string> keys(const std::vector<OwnerMap::Owner>& owners)
{
    std::vector<std::string> result;
    for (const OwnerMap::Owner& owner : owners)
        result.push_back(*owner.group.key());
    return result;
}

OwnerIndex appsIndex(std::initializer_list<std::string_view> programs)
{
    OwnerIndex index(ApplicationRoots::under("/home/alice", ""));
    index.setSystemName("Example OS");
    for (std::string_view program : programs) {
        DesktopEntry entry;
        entry.type = "Application";
        entry.name = std::string(program) + " app";
        entry.exec = program;
        index.addDesktopEntry(program, entry);
    }
    return index;
}

}

TEST(OwnerMap, ScannedHomeFolderByOwner)
{
    TempFolder folder;
    const std::string home = folder / "home/alice";
    const std::string system = folder / "system";
    writeText(home + "/.local/share/applications/org.example.Foo.desktop", "[Desktop Entry]\nType=Application\nName=Foo\nExec=foo\n");
    writeText(system + "/etc/os-release", "PRETTY_NAME=\"Example OS 7\"\n");
    folder.makeFile("home/alice/.config/foo/settings.json", 5'000);
    folder.makeFile("home/alice/.cache/foo/blobs/one", 120'000);
    folder.makeFile("home/alice/.var/app/org.example.App/data/big", 300'000);
    folder.makeFile("home/alice/snap/bar/common/db", 80'000);
    folder.makeFile("home/alice/.claude/projects/log.jsonl", 40'000);
    folder.makeFile("home/alice/.config/stray/x", 9'000);
    folder.makeFile("home/alice/Documents/letter.txt", 30'000);

    FileScanner::Options options;
    options.root = home;
    options.progress = std::make_shared<ScanProgress>();
    ScanOutcome outcome = FileScanner(options).scan();
    ASSERT_EQ(outcome.status, ScanOutcome::Status::completed());
    std::shared_ptr<const ScanTree> tree = outcome.tree;

    OwnerIndex index = OwnerIndex::build(ApplicationRoots::under(home, system));
    OwnerPlaces places(index);
    OwnerMap map = OwnerMap::build(*tree, places, { .minimumShare = 0.0, .maximumOwners = 12 });

    const std::int64_t foo = duTotal(home + "/.config/foo") + duTotal(home + "/.cache/foo");
    const std::int64_t flatpak = duTotal(home + "/.var/app/org.example.App");
    const std::int64_t snap = duTotal(home + "/snap/bar");
    const std::int64_t claude = duTotal(home + "/.claude");
    const std::int64_t all = duTotal(home);
    EXPECT_EQ(tree->allocatedSize(NodeID::root()), all);
    const std::map<std::string, std::int64_t> expected {
        { "org.example.App", flatpak },
        { "bar", snap },
        { "org.example.Foo", foo },
        { "agent:claude-code", claude },
        { "system:macos", 0 },
        { "system:no-owner", all - foo - flatpak - snap - claude },
        { "system:other-apps", 0 },
    };
    EXPECT_EQ(bytesByKey(map), expected);
    // Largest first, then the three fixed groups.
    EXPECT_EQ(keys(map.owners()), (std::vector<std::string> { "org.example.App", "org.example.Foo", "bar", "agent:claude-code",
                                      "system:macos", "system:no-owner", "system:other-apps" }));
    EXPECT_EQ(map.displayName(ColorGroup::macOS()), "Example OS 7");
    EXPECT_EQ(map.displayName(ColorGroup::owner("org.example.Foo")), "Foo");

    // The owner mode's bucket map agrees with the pass, and colours by owner.
    auto buckets = map.buckets(tree);
    ASSERT_NE(buckets, nullptr);
    std::vector<std::int64_t> rootRow = buckets->buckets().totals(NodeID::root());
    for (std::size_t bucket = 0; bucket < map.owners().size(); ++bucket)
        EXPECT_EQ(rootRow[bucket], map.owners()[bucket].bytes) << *map.owners()[bucket].group.key();
    auto colors = ColorMap::make(ColorMode::owner, tree, { .owner = buckets });
    EXPECT_EQ(colors->color(*tree->node(".cache/foo/blobs")), NodeColor::group(ColorGroup::owner("org.example.Foo")));
    EXPECT_EQ(colors->color(*tree->node(".config/foo")), NodeColor::group(ColorGroup::owner("org.example.Foo")));
    EXPECT_EQ(colors->color(*tree->node(".var/app")), NodeColor::group(ColorGroup::owner("org.example.App")));
    EXPECT_EQ(colors->color(*tree->node(".config/stray")), NodeColor::group(ColorGroup::noOwner()));
    EXPECT_EQ(colors->color(*tree->node("Documents/letter.txt")), NodeColor::group(ColorGroup::noOwner()));
}

TEST(OwnerMap, SmallOwnersFoldIntoOtherApps)
{
    TreeFixture fixture("alice");
    fixture.add(".config/big/data", 20'000);
    fixture.add(".config/mid/data", 15'000);
    fixture.add(".cache/mid/data", 10'000);
    fixture.add(".config/edge/data", 1'000);
    fixture.add(".config/tie/data", 1'000);
    fixture.add(".config/small/data", 999);
    fixture.add("Documents/data", 52'001);
    auto tree = fixture.finish(TreeBuilder::Metadata::included, "/home/alice");
    ASSERT_EQ(tree->allocatedSize(NodeID::root()), 100'000);
    OwnerIndex index = appsIndex({ "big", "mid", "edge", "tie", "small" });
    OwnerPlaces places(index);

    // 1 % of the tree is 1,000 bytes: an owner of exactly that keeps its group; equal
    // owners go by id.
    OwnerMap map = OwnerMap::build(*tree, places);
    EXPECT_EQ(keys(map.owners()),
        (std::vector<std::string> { "mid", "big", "edge", "tie", "system:macos", "system:no-owner", "system:other-apps" }))
        << "mid holds 25,000 bytes in two places";
    EXPECT_EQ(map.owners()[0].bytes, 25'000);
    EXPECT_EQ(map.owners().back().bytes, 999);
    EXPECT_EQ(keys(map.folded()), (std::vector<std::string> { "small" }));
    const int otherBucket = *map.bucket(ColorGroup::otherApps());
    EXPECT_EQ(map.nodeBuckets()[fixture.id(".config/small/data").index()], otherBucket);
    EXPECT_EQ(map.nodeBuckets()[fixture.id(".config/small").index()], otherBucket);
    EXPECT_EQ(map.displayName(ColorGroup::owner("small")), "small app");

    // At most so many owners keep a group.
    OwnerMap two = OwnerMap::build(*tree, places, { .minimumShare = 0.01, .maximumOwners = 2 });
    EXPECT_EQ(keys(two.owners()), (std::vector<std::string> { "mid", "big", "system:macos", "system:no-owner", "system:other-apps" }));
    EXPECT_EQ(two.owners().back().bytes, 2'999);
    EXPECT_EQ(keys(two.folded()), (std::vector<std::string> { "edge", "tie", "small" }));
    auto buckets = two.buckets(tree);
    ASSERT_NE(buckets, nullptr);
    EXPECT_EQ(buckets->buckets().totals(NodeID::root()), (std::vector<std::int64_t> { 25'000, 20'000, 0, 52'001, 2'999 }));
}

TEST(OwnerMap, WholeSystemTree)
{
    TreeFixture fixture("/");
    fixture.add("usr/lib/libc.so", 3'000);
    fixture.add("var/lib/dpkg/status", 500);
    fixture.add("var/tmp/scratch", 700);
    fixture.add("opt/big/bin/big", 4'000);
    fixture.add("home/alice/.config/big/x", 1'000);
    fixture.add("home/bob/.big/y", 1'000);
    fixture.add("home/bob/notes", 800);
    auto tree = fixture.finish(TreeBuilder::Metadata::included, "/");
    OwnerIndex index = appsIndex({ "big" });
    OwnerPlaces places(index);
    OwnerMap map = OwnerMap::build(*tree, places);
    EXPECT_EQ(bytesByKey(map), (std::map<std::string, std::int64_t> { { "big", 6'000 }, { "system:macos", 3'500 },
                                   { "system:no-owner", 1'500 }, { "system:other-apps", 0 } }));
    EXPECT_EQ(map.displayName(ColorGroup::macOS()), "Example OS");
    EXPECT_EQ(map.assignment().unknown, *map.bucket(ColorGroup::noOwner()));
}

TEST(OwnerMap, TreesWithoutAppsOrBytes)
{
    OwnerIndex index = appsIndex({ "big" });
    OwnerPlaces places(index);
    // A scan of an app's own folder belongs to it entirely.
    TreeFixture inside("big");
    inside.add("cache/a", 10);
    auto insideTree = inside.finish(TreeBuilder::Metadata::included, "/home/alice/.config/big");
    OwnerMap insideMap = OwnerMap::build(*insideTree, places);
    EXPECT_EQ(keys(insideMap.owners()).front(), "big");
    EXPECT_EQ(insideMap.owners().front().bytes, 10);

    // An empty tree still has the three fixed groups, and a bucket map.
    TreeFixture empty("nothing");
    auto emptyTree = empty.finish(TreeBuilder::Metadata::included, "/srv/nothing");
    OwnerMap emptyMap = OwnerMap::build(*emptyTree, places);
    EXPECT_EQ(keys(emptyMap.owners()), (std::vector<std::string> { "system:macos", "system:no-owner", "system:other-apps" }));
    EXPECT_TRUE(emptyMap.folded().empty());
    EXPECT_NE(emptyMap.buckets(emptyTree), nullptr);
}
