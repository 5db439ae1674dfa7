#include "Alerts/AlertTexts.hpp"
#include "Alerts/SpaceAlertStore.hpp"
#include "DailyScans.hpp"
#include "History/HistoryStore.hpp"
#include "History/HistoryTexts.hpp"
#include "History/ScanRecorder.hpp"
#include "MenuBarSettings.hpp"
#include "Platform/LoginItem.hpp"
#include "Platform/UserDefaults.hpp"
#include "Support/TempFolder.hpp"
#include "Tarnwick/SavedScans.hpp"
#include "ViewTestSupport.hpp"
#include "Views/AlertsPage.hpp"
#include "Views/DailyScansPage.hpp"
#include "Views/HistoryFeed.hpp"
#include "Views/HistoryPage.hpp"
#include "Views/MenuBarPage.hpp"
#include "Views/SettingsDialog.hpp"
#include "Views/ViewTexts.hpp"

#include <gtest/gtest.h>

#include <QCheckBox>
#include <QListWidget>
#include <QMessageBox>
#include <QPushButton>
#include <QSignalSpy>
#include <QTreeWidget>

namespace tarnwick {
namespace {

using testing::MB;
using testing::waitFor;

// Settings of their own, a history with one scanned place, and daily scans whose scan saves a
// small snapshot of each disk.
class SettingsTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        store = std::move(*HistoryStore::open(history));
        feed = std::make_unique<HistoryFeed>(store.get());
        testing::saveScan(*store, ScanRecorder::sourceFor(folder.path()), *testing::treeOf(folder.path(), { { "A/a", 40 * MB } }),
            std::chrono::system_clock::now() - std::chrono::hours(30));
        daily = std::make_unique<DailyScans>(DailyScans::Services {
            *defaults, *store, [] { return std::vector<HistorySource> { { "/", "root" } }; }, [] { return PowerState {}; },
            [this](const HistorySource& disk, const DailyScans::ShouldDefer&) {
                testing::saveScan(*store, disk, *testing::treeOf("/", { { "B/b", 20 * MB } }), std::chrono::system_clock::now());
                return DailyScans::DiskOutcome { disk, DailyScans::Outcome::saved, {} };
            },
            folder / "config/autostart/tarnwick.desktop", "/usr/bin/tarnwick" });
    }

    fixtures::TempFolder folder;
    std::string history = folder / "History";
    std::string defaultsPath = folder / "config/tarnwick/defaults.json";
    std::shared_ptr<UserDefaults> defaults = std::make_shared<UserDefaults>(defaultsPath);
    std::unique_ptr<HistoryStore> store;
    std::unique_ptr<HistoryFeed> feed;
    std::unique_ptr<DailyScans> daily;
};

}

TEST_F(SettingsTest, AlertsAreSetReadAndRemoved)
{
    AlertsPage page(defaults, *feed);
    ASSERT_EQ(page.list()->topLevelItemCount(), 1); // "No alerts yet."
    EXPECT_EQ(page.list()->topLevelItem(0)->text(0), ViewTexts::noAlerts);

    // A disk's limit, read against its space now; a folder's, read from the snapshot that keeps it
    // (one snapshot so far, so no growth yet).
    ASSERT_TRUE(page.add(QStringLiteral("/"), AlertsPage::Kind::diskUsed, 99));
    ASSERT_TRUE(page.add(QString::fromStdString(folder / "A"), AlertsPage::Kind::growth, 2.5, HistoryPeriod::week));
    ASSERT_TRUE(waitFor([&] { return !page.isMeasuring(); }));
    ASSERT_EQ(page.list()->topLevelItemCount(), 2);
    EXPECT_EQ(page.list()->topLevelItem(0)->text(1), QStringLiteral("Fuller than 99 %"));
    EXPECT_TRUE(page.list()->topLevelItem(0)->text(2).endsWith(QStringLiteral(" %")));
    EXPECT_EQ(page.list()->topLevelItem(1)->text(1), QStringLiteral("Grows by more than 2.50 GB, over the past week"));
    EXPECT_EQ(page.list()->topLevelItem(1)->text(2).toStdString(), "+0 B");
    auto stored = SpaceAlertStore(*defaults).alerts();
    ASSERT_EQ(stored.size(), 2u);
    EXPECT_EQ(std::get<SpaceAlert::Condition::Growth>(stored[1].condition.value).bytes, 2'500'000'000);

    // What the place can't take is refused in the alerts' own words.
    EXPECT_FALSE(page.add(QStringLiteral("/"), AlertsPage::Kind::size, 10));
    EXPECT_EQ(page.error().toStdString(), (AlertError { AlertError::Case::diskTakesDiskUsed, {} }.text()));
    EXPECT_FALSE(page.add(QStringLiteral("relative/place"), AlertsPage::Kind::size, 10));
    EXPECT_FALSE(page.error().isEmpty());

    page.list()->topLevelItem(0)->setSelected(true);
    ASSERT_TRUE(page.removeSelected());
    ASSERT_EQ(SpaceAlertStore(*defaults).alerts().size(), 1u);
    EXPECT_EQ(page.alerts().size(), 1u);
}

TEST(AlertsPageTexts, ReadingsInTheirConditionsUnits)
{
    using Condition = SpaceAlert::Condition;
    AlertReading exceeded { AlertReading::State::exceeded, 91.25, Date {}, std::nullopt, false, std::nullopt };
    EXPECT_EQ(AlertsPage::readingText({ Condition::DiskUsed { 90 } }, exceeded), QStringLiteral("Exceeded: 91.3 %"));
    AlertReading grew { AlertReading::State::below, 3e9, Date {}, Date {}, true, std::nullopt };
    EXPECT_EQ(AlertsPage::readingText({ Condition::Growth { 5'000'000'000, "week" } }, grew).toStdString(),
        "+3.00 GB" + std::string(AlertTexts::uncertainSuffix));
    EXPECT_EQ(AlertsPage::readingText({ Condition::Share { 10 } }, AlertReading::unknown(AlertReading::Unknown::capacityUnknown)).toStdString(),
        std::string(AlertTexts::capacityUnknown));
    EXPECT_EQ(AlertsPage::limitText({ Condition::Share { 10 } }), QStringLiteral("More than 10 % of its disk"));
    EXPECT_EQ(AlertsPage::limitText({ Condition::Size { 50'000'000'000 } }), QStringLiteral("Larger than 50.0 GB"));
}

TEST_F(SettingsTest, TheDailySnapshotSwitchAndASnapshotNow)
{
    DailyScansPage page(daily.get());
    EXPECT_FALSE(page.dailySwitch()->isChecked());
    EXPECT_EQ(page.lastPassText(), ViewTexts::noPassYet);
    page.dailySwitch()->click();
    EXPECT_TRUE(daily->isEnabled());
    EXPECT_TRUE(LoginItem::isInstalled(folder / "config/autostart/tarnwick.desktop"));
    EXPECT_TRUE(MenuBarSettings::isShown(*defaults));

    page.snapshotNow()->click();
    ASSERT_TRUE(waitFor([&] { return page.lastPassText().contains(QStringLiteral("1 saved")); }));
    EXPECT_TRUE(page.snapshotNow()->isEnabled());

    page.dailySwitch()->click();
    EXPECT_FALSE(daily->isEnabled());
    EXPECT_FALSE(LoginItem::isInstalled(folder / "config/autostart/tarnwick.desktop"));
    EXPECT_TRUE(page.error().isEmpty());
}

TEST_F(SettingsTest, TheMenuBarStyleIsSavedAsItIsChosen)
{
    MenuBarPage page(defaults, *feed);
    EXPECT_EQ(page.style(), MenuBarStyle {});
    ASSERT_TRUE(waitFor([&] { return !page.isPreviewing(); }));
    MenuBarStyle each { MenuBarStyle::Disks::all(), false, true, false, MenuBarStyle::Layout::each };
    page.apply(each);
    EXPECT_EQ(MenuBarSettings::style(*defaults), each);
    ASSERT_TRUE(waitFor([&] { return !page.isPreviewing(); }));
    // Every disk its segment, with its free bytes only.
    for (const MenuBarSegment& segment : page.previewSegments()) {
        EXPECT_TRUE(segment.freeBytes.has_value());
        EXPECT_FALSE(segment.freeShare.has_value());
    }

    page.shownSwitch()->click();
    EXPECT_EQ(MenuBarSettings::isShown(*defaults), page.shownSwitch()->isChecked());
    // A saved style that can't be read counts as the default one.
    ASSERT_TRUE(defaults->set(MenuBarStyle::styleKey, nlohmann::json { { "disks", "all" } }));
    EXPECT_EQ(MenuBarSettings::style(*defaults), MenuBarStyle {});
}

TEST_F(SettingsTest, ClearingTheHistoryAsksFirst)
{
    HistoryPage page(*feed);
    ASSERT_TRUE(waitFor([&] { return !page.isBusy(); }));
    EXPECT_TRUE(page.dayOfHistoryText().startsWith(QStringLiteral("A day of history takes about ")));
    EXPECT_GT(page.storedBytes(), 0);

    page.askToClear();
    QMessageBox* confirmation = page.confirmation();
    ASSERT_TRUE(confirmation);
    EXPECT_EQ(confirmation->text(), QStringLiteral("Clear the history of scans?"));
    EXPECT_EQ(confirmation->informativeText().toStdString(), HistoryTexts::clearExplanation(page.storedBytes()));
    // Cancelled: nothing goes.
    confirmation->reject();
    EXPECT_FALSE(store->sources().empty());

    page.askToClear();
    QPushButton* clear = nullptr;
    for (QAbstractButton* button : page.confirmation()->buttons()) {
        if (button->text() == ViewTexts::clearHistoryButton)
            clear = static_cast<QPushButton*>(button);
    }
    ASSERT_TRUE(clear);
    clear->click();
    ASSERT_TRUE(waitFor([&] { return !page.isBusy() && page.storedBytes() == 0; }));
    EXPECT_TRUE(store->sources().empty());
    EXPECT_EQ(page.dayOfHistoryText(), ViewTexts::noDayOfHistory);
}

TEST_F(SettingsTest, TheDialogOpensOnAPage)
{
    SettingsDialog dialog(defaultsPath, *feed, daily.get());
    dialog.showPage(SettingsDialog::Page::history);
    EXPECT_EQ(dialog.currentPage(), SettingsDialog::Page::history);
    QSignalSpy changed(&dialog, &SettingsDialog::menuBarChanged);
    dialog.dailyScans()->dailySwitch()->click();
    EXPECT_EQ(changed.count(), 1);
    // The daily snapshot showed the tray item, and the page says so.
    EXPECT_TRUE(dialog.menuBar()->shownSwitch()->isChecked());
    ASSERT_TRUE(waitFor([&] { return !dialog.menuBar()->isPreviewing() && !dialog.history()->isBusy() && !dialog.alerts()->isMeasuring(); }));
}

}
