#include "Platform/MountTable.hpp"

#include <gtest/gtest.h>

#include <filesystem>
#include <sys/stat.h>
#include <sys/sysmacros.h>

using namespace tarnwick;

TEST(MountTable, UnescapesOctalSequences)
{
    struct Case {
        std::string_view field;
        std::string expected;
    };
    const Case cases[] {
        { "/mnt/My\\040Disk", "/mnt/My Disk" },
        { "a\\011b\\012c", "a\tb\nc" },
        { "back\\134slash", "back\\slash" },
        { "\\303\\251t\\303\\251", "\xC3\xA9t\xC3\xA9" },
        { "not\\09octal", "not\\09octal" },
        { "cut\\04", "cut\\04" },
        { "\\", "\\" },
    };
    for (const Case& c : cases)
        EXPECT_EQ(MountTable::unescape(c.field), c.expected) << c.field;
}

TEST(MountTable, ParsesLinesWithAndWithoutOptionalFields)
{
    auto plain = MountTable::parseLine("27 1 254:0 / / rw,relatime - ext4 /dev/vda rw,discard");
    ASSERT_TRUE(plain);
    EXPECT_EQ(*plain, (MountEntry { 254, 0, "/", "/", "rw,relatime", "ext4", "/dev/vda", "rw,discard" }));

    auto optional = MountTable::parseLine(
        "36 35 98:17 /sub /mnt/My\\040Disk ro,noatime shared:1 master:2 propagate_from:3 - fuse.sshfs me@host:/x rw,user_id=0");
    ASSERT_TRUE(optional);
    EXPECT_EQ(optional->deviceMajor, 98u);
    EXPECT_EQ(optional->deviceMinor, 17u);
    EXPECT_EQ(optional->root, "/sub");
    EXPECT_EQ(optional->mountPoint, "/mnt/My Disk");
    EXPECT_EQ(optional->fileSystemType, "fuse.sshfs");
    EXPECT_EQ(optional->source, "me@host:/x");

    auto noSuperOptions = MountTable::parseLine("1 0 0:5 / /x rw - tmpfs none");
    ASSERT_TRUE(noSuperOptions);
    EXPECT_EQ(noSuperOptions->superOptions, "");
}

TEST(MountTable, RejectsMalformedLines)
{
    for (std::string_view line : {
             "",
             "27 1 254:0 / / rw,relatime ext4 /dev/vda rw",   // no separator
             "27 1 254:0 / / rw,relatime - ext4",             // no source
             "27 1 254 / / rw - ext4 /dev/vda rw",            // no minor number
             "x 1 254:0 / / rw - ext4 /dev/vda rw",           // id not a number
             "27 1 254:0 / relative rw - ext4 /dev/vda rw",   // mount point not absolute
         })
        EXPECT_FALSE(MountTable::parseLine(line)) << line;

    auto mounts = MountTable::parse("27 1 254:0 / / rw - ext4 /dev/vda rw\ngarbage\n\n22 27 0:21 / /proc rw - proc proc rw");
    ASSERT_EQ(mounts.size(), 2u);
    EXPECT_EQ(mounts[1].mountPoint, "/proc");
}

TEST(MountTable, FindsTheMountByLongestPrefixAndTheTopOfAStack)
{
    auto mounts = MountTable::parse(
        "1 0 8:1 / / rw - ext4 /dev/sda1 rw\n"
        "2 1 8:2 / /mnt/a rw - ext4 /dev/sda2 rw\n"
        "3 2 0:40 / /mnt/a/deep rw - tmpfs tmpfs rw\n"
        "4 2 8:3 / /mnt/a rw - xfs /dev/sda3 rw\n");
    struct Case {
        std::string_view path;
        std::string_view source;
    };
    const Case cases[] {
        { "/", "/dev/sda1" },
        { "/mnt", "/dev/sda1" },
        { "/mnt/ab", "/dev/sda1" },      // a name prefix is not a path prefix
        { "/mnt/a", "/dev/sda3" },       // stacked: the last listed is on top
        { "/mnt/a/file", "/dev/sda3" },
        { "/mnt/a/deep/x", "tmpfs" },
    };
    for (const Case& c : cases) {
        const MountEntry* entry = MountTable::holding(mounts, c.path);
        ASSERT_NE(entry, nullptr) << c.path;
        EXPECT_EQ(entry->source, c.source) << c.path;
    }
    EXPECT_EQ(MountTable::holding(mounts, "relative/path"), nullptr);
    EXPECT_EQ(MountTable::holding({}, "/"), nullptr);
}

TEST(MountTable, MountFactsFromOptionsAndType)
{
    auto facts = [](std::string_view line) { return MountTable::info(*MountTable::parseLine(line), 7); };
    EXPECT_TRUE(facts("1 0 8:1 / /a ro,relatime - ext4 /dev/sda1 rw").isReadOnly);
    EXPECT_TRUE(facts("1 0 8:1 / /a rw,relatime - ext4 /dev/sda1 ro,errors=remount-ro").isReadOnly);
    EXPECT_FALSE(facts("1 0 8:1 / /a rw,relatime - ext4 /dev/sda1 rw,errors=remount-ro").isReadOnly);
    EXPECT_TRUE(facts("1 0 8:1 / /a rw - ext4 /dev/sda1 rw").isLocal);
    EXPECT_FALSE(facts("1 0 0:50 / /a rw - nfs4 server:/export rw").isLocal);
    EXPECT_FALSE(facts("1 0 0:50 / /a rw - cifs //server/share rw").isLocal);

    MountInfo odd = facts("1 0 8:1 / /mnt/bad\\377name rw - ext4 /dev/sda1 rw");
    EXPECT_EQ(odd.mountPoint, "/mnt/bad\xEF\xBF\xBDname");
    EXPECT_EQ(odd.fileSystemID, 7u);
}

TEST(MountTable, DiskListKeepsLocalBlockDevicesOncePerDevice)
{
    auto mounts = MountTable::parse(
        "10 1 8:1 /var/lib/app/hosts /etc/hosts rw - ext4 /dev/sda1 rw\n"
        "11 1 8:1 / / rw - ext4 /dev/sda1 rw\n"
        "12 11 8:1 / /again rw - ext4 /dev/sda1 rw\n"
        "13 11 7:0 / /media/image ro - iso9660 /dev/loop0 ro\n"
        "14 11 0:30 / /tmp rw - tmpfs tmpfs rw\n"
        "15 11 0:31 / /net rw - nfs4 /dev/fake rw\n"
        "16 11 0:32 / /remote rw - fuse.sshfs /dev/fuse rw\n"
        "17 11 8:16 / /data rw - xfs /dev/sdb rw\n"
        "18 11 8:32 / /gone rw - ext4 /dev/sdc rw\n");
    auto disks = MountTable::disks(mounts, [](const MountEntry& entry) { return entry.source != "/dev/sdc"; });
    ASSERT_EQ(disks.size(), 3u);
    EXPECT_EQ(disks[0].mount.mountPoint, "/");
    EXPECT_FALSE(disks[0].isDiskImage);
    EXPECT_EQ(disks[1].mount.mountPoint, "/media/image");
    EXPECT_TRUE(disks[1].isDiskImage);
    EXPECT_TRUE(disks[1].mount.isReadOnly);
    EXPECT_EQ(disks[2].mount.deviceName, "/dev/sdb");
    EXPECT_NE(disks[0].mount.fileSystemID, disks[2].mount.fileSystemID);
}

TEST(MountTable, LooksUpThisSystemsMounts)
{
    auto proc = MountTable::lookup("/proc/self/status");
    ASSERT_TRUE(proc);
    EXPECT_EQ(proc->fileSystemType, "proc");
    EXPECT_EQ(proc->mountPoint, "/proc");

    std::filesystem::path dir = std::filesystem::temp_directory_path();
    auto here = MountTable::lookup(dir.string());
    ASSERT_TRUE(here);
    struct stat status {};
    ASSERT_EQ(::stat(dir.c_str(), &status), 0);
    EXPECT_EQ(here->fileSystemID, MountTable::fileSystemID(major(status.st_dev), minor(status.st_dev)));
    EXPECT_TRUE(here->isLocal);

    EXPECT_FALSE(MountTable::lookup("/no/such/place/for/tarnwick"));
    EXPECT_FALSE(MountTable::lookup(""));
    EXPECT_FALSE(MountTable::read("/no/such/mountinfo"));
}
