#include "Platform/VolumeIdentity.hpp"
#include "Support/TempFolder.hpp"

#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <memory>
#include <sys/stat.h>
#include <sys/sysmacros.h>

using namespace tarnwick;

namespace {

// What a command prints, without its trailing line feed.
std::string output(const std::string& command)
{
    std::unique_ptr<FILE, int (*)(FILE*)> pipe(::popen(command.c_str(), "r"), ::pclose);
    std::string text;
    char buffer[256];
    while (pipe && std::fgets(buffer, sizeof buffer, pipe.get()))
        text += buffer;
    while (!text.empty() && text.back() == '\n')
        text.pop_back();
    return text;
}

}

TEST(VolumeIdentity, UUIDWhenNamedElseDeviceNumbers)
{
    const VolumeIdentity::NamedDevice named[] = { { "3c1e9d2a-0b7f-4c55-9a1e-5d2e7f0a1b2c", 8, 2 }, { "A1B2-C3D4", 259, 1 } };
    EXPECT_EQ(VolumeIdentity::identifierFor(8, 2, named), "3c1e9d2a-0b7f-4c55-9a1e-5d2e7f0a1b2c");
    EXPECT_EQ(VolumeIdentity::identifierFor(259, 1, named), "A1B2-C3D4");
    EXPECT_EQ(VolumeIdentity::identifierFor(8, 3, named), "dev:8:3");
    EXPECT_EQ(VolumeIdentity::identifierFor(0, 45, {}), "dev:0:45");
}

TEST(VolumeIdentity, ReadsTheUUIDFolder)
{
    fixtures::TempFolder temp;
    temp.makeFolder("by-uuid");
    temp.makeFile("by-uuid/not-a-device", 1);
    temp.makeLink("by-uuid/dangling", "nowhere");
    // A device node needs the right to make one; without it only the skipping is tested.
    const bool madeNode = ::mknod((temp / "sda2").c_str(), S_IFBLK | 0600, ::makedev(8, 2)) == 0;
    if (madeNode)
        temp.makeLink("by-uuid/3c1e-uuid", "../sda2");
    auto devices = VolumeIdentity::namedDevices(temp / "by-uuid");
    if (madeNode) {
        EXPECT_EQ(devices, (std::vector<VolumeIdentity::NamedDevice> { { "3c1e-uuid", 8, 2 } }));
    } else {
        EXPECT_TRUE(devices.empty());
    }
    EXPECT_TRUE(VolumeIdentity::namedDevices(temp / "missing").empty());
}

TEST(VolumeIdentity, AgreesWithStat)
{
    fixtures::TempFolder temp;
    auto identifier = VolumeIdentity::identifier(temp.path());
    ASSERT_TRUE(identifier);
    const std::string numbers = output("stat -c '%Hd:%Ld' '" + temp.path() + "'");
    // The UUID folder names the device when udev runs; otherwise the numbers stand in.
    const std::string uuid = output("for link in /dev/disk/by-uuid/*; do [ \"$(stat -L -c '%Hr:%Lr' \"$link\" 2>/dev/null)\" = '"
        + numbers + "' ] && basename \"$link\" && break; done");
    EXPECT_EQ(*identifier, uuid.empty() ? "dev:" + numbers : uuid);
    EXPECT_FALSE(VolumeIdentity::identifier(temp / "missing"));
}

TEST(VolumeIdentity, SpaceAgreesWithStatvfsAsDfSeesIt)
{
    fixtures::TempFolder temp;
    auto space = VolumeIdentity::space(temp.path());
    ASSERT_TRUE(space);
    // Fragment size, total blocks and blocks available to users, as the stat command reports them.
    const std::string fields = output("stat -f -c '%S %b %a' '" + temp.path() + "'");
    long long fragment = 0, blocks = 0, available = 0;
    ASSERT_EQ(std::sscanf(fields.c_str(), "%lld %lld %lld", &fragment, &blocks, &available), 3) << fields;
    EXPECT_EQ(space->total, fragment * blocks);
    // Other processes may write in between: allow them a little.
    EXPECT_NEAR(static_cast<double>(space->available), static_cast<double>(fragment * available), 64e6);
    EXPECT_LE(space->available, space->total);
    EXPECT_FALSE(VolumeIdentity::space(temp / "missing"));
}
