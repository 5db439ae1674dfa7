#include "History/HistoryChanges.hpp"
#include "History/HistoryStore.hpp"
#include "History/OutlineCache.hpp"
#include "History/ScanRecorder.hpp"
#include "History/SnapshotDecoder.hpp"
#include "History/SnapshotFixture.hpp"
#include "History/SnapshotLoader.hpp"
#include "Support/TempFolder.hpp"
#include "Tarnwick/SavedScans.hpp"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

using namespace tarnwick;
using namespace tarnwick::HistoryQueries;

namespace {

constexpr std::int64_t MB = 1'000'000;

using File = tarnwick::testing::SampleFile;

// A snapshot of a tree of files as it comes back from its file; folders named in `unread`
// could not be listed.
std::shared_ptr<const Snapshot> saved(const std::vector<File>& files, const std::vector<std::string>& unread, int daysBefore,
    Snapshot::Colors colors, std::vector<std::vector<std::uint8_t>>& encoded)
{
    Snapshot snapshot = tarnwick::testing::snapshotOfFiles(files, unread);
    snapshot.date -= std::chrono::days(daysBefore);
    encoded.push_back(*snapshot.encode(colors));
    return std::make_shared<const Snapshot>(*Snapshot::decode(encoded.back()));
}

// Reading a place's outline from each file gives the sizes that reading the files whole
// gives, whenever the outlines are enough; and they are enough exactly when no scan left a
// folder unread at or below the place (or the nearest kept folder above it).
TEST(SnapshotOutline, SizeHistoryFromOutlinesEqualsTheOneFromWholeSnapshots)
{
    for (Snapshot::Colors colors : { Snapshot::Colors::with, Snapshot::Colors::without }) {
        std::vector<std::vector<std::uint8_t>> files;
        std::vector<std::shared_ptr<const Snapshot>> snapshots {
            saved({ { "Shared/doc.txt", 20 * MB }, { "Photos/a.jpg", 30 * MB }, { "Small/s.txt", 3 * MB } }, { "Shared/Locked" }, 3, colors, files),
            saved({ { "Shared/doc.txt", 20 * MB }, { "Shared/Locked/data.bin", 18 * MB }, { "Photos/a.jpg", 34 * MB } }, {}, 2, colors, files),
            saved({ { "Shared/doc.txt", 22 * MB }, { "Shared/Locked/data.bin", 18 * MB }, { "Photos/a.jpg", 31 * MB }, { "Small/s.txt", 12 * MB } },
                {}, 1, colors, files),
        };
        struct Case {
            std::string place;
            bool outlinesSuffice;
        };
        const std::vector<Case> cases {
            { "/scan", false },          // the first scan left Shared/Locked unread
            { "/scan/Shared", false },
            { "/scan/Photos", true },
            { "/scan/Photos/a.jpg", true }, // not kept, inside a folder every scan read
            // Not kept where the nearest kept folder above is the root, which one scan
            // didn't read all of: the folders must be matched.
            { "/scan/Small", false },
            { "/scan/Missing", false },
            { "/elsewhere", false },
        };
        for (const Case& c : cases) {
            std::vector<SnapshotOutline> outlines;
            for (const auto& bytes : files)
                outlines.push_back(*SnapshotDecoder::outline(bytes, c.place));
            auto fromOutlines = sizeHistory(outlines);
            ASSERT_EQ(fromOutlines.has_value(), c.outlinesSuffice) << c.place;
            if (fromOutlines) {
                EXPECT_EQ(*fromOutlines, sizeHistory(snapshots, c.place)) << c.place << (colors == Snapshot::Colors::with ? " with" : " without");
            }
        }
    }
}

// Whatever a damaged file looks like, the outline refuses it when the whole reader does.
TEST(SnapshotOutline, RefusesWhatTheWholeReaderRefuses)
{
    std::vector<std::vector<std::uint8_t>> files;
    saved({ { "Shared/doc.txt", 20 * MB }, { "Photos/a.jpg", 30 * MB }, { "Photos/Raw/b.raw", 40 * MB } }, { "Shared/Locked" }, 0,
        Snapshot::Colors::with, files);
    const std::vector<std::uint8_t>& intact = files.front();
    std::vector<std::vector<std::uint8_t>> damaged;
    for (std::size_t length = 0; length < intact.size(); length += 7)
        damaged.emplace_back(intact.begin(), intact.begin() + static_cast<std::ptrdiff_t>(length));
    for (std::size_t at = 4; at < intact.size(); at += 5) {
        damaged.push_back(intact);
        damaged.back()[at] ^= 0x5A;
    }
    int refused = 0;
    for (const auto& bytes : damaged) {
        const bool whole = Snapshot::decode(bytes).has_value();
        ASSERT_EQ(SnapshotDecoder::outline(bytes, "/scan/Photos").has_value(), whole) << bytes.size();
        refused += whole ? 0 : 1;
    }
    EXPECT_GT(refused, static_cast<int>(damaged.size() / 2));
}

class OutlineCacheTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        for (int day = 3; day >= 0; --day) {
            auto tree = tarnwick::testing::treeOf(root, { { "Photos/a.jpg", (30 + day) * MB }, { "Code/x.tar", 20 * MB } });
            tarnwick::testing::saveScan(*store, place, *tree, now - std::chrono::days(day) - std::chrono::hours(1));
        }
    }

    std::vector<SnapshotLoader::OutlineItem> read(bool cached)
    {
        auto record = store->record(place);
        OutlineCache cache(folder / "cache", store->directory(), record->folder, photos);
        return SnapshotLoader::outlineSeries(*store, *record, photos, cached ? &cache : nullptr);
    }

    fixtures::TempFolder folder;
    std::string root = folder / "scanned";
    std::string photos = root + "/Photos";
    Date now = std::chrono::system_clock::now();
    std::unique_ptr<HistoryStore> store = std::move(*HistoryStore::open(folder / "History"));
    HistorySource place = ScanRecorder::sourceFor(root);
};

TEST_F(OutlineCacheTest, AnswersAsReadingDoesAndNoticesAFileChangedSince)
{
    auto uncached = read(false);
    ASSERT_EQ(uncached.size(), 4U);
    auto first = read(true);
    auto second = read(true); // from the cache
    ASSERT_EQ(second.size(), uncached.size());
    for (std::size_t i = 0; i < uncached.size(); ++i) {
        ASSERT_TRUE(second[i].outline && uncached[i].outline);
        EXPECT_EQ(second[i].entry, uncached[i].entry);
        EXPECT_EQ(second[i].outline->preciseSize, uncached[i].outline->preciseSize);
        EXPECT_EQ(second[i].outline->date, uncached[i].outline->date);
    }
    // A day file damaged after it was cached is damaged for the history too.
    auto record = store->record(place);
    const std::string dayFile = store->directory() + "/" + record->folder + "/" + record->entries[1].file;
    std::filesystem::resize_file(dayFile, 40);
    auto afterDamage = read(true);
    EXPECT_FALSE(afterDamage[1].outline.has_value());
    EXPECT_TRUE(afterDamage[0].outline.has_value());
}

TEST_F(OutlineCacheTest, ADamagedCacheCountsAsEmpty)
{
    auto uncached = read(false);
    (void)read(true);
    for (const auto& entry : std::filesystem::directory_iterator(folder / "cache"))
        std::ofstream(entry.path(), std::ios::trunc) << R"({"version":1,"entries":{"3":{"file":"x"}}})";
    auto fromDamaged = read(true);
    ASSERT_EQ(fromDamaged.size(), uncached.size());
    for (std::size_t i = 0; i < uncached.size(); ++i)
        EXPECT_EQ(fromDamaged[i].outline->preciseSize, uncached[i].outline->preciseSize);
}

}
