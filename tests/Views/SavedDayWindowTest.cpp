#include "History/HistoryStore.hpp"
#include "History/ScanRecorder.hpp"
#include "History/SnapshotLoader.hpp"
#include "Scanning/ScanTree.hpp"
#include "Support/TempFolder.hpp"
#include "Tarnwick/SavedScans.hpp"
#include "ViewTestSupport.hpp"
#include "Views/FolderListModel.hpp"
#include "Views/ListPane.hpp"
#include "Views/SavedDayWindow.hpp"
#include "Views/SunburstView.hpp"
#include "Views/ViewTexts.hpp"

#include <gtest/gtest.h>

#include <QPushButton>
#include <QSignalSpy>
#include <QTest>

#include <map>
#include <set>

namespace tarnwick {
namespace {

using testing::MB;
using testing::waitFor;

class SavedDayWindowTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        store = std::move(*HistoryStore::open(folder / "History"));
        place = ScanRecorder::sourceFor(root);
        testing::saveScan(*store, place, *lastWeek, now - std::chrono::hours(24 * 7));
        testing::saveScan(*store, place, *today, now);
        record = *store->record(place);
    }

    fixtures::TempFolder folder;
    std::string root = folder.path();
    Date now = std::chrono::time_point_cast<std::chrono::microseconds>(std::chrono::system_clock::now());
    std::unique_ptr<HistoryStore> store;
    HistorySource place;
    HistoryStore::SourceRecord record;
    std::shared_ptr<const ScanTree> lastWeek = testing::treeOf(root,
        { { "Videos/a.mp4", 70 * MB }, { "Videos/Clips/c.mov", 25 * MB }, { "Videos/small.mov", 3 * MB }, { "Code/src.tar", 30 * MB },
            { "Code/tiny/t.txt", 2 * MB }, { "notes.txt", 4 * MB } });
    std::shared_ptr<const ScanTree> today = testing::treeOf(root, { { "Videos/a.mp4", 20 * MB } });
};

}

// The day's map draws exactly the folders the day's snapshot keeps, each folder's rest as one
// piece, marked as a past day; its folders open within the window.
TEST_F(SavedDayWindowTest, ADaySnapshotOpensAsAMapOfItsKeptFolders)
{
    ASSERT_EQ(record.entries.size(), 2u);
    const HistoryEntry& day = record.entries.front();
    auto snapshot = SnapshotLoader::load(*store, place, day);
    ASSERT_TRUE(snapshot);
    SavedDayWindow window(*store, root, day.id);
    window.resize(1100, 720);
    window.show();
    ASSERT_TRUE(waitFor([&] { return !window.isLoading() && !window.map()->isDrawing(); }));
    ASSERT_TRUE(window.tree());
    EXPECT_TRUE(window.headline().startsWith(ViewTexts::savedDayTitle(QString())));
    EXPECT_TRUE(window.compareButton()->isEnabled());

    std::set<std::string> kept;
    for (std::int32_t i = 1; i < snapshot->snapshot->nodeCount(); ++i)
        kept.insert(snapshot->snapshot->path(i));
    std::set<std::string> drawn;
    std::map<std::string, std::int64_t> rests;
    for (const auto& ring : window.map()->currentLayout().rings) {
        for (const SunburstSector& sector : ring) {
            if (auto node = sector.node())
                drawn.insert(window.tree()->path(*node));
            else if (const auto* rest = std::get_if<SunburstSector::Rest>(&sector.content))
                rests[window.tree()->path(rest->parent)] += sector.bytes;
        }
    }
    EXPECT_EQ(drawn, kept);
    EXPECT_EQ(kept, (std::set<std::string> { root + "/Videos", root + "/Videos/Clips", root + "/Code" }));
    // Rounded down to 10 MB: the root keeps 130 of 134 MB, Videos 90 of 98, Clips 20 of 25,
    // Code 30 of 32; what their kept folders leave of each is its rest.
    EXPECT_EQ(rests, (std::map<std::string, std::int64_t> { { root, 10 * MB }, { root + "/Videos", 70 * MB },
                         { root + "/Videos/Clips", 20 * MB }, { root + "/Code", 30 * MB } }));

    NodeID videos = *window.tree()->node(root + "/Videos");
    auto sector = testing::sectorOf(*window.map(), videos);
    ASSERT_TRUE(sector.has_value());
    QTest::mouseClick(window.map(), Qt::LeftButton, {}, testing::pointIn(window.map()->currentGeometry(), *sector).toPoint());
    EXPECT_EQ(window.openFolder(), videos);
    EXPECT_EQ(window.list()->model()->rowOf(*window.tree()->node(root + "/Videos/Clips")), 0);

    QSignalSpy compare(&window, &SavedDayWindow::compareRequested);
    window.compareButton()->click();
    ASSERT_EQ(compare.count(), 1);
    EXPECT_EQ(compare.at(0).at(0).toString().toStdString(), root);
}

TEST_F(SavedDayWindowTest, ADayThatCannotBeReadSaysSo)
{
    SavedDayWindow window(*store, root, 999'999);
    ASSERT_TRUE(waitFor([&] { return !window.isLoading(); }));
    EXPECT_FALSE(window.tree());
    EXPECT_EQ(window.headline(), ViewTexts::savedDayUnreadable);
    EXPECT_FALSE(window.compareButton()->isEnabled());
}

}
