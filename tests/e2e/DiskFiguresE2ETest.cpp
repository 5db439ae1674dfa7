#include "e2e/CommandLineHarness.hpp"
#include "Geometry/SunburstLayout.hpp"
#include "Platform/VolumeIdentity.hpp"
#include "Scanning/FileScanner.hpp"
#include "Support/DiskUsage.hpp"

#include <sys/mount.h>
#include <sys/statvfs.h>

using namespace tarnwick;
using namespace tarnwick::fixtures;

namespace {

void writeFile(const std::string& path, std::size_t bytes)
{
    std::filesystem::create_directories(std::filesystem::path(path).parent_path());
    std::ofstream(path) << std::string(bytes, 'x');
}

// A small ext4 disk with the usual 5 % reserve, mounted for the test where it may mount.
class DiskFiguresE2E : public CommandLineE2E {
protected:
    void SetUp() override
    {
        CommandLineE2E::SetUp();
        m_image = m_disk / "disk.ext4";
        m_mountPoint = m_disk / "mounted";
        m_disk.makeFolder("mounted");
        if (geteuid() != 0)
            GTEST_SKIP() << "mounting a disk image needs root";
        if (runShell("truncate -s 64M '" + m_image + "' && mkfs.ext4 -q -m 5 '" + m_image + "' 2>/dev/null") != 0)
            GTEST_SKIP() << "mkfs.ext4 is not available";
        if (runShell("mount -o loop '" + m_image + "' '" + m_mountPoint + "' 2>/dev/null") != 0)
            GTEST_SKIP() << "this machine does not let a test mount a loop device";
        m_mounted = true;
    }
    void TearDown() override
    {
        CommandLineE2E::TearDown();
        if (m_mounted)
            runShell("umount '" + m_mountPoint + "' || umount -l '" + m_mountPoint + "'");
    }

    TempFolder m_disk;
    std::string m_image;
    std::string m_mountPoint;
    bool m_mounted = false;
};

}

TEST_F(DiskFiguresE2E, CapacityIsScannedPlusUnaccountedPlusReservedPlusAvailable)
{
    writeFile(m_mountPoint + "/videos/clip.mov", 10'000'000);
    writeFile(m_mountPoint + "/notes/a.txt", 3000);
    ASSERT_EQ(link((m_mountPoint + "/videos/clip.mov").c_str(), (m_mountPoint + "/notes/same-clip.mov").c_str()), 0);
    sync();
    struct statvfs info;
    ASSERT_EQ(statvfs(m_mountPoint.c_str(), &info), 0);
    const auto unit = static_cast<std::int64_t>(info.f_frsize);
    const std::int64_t reserve = static_cast<std::int64_t>(info.f_bfree - info.f_bavail) * unit;
    ASSERT_GT(reserve, 2'000'000); // 5 % of 64 MB

    ASSERT_EQ(tarnwick("scan '" + m_mountPoint + "'").status, 0);
    ASSERT_EQ(tarnwick("wait --timeout 60").status, 0);
    nlohmann::json summary = json("summary '" + m_mountPoint + "'");
    const std::int64_t scanned = summary["size_bytes"];
    EXPECT_EQ(scanned, duTotal(m_mountPoint));
    EXPECT_EQ(summary["reserved_bytes"], reserve);
    EXPECT_EQ(summary["capacity_bytes"], static_cast<std::int64_t>(info.f_blocks) * unit);
    EXPECT_EQ(summary["available_bytes"], static_cast<std::int64_t>(info.f_bavail) * unit);
    std::int64_t unaccounted = summary["unaccounted_bytes"];
    EXPECT_GT(unaccounted, 0); // the journal and the inode tables
    EXPECT_EQ(summary["capacity_bytes"].get<std::int64_t>(),
        scanned + unaccounted + reserve + summary["available_bytes"].get<std::int64_t>());
    EXPECT_NE(tarnwick("summary '" + m_mountPoint + "'").out.find("Reserved for the system: "), std::string::npos);

    // The disks command gives the same reserve.
    nlohmann::json disks = json("disks");
    bool listed = false;
    for (const auto& disk : disks["disks"]) {
        if (disk["mount_point"] == m_mountPoint) {
            listed = true;
            EXPECT_EQ(disk["reserved_bytes"], reserve);
            EXPECT_EQ(disk["capacity_bytes"], summary["capacity_bytes"]);
        }
    }
    EXPECT_TRUE(listed) << disks.dump();

    // And the map draws the same four pieces: what the scan found, then the three others.
    FileScanner::Options options;
    options.root = m_mountPoint;
    auto tree = FileScanner(options).scan().tree;
    auto space = VolumeIdentity::space(m_mountPoint);
    ASSERT_TRUE(space);
    VolumeCapacity capacity { space->total, space->available, space->reserved };
    SunburstLayout layout = SunburstLayout::layout(*tree, NodeID::root(), 4, 1500, capacity, [](int) { return 0.0; });
    std::int64_t pieces = layout.rootBytes;
    bool reservedDrawn = false;
    bool unaccountedDrawn = false;
    for (const SunburstSector& sector : layout.rings.at(0)) {
        if (std::holds_alternative<SunburstSector::Reserved>(sector.content)) {
            reservedDrawn = true;
            EXPECT_EQ(sector.bytes, capacity.reserved);
        }
        unaccountedDrawn = unaccountedDrawn || std::holds_alternative<SunburstSector::Unaccounted>(sector.content);
        if (!sector.node() && !std::holds_alternative<SunburstSector::SmallObjects>(sector.content))
            pieces += sector.bytes;
    }
    EXPECT_TRUE(reservedDrawn);
    // A piece too thin to see is left out of the drawing, not added to another.
    if (!unaccountedDrawn)
        pieces += capacity.unaccounted(layout.rootBytes);
    EXPECT_EQ(pieces, capacity.total);
    EXPECT_EQ(capacity.total, summary["capacity_bytes"].get<std::int64_t>());
}
