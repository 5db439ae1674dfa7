#include "Alerts/SpaceAlertStore.hpp"
#include "History/HistoryTestSupport.hpp"
#include "MetricsTextfile.hpp"
#include "Platform/UserDefaults.hpp"
#include "SavedScans.hpp"
#include "Support/TempFolder.hpp"

#include <gtest/gtest.h>

#include <atomic>
#include <fstream>
#include <set>
#include <thread>

using namespace tarnwick;
using namespace tarnwick::testing;
using fixtures::utc;

namespace {

std::optional<std::string> contents(const std::string& path)
{
    std::ifstream file(path);
    if (!file)
        return std::nullopt;
    return std::string(std::istreambuf_iterator<char>(file), {});
}

}

// The collector may read at any moment: a reader looping while the app saves 50 snapshots
// must only ever see a whole file, ending with the last family's line.
TEST(MetricsTextfile, AReaderNeverSeesAPartialFileDuring50Saves)
{
    fixtures::TempFolder folder;
    folder.makeFolder("place");
    folder.makeFolder("textfiles");
    Date now = utc(2024, 6, 1, 9);
    auto store = HistoryStore::open(folder / "History", Calendar::fixed(0), HistoryStore::defaultSizeLimit, [&now] { return now; });
    ASSERT_TRUE(store);
    const std::string defaultsPath = folder / "defaults.json";
    UserDefaults defaults(defaultsPath);
    ASSERT_TRUE(defaults.set(MetricsTextfile::folderKey, folder / "textfiles"));
    // Added last, the alert's family is the file's last line.
    ASSERT_TRUE(SpaceAlertStore(defaults).add(folder / "place", SpaceAlertStore::PlaceKind::folder,
        SpaceAlert::Condition { SpaceAlert::Condition::Size { 300 * MB } }));
    const HistorySource place { folder / "place", "vol-1" };
    MetricsTextfile metrics(**store, defaultsPath);

    const std::string file = folder / "textfiles/tarnwick.prom";
    std::atomic<bool> done = false;
    std::atomic<int> reads = 0;
    std::vector<std::string> partial;
    std::set<std::string> seen;
    std::thread reader([&] {
        while (!done) {
            std::optional<std::string> text = contents(file);
            if (!text)
                continue;
            ++reads;
            std::size_t lastLine = text->rfind('\n', text->size() >= 2 ? text->size() - 2 : 0);
            bool whole = text->ends_with('\n') && lastLine != std::string::npos
                && text->compare(lastLine + 1, 24, "tarnwick_alert_exceeded{") == 0;
            if (!whole)
                partial.push_back(*text);
            seen.insert(*text);
        }
    });
    for (int save = 1; save <= 50; ++save) {
        now = utc(2024, 6, 1, 9) + std::chrono::hours(6 * save);
        saveScan(**store, place, *treeOf(place.path, { { "a.bin", save * 10 * MB } }), now, Snapshot::Volume { 1'000'000 * MB, 500'000 * MB - save * MB });
        auto failure = metrics.snapshotSaved();
        EXPECT_FALSE(failure) << failure->message();
    }
    done = true;
    reader.join();
    EXPECT_TRUE(partial.empty()) << partial.size() << " partial reads, the first:\n" << partial.front();
    EXPECT_GT(reads.load(), 50);
    EXPECT_GT(seen.size(), 10u) << "the reader should have seen the file change";
    // The last file tells the last save: 500 MB, and the alert above its 300 MB.
    std::string last = contents(file).value_or("");
    EXPECT_NE(last.find("tarnwick_place_size_bytes{path=\"" + place.path + "\",volume=\"vol-1\"} 500000000\n"), std::string::npos) << last;
    EXPECT_NE(last.find("tarnwick_alert_exceeded{alert_id=\""), std::string::npos) << last;
    EXPECT_TRUE(last.ends_with("} 1\n")) << last;
}

TEST(MetricsTextfile, WritesNothingWithoutTheSettingAndTellsAFailedWrite)
{
    fixtures::TempFolder folder;
    auto store = HistoryStore::open(folder / "History", Calendar::fixed(0), HistoryStore::defaultSizeLimit, [] { return utc(2024, 6, 1); });
    ASSERT_TRUE(store);
    const std::string defaultsPath = folder / "defaults.json";
    MetricsTextfile metrics(**store, defaultsPath);
    EXPECT_FALSE(metrics.snapshotSaved());
    UserDefaults defaults(defaultsPath);
    ASSERT_TRUE(defaults.set(MetricsTextfile::folderKey, ""));
    EXPECT_FALSE(metrics.snapshotSaved());
    EXPECT_EQ(std::filesystem::directory_iterator(folder.path()) == std::filesystem::directory_iterator(), false);
    ASSERT_TRUE(defaults.set(MetricsTextfile::folderKey, folder / "gone"));
    auto failure = metrics.snapshotSaved();
    ASSERT_TRUE(failure);
    EXPECT_EQ(failure->reason, TextfileWriter::Failure::Case::missing);
}
