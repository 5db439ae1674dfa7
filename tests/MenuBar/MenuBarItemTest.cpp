#include "MenuBar/MenuBarItem.hpp"
#include "Support/Phrases.hpp"

#include <gtest/gtest.h>

#include <limits>

using namespace tarnwick;

namespace {

constexpr std::int64_t GB = 1'000'000'000;
constexpr std::int64_t threshold = MenuBarItem::changeThreshold;

MenuBarDisk disk(std::string id, std::optional<std::int64_t> capacity, std::optional<std::int64_t> available,
    std::optional<std::int64_t> change = std::nullopt, bool alerted = false, bool image = false)
{
    return MenuBarDisk { id, "Disk " + id, image, capacity, available, change, false, alerted, std::nullopt };
}

MenuBarStyle style(MenuBarStyle::Layout layout, bool percent = true, bool bytes = false, bool change = true,
    MenuBarStyle::Disks disks = MenuBarStyle::Disks::all())
{
    return MenuBarStyle { std::move(disks), percent, bytes, change, layout };
}

std::vector<std::string> ids(const std::vector<MenuBarSegment>& segments)
{
    std::vector<std::string> list;
    for (const MenuBarSegment& segment : segments)
        list.push_back(segment.diskID);
    return list;
}

}

TEST(MenuBarItem, ChangeShowsFromTheThresholdByItsMagnitude)
{
    struct Case {
        std::optional<std::int64_t> change;
        std::optional<std::int64_t> shown;
    };
    const Case cases[] {
        { 900'000'000, std::nullopt },  // 0.9 GB
        { -1'200'000'000, -1'200'000'000 },
        { threshold, threshold },       // the threshold itself shows
        { -threshold, -threshold },
        { threshold - 1, std::nullopt },
        { std::nullopt, std::nullopt }, // no snapshot of yesterday
        { std::numeric_limits<std::int64_t>::min(), std::numeric_limits<std::int64_t>::min() },
    };
    for (const Case& c : cases) {
        MenuBarDisk one = disk("a", 100 * GB, 40 * GB, c.change, true);
        one.changeIsUncertain = true;
        one.number = 2;
        auto segments = MenuBarItem::segments(std::span(&one, 1), style(MenuBarStyle::Layout::each), threshold);
        ASSERT_EQ(segments.size(), 1u);
        EXPECT_EQ(segments[0].change, c.shown);
        // Uncertainty travels only with a change that is shown; the rest always does.
        EXPECT_EQ(segments[0].changeIsUncertain, c.shown.has_value());
        EXPECT_TRUE(segments[0].isAlerted);
        EXPECT_EQ(segments[0].number, 2);
        EXPECT_EQ(segments[0].name, "Disk a");
    }
}

TEST(MenuBarItem, EachDiskItsSegmentUnlessItWouldShowNothing)
{
    std::vector<MenuBarDisk> disks {
        disk("a", 100 * GB, 40 * GB, 3 * GB),
        disk("b", std::nullopt, std::nullopt, 100'000'000), // nothing known, small change
        disk("c", 0, 0, std::nullopt),                      // a capacity below 1 byte has no share
        disk("d", 50 * GB, 5 * GB, std::nullopt, false, true),
    };
    auto segments = MenuBarItem::segments(disks, style(MenuBarStyle::Layout::each), threshold);
    EXPECT_EQ(ids(segments), (std::vector<std::string> { "a", "d" }));
    for (const MenuBarSegment& segment : segments)
        EXPECT_FALSE(segment.showsName);
    EXPECT_DOUBLE_EQ(segments[0].freeShare.value(), 0.4);
    EXPECT_FALSE(segments[0].freeBytes);

    // Free bytes alone: a disk whose available space is unknown shows nothing.
    auto bytesOnly = MenuBarItem::segments(disks, style(MenuBarStyle::Layout::each, false, true, false), threshold);
    EXPECT_EQ(ids(bytesOnly), (std::vector<std::string> { "a", "c", "d" }));
    EXPECT_EQ(bytesOnly[1].freeBytes, 0);

    EXPECT_TRUE(MenuBarItem::segments(disks, style(MenuBarStyle::Layout::each, false, false, false), threshold).empty());
    EXPECT_TRUE(MenuBarItem::segments(disks, style(MenuBarStyle::Layout::mostNotable, false, false, false), threshold).empty());
    EXPECT_TRUE(MenuBarItem::segments({}, style(MenuBarStyle::Layout::each), threshold).empty());
}

TEST(MenuBarItem, FreeShareStaysWithinZeroAndOne)
{
    EXPECT_DOUBLE_EQ(MenuBarItem::freeShare(disk("a", 10, 20)).value(), 1.0);
    EXPECT_DOUBLE_EQ(MenuBarItem::freeShare(disk("a", 10, -5)).value(), 0.0);
    EXPECT_DOUBLE_EQ(MenuBarItem::freeShare(disk("a", 1, 1)).value(), 1.0);
    EXPECT_FALSE(MenuBarItem::freeShare(disk("a", 0, 0)));
    EXPECT_FALSE(MenuBarItem::freeShare(disk("a", std::nullopt, 5)));
    EXPECT_FALSE(MenuBarItem::freeShare(disk("a", 5, std::nullopt)));
}

TEST(MenuBarItem, TheDiskThatNeedsAttention)
{
    using Layout = MenuBarStyle::Layout;
    struct Case {
        const char* what;
        std::vector<MenuBarDisk> disks;
        bool showsChange;
        std::string picked;
    };
    const Case cases[] {
        { "an alerted disk half free wins over a nearly full one",
            { disk("full", 100 * GB, 2 * GB), disk("alerted", 100 * GB, 50 * GB, std::nullopt, true) }, true, "alerted" },
        { "of alerted disks the fullest",
            { disk("a", 100 * GB, 50 * GB, 9 * GB, true), disk("b", 100 * GB, 30 * GB, std::nullopt, true) }, true, "b" },
        { "without alerts, the largest change either way",
            { disk("full", 100 * GB, 1 * GB, 2 * GB), disk("shrank", 100 * GB, 60 * GB, -5 * GB), disk("grew", 100 * GB, 60 * GB, 4 * GB) },
            true, "shrank" },
        { "changes are not looked at when they are not shown",
            { disk("full", 100 * GB, 1 * GB, 2 * GB), disk("shrank", 100 * GB, 60 * GB, -5 * GB) }, false, "full" },
        { "changes under the threshold do not count",
            { disk("a", 100 * GB, 30 * GB, 900'000'000), disk("b", 100 * GB, 20 * GB, -900'000'000) }, true, "b" },
        { "equal changes: the first stays",
            { disk("a", 100 * GB, 30 * GB, 2 * GB), disk("b", 100 * GB, 20 * GB, -2 * GB) }, true, "a" },
        { "equal shares: the first stays", { disk("a", 200 * GB, 20 * GB), disk("b", 100 * GB, 10 * GB) }, true, "a" },
        { "an unknown capacity never counts as full", { disk("unknown", std::nullopt, 0), disk("known", 100 * GB, 99 * GB) }, true, "known" },
        { "all unknown: the first", { disk("x", std::nullopt, 0), disk("y", 0, 0) }, true, "x" },
    };
    for (const Case& c : cases) {
        auto segments = MenuBarItem::segments(c.disks, style(Layout::mostNotable, true, true, c.showsChange), threshold);
        ASSERT_EQ(segments.size(), 1u) << c.what;
        EXPECT_EQ(segments[0].diskID, c.picked) << c.what;
        EXPECT_TRUE(segments[0].showsName) << c.what;
    }
    // Alone, the disk needs no name.
    MenuBarDisk only = disk("only", 100 * GB, 10 * GB);
    auto single = MenuBarItem::segments(std::span(&only, 1), style(Layout::mostNotable), threshold);
    ASSERT_EQ(single.size(), 1u);
    EXPECT_FALSE(single[0].showsName);
}

TEST(MenuBarItem, WhichDisksAStyleSelects)
{
    std::vector<MenuBarDisk> disks {
        disk("root", 100 * GB, 10 * GB), disk("image", 1 * GB, 1, std::nullopt, false, true), disk("backup", 100 * GB, 90 * GB),
    };
    struct Case {
        MenuBarStyle::Disks choice;
        std::vector<std::string> expected;
    };
    const Case cases[] {
        { MenuBarStyle::Disks::all(), { "root", "image", "backup" } },
        { MenuBarStyle::Disks::physical(), { "root", "backup" } },
        // The system's order, whatever the order of the choice; unknown identifiers are ignored.
        { MenuBarStyle::Disks::choosing({ "backup", "gone", "image" }), { "image", "backup" } },
        { MenuBarStyle::Disks::choosing({}), {} },
    };
    for (const Case& c : cases) {
        std::vector<std::string> got;
        for (const MenuBarDisk& chosen : MenuBarItem::selected(disks, c.choice))
            got.push_back(chosen.id);
        EXPECT_EQ(got, c.expected);
        EXPECT_EQ(ids(MenuBarItem::segments(disks, style(MenuBarStyle::Layout::each, true, false, true, c.choice), threshold)), c.expected);
    }
}

TEST(MenuBarItem, Texts)
{
    EXPECT_EQ(MenuBarItem::changeText(2'100'000'000, false), "+2.10 GB");
    EXPECT_EQ(MenuBarItem::changeText(-1'200'000'000, true), "≈−1.20 GB");
    EXPECT_EQ(MenuBarItem::freeShareText(0.234), "23 %");
    EXPECT_EQ(MenuBarItem::freeShareText(0.001), "<1 %");

    MenuBarSegment segment { "id", "System Disk", true, 0.23, 120 * GB, 2'100'000'000, false, false, std::nullopt };
    EXPECT_EQ(MenuBarItem::description(segment), "System Disk: 23 % free, 120 GB free, +2.10 GB since yesterday");
    segment = MenuBarSegment { "id", "Backup", false, std::nullopt, std::nullopt, -3 * GB, true, true, 2 };
    EXPECT_EQ(MenuBarItem::description(segment), "Backup (2): ≈−3.00 GB since yesterday, an alert is exceeded");
    segment.changeSince = std::chrono::sys_days(std::chrono::year(2024) / 6 / 7) + std::chrono::hours(12);
    EXPECT_EQ(MenuBarItem::description(segment), "Backup (2): ≈−3.00 GB since " + Phrases::localDay(*segment.changeSince)
            + " (yesterday's snapshot couldn't be read), an alert is exceeded");
}
