#include "History/HistoryStore.hpp"
#include "History/HistoryTestSupport.hpp"
#include "History/HistoryTexts.hpp"
#include "Support/TempFolder.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <map>
#include <set>

using namespace tarnwick;
using fixtures::utc;
using StoreError = HistoryStore::StoreError;
using fixtures::readFile;

namespace {

const HistorySource home { "/home/ann", "3c1e9d2a-uuid" };
const HistorySource work { "/srv/work", "dev:8:3" };

std::vector<std::uint8_t> bytesOf(std::string_view text)
{
    return { text.begin(), text.end() };
}

std::set<std::string> namesIn(const std::string& folder)
{
    std::set<std::string> names;
    for (const auto& item : std::filesystem::directory_iterator(folder))
        names.insert(item.path().filename().string());
    return names;
}

class HistoryStoreTest : public ::testing::Test {
protected:
    std::unique_ptr<HistoryStore> open(std::int64_t sizeLimit = HistoryStore::defaultSizeLimit)
    {
        auto store = HistoryStore::open(directory(), calendar, sizeLimit, [this] { return clock; });
        EXPECT_TRUE(store.has_value());
        return store ? std::move(*store) : nullptr;
    }

    std::string directory() const { return temp / "History"; }
    std::string fileOf(HistoryStore& store, const HistorySource& source, const std::string& file)
    {
        return directory() + "/" + store.record(source)->folder + "/" + file;
    }

    // A scan at the clock's time whose files say what they are.
    HistoryStore::SnapshotFiles scan(std::string_view current, std::string_view day, std::int64_t total = 1'000'000'000)
    {
        HistoryStore::SnapshotFiles files;
        files.date = clock;
        files.total = total;
        files.volumeTotal = 500'000'000'000;
        files.volumeAvailable = 120'000'000'000;
        files.issueCount = 2;
        files.current = bytesOf(current);
        files.day = bytesOf(day);
        return files;
    }

    // Saves daily scans of 100-byte files at noon, from the clock's day on, and leaves the clock at the last.
    void saveDaily(HistoryStore& store, const HistorySource& source, int days)
    {
        for (int k = 0; k < days; ++k) {
            if (k > 0)
                clock = calendar.addingDays(clock, 1);
            ASSERT_TRUE(store.save(source, scan(std::string(100, 'c'), std::string(100, 'd'))));
        }
    }

    fixtures::TempFolder temp;
    Calendar calendar = Calendar::fixed(0);
    Date clock = utc(2025, 3, 10, 9);
};

}

TEST_F(HistoryStoreTest, ScansOfOneDayReplaceCurrentAndAddOneDayEntry)
{
    auto store = open();
    auto first = store->save(home, scan("current A", "day A"));
    ASSERT_TRUE(first);
    clock = utc(2025, 3, 10, 18, 30) + std::chrono::nanoseconds(1234567);
    auto second = store->save(home, scan("current B", "day B", 7));
    ASSERT_TRUE(second);

    ASSERT_EQ(second->entries.size(), 1u);
    const HistoryEntry& day = second->entries[0];
    EXPECT_EQ(day.id, 2);
    EXPECT_EQ(day.file, "2.snap");
    EXPECT_EQ(day.bytes, 5);
    EXPECT_EQ(day.date, utc(2025, 3, 10, 9));
    EXPECT_EQ(day.volumeAvailable, 120'000'000'000);
    EXPECT_EQ(day.issueCount, 2);
    EXPECT_FALSE(day.outOfDate);
    ASSERT_TRUE(second->current);
    EXPECT_EQ(second->current->id, 3);
    EXPECT_EQ(second->current->file, "current.snap");
    EXPECT_EQ(second->current->total, 7);
    EXPECT_EQ(second->current->date, utc(2025, 3, 10, 18, 30) + std::chrono::microseconds(1234)); // to whole microseconds

    EXPECT_EQ(readFile(fileOf(*store, home, "current.snap")), "current B");
    EXPECT_EQ(readFile(fileOf(*store, home, "2.snap")), "day A");
    EXPECT_EQ(store->load(home, 2), bytesOf("day A"));
    EXPECT_EQ(store->load(home, 3), bytesOf("current B"));
    EXPECT_EQ(store->load(home, 1), std::unexpected(StoreError::unknownEntry())); // the replaced current
    EXPECT_EQ(store->load(work, 2), std::unexpected(StoreError::unknownEntry()));
    EXPECT_EQ(namesIn(directory() + "/" + second->folder), (std::set<std::string> { "source.json", "current.snap", "2.snap" }));
    EXPECT_NE(readFile(fileOf(*store, home, "source.json")).find("\"/home/ann\""), std::string::npos);

    // What another process reads back from the files is what this one holds.
    auto reopened = open();
    EXPECT_EQ(reopened->index(), store->index());
    EXPECT_EQ(reopened->index().nextID, 4);
}

TEST_F(HistoryStoreTest, AScanJustAfterMidnightAddsADayEntry)
{
    auto store = open();
    clock = utc(2025, 3, 10, 23, 59, 59);
    ASSERT_TRUE(store->save(home, scan("a", "a")));
    clock = utc(2025, 3, 11, 0, 0, 1);
    auto saved = store->save(home, scan("b", "b"));
    ASSERT_TRUE(saved);
    ASSERT_EQ(saved->entries.size(), 2u);
    EXPECT_EQ(saved->entries[1].date, clock);
    EXPECT_EQ(store->load(home, saved->entries[1].id), bytesOf("b"));
}

TEST_F(HistoryStoreTest, AtMostTwentyKept)
{
    auto store = open();
    saveDaily(*store, home, 21);
    std::vector<HistoryEntry> entries = store->entries(home);
    ASSERT_EQ(entries.size(), 21u);
    for (int k = 0; k < 20; ++k)
        ASSERT_TRUE(store->keep(home, entries[k].id, "note " + std::to_string(k)));

    EXPECT_EQ(store->keep(home, entries[20].id, "one too many"), std::unexpected(StoreError::tooManyKept()));
    EXPECT_FALSE(store->entries(home)[20].isKept);
    // Changing the note of a kept entry is no new keep.
    EXPECT_TRUE(store->keep(home, entries[3].id, "changed"));
    EXPECT_EQ(store->entries(home)[3].note, "changed");

    ASSERT_TRUE(store->unkeep(home, entries[0].id));
    EXPECT_FALSE(store->entries(home)[0].isKept);
    EXPECT_FALSE(store->entries(home)[0].note);
    EXPECT_TRUE(store->keep(home, entries[20].id, std::nullopt));
    EXPECT_TRUE(open()->entries(home)[20].isKept);

    EXPECT_EQ(store->unkeep(home, 999), std::unexpected(StoreError::unknownEntry()));
    EXPECT_EQ(store->unkeep(work, entries[1].id), std::unexpected(StoreError::unknownEntry()));
    EXPECT_EQ(store->keep(work, entries[1].id, std::nullopt), std::unexpected(StoreError::unknownEntry()));
    // The current snapshot is replaced by the next scan: it cannot be kept.
    EXPECT_EQ(store->keep(home, store->record(home)->current->id, std::nullopt), std::unexpected(StoreError::unknownEntry()));
}

TEST_F(HistoryStoreTest, SavesThinOldDaysToWeeksAndMonthsButNotKeptOnes)
{
    // A place with a day snapshot on each of 500 days, as an older thinning rule or a clock
    // set right at last would leave it; the next save thins it all at once.
    HistoryStore::Index seeded;
    HistoryStore::SourceRecord record { home, HistoryStore::folderName(home), {}, std::nullopt };
    temp.makeFolder("History/" + record.folder);
    std::ofstream(directory() + "/" + record.folder + "/source.json") << HistoryStore::encodedSource(home);
    clock = utc(2024, 1, 1, 12);
    for (int day = 0; day < 500; ++day, clock = calendar.addingDays(clock, 1)) {
        HistoryEntry entry;
        entry.id = seeded.nextID++;
        entry.date = clock;
        entry.file = std::to_string(entry.id) + ".snap";
        entry.bytes = 100;
        entry.isKept = day == 1;
        temp.makeFile("History/" + record.folder + "/" + entry.file, 100);
        record.entries.push_back(entry);
    }
    seeded.sources.push_back(record);
    std::ofstream(directory() + "/index.json") << seeded.encoded();
    const std::int64_t keptID = record.entries[1].id;

    auto store = open();
    ASSERT_EQ(store->entries(home).size(), 500u);
    ASSERT_TRUE(store->save(home, scan(std::string(100, 'c'), std::string(100, 'd'))));

    std::vector<HistoryEntry> entries = store->entries(home);
    std::map<std::string, int> perBucket;
    int days = 0;
    for (const HistoryEntry& entry : entries) {
        EXPECT_TRUE(std::filesystem::exists(fileOf(*store, home, entry.file))) << entry.file;
        if (entry.isKept)
            continue;
        std::int64_t age = calendar.daysBetween(entry.date, clock);
        Calendar::Week week = calendar.week(entry.date);
        Calendar::LocalDate date = calendar.localDate(entry.date);
        std::string bucket = age <= 34 ? "d" + std::to_string(age)
            : age <= 399                ? "w" + std::to_string(week.yearForWeekOfYear * 100 + week.weekOfYear)
                                        : "m" + std::to_string(date.year * 100 + date.month);
        days += age <= 34 ? 1 : 0;
        EXPECT_EQ(++perBucket[bucket], 1) << bucket;
    }
    EXPECT_EQ(days, 35); // the 34 days before today, and today's new one
    EXPECT_TRUE(std::any_of(entries.begin(), entries.end(), [&](const HistoryEntry& e) { return e.id == keptID && e.isKept; }));
    // 501 days back: 35 days, 365 days in 53 weeks (two of them partly), 101 days in 4 months.
    EXPECT_EQ(entries.size(), 1u + 35u + 53u + 4u);
    // Nothing but the listed files stays in the folder.
    EXPECT_EQ(namesIn(directory() + "/" + store->record(home)->folder).size(), entries.size() + 2);

    // A day later (Friday 16 May 2025), 11 April 2025 joins week 15 of 2025, which has its
    // entry (7 April), and 11 April 2024 joins April 2024, which has its entry: both go,
    // and the new day comes.
    clock = calendar.addingDays(clock, 1);
    ASSERT_TRUE(store->save(home, scan("c", "d")));
    std::vector<HistoryEntry> later = store->entries(home);
    EXPECT_EQ(later.size(), entries.size() - 1);
    for (Date gone : { utc(2025, 4, 11, 12), utc(2024, 4, 11, 12) })
        EXPECT_FALSE(std::any_of(later.begin(), later.end(), [&](const HistoryEntry& e) { return e.date == gone; }));
    EXPECT_TRUE(std::any_of(later.begin(), later.end(), [&](const HistoryEntry& e) { return e.date == utc(2025, 4, 7, 12); }));
    EXPECT_TRUE(std::any_of(later.begin(), later.end(), [&](const HistoryEntry& e) { return e.date == utc(2024, 4, 1, 12); }));
}

TEST_F(HistoryStoreTest, SizeLimitDropsTheOldestUnkeptDayEntriesFirst)
{
    // Each place's current snapshot takes 100 bytes and each day snapshot 100 bytes.
    auto store = open(1000);
    saveDaily(*store, home, 2);
    ASSERT_TRUE(store->keep(home, store->entries(home)[0].id, std::nullopt));
    clock = calendar.addingDays(clock, 1);
    saveDaily(*store, work, 3);
    clock = calendar.addingDays(clock, 1);
    saveDaily(*store, home, 10);

    EXPECT_LE(store->storedBytes(), 1000);
    EXPECT_EQ(store->storedBytes(), 1000);
    std::vector<HistoryEntry> homeEntries = store->entries(home);
    // Two currents (200), the kept first day of home (100), and the 7 newest days of home.
    EXPECT_TRUE(store->entries(work).empty());
    ASSERT_EQ(homeEntries.size(), 8u);
    EXPECT_TRUE(homeEntries[0].isKept);
    EXPECT_EQ(homeEntries[1].date, utc(2025, 3, 18, 9));
    EXPECT_EQ(homeEntries.back().date, clock);
    EXPECT_EQ(namesIn(directory() + "/" + store->record(work)->folder), (std::set<std::string> { "source.json", "current.snap" }));
}

TEST_F(HistoryStoreTest, VolumeLogsAppendOneMeasurementALine)
{
    auto store = open();
    VolumeMeasurement first { utc(2025, 3, 10, 9) + std::chrono::nanoseconds(1500), 994'662'584'320, 412'004'487'168, 87'000'000'000 };
    VolumeMeasurement second { utc(2025, 3, 11, 9), 994'662'584'320, 409'112'000'000, std::nullopt };
    ASSERT_TRUE(store->recordMeasurement("dev:8:3/x", first));
    ASSERT_TRUE(store->recordMeasurement("dev:8:3/x", second));

    const std::string log = directory() + "/Volumes/dev_8_3_x.log";
    EXPECT_EQ(readFile(log), "763290000.000001 994662584320 412004487168 87000000000\n763376400 994662584320 409112000000\n");
    first.date = utc(2025, 3, 10, 9) + std::chrono::microseconds(1);
    EXPECT_EQ(store->measurements("dev:8:3/x"), (std::vector<VolumeMeasurement> { first, second }));
    EXPECT_EQ(store->measurements("dev_8_3_x"), store->measurements("dev:8:3/x")); // the same file name
    EXPECT_EQ(store->measurements("unknown"), std::vector<VolumeMeasurement> {});

    // A line something else cut short does not swallow the next measurement.
    std::ofstream(log, std::ios::app) << "763400000 9946";
    ASSERT_TRUE(store->recordMeasurement("dev:8:3/x", second));
    EXPECT_EQ(store->measurements("dev:8:3/x")->size(), 3u);
}

TEST_F(HistoryStoreTest, ClearRemovesEverythingAndTheStoreGoesOn)
{
    auto store = open();
    saveDaily(*store, home, 2);
    ASSERT_TRUE(store->recordMeasurement(home.volume, { clock, 10, 5, 3 }));
    ASSERT_TRUE(store->clear());
    EXPECT_EQ(namesIn(directory()), (std::set<std::string> { ".lock" }));
    EXPECT_TRUE(store->sources().empty());
    EXPECT_TRUE(store->measurements(home.volume)->empty());
    EXPECT_EQ(store->storedBytes(), 0);

    auto saved = store->save(work, scan("x", "y"));
    ASSERT_TRUE(saved);
    EXPECT_EQ(saved->entries.size(), 1u);
    EXPECT_EQ(open()->sources(), std::vector<HistorySource> { work });
}

TEST_F(HistoryStoreTest, ObserversHearEveryChange)
{
    auto store = open();
    int heard = 0;
    HistoryStore* sender = nullptr;
    auto id = store->addObserver([&](HistoryStore& changed) {
        ++heard;
        sender = &changed;
        (void)changed.sources(); // observers may read the store
    });
    auto saved = store->save(home, scan("a", "b"));
    ASSERT_TRUE(saved);
    EXPECT_EQ(heard, 1);
    EXPECT_EQ(sender, store.get());
    ASSERT_TRUE(store->keep(home, saved->entries[0].id, "x"));
    ASSERT_TRUE(store->unkeep(home, saved->entries[0].id));
    ASSERT_TRUE(store->recordMeasurement(home.volume, { clock, 10, 5, std::nullopt }));
    EXPECT_EQ(heard, 4);
    EXPECT_FALSE(store->unkeep(home, 12345));
    EXPECT_EQ(heard, 4);
    store->removeObserver(id);
    ASSERT_TRUE(store->clear());
    EXPECT_EQ(heard, 4);
}

TEST_F(HistoryStoreTest, TwoProcessesShareTheStore)
{
    // Two stores on one folder behave as two processes: each has its own lock descriptor.
    auto app = open();
    auto tool = open();
    int toolHeard = 0;
    tool->addObserver([&](HistoryStore&) { ++toolHeard; });

    ASSERT_TRUE(app->save(home, scan("a", "a")));
    EXPECT_TRUE(tool->reloadIfChanged());
    EXPECT_EQ(toolHeard, 1);
    EXPECT_FALSE(tool->reloadIfChanged());
    EXPECT_EQ(tool->sources(), std::vector<HistorySource> { home });

    // The tool saves without having seen the app's latest change: nothing of it is lost.
    clock = calendar.addingDays(clock, 1);
    ASSERT_TRUE(app->save(home, scan("b", "b")));
    ASSERT_TRUE(tool->save(work, scan("w", "w")));
    ASSERT_TRUE(app->keep(home, 2, "first day"));
    auto index = tool->index();
    EXPECT_EQ(index, app->index());
    ASSERT_EQ(index.sources.size(), 2u);
    EXPECT_EQ(index.record(home)->entries.size(), 2u);
    EXPECT_TRUE(index.record(home)->entries[0].isKept);
    std::set<std::int64_t> ids;
    for (const auto& record : index.sources) {
        for (const auto& entry : record.entries)
            EXPECT_TRUE(ids.insert(entry.id).second);
        EXPECT_TRUE(ids.insert(record.current->id).second);
    }

    // A clear by one is seen by the other.
    ASSERT_TRUE(tool->clear());
    EXPECT_TRUE(app->sources().empty());
}

TEST_F(HistoryStoreTest, MissingFilesAreLeftOutAndStrayFilesIgnored)
{
    auto store = open();
    saveDaily(*store, home, 3);
    const std::string folder = directory() + "/" + store->record(home)->folder;
    std::vector<HistoryEntry> entries = store->entries(home);
    std::filesystem::remove(folder + "/" + entries[1].file);
    temp.makeFile("History/" + store->record(home)->folder + "/99.snap", 10);
    temp.makeFile("History/" + store->record(home)->folder + "/.tmp.Ab12Cd", 10);
    temp.makeFile("History/Stray-0000000000000000/current.snap", 10);

    auto reopened = open();
    std::vector<HistoryEntry> left = reopened->entries(home);
    ASSERT_EQ(left.size(), 2u);
    EXPECT_EQ(left[0].id, entries[0].id);
    EXPECT_EQ(left[1].id, entries[2].id);
    EXPECT_EQ(reopened->load(home, entries[1].id), std::unexpected(StoreError::unknownEntry()));
    EXPECT_EQ(reopened->sources(), std::vector<HistorySource> { home });

    // The next save of the place sweeps temporary files; a snapshot file no entry lists is
    // never deleted (this one does not decode, so it is not adopted either).
    ASSERT_TRUE(reopened->save(home, scan("c", "d")));
    std::set<std::string> names = namesIn(folder);
    EXPECT_TRUE(names.contains("99.snap"));
    EXPECT_FALSE(names.contains(".tmp.Ab12Cd"));
    EXPECT_FALSE(names.contains(entries[1].file));
    EXPECT_EQ(open()->entries(home).size(), 2u);
}

TEST_F(HistoryStoreTest, WriteFailuresReachTheCallerAndLeaveTheIndexWhole)
{
    auto store = open();
    ASSERT_TRUE(store->save(home, scan("a", "b")));
    auto before = store->index();
    // A folder where the day snapshot must go makes its rename fail.
    clock = calendar.addingDays(clock, 1);
    temp.makeFolder("History/" + before.record(home)->folder + "/" + std::to_string(before.nextID + 1) + ".snap/inside");
    auto failed = store->save(home, scan("c", "d"));
    ASSERT_FALSE(failed);
    EXPECT_EQ(failed.error().reason, StoreError::Case::writeFailed);
    EXPECT_NE(failed.error().message().find(std::to_string(before.nextID + 1) + ".snap: "), std::string::npos);
    EXPECT_EQ(store->index(), before);
    EXPECT_EQ(open()->index(), before);
}

TEST_F(HistoryStoreTest, FolderNamesArePlainAndDistinct)
{
    struct Case {
        HistorySource source;
        const char* prefix;
    };
    const Case cases[] = {
        { { "/", "dev:8:1" }, "Root-" },
        { { "/home/ann/My Projects/", "u" }, "My_Projects-" },
        { { "/home/ann/.config", "u" }, "_config-" },
        { { "/data/Ünïcode", "u" }, "__n__code-" },
        { { "/x/" + std::string(60, 'a'), "u" }, "aaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaa-" },
    };
    for (const Case& c : cases) {
        std::string name = HistoryStore::folderName(c.source);
        EXPECT_TRUE(name.starts_with(c.prefix)) << name;
        EXPECT_EQ(name.size(), std::string_view(c.prefix).size() + 16) << name;
    }
    EXPECT_NE(HistoryStore::folderName({ "/a", "v1" }), HistoryStore::folderName({ "/a", "v2" }));
    EXPECT_NE(HistoryStore::folderName({ "/a", "b" }), HistoryStore::folderName({ "/ab", "" }));
}

TEST_F(HistoryStoreTest, ADayOfHistoryAndTheClearText)
{
    auto store = open();
    EXPECT_EQ(store->dayOfHistoryBytes(), 0);
    ASSERT_TRUE(store->save(home, scan("c", std::string(100, 'd'))));
    ASSERT_TRUE(store->save(work, scan("c", std::string(200, 'd'))));
    clock = calendar.addingDays(clock, 1);
    ASSERT_TRUE(store->save(home, scan("c", std::string(900, 'd'))));
    // 1,200 bytes of day snapshots over two days, whatever the current snapshots take.
    EXPECT_EQ(store->dayOfHistoryBytes(), 600);
    EXPECT_EQ(HistoryTexts::dayOfHistory(store->dayOfHistoryBytes()), "A day of history takes about 600 B");
    EXPECT_EQ(store->storedBytes(), 1202);
    EXPECT_EQ(HistoryTexts::clearExplanation(store->storedBytes()),
        "Tarnwick deletes what it kept of earlier scans (1.20 KB), including the record of each volume's space, so the "
        "next scan of each place has nothing to compare with. Your files aren't touched.");
}

TEST(HistoryStoreError, Messages)
{
    EXPECT_EQ(StoreError::tooManyKept().message(), "You can keep up to 20 snapshots. Stop keeping one of them first.");
    EXPECT_EQ(StoreError::unknownEntry().message(), "This snapshot isn't in the history any more.");
    EXPECT_EQ(StoreError::writeFailed({ "/h/index.json", ENOSPC }).message(), "Couldn't save to /h/index.json: No space left on device.");
    EXPECT_EQ(StoreError::readFailed({ "/h/1.snap", EACCES }).message(), "Couldn't read /h/1.snap: Permission denied.");
}
