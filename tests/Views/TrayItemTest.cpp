#include "DailyScans.hpp"
#include "History/HistoryStore.hpp"
#include "MenuBar/MenuBarTexts.hpp"
#include "MenuBarSettings.hpp"
#include "Platform/UserDefaults.hpp"
#include "Support/TempFolder.hpp"
#include "ViewTestSupport.hpp"
#include "Views/MapPalette.hpp"
#include "Views/MenuBarViews.hpp"
#include "Views/HistoryFeed.hpp"
#include "Views/TrayItem.hpp"
#include "Views/ViewTexts.hpp"

#include <gtest/gtest.h>

#include <QAction>
#include <QImage>
#include <QMenu>

namespace tarnwick {
namespace {

bool hasColor(const QPixmap& picture, const QColor& color)
{
    QImage image = picture.toImage();
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            QColor pixel = image.pixelColor(x, y);
            if (pixel.alpha() > 200 && std::abs(pixel.red() - color.red()) < 8 && std::abs(pixel.green() - color.green()) < 8
                && std::abs(pixel.blue() - color.blue()) < 8)
                return true;
        }
    }
    return false;
}

QAction* action(QMenu* menu, const QString& text)
{
    for (QAction* candidate : menu->actions()) {
        if (candidate->text() == text)
            return candidate;
    }
    return nullptr;
}

}

TEST(MenuBarViews, PicturesShowTheSegments)
{
    MenuBarSegment calm { "a", "System Disk", false, 0.4, std::nullopt, std::nullopt, false, false, std::nullopt };
    MenuBarSegment alerted = calm;
    alerted.isAlerted = true;
    MenuBarSegment grew = calm;
    grew.change = 3'000'000'000;

    EXPECT_TRUE(hasColor(MenuBarViews::picture({ calm }, 64), MapPalette::accent()));
    EXPECT_FALSE(hasColor(MenuBarViews::picture({ calm }, 64), MapPalette::growth()));
    EXPECT_TRUE(hasColor(MenuBarViews::picture({ alerted }, 64), MenuBarViews::gaugeColor(alerted)));
    EXPECT_NE(MenuBarViews::gaugeColor(alerted), MapPalette::accent());
    EXPECT_TRUE(hasColor(MenuBarViews::picture({ grew }, 64), MapPalette::growth()));
    // Several disks share the square; a fifth is left out rather than drawn too small.
    EXPECT_EQ(MenuBarViews::picture({ calm, alerted, grew, calm, calm }, 22).size(), QSize(22, 22));

    EXPECT_EQ(MenuBarViews::toolTip({}), ViewTexts::appName + QStringLiteral("\n") + QString::fromUtf8(MenuBarTexts::noDisks.data()));
    EXPECT_EQ(MenuBarViews::toolTip({ grew }), QStringLiteral("Tarnwick\nSystem Disk: 40 % free, +3.00 GB since yesterday"));
}

TEST(TrayItem, ShowsTheDisksAndRunsTheDailySnapshot)
{
    fixtures::TempFolder folder;
    std::string defaultsPath = folder / "defaults.json";
    UserDefaults defaults(defaultsPath);
    auto store = HistoryStore::open(folder / "History");
    ASSERT_TRUE(store);
    std::atomic<int> scans = 0;
    DailyScans daily(DailyScans::Services { defaults, **store, [] { return std::vector<HistorySource> { { "/", "root" } }; },
        [] { return PowerState {}; },
        [&scans](const HistorySource& disk, const DailyScans::ShouldDefer&) {
            ++scans;
            return DailyScans::DiskOutcome { disk, DailyScans::Outcome::failed, "not in this test" };
        },
        folder / "autostart/tarnwick.desktop", "/usr/bin/tarnwick" });
    int opened = 0;
    HistoryFeed feed(store->get());
    TrayItem tray(defaultsPath, feed, &daily, { [&] { ++opened; }, nullptr, nullptr });
    ASSERT_TRUE(testing::waitFor([&] { return !tray.isRefreshing(); }));
    EXPECT_TRUE(tray.toolTip().startsWith(ViewTexts::appName));
    EXPECT_FALSE(tray.icon().isNull());
    EXPECT_FALSE(tray.keepsAppRunning());

    QMenu* menu = tray.menu();
    action(menu, ViewTexts::openWindow)->trigger();
    EXPECT_EQ(opened, 1);
    QAction* dailySwitch = action(menu, ViewTexts::dailyMenuItem);
    ASSERT_TRUE(dailySwitch);
    EXPECT_TRUE(dailySwitch->isCheckable());
    EXPECT_FALSE(dailySwitch->isChecked());
    dailySwitch->trigger();
    EXPECT_TRUE(daily.isEnabled());
    ASSERT_TRUE(testing::waitFor([&] { return action(tray.menu(), ViewTexts::dailyMenuItem)->isChecked(); }));
    // The daily snapshot shows the item; this test's desktop has no tray to show it in.
    EXPECT_TRUE(MenuBarSettings::isShown(defaults));
    EXPECT_EQ(tray.isShown(), TrayItem::isAvailable());

    // Taking a snapshot from the menu says that it started and, after the pass, how it went.
    action(tray.menu(), ViewTexts::takeSnapshotNow)->trigger();
    EXPECT_EQ(tray.lastNotification().second, ViewTexts::snapshotStarted);
    ASSERT_TRUE(testing::waitFor([&] { return scans.load() == 1 && !daily.progress().running && daily.lastPass(); }));
    ASSERT_TRUE(testing::waitFor([&] { return action(tray.menu(), ViewTexts::takeSnapshotNow) && action(tray.menu(), ViewTexts::takeSnapshotNow)->isEnabled(); }));
    ASSERT_TRUE(testing::waitFor([&] { return tray.lastNotification().second != ViewTexts::snapshotStarted; }));
    EXPECT_EQ(tray.lastNotification().second, ViewTexts::snapshotEnded(0, 1));

    // Notifications come from any thread; without a tray to show them they are logged.
    std::thread([&tray] { tray.notify("“Projects” is larger than 50.0 GB", "It takes 61.2 GB."); }).join();
    ASSERT_TRUE(testing::waitFor([&] { return !tray.lastNotification().first.isEmpty(); }));
    EXPECT_EQ(tray.lastNotification().first, QStringLiteral("“Projects” is larger than 50.0 GB"));
    EXPECT_EQ(tray.lastNotification().second, QStringLiteral("It takes 61.2 GB."));
}

}
