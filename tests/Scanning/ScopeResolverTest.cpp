#include "Scanning/ScopeResolver.hpp"

#include "Support/TempFolder.hpp"
#include "Support/UnicodeNames.hpp"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

using namespace tarnwick;
namespace fs = std::filesystem;

namespace {

MountInfo mount(std::string point, std::string type, std::uint64_t id, bool local = true)
{
    return MountInfo { point, "/dev/disk" + std::to_string(id), std::move(type), id, local, false };
}

// A mount table given as data: the longest mount point that is a path prefix holds a path.
MountLookup tableLookup(std::vector<MountInfo> table)
{
    return [table = std::move(table)](const std::string& path) -> std::optional<MountInfo> {
        const MountInfo* best = nullptr;
        for (const MountInfo& m : table) {
            if (UnicodeNames::hasPathPrefix(path, m.mountPoint) && (!best || m.mountPoint.size() >= best->mountPoint.size()))
                best = &m;
        }
        return best ? std::optional(*best) : std::nullopt;
    };
}

// How a Mac's startup disk looks: a sealed system volume on "/", the user's data on its own
// volume, "/Users" served from there through a firmlink.
std::vector<MountInfo> macTable()
{
    return {
        mount("/", "apfs", 1),
        mount("/System/Volumes/Data", "apfs", 2),
        mount("/Users", "apfs", 2),
        mount("/Volumes/Image", "hfs", 3),
        mount("/Volumes/Share", "smbfs", 4, false),
        mount("/Volumes/Remote", "fuse.sshfs", 5),
        mount("/Volumes/Odd", "weirdfs", 6, false),
    };
}

std::expected<ScanScope, ScopeError> resolveOnMac(const std::string& path, std::vector<MountInfo> table = macTable())
{
    return ScopeResolver::resolve(path, tableLookup(std::move(table)), ScopeResolver::StartupDisk::separateDataVolume);
}

// Absent when the location resolved, so that a wrong success fails the comparison cleanly.
std::optional<ScopeError> refusal(const std::expected<ScanScope, ScopeError>& result)
{
    return result ? std::nullopt : std::optional(result.error());
}

// A temporary folder by its real path, as the resolver gives it back.
struct TemporaryFolder {
    fixtures::TempFolder folder;
    fs::path path = ScopeResolver::realPath(folder.path());
};

}

namespace tarnwick {
void PrintTo(const ScopeError& error, std::ostream* os)
{
    *os << error.title() << " (" << error.fileSystemType << ")";
}
}

TEST(ScopeResolver, StartupDiskAndDataVolumeGiveTheSameDataScope)
{
    auto fromRoot = resolveOnMac("/");
    auto fromData = resolveOnMac("/System/Volumes/Data");
    ASSERT_TRUE(fromRoot);
    ASSERT_TRUE(fromData);
    for (const ScanScope& scope : { *fromRoot, *fromData }) {
        EXPECT_EQ(scope.kind, SourceKind::macData);
        EXPECT_EQ(scope.scanRoot, "/System/Volumes/Data");
        EXPECT_EQ(scope.mount, macTable()[1]);
    }
    EXPECT_EQ(fromRoot->selectedURL, "/");
}

TEST(ScopeResolver, DataVolumeMustBeUnmistakable)
{
    struct Case {
        const char* what;
        std::vector<MountInfo> table;
    };
    const Case cases[] {
        { "no data volume", { mount("/", "apfs", 1) } },
        { "data volume not apfs", { mount("/", "apfs", 1), mount("/System/Volumes/Data", "hfs", 2), mount("/Users", "hfs", 2) } },
        { "root and data alike", { mount("/", "apfs", 2), mount("/System/Volumes/Data", "apfs", 2), mount("/Users", "apfs", 2) } },
        { "Users on the system volume", { mount("/", "apfs", 1), mount("/System/Volumes/Data", "apfs", 2) } },
        { "Users elsewhere", { mount("/", "apfs", 1), mount("/System/Volumes/Data", "apfs", 2), mount("/Users", "apfs", 9) } },
    };
    for (const Case& c : cases) {
        auto scope = resolveOnMac("/", c.table);
        EXPECT_EQ(refusal(scope), ScopeError::macDataVolumeNotFound()) << c.what;
    }
}

TEST(ScopeResolver, VolumesFoldersAndRefusedFileSystems)
{
    EXPECT_EQ(resolveOnMac("/Volumes/Image")->kind, SourceKind::volume);
    EXPECT_EQ(resolveOnMac("/Volumes/Image/")->kind, SourceKind::volume);
    auto folder = resolveOnMac("/Volumes/Image/Photos/../Music");
    ASSERT_TRUE(folder);
    EXPECT_EQ(folder->kind, SourceKind::folder);
    EXPECT_EQ(folder->scanRoot, "/Volumes/Image/Music");
    EXPECT_EQ(folder->mount.fileSystemID, 3u);
    EXPECT_EQ(resolveOnMac("/Users/alice")->kind, SourceKind::folder);

    EXPECT_EQ(refusal(resolveOnMac("/Volumes/Share/x")), ScopeError::networkVolume("smbfs"));
    EXPECT_EQ(refusal(resolveOnMac("/Volumes/Odd")), ScopeError::networkVolume("weirdfs"));
    EXPECT_EQ(refusal(resolveOnMac("/Volumes/Remote")), ScopeError::virtualFileSystem("fuse.sshfs"));
    EXPECT_EQ(refusal(resolveOnMac("/nowhere", {})), ScopeError::unreachable());
}

TEST(ScopeResolver, OnASingleVolumeStartupDiskRootIsAVolume)
{
    auto scope = ScopeResolver::resolve("/", tableLookup({ mount("/", "ext4", 1) }), ScopeResolver::StartupDisk::singleVolume);
    ASSERT_TRUE(scope);
    EXPECT_EQ(scope->kind, SourceKind::volume);
    EXPECT_EQ(scope->scanRoot, "/");

    auto system = ScopeResolver::resolve("/");
    ASSERT_TRUE(system);
    EXPECT_EQ(system->kind, SourceKind::volume);
}

TEST(ScopeResolver, LinkedFolderIsJudgedByItsRealPath)
{
    TemporaryFolder temp;
    fs::create_directories(temp.path / "disk" / "inside");
    fs::create_directories(temp.path / "share");
    fs::create_directory_symlink(temp.path / "disk" / "inside", temp.path / "share" / "link");
    auto lookup = tableLookup({
        mount("/", "ext4", 1),
        mount((temp.path / "share").string(), "smbfs", 2, false),
        mount((temp.path / "disk").string(), "ext4", 3),
    });
    auto scope = ScopeResolver::resolve((temp.path / "share" / "link").string(), lookup, ScopeResolver::StartupDisk::singleVolume);
    ASSERT_TRUE(scope);
    EXPECT_EQ(scope->kind, SourceKind::folder);
    EXPECT_EQ(scope->scanRoot, (temp.path / "disk" / "inside").string());
    EXPECT_EQ(scope->selectedURL, (temp.path / "share" / "link").string());
    EXPECT_EQ(scope->mount.fileSystemID, 3u);
}

TEST(ScopeResolver, ThisSystemsPlaces)
{
    TemporaryFolder temp;
    auto folder = ScopeResolver::resolve(temp.path.string());
    ASSERT_TRUE(folder);
    EXPECT_EQ(folder->kind, SourceKind::folder);
    EXPECT_EQ(folder->scanRoot, temp.path.string());

    EXPECT_EQ(refusal(ScopeResolver::resolve("/proc")), ScopeError::virtualFileSystem("proc"));
    EXPECT_EQ(refusal(ScopeResolver::resolve((temp.path / "gone").string())), ScopeError::unreachable());
    EXPECT_EQ(refusal(ScopeResolver::resolve("")), ScopeError::unreachable());
}

TEST(ScopeResolver, StandardizedAndDisplayPaths)
{
    const std::pair<std::string_view, std::string_view> standardized[] {
        { "/a/./b//c/", "/a/b/c" }, { "/a/../..", "/" }, { "/", "/" }, { "//", "/" }, { "", "" }, { "/a/b/../c", "/a/c" },
    };
    for (auto [path, expected] : standardized)
        EXPECT_EQ(ScopeResolver::standardizedPath(path), expected) << path;

    const std::pair<std::string_view, std::string_view> shown[] {
        { "/System/Volumes/Data", "/" },
        { "/System/Volumes/Data/Users", "/Users" },
        { "/System/Volumes/Data/Users/alice/Music", "/Users/alice/Music" },
        { "/System/Volumes/DataX", "/System/Volumes/DataX" },
        { "/System/Volumes", "/System/Volumes" },
        { "/home/alice", "/home/alice" },
    };
    for (auto [path, expected] : shown)
        EXPECT_EQ(ScopeResolver::displayPath(path), expected) << path;
}

TEST(ScopeResolver, ReadsTheFirmlinkTable)
{
    TemporaryFolder temp;
    fs::path file = temp.path / "firmlinks";
    std::ofstream(file) << "/Applications\tApplications\n/Users\tUsers\r\nno tab here\n\tempty\n/Library\tLibrary";
    auto table = ScopeResolver::readFirmlinks(file.string());
    ASSERT_EQ(table.size(), 3u);
    EXPECT_EQ(table[1], (Firmlink { "/Users", "Users" }));
    EXPECT_EQ(table[2], (Firmlink { "/Library", "Library" }));

    EXPECT_EQ(ScopeResolver::dataVolumePath("/Users/alice", table), "/System/Volumes/Data/Users/alice");
    EXPECT_EQ(ScopeResolver::dataVolumePath("/Applications", table), "/System/Volumes/Data/Applications");
    EXPECT_FALSE(ScopeResolver::dataVolumePath("/UsersX", table));
    EXPECT_FALSE(ScopeResolver::dataVolumePath("/System", table));
    EXPECT_TRUE(ScopeResolver::readFirmlinks((temp.path / "missing").string()).empty());
}

