#include "Scanning/HomeFolders.hpp"

#include <gtest/gtest.h>

using namespace tarnwick;

TEST(HomeFolders, ParentMustBeTheUsersFolderAtAVolumeTop)
{
    struct Case {
        std::string_view path;
        std::string_view volume;
        bool expected;
    };
    const Case cases[] {
        { "/Users/alice", "/System/Volumes/Data", true },
        { "/Users/alice/", "/", true },
        { "/System/Volumes/Data/Users/bob", "/System/Volumes/Data", true },
        { "/Volumes/Backup/Users/bob", "/Volumes/Backup", true },
        { "/Volumes/Backup/Users/bob", "/Volumes/Backup/", true },
        { "/Volumes/Backup/Users/bob", "/", false },
        { "/Volumes/Backup/Old/Users/bob", "/Volumes/Backup", false },
        { "/home/carol", "/", true },
        { "/home/carol", "/home", true },
        { "/home/carol/Music", "/home", false },
        { "/Users/Shared", "/", false },
        { "/Users/.localized", "/", false },
        { "/home/.ecryptfs", "/", false },
        { "/Users", "/", false },
        { "/", "/", false },
        { "", "/", false },
    };
    for (const Case& c : cases)
        EXPECT_EQ(HomeFolders::isHomeFolder(c.path, c.volume), c.expected) << c.path << " on " << c.volume;
}

TEST(HomeFolders, UsersFolders)
{
    EXPECT_TRUE(HomeFolders::isUsersFolder("/Volumes/Backup/Users", "/Volumes/Backup"));
    EXPECT_TRUE(HomeFolders::isUsersFolder("/home", "/srv"));
    EXPECT_FALSE(HomeFolders::isUsersFolder("/Volumes/Backup/users", "/Volumes/Backup"));
}

TEST(HomeFolders, WithAMountLookup)
{
    MountLookup lookup = [](const std::string& path) -> std::optional<MountInfo> {
        if (path.starts_with("/Volumes/Backup"))
            return MountInfo { .mountPoint = "/Volumes/Backup" };
        return MountInfo { .mountPoint = "/" };
    };
    EXPECT_TRUE(HomeFolders::isHomeFolder("/Volumes/Backup/Users/bob", lookup));
    EXPECT_FALSE(HomeFolders::isHomeFolder("/Volumes/Users/bob", lookup));
    MountLookup none = [](const std::string&) { return std::optional<MountInfo> {}; };
    EXPECT_FALSE(HomeFolders::isHomeFolder("/Volumes/Backup/Users/bob", none));
    EXPECT_FALSE(HomeFolders::isHomeFolder("/no/such/Users/bob"));
}

TEST(HomeFolders, EnclosingHomeFolder)
{
    EXPECT_EQ(HomeFolders::enclosingHomeFolder("/home/carol/Music/a.mp3"), "/home/carol");
    EXPECT_EQ(HomeFolders::enclosingHomeFolder("/Users/alice"), "/Users/alice");
    EXPECT_EQ(HomeFolders::enclosingHomeFolder("/System/Volumes/Data/Users/bob/x"), "/System/Volumes/Data/Users/bob");
    EXPECT_FALSE(HomeFolders::enclosingHomeFolder("/Users/Shared/x"));
    EXPECT_FALSE(HomeFolders::enclosingHomeFolder("/home"));
    EXPECT_FALSE(HomeFolders::enclosingHomeFolder("/homework/x"));
    EXPECT_FALSE(HomeFolders::enclosingHomeFolder("/etc"));
}
