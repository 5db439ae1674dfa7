#include "History/HistoryStore.hpp"
#include "History/HistoryTexts.hpp"
#include "History/ScanRecorder.hpp"
#include "Support/TempFolder.hpp"
#include "Tarnwick/SavedScans.hpp"
#include "ViewTestSupport.hpp"
#include "Views/ChangesPane.hpp"
#include "Views/HistoryFeed.hpp"
#include "Views/SunburstView.hpp"
#include "Views/ViewTexts.hpp"

#include <gtest/gtest.h>

#include <QComboBox>
#include <QLabel>
#include <QSignalSpy>

namespace tarnwick {
namespace {

using testing::MB;
using testing::waitFor;

// A place scanned four days ago, yesterday and now, kept in a history on disk, as the app's
// recorder keeps it; the pane reads it with the real clock.
class ChangesPaneTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        place = ScanRecorder::sourceFor(root);
        testing::saveScan(*store, place, *fourDaysAgo, now - std::chrono::hours(100));
        testing::saveScan(*store, place, *yesterday, now - std::chrono::hours(30));
        testing::saveScan(*store, place, *today, now);
        pane.resize(420, 600);
        pane.show();
    }

    bool loaded()
    {
        return waitFor([&] { return !pane.isLoading(); });
    }

    const ChangesPane::Row* row(const QString& name)
    {
        for (const ChangesPane::Row& row : pane.rows()) {
            if (row.kind == ChangesPane::RowKind::place && row.name == name)
                return &row;
        }
        return nullptr;
    }

    fixtures::TempFolder folder;
    std::string root = folder.path();
    Date now = std::chrono::time_point_cast<std::chrono::microseconds>(std::chrono::system_clock::now());
    std::unique_ptr<HistoryStore> store = std::move(*HistoryStore::open(folder / "History"));
    HistoryFeed feed { store.get() };
    HistorySource place;
    std::shared_ptr<const ScanTree> fourDaysAgo = testing::treeOf(root, { { "Videos/a.mp4", 50 * MB }, { "Code/src.tar", 30 * MB }, { "Old/x.bin", 40 * MB } });
    std::shared_ptr<const ScanTree> yesterday = testing::treeOf(root, { { "Videos/a.mp4", 70 * MB }, { "Code/src.tar", 30 * MB }, { "Old/x.bin", 40 * MB } });
    std::shared_ptr<const ScanTree> today = testing::treeOf(root,
        { { "Videos/a.mp4", 90 * MB }, { "Videos/Clips/c.mov", 20 * MB }, { "Code/src.tar", 30 * MB }, { "Old/x.bin", 10 * MB } });
    ChangesPane pane { feed };
};

}

TEST_F(ChangesPaneTest, ListsWhatGrewAndShrankSinceThePeriodsStart)
{
    QSignalSpy shown(&pane, &ChangesPane::changesShown);
    pane.showScan(today, NodeID::root(), now, true);
    ASSERT_TRUE(loaded());
    QString name = QString::fromStdString(root.substr(root.rfind('/') + 1));
    // Since yesterday: Videos +40 MB (with its new Clips), Old −30 MB.
    EXPECT_EQ(pane.headline(), ViewTexts::grewBy(name, QStringLiteral("10.0 MB")));
    ASSERT_TRUE(row(QStringLiteral("Videos")));
    EXPECT_EQ(row(QStringLiteral("Videos"))->change, 40 * MB);
    ASSERT_TRUE(row(QStringLiteral("Old")));
    EXPECT_EQ(row(QStringLiteral("Old"))->change, -30 * MB);
    EXPECT_FALSE(row(QStringLiteral("Code")));
    EXPECT_EQ(pane.periodPicker()->currentText(), ViewTexts::periodTitle(HistoryPeriod::yesterday));

    // The map gets every changed place by its node in the scan.
    ASSERT_GE(shown.count(), 1);
    auto changes = shown.last().at(0).value<std::shared_ptr<const SunburstView::ChangeMap>>();
    ASSERT_TRUE(changes);
    NodeID clips = *today->node(root + "/Videos/Clips");
    ASSERT_TRUE(changes->contains(clips));
    EXPECT_EQ(changes->at(clips).change, 20 * MB);

    // A week reaches back further than the history: the earliest snapshot.
    pane.setPeriod(HistoryPeriod::week);
    ASSERT_TRUE(loaded());
    EXPECT_EQ(row(QStringLiteral("Videos"))->change, 60 * MB);
    EXPECT_NE(pane.detail().indexOf(ViewTexts::sizeFromTo(QStringLiteral("120 MB"), QStringLiteral("150 MB"))), -1) << pane.detail().toStdString();
}

TEST_F(ChangesPaneTest, FollowsTheOpenFolder)
{
    pane.showScan(today, NodeID::root(), now, true);
    ASSERT_TRUE(loaded());
    QSignalSpy shown(&pane, &ChangesPane::changesShown);
    pane.showScan(today, *today->node(root + "/Videos"), now, true);
    ASSERT_TRUE(loaded());
    EXPECT_EQ(pane.headline(), ViewTexts::grewBy(QStringLiteral("Videos"), QStringLiteral("40.0 MB")));
    ASSERT_TRUE(row(QStringLiteral("Clips")));
    // The snapshots were not read again, and the map keeps its pieces.
    EXPECT_EQ(shown.count(), 0);

    // A folder no snapshot keeps.
    pane.showScan(today, *today->node(root + "/Videos/a.mp4"), now, true);
    ASSERT_TRUE(loaded());
    EXPECT_EQ(pane.message().toStdString(), std::string(HistoryQueries::ChangeTexts::message(HistoryQueries::ChangesError::notKept)));
}

TEST_F(ChangesPaneTest, WaitsForTheScansOwnSnapshotAndTakesItWhenSaved)
{
    Date later = now + std::chrono::seconds(5);
    pane.showScan(today, NodeID::root(), later, true);
    ASSERT_TRUE(waitFor([&] { return pane.message() == QStringLiteral("Saving this scan into the history…"); }));
    EXPECT_TRUE(pane.isLoading());
    testing::saveScan(*store, place, *today, later);
    ASSERT_TRUE(loaded());
    EXPECT_FALSE(pane.headline().isEmpty());
}

TEST_F(ChangesPaneTest, SaysWhyThereIsNothingToCompare)
{
    pane.showScan(today, NodeID::root(), now, false);
    EXPECT_EQ(pane.message(), ViewTexts::stoppedScan);
    EXPECT_FALSE(pane.isLoading());

    fixtures::TempFolder other;
    auto fresh = testing::treeOf(other.path(), { { "A/a.bin", 20 * MB } });
    testing::saveScan(*store, ScanRecorder::sourceFor(other.path()), *fresh, now);
    pane.showScan(fresh, NodeID::root(), now, true);
    ASSERT_TRUE(loaded());
    EXPECT_EQ(pane.message(), ViewTexts::firstSnapshot);

    pane.clear();
    EXPECT_EQ(pane.message(), ViewTexts::scanToCompare);
    // The picker states its rule.
    QString rule = QString::fromUtf8(HistoryTexts::periodRule.data(), static_cast<qsizetype>(HistoryTexts::periodRule.size()));
    const auto labels = pane.findChildren<QLabel*>();
    EXPECT_TRUE(std::ranges::any_of(labels, [&](QLabel* label) { return label->text() == rule && label->isVisible(); }));
}

TEST(SunburstChanges, PiecesAtTheClockwiseEndOfChangedSectors)
{
    testing::TreeFixture fixture("root");
    NodeID grew = fixture.add("grew.bin", 600'000);
    NodeID shrank = fixture.add("shrank.bin", 300'000);
    fixture.add("same.bin", 100'000);
    auto tree = fixture.finish();
    SunburstView map;
    map.resize(500, 500);
    map.showTree(tree, NodeID::root(), std::nullopt);
    EXPECT_FALSE(map.changeProjection());

    auto changes = std::make_shared<SunburstView::ChangeMap>();
    (*changes)[grew] = { 300'000, false };   // half of it is new
    (*changes)[shrank] = { -300'000, true }; // it lost half of what it had
    map.setChanges(changes, QStringLiteral("since Jun 7"));
    const auto& projection = map.changeProjection();
    ASSERT_TRUE(projection);
    ASSERT_EQ(projection->pieces.size(), 2u);
    auto grewSector = testing::sectorOf(map, grew).value();
    EXPECT_EQ(projection->pieces[0].node, grew);
    EXPECT_DOUBLE_EQ(projection->pieces[0].end, grewSector.end);
    EXPECT_NEAR(projection->pieces[0].start, grewSector.end - grewSector.span() / 2, 1e-12);
    EXPECT_NE(map.describe(grewSector).indexOf(QStringLiteral("+300 KB since Jun 7")), -1);
    EXPECT_NE(map.describe(*testing::sectorOf(map, shrank)).indexOf(QStringLiteral("≈−300 KB")), -1);
    // Drawing them does not lay the map out again.
    int layouts = map.layoutsMade();
    (void)map.grab();
    EXPECT_EQ(map.layoutsMade(), layouts);

    map.setChanges(nullptr, {});
    EXPECT_FALSE(map.changeProjection());
    EXPECT_EQ(map.describe(grewSector).indexOf(QStringLiteral("since")), -1);
}

}

namespace tarnwick {

// Compare with Now from a saved day: the pane compares with that day, says so in its picker,
// and a period chosen again replaces it.
TEST_F(ChangesPaneTest, ComparesWithAPickedDayUntilAPeriodIsChosen)
{
    pane.showScan(today, NodeID::root(), now, true);
    ASSERT_TRUE(loaded());
    auto record = store->record(place);
    ASSERT_TRUE(record);
    const HistoryEntry& fourDays = record->entries.front();
    pane.compareSince(fourDays);
    ASSERT_TRUE(loaded());
    QString name = QString::fromStdString(root.substr(root.rfind('/') + 1));
    // 150 MB now against 120 MB four days ago.
    EXPECT_EQ(pane.headline(), ViewTexts::grewBy(name, QStringLiteral("30.0 MB")));
    ASSERT_TRUE(row(QStringLiteral("Old")));
    EXPECT_EQ(row(QStringLiteral("Old"))->change, -30 * MB);
    int picked = pane.periodPicker()->currentIndex();
    EXPECT_EQ(pane.periodPicker()->itemData(picked).toInt(), -1);

    pane.setPeriod(HistoryPeriod::yesterday);
    ASSERT_TRUE(loaded());
    EXPECT_FALSE(pane.since());
    EXPECT_EQ(pane.headline(), ViewTexts::grewBy(name, QStringLiteral("10.0 MB")));
    EXPECT_EQ(pane.periodPicker()->count(), static_cast<int>(HistoryPeriod::count));
}

}
