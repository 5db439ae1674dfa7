#include "TreeQueries/TreeSearch.hpp"

#include "Scanning/ScanTree.hpp"
#include "Scanning/TreeBuilder.hpp"

#include <gtest/gtest.h>

#include <limits>

using namespace tarnwick;
using TreeSearch::Item;

namespace {

constexpr std::int32_t day = 86'400;

Date dateAt(std::int32_t secondsSince2001)
{
    return Date(std::chrono::seconds(TreeDate::referenceUnixSeconds + secondsSince2001));
}

// Folders are added before their contents but interleaved with each other, so that a
// subtree's node numbers are not one contiguous run.
struct SearchTree {
    std::shared_ptr<const ScanTree> tree;
    NodeID downloads, projects, app, modules, deep;
    NodeID dmg, oldDmg, zip, bigLog, appBinary, moduleFile, deepDmg, undated;

    SearchTree()
    {
        TreeBuilder b("home", NodeKind::directory, std::nullopt);
        auto add = [&](NodeID parent, std::string_view name, NodeKind kind, std::int64_t size, std::int32_t modified) {
            return b.addNode(parent, name, kind, size, size, 0, modified, TreeDate::noDate, false);
        };
        downloads = add(NodeID::root(), "Downloads", NodeKind::directory, 0, 100 * day);
        projects = add(NodeID::root(), "Projects", NodeKind::directory, 0, 100 * day);
        dmg = add(downloads, "Installer.DMG", NodeKind::file, 5000, 900 * day);
        modules = add(projects, "node_modules", NodeKind::directory, 0, 100 * day);
        oldDmg = add(downloads, "old.dmg", NodeKind::file, 3000, 10 * day);
        app = add(downloads, "Tool.app", NodeKind::package, 0, 100 * day);
        moduleFile = add(modules, "index.js", NodeKind::file, 700, 500 * day);
        appBinary = add(app, "Tool", NodeKind::file, 4000, 300 * day);
        zip = add(downloads, "archive.zip", NodeKind::file, 3000, 800 * day);
        deep = add(modules, "node_modules", NodeKind::directory, 0, 100 * day);
        deepDmg = add(deep, "nested.dmg", NodeKind::file, 100, 600 * day);
        bigLog = add(projects, "build.log", NodeKind::file, 9000, 700 * day);
        undated = add(projects, "undated.dmg", NodeKind::file, 50, TreeDate::noDate);
        tree = std::move(b).finalize("/home", ScanCoverage::whole(), TreeBuilder::Metadata::included);
    }

    TreeSearch::Found find(NodeID below, NodeKindSet kinds, std::int64_t minimumSize, const char* pattern = nullptr,
        TreeSearch::AgeFilter age = {}, int limit = 20) const
    {
        std::optional<NamePattern> compiled;
        if (pattern)
            compiled = *NamePattern::compile(pattern);
        return TreeSearch::largestItems(*tree, below, kinds, minimumSize, compiled, age, limit);
    }
};

std::vector<NodeID> nodes(const std::vector<Item>& items)
{
    std::vector<NodeID> result;
    for (const Item& item : items)
        result.push_back(item.node);
    return result;
}

}

TEST(TreeSearch, LargestItemsByKindSizeNameAndPlace)
{
    SearchTree t;
    const NodeKindSet files { NodeKind::file };
    struct Case {
        const char* what;
        TreeSearch::Found found;
        std::vector<NodeID> items;
        std::int64_t matchCount;
    };
    const Case cases[] {
        { "every file, largest first, equal sizes by node number", t.find(NodeID::root(), files, 0),
            { t.bigLog, t.dmg, t.appBinary, t.oldDmg, t.zip, t.moduleFile, t.deepDmg, t.undated }, 8 },
        { "minimum size is inclusive", t.find(NodeID::root(), files, 3000), { t.bigLog, t.dmg, t.appBinary, t.oldDmg, t.zip }, 5 },
        { "name pattern ignores case", t.find(NodeID::root(), files, 0, "*.dmg"), { t.dmg, t.oldDmg, t.deepDmg, t.undated }, 4 },
        { "only below the given folder", t.find(t.downloads, files, 0, "*.dmg"), { t.dmg, t.oldDmg }, 2 },
        { "files inside packages are found", t.find(t.app, files, 0), { t.appBinary }, 1 },
        { "folders by name, nested ones too", t.find(NodeID::root(), { NodeKind::directory }, 0, "node_modules"), { t.modules, t.deep }, 2 },
        { "the folder searched is not its own match", t.find(t.modules, { NodeKind::directory }, 0), { t.deep }, 1 },
        { "packages only", t.find(NodeID::root(), { NodeKind::package }, 0), { t.app }, 1 },
        { "a file has nothing below it", t.find(t.bigLog, NodeKindSet::all(), 0), {}, 0 },
        { "no kinds, no matches", t.find(NodeID::root(), {}, 0), {}, 0 },
        { "the limit keeps the largest, the count keeps all", t.find(NodeID::root(), files, 0, nullptr, {}, 2), { t.bigLog, t.dmg }, 8 },
        { "limit 0 only counts", t.find(NodeID::root(), files, 0, nullptr, {}, 0), {}, 8 },
        { "a negative limit only counts", t.find(NodeID::root(), files, 0, nullptr, {}, -5), {}, 8 },
    };
    for (const Case& c : cases) {
        EXPECT_EQ(nodes(c.found.items), c.items) << c.what;
        EXPECT_EQ(c.found.matchCount, c.matchCount) << c.what;
    }
    TreeSearch::Found first = t.find(NodeID::root(), files, 0, nullptr, {}, 1);
    ASSERT_EQ(first.items.size(), 1u);
    EXPECT_EQ(first.items[0], (Item { t.bigLog, 9000 }));
}

TEST(TreeSearch, MatchedBytesCountNestedMatchesOnce)
{
    SearchTree t;
    // node_modules holds 800 bytes, 100 of them in the nested node_modules.
    TreeSearch::Found folders = t.find(NodeID::root(), { NodeKind::directory }, 0, "node_modules");
    EXPECT_EQ(folders.matchedBytes, 800);
    TreeSearch::Found anything = t.find(NodeID::root(), NodeKindSet::all(), 0);
    EXPECT_EQ(anything.matchedBytes, t.tree->allocatedSize(NodeID::root()));
    EXPECT_EQ(anything.matchCount, t.tree->count() - 1);
    TreeSearch::Found limited = t.find(NodeID::root(), { NodeKind::file }, 0, "*.dmg", {}, 1);
    EXPECT_EQ(limited.matchedBytes, 5000 + 3000 + 100 + 50);
}

TEST(TreeSearch, AgeFilterOnLastChangeInside)
{
    SearchTree t;
    const NodeKindSet files { NodeKind::file };
    using Age = TreeSearch::AgeFilter;
    struct Case {
        const char* what;
        Age age;
        std::vector<NodeID> items;
    };
    const Case cases[] {
        { "changed before", Age { dateAt(600 * day), std::nullopt }, { t.appBinary, t.oldDmg, t.moduleFile } },
        { "before is strict", Age { dateAt(500 * day), std::nullopt }, { t.appBinary, t.oldDmg } },
        { "changed after, inclusive", Age { std::nullopt, dateAt(800 * day) }, { t.dmg, t.zip } },
        { "a window", Age { dateAt(800 * day), dateAt(500 * day) }, { t.bigLog, t.moduleFile, t.deepDmg } },
        { "before a date past 2069", Age { dateAt(std::numeric_limits<std::int32_t>::max()) + std::chrono::hours(24 * 365), std::nullopt },
            { t.bigLog, t.dmg, t.appBinary, t.oldDmg, t.zip, t.moduleFile, t.deepDmg } },
        { "after a date before 1932", Age { std::nullopt, Date(std::chrono::seconds(-3'000'000'000LL)) },
            { t.bigLog, t.dmg, t.appBinary, t.oldDmg, t.zip, t.moduleFile, t.deepDmg } },
    };
    for (const Case& c : cases)
        EXPECT_EQ(nodes(t.find(NodeID::root(), files, 0, nullptr, c.age).items), c.items) << c.what;

    // A folder's date is its last change inside: Downloads holds a file changed on day 900.
    EXPECT_EQ(nodes(t.find(NodeID::root(), { NodeKind::directory }, 0, nullptr, Age { dateAt(850 * day), std::nullopt }).items),
        (std::vector<NodeID> { t.projects, t.modules, t.deep }));
}

TEST(TreeSearch, LargestPlacesSkipPassThroughFolders)
{
    TreeBuilder b("home", NodeKind::directory, std::nullopt);
    auto folder = [&](NodeID parent, std::string_view name, NodeKind kind = NodeKind::directory) {
        return b.addNode(parent, TreeBuilder::Entry { .name = name, .kind = kind });
    };
    auto file = [&](NodeID parent, std::string_view name, std::int64_t size) {
        return b.addNode(parent, TreeBuilder::Entry { .name = name, .kind = NodeKind::file, .allocatedSize = size, .logicalSize = size });
    };
    // Library (1100) -> Developer (950) -> Xcode (950) -> DerivedData (950, spread over two builds)
    NodeID library = folder(NodeID::root(), "Library");
    NodeID developer = folder(library, "Developer");
    NodeID xcode = folder(developer, "Xcode");
    NodeID derived = folder(xcode, "DerivedData");
    NodeID buildA = folder(derived, "A");
    NodeID buildB = folder(derived, "B");
    file(buildA, "a.o", 500);
    file(buildB, "b.o", 450);
    file(library, "prefs", 150);
    // A folder that holds one large file is a place: the file is not a place of its own.
    NodeID movies = folder(NodeID::root(), "Movies");
    file(movies, "film.mov", 800);
    // Packages are places, and nothing inside them is; here the package holds 95 % of Applications.
    // At equal sizes, the place with the smaller node number comes first.
    NodeID applications = folder(NodeID::root(), "Applications");
    NodeID app = folder(applications, "Big.app", NodeKind::package);
    NodeID contents = folder(app, "Contents");
    file(contents, "binary", 960);
    file(applications, "readme", 50);
    NodeID small = folder(NodeID::root(), "Small");
    file(small, "x", 10);
    auto tree = std::move(b).finalize("/home", ScanCoverage::whole(), TreeBuilder::Metadata::included);

    auto places = [&](NodeID below, std::int64_t minimum, int limit) { return nodes(TreeSearch::largestPlaces(*tree, below, minimum, limit)); };
    EXPECT_EQ(places(NodeID::root(), 0, 20), (std::vector<NodeID> { library, app, derived, movies, buildA, buildB, small }));
    EXPECT_EQ(places(NodeID::root(), 450, 20), (std::vector<NodeID> { library, app, derived, movies, buildA, buildB }));
    EXPECT_EQ(places(NodeID::root(), 451, 20), (std::vector<NodeID> { library, app, derived, movies, buildA }));
    EXPECT_EQ(places(NodeID::root(), 0, 3), (std::vector<NodeID> { library, app, derived }));
    EXPECT_EQ(places(NodeID::root(), 0, 0), std::vector<NodeID> {});
    EXPECT_EQ(places(library, 0, 20), (std::vector<NodeID> { derived, buildA, buildB }));
    // Asked about a package itself, its folders are answered.
    EXPECT_EQ(places(app, 0, 20), (std::vector<NodeID> { contents }));
    EXPECT_EQ(places(movies, 0, 20), std::vector<NodeID> {});
    EXPECT_EQ(TreeSearch::largestPlaces(*tree, NodeID::root(), 0, 1), (std::vector<Item> { { library, 1100 } }));
    (void)developer;
}
