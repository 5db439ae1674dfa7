#include "Classification/TreeFixture.hpp"
#include "ViewTestSupport.hpp"
#include "Views/UnreadableSheet.hpp"
#include "Views/ViewTexts.hpp"

#include <gtest/gtest.h>

#include <cerrno>

namespace tarnwick {
namespace {

// A home folder scan in which places were refused, in several areas, and one vanished.
std::shared_ptr<const ScanTree> scanWithProblems(testing::TreeFixture& fixture)
{
    for (const char* refused : { "Documents/Private/", "Projects/db-data/", "Projects/cache/", ".var/app/org.signal.Signal/",
             ".var/app/org.example.Notes/" }) {
        fixture.add(refused, 0);
        std::string path(refused);
        path.pop_back();
        fixture.builder().recordIssue(fixture.id(path), IssueKind::permissionDenied, EACCES, "Permission denied");
    }
    fixture.add("Projects/tmp/", 0);
    fixture.builder().recordIssue(fixture.id("Projects/tmp"), IssueKind::notFound, ENOENT, "No such file or directory");
    fixture.add("Music/song.flac", 5'000'000);
    return fixture.finish(TreeBuilder::Metadata::included, "/home/ann");
}

}

TEST(UnreadableSheet, GroupsWhatCouldNotBeReadByArea)
{
    testing::TreeFixture fixture("ann");
    auto tree = scanWithProblems(fixture);
    UnreadableSheet::Content content = UnreadableSheet::make(*tree, NodeID::root(), "/home/ann");
    // The groups' words are the sheet's headings, below.
    ASSERT_EQ(content.refused.groups.size(), 3u);
    ASSERT_EQ(content.others.size(), 1u);
    EXPECT_EQ(content.others[0].kind, IssueKind::notFound);
    EXPECT_EQ(content.others[0].examples, std::vector<std::string> { "/home/ann/Projects/tmp" });
    EXPECT_EQ(content.placeCount(), 1 + 2 + 2 + 1);

    // Below a folder, only what lies inside it.
    UnreadableSheet::Content projects = UnreadableSheet::make(*tree, fixture.id("Projects"), "/home/ann");
    ASSERT_EQ(projects.refused.groups.size(), 1u);
    EXPECT_EQ(projects.refused.groups[0].count, 2);
    EXPECT_EQ(projects.placeCount(), 3);
    EXPECT_TRUE(UnreadableSheet::make(*tree, fixture.id("Music"), "/home/ann").isEmpty());
}

TEST(UnreadableSheet, ShowsEachGroupWithItsPhrase)
{
    testing::TreeFixture fixture("ann");
    auto tree = scanWithProblems(fixture);
    UnreadableSheet sheet(tree, NodeID::root(), "/home/ann");
    ASSERT_TRUE(testing::waitFor([&] { return !sheet.isLoading(); }));
    EXPECT_EQ(sheet.headings(), (QStringList { QStringLiteral("Documents"), QStringLiteral("Data of other apps (org.signal.Signal, org.example.Notes)"),
                                    QStringLiteral("2 items without permission"), QStringLiteral("Disappeared during scan · 1 item") }));
    EXPECT_EQ(sheet.windowTitle(), ViewTexts::unreadableTitle);
}

}
