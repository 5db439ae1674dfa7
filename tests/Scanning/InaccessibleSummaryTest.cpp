#include "Scanning/InaccessibleSummary.hpp"

#include "Classification/TreeFixture.hpp"

#include <gtest/gtest.h>

using namespace tarnwick;

namespace {

// A tree of folders at "/"-separated paths below the root, with a refusal recorded on each
// path denied (and a disappearance on each gone).
class PathTree {
public:
    explicit PathTree(std::string rootPath)
        : m_rootPath(std::move(rootPath))
    {
    }
    NodeID deny(std::string_view relative, int code = 13)
    {
        NodeID node = m_tree.add(std::string(relative) + "/");
        m_tree.builder().recordIssue(node, IssueKind::permissionDenied, code, "Permission denied");
        return node;
    }
    void gone(std::string_view relative) { m_tree.builder().recordIssue(m_tree.add(std::string(relative) + "/"), IssueKind::notFound, 2, "No such file"); }
    std::shared_ptr<const ScanTree> finish() && { return m_tree.finish(TreeBuilder::Metadata::included, m_rootPath); }
    NodeID node(const std::string& relative) const { return m_tree.id(relative); }

private:
    std::string m_rootPath;
    tarnwick::testing::TreeFixture m_tree;
};

using Group = InaccessibleSummary::Group;

}

TEST(InaccessibleSummary, GroupsAHomeFolderByArea)
{
    PathTree t("/home");
    t.deny("alice/Desktop/private");
    t.deny("alice/Documents");
    t.deny("alice/Downloads/x/y");
    t.deny("alice/Library/Mobile Documents/com~apple~CloudDocs");
    t.deny("alice/Library/CloudStorage/Dropbox/a");
    t.deny("alice/Library/CloudStorage/Dropbox/b");
    t.deny("alice/Library/CloudStorage/GoogleDrive");
    t.deny("alice/Library/Containers/com.example.mail/Data");
    t.deny("alice/Library/Containers/com.example.mail/Other");
    t.deny("alice/Library/Group Containers/group.example");
    t.deny("alice/.var/app/org.example.Editor");
    t.deny("alice/snap/chromium/common", 1);
    t.deny("alice/Library/Messages");
    t.deny("alice/projects/a/b/c");
    t.deny("alice/projects/secret");
    t.deny("bob");
    t.gone("alice/vanished");
    auto tree = std::move(t).finish();

    auto summary = inaccessibleSummary(*tree, NodeID::root(), "/home/alice");
    const std::vector<Group> expected {
        { InaccessibleArea::desktop, 1, { "/home/alice/Desktop/private" } },
        { InaccessibleArea::documents, 1, { "/home/alice/Documents" } },
        { InaccessibleArea::downloads, 1, { "/home/alice/Downloads/x/y" } },
        { InaccessibleArea::iCloudDrive, 1, { "/home/alice/Library/Mobile Documents/com~apple~CloudDocs" } },
        { InaccessibleArea::cloudStorage, 2, { "/home/alice/Library/CloudStorage/Dropbox", "/home/alice/Library/CloudStorage/GoogleDrive" } },
        { InaccessibleArea::otherApps, 4,
            { "/home/alice/snap/chromium", "/home/alice/Library/Containers/com.example.mail",
                "/home/alice/Library/Group Containers/group.example" } },
        { InaccessibleArea::protectedByMacOS, 1, { "/home/alice/Library/Messages" } },
        { InaccessibleArea::noPermission, 3, { "/home/bob", "/home/alice/projects/secret", "/home/alice/projects/a/b/c" } },
    };
    EXPECT_EQ(summary.groups, expected);
    EXPECT_EQ(summary.groups[4].phrase(), "2 cloud storage folders");
    EXPECT_EQ(summary.groups[5].phrase(), "data of other apps (chromium, com.example.mail, group.example, …)");
    EXPECT_EQ(summary.groups[7].phrase(), "3 items without permission");

    auto underProjects = inaccessibleSummary(*tree, t.node("alice/projects"), "/home/alice");
    ASSERT_EQ(underProjects.groups.size(), 1u);
    EXPECT_EQ(underProjects.groups[0].count, 2);
    EXPECT_TRUE(inaccessibleSummary(*tree, t.node("alice/vanished"), "/home/alice").isEmpty());
}

TEST(InaccessibleSummary, ItemsUnderANodeAndWhatTheUserCanAllow)
{
    PathTree t("/");
    NodeID desktop = t.deny("home/alice/Desktop");
    NodeID messages = t.deny("home/alice/Library/Messages");
    NodeID mine = t.deny("home/alice/mine", 1);
    t.deny("home/bob");
    t.deny("etc/ssl/private");
    t.deny("root");
    t.gone("home/alice/gone");
    auto tree = std::move(t).finish();

    EXPECT_EQ(inaccessibleItems(*tree, t.node("home/alice")),
        (std::vector<InaccessibleItem> { { "/home/alice/Desktop", 13 }, { "/home/alice/Library/Messages", 13 }, { "/home/alice/mine", 1 } }));
    EXPECT_EQ(inaccessibleItems(*tree, desktop), (std::vector<InaccessibleItem> { { "/home/alice/Desktop", 13 } }));
    EXPECT_EQ(inaccessibleItems(*tree, NodeID::root()).size(), 6u);

    EXPECT_EQ(nodesWithAllowableItems(*tree, "/home/alice"), (std::vector<NodeID> { desktop, mine }));
    EXPECT_EQ(allowableInaccessibleItems(*tree, "/home/alice"),
        (std::vector<InaccessibleItem> { { "/home/alice/Desktop", 13 }, { "/home/alice/mine", 1 } }));
    EXPECT_TRUE(nodesWithAllowableItems(*tree, "").empty());
    (void)messages;

    auto summary = inaccessibleSummary(*tree, NodeID::root(), "/home/alice");
    ASSERT_EQ(summary.groups.size(), 4u);
    EXPECT_EQ(summary.groups[2], (Group { InaccessibleArea::system, 2, { "/root", "/etc/ssl/private" } }));
    EXPECT_EQ(summary.groups[3], (Group { InaccessibleArea::noPermission, 2, { "/home/bob", "/home/alice/mine" } }));
}

TEST(InaccessibleSummary, DataVolumePathsMatchTheFamiliarHome)
{
    PathTree t("/System/Volumes/Data");
    NodeID desktop = t.deny("Users/alice/Desktop");
    t.deny("Users/alice/Library/Containers/com.example.app/Data");
    auto tree = std::move(t).finish();
    auto summary = inaccessibleSummary(*tree, NodeID::root(), "/Users/alice");
    const std::vector<Group> expected {
        { InaccessibleArea::desktop, 1, { "/System/Volumes/Data/Users/alice/Desktop" } },
        { InaccessibleArea::otherApps, 1, { "/System/Volumes/Data/Users/alice/Library/Containers/com.example.app" } },
    };
    EXPECT_EQ(summary.groups, expected);
    EXPECT_EQ(nodesWithAllowableItems(*tree, "/Users/alice").front(), desktop);
}

TEST(InaccessibleSummary, GroupPhrases)
{
    struct Case {
        Group group;
        std::string_view phrase;
    };
    const Case cases[] {
        { { InaccessibleArea::noPermission, 1, {} }, "an item without permission" },
        { { InaccessibleArea::noPermission, 12, {} }, "12 items without permission" },
        { { InaccessibleArea::protectedByMacOS, 1, {} }, "an item macOS protects" },
        { { InaccessibleArea::protectedByMacOS, 2, {} }, "2 items macOS protects" },
        { { InaccessibleArea::cloudStorage, 1, {} }, "a cloud storage folder" },
        { { InaccessibleArea::cloudStorage, 3, {} }, "3 cloud storage folders" },
        { { InaccessibleArea::otherApps, 1, { "/h/Library/Containers/a" } }, "data of another app" },
        { { InaccessibleArea::otherApps, 2, { "/h/Library/Containers/a", "/h/snap/b" } }, "data of other apps (a, b)" },
    };
    for (const Case& c : cases)
        EXPECT_EQ(c.group.phrase(), c.phrase);
}
