#include "Classification/AgentPlaces.hpp"
#include "Classification/ContentCategory.hpp"
#include "Classification/ContentTables.hpp"
#include "Classification/PackageTypes.hpp"

#include <gtest/gtest.h>

#include <set>

using namespace tarnwick;

namespace {

ExtensionKey key(std::string_view text) { return *ExtensionKey::make(text); }

}

TEST(ContentTables, BuiltInTablesHaveNoConflicts)
{
    EXPECT_TRUE(ContentTables::builtIn().conflicts().empty());
}

TEST(ContentTables, EveryAgentPlaceHasItsRule)
{
    const ContentTables& tables = ContentTables::builtIn();
    for (const AgentPlaces::Place& place : AgentPlaces::all) {
        auto rules = tables.folderRules(place.folderName());
        std::string format = std::string(place.agent) + " data";
        bool found = false;
        for (const FolderNameRule& rule : rules) {
            if (rule.parent == place.parentName() && rule.rule.format == format) {
                EXPECT_EQ(rule.rule.category, ContentCategory::ai);
                EXPECT_TRUE(rule.rule.isStrong);
                found = true;
            }
        }
        EXPECT_TRUE(found) << place.path;
    }
}

TEST(ContentTables, FormatsOutrankPlainListsAndCategoriesStayPut)
{
    const ContentTables& tables = ContentTables::builtIn();
    struct Case {
        std::string_view extension;
        ContentCategory category;
        std::optional<std::string_view> format;
    };
    const Case cases[] = {
        { "gguf", ContentCategory::ai, "GGUF model" },
        { "ips", ContentCategory::logs, "Crash report" },
        { "tracev3", ContentCategory::logs, "Unified log" },
        { "mlmodel", ContentCategory::ai, "Core ML model" },
        { "ckpt", ContentCategory::ai, std::nullopt },
        { "mts", ContentCategory::video, std::nullopt },
        { "obj", ContentCategory::photos, std::nullopt },
        { "exs", ContentCategory::music, std::nullopt },
    };
    for (const Case& c : cases) {
        const ContentTables::FileEntry* entry = tables.extension(key(c.extension));
        ASSERT_NE(entry, nullptr) << c.extension;
        EXPECT_EQ(entry->category, c.category) << c.extension;
        EXPECT_EQ(entry->format, c.format) << c.extension;
    }
    for (std::string_view ambiguous : { "mts", "obj", "exs" })
        EXPECT_TRUE(tables.isDeveloperAmbiguous(key(ambiguous)));
    EXPECT_FALSE(tables.isDeveloperAmbiguous(key("js")));
}

TEST(ContentTables, BuilderRecordsConflictsAndLaterRegistrationWins)
{
    ContentTables::Builder builder;
    builder.addExtensions("abc def", ContentCategory::video);
    builder.addExtensions("abc", ContentCategory::photos, "Picture");
    builder.addExtensions("def", ContentCategory::video, "Same category, no conflict");
    builder.addPackages("box", ContentCategory::apps, "Box app");
    builder.addPackages("box", ContentCategory::archives, "Box archive");
    builder.addFolderRule("Stuff", { { ContentCategory::music, true, std::nullopt }, std::nullopt, false });
    builder.addFolderRule("Stuff", { { ContentCategory::video, true, std::nullopt }, "Elsewhere", false });
    builder.addFolderRule("Stuff", { { ContentCategory::logs, false, std::nullopt }, std::nullopt, false });
    builder.addSpecialName("thing", ContentCategory::system);
    builder.addSpecialName("thing", ContentCategory::other);
    ContentTables tables(std::move(builder));

    using Conflict = ContentTables::Conflict;
    using Table = ContentTables::Table;
    const std::vector<Conflict> expected {
        { Table::extensions, "abc", ContentCategory::video, ContentCategory::photos },
        { Table::packages, "box", ContentCategory::apps, ContentCategory::archives },
        { Table::folderNames, "Stuff", ContentCategory::music, ContentCategory::logs },
        { Table::specialNames, "thing", ContentCategory::system, ContentCategory::other },
    };
    EXPECT_EQ(tables.conflicts(), expected);
    EXPECT_EQ(tables.extension(key("abc"))->category, ContentCategory::photos);
    EXPECT_EQ(tables.package(key("box"))->category, ContentCategory::archives);
    EXPECT_EQ(tables.packageCount(), 1u);
    // Folder names keep every rule; the first one for a place is the one found.
    EXPECT_EQ(tables.folderRules("Stuff").size(), 3u);
}

TEST(PackageTypes, DeclaredExtensions)
{
    struct Case {
        std::string_view extension;
        bool declared;
    };
    const Case cases[] = {
        { "app", true },
        { "fcpbundle", true },
        { "photoslibrary", true },
        { "migratedphotolibrary", true }, // longer than any classified extension, still a package
        { "logarchive", true },
        { "pkg", true },
        { "scptd", true },
        { "docset", true },
        { "xcdatamodeld", true },
        { "APP", false },                 // callers pass lower case
        { "zip", false },
        { "git", false },
        { "", false },
    };
    for (const Case& c : cases)
        EXPECT_EQ(PackageTypes::isDeclaredPackageExtension(c.extension), c.declared) << c.extension;
}

TEST(ContentCategory, LabelsKeysAndRawValues)
{
    EXPECT_EQ(ContentCategories::displayLabel(ContentCategory::photos), "Photos & Design");
    EXPECT_EQ(ContentCategories::agentKey(ContentCategory::documents), "documents");
    EXPECT_EQ(ContentCategories::agentKey(ContentCategory::virtualMachines), "virtual_machines");
    std::set<std::string_view> labels;
    std::set<std::string_view> keys;
    for (std::size_t raw = 0; raw < allContentCategories.size(); ++raw) {
        ContentCategory category = allContentCategories[raw];
        EXPECT_EQ(ContentCategories::raw(category), raw);
        EXPECT_EQ(ContentCategories::fromRaw(static_cast<std::uint8_t>(raw)), category);
        EXPECT_EQ(ContentCategories::fromAgentKey(ContentCategories::agentKey(category)), category);
        labels.insert(ContentCategories::displayLabel(category));
        keys.insert(ContentCategories::agentKey(category));
    }
    EXPECT_EQ(labels.size(), 13u);
    EXPECT_EQ(keys.size(), 13u);
    EXPECT_EQ(ContentCategories::fromRaw(ContentCategories::noCategory), std::nullopt);
    EXPECT_EQ(ContentCategories::fromRaw(ContentCategories::notSet), std::nullopt);
}
