// A process killed at any moment of a save must leave a store that opens with every listed
// file present and decoding, and every saved scan with its volume line. Children save in a
// loop and are killed after a random short while.
#include "Classification/TreeFixture.hpp"
#include "History/HistoryStore.hpp"
#include "History/Snapshot.hpp"
#include "History/SnapshotReducer.hpp"
#include "History/HistoryTestSupport.hpp"
#include "Support/TempFolder.hpp"

#include <gtest/gtest.h>

#include <csignal>
#include <filesystem>
#include <fstream>
#include <random>
#include <set>
#include <sys/wait.h>
#include <unistd.h>

using namespace tarnwick;
using fixtures::utc;

namespace {

constexpr int iterations = 100;

// A real snapshot of a small place, its sizes varied by step so that files differ.
Snapshot::Encoded encodedScan(const std::string& root, Date date, std::uint32_t step)
{
    tarnwick::testing::TreeFixture fixture;
    fixture.add("a/x.bin", 10'000'000 + (step % 7) * 3'000'000);
    fixture.add("b/y.bin", 20'000'000);
    Snapshot snapshot = SnapshotReducer::reduce(*fixture.finish(TreeBuilder::Metadata::included, root),
        { date, Snapshot::Volume { 1'000'000'000, 400'000'000 + step }, nullptr, nullptr });
    return *Snapshot::encodeForStore(std::move(snapshot));
}

// After each save the child writes a byte to progress, so that the parent can let some
// saves finish before it kills, however slow the disk is today.
[[noreturn]] void saveUntilKilled(const std::string& directory, int iteration, int progress)
{
    std::mt19937 random(static_cast<unsigned>(iteration));
    Date clock = utc(2024, 1, 1, 12) + std::chrono::hours(24 * 7 * iteration);
    auto store = HistoryStore::open(directory, Calendar::fixed(0), 400'000, [&] { return clock; });
    if (!store)
        ::_exit(2);
    const HistorySource sources[] = { { "/home/ann", "uuid-1" }, { "/srv/data", "dev:8:3" }, { "/", "uuid-1" } };
    for (int step = 0;; ++step) {
        clock += std::chrono::hours(9);
        const HistorySource& source = sources[random() % 3];
        auto encoded = encodedScan(source.path, clock, static_cast<std::uint32_t>(random()));
        HistoryStore::SnapshotFiles files;
        files.date = clock;
        files.total = encoded.snapshot.size(0);
        files.volumeTotal = encoded.snapshot.volume->total;
        files.volumeAvailable = encoded.snapshot.volume->available;
        files.current = std::move(encoded.current);
        files.day = std::move(encoded.day);
        (void)(*store)->save(source, files);
        (void)!::write(progress, "s", 1);
        auto entries = (*store)->entries(source);
        if (!entries.empty() && step % 3 == 0)
            (void)(*store)->keep(source, entries[random() % entries.size()].id, "kept");
        if (!entries.empty() && step % 3 == 1)
            (void)(*store)->unkeep(source, entries[random() % entries.size()].id);
    }
}

std::vector<std::uint8_t> readBytes(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    return std::vector<std::uint8_t>((std::istreambuf_iterator<char>(file)), {});
}

}

TEST(HistoryStoreCrash, KilledSavesLeaveEveryListedFile)
{
    fixtures::TempFolder temp;
    const std::string directory = temp / "History";
    std::mt19937 random(20250310);
    int listedAtSomePoint = 0;
    for (int iteration = 0; iteration < iterations; ++iteration) {
        int progress[2];
        ASSERT_EQ(::pipe(progress), 0);
        pid_t child = ::fork();
        ASSERT_GE(child, 0);
        if (child == 0) {
            ::close(progress[0]);
            saveUntilKilled(directory, iteration, progress[1]);
        }
        ::close(progress[1]);
        // Every other child is killed only after its first save, the others at any moment.
        char byte;
        if (iteration % 2 == 1)
            (void)!::read(progress[0], &byte, 1);
        ::usleep(static_cast<useconds_t>(random() % 25'000));
        ::kill(child, SIGKILL);
        int status = 0;
        ASSERT_EQ(::waitpid(child, &status, 0), child);
        ::close(progress[0]);
        ASSERT_TRUE(WIFSIGNALED(status)) << "the child stopped by itself: " << WEXITSTATUS(status);

        // Read the index as it lies on disk, not through a store that would leave out missing files.
        const std::string indexPath = directory + "/index.json";
        if (!std::filesystem::exists(indexPath))
            continue;
        auto index = HistoryStore::Index::decode(fixtures::readFile(indexPath));
        ASSERT_TRUE(index) << "iteration " << iteration;
        for (const auto& record : index->sources) {
            const std::string folder = directory + "/" + record.folder + "/";
            EXPECT_TRUE(std::filesystem::exists(folder + "source.json")) << iteration;
            for (const auto& entry : record.entries) {
                auto decoded = Snapshot::decode(readBytes(folder + entry.file));
                EXPECT_TRUE(decoded && decoded->isConsistent()) << iteration << " " << entry.file;
                ++listedAtSomePoint;
            }
            if (record.current) {
                EXPECT_TRUE(std::filesystem::exists(folder + record.current->file)) << iteration;
            }
        }
        auto store = HistoryStore::open(directory, Calendar::fixed(0), 400'000, nullptr);
        ASSERT_TRUE(store);
        EXPECT_FALSE((*store)->indexProblem()) << iteration;
        // The store reads the index as written, and adopts a place whose first save was killed
        // before the index listed it.
        HistoryStore::Index opened = (*store)->index();
        for (const auto& record : index->sources) {
            ASSERT_TRUE(opened.record(record.source)) << iteration;
            EXPECT_EQ(*opened.record(record.source), record) << iteration;
        }
        EXPECT_LE(opened.sources.size(), index->sources.size() + 1) << iteration;
        for (const auto& record : index->sources) {
            auto measurements = (*store)->measurements(record.source.volume);
            ASSERT_TRUE(measurements) << iteration;
            std::set<Date> measured;
            for (const VolumeMeasurement& measurement : *measurements)
                measured.insert(measurement.date);
            for (const auto& entry : record.entries)
                EXPECT_TRUE(measured.contains(entry.date)) << iteration << ": no volume line for " << entry.file;
            if (record.current) {
                EXPECT_TRUE(measured.contains(record.current->date)) << iteration << ": no volume line for the current scan";
            }
        }
    }
    EXPECT_GT(listedAtSomePoint, 0);

    // The lock of a killed writer is released with its process: the store still takes changes.
    auto store = HistoryStore::open(directory, Calendar::fixed(0), 400'000, nullptr);
    ASSERT_TRUE(store);
    HistoryStore::SnapshotFiles files;
    files.date = utc(2030, 1, 1);
    auto encoded = encodedScan("/home/ann", files.date, 1);
    files.current = std::move(encoded.current);
    files.day = std::move(encoded.day);
    EXPECT_TRUE((*store)->save({ "/home/ann", "uuid-1" }, files));
}
