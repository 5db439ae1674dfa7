#include "HistoryRecorder.hpp"

#include "Classification/ScanAnalysis.hpp"
#include "Classification/TimeZone.hpp"
#include "History/ScanRecorder.hpp"
#include "History/SnapshotLoader.hpp"
#include "Scanning/FileScanner.hpp"
#include "Scanning/ScopeResolver.hpp"
#include "Support/TempFolder.hpp"

#include <gtest/gtest.h>

#include <filesystem>
#include <thread>

using namespace tarnwick;

namespace {

void setModified(const std::string& path, Date when)
{
    std::filesystem::last_write_time(path, std::filesystem::file_time_type::clock::from_sys(when));
}

}

// The snapshot of a scan keeps the colours the scan was shown with: the totals of every mode
// it keeps are those of the result's own maps, and its dates are grouped by the day the scan
// finished, even when it is saved on another.
TEST(HistoryRecorder, SavesTheScanWithTheMapsOfItsResult)
{
    fixtures::TempFolder place;
    fixtures::TempFolder data;
    const Date now = std::chrono::system_clock::now();
    place.makeFile("recent.txt", 200'000);
    place.makeFile("twelve/days.bin", 300'000);
    place.makeFile("months/old.bin", 400'000);
    place.makeFile(".hidden/x.bin", 100'000);
    setModified(place / "twelve/days.bin", now - std::chrono::days(12));
    setModified(place / "twelve", now - std::chrono::days(12));
    setModified(place / "months/old.bin", now - std::chrono::days(90));
    setModified(place / "months", now - std::chrono::days(90));

    auto scope = ScopeResolver::resolve(place.path());
    ASSERT_TRUE(scope.has_value());
    FileScanner::Options options;
    options.root = scope->scanRoot;
    options.progress = std::make_shared<ScanProgress>();
    ScanOutcome outcome = FileScanner(options).scan();
    ASSERT_EQ(outcome.status, ScanOutcome::Status::completed());

    // Finished ten days ago: the file changed twelve days ago was then two days old, which
    // grouping by the day of saving would put in another group.
    const Date finishedAt = outcome.finishedAt - std::chrono::days(10);
    auto analysis = ScanAnalysis::make(outcome.tree, DateGroup::Boundaries::make(finishedAt, TimeZone::system()), nullptr);
    AppModel::Result result { *scope, outcome.tree, analysis, outcome.status, outcome.startedAt, finishedAt };

    auto store = HistoryStore::open(data / "History");
    ASSERT_TRUE(store.has_value());
    {
        HistoryRecorder recorder(**store, nullptr);
        recorder.record(result);
    }
    auto record = (*store)->record(ScanRecorder::sourceFor(outcome.tree->rootPath()));
    ASSERT_TRUE(record.has_value());
    auto latest = SnapshotLoader::latest(**store, *record);
    ASSERT_TRUE(latest.has_value());
    const Snapshot& snapshot = *latest->loaded.snapshot;
    ASSERT_TRUE(snapshot.hasColors);
    ASSERT_EQ(snapshot.nodeCount(), 1) << "everything is below the size a folder is kept from: the root holds it all";

    std::vector<std::int64_t> boundaryDays(analysis->boundaries().days.begin(), analysis->boundaries().days.end());
    EXPECT_EQ(std::vector<std::int64_t>(snapshot.restDays.begin(), snapshot.restDays.end()), boundaryDays);

    struct Case {
        RestMode mode;
        const BucketMap* shown;
    };
    const Case cases[] = {
        { RestMode::content, &analysis->content()->buckets() },
        { RestMode::modified, analysis->modified().get() },
        { RestMode::created, analysis->created().get() },
        { RestMode::hidden, analysis->hidden().get() },
    };
    for (const Case& c : cases) {
        std::vector<std::int64_t> saved(static_cast<std::size_t>(c.shown->width()), 0);
        for (const RestPart& part : snapshot.restContent.of(0)) {
            if (part.mode == c.mode)
                saved.at(part.key) += part.bytes;
        }
        EXPECT_EQ(saved, c.shown->totals(NodeID::root())) << static_cast<int>(c.mode);
    }
    // The groups the day of saving gives differ, so the comparison above tells them apart.
    auto today = analysis->redated(DateGroup::Boundaries::make(now, TimeZone::system()));
    EXPECT_NE(today->modified()->totals(NodeID::root()), analysis->modified()->totals(NodeID::root()));
}
