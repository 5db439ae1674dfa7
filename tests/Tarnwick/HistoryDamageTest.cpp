// Each file of the history damaged in each way, then read by each reader: an intact day
// snapshot is never hidden, a damaged one is named, and no intact snapshot file disappears.
#include "Agent/DataHome.hpp"
#include "Agent/AgentFormat.hpp"
#include "Alerts/AlertReadings.hpp"
#include "History/HistoryTestSupport.hpp"
#include "History/Snapshot.hpp"
#include "SavedScans.hpp"
#include "SnapshotAnswers.hpp"
#include "Support/TempFolder.hpp"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <filesystem>
#include <fstream>
#include <functional>
#include <map>
#include <random>
#include <set>
#include <sched.h>
#include <sys/mount.h>
#include <sys/statvfs.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace tarnwick;
using namespace tarnwick::testing;
using fixtures::utc;
namespace fs = std::filesystem;

namespace {

constexpr int days = 10;

// Which file of the store a case damages.
enum class Target { index, source, current, yesterdayStart, firstDay, volumeLog, lock };

std::string targetName(Target target)
{
    switch (target) {
    case Target::index: return "index.json";
    case Target::source: return "source.json";
    case Target::current: return "current.snap";
    case Target::yesterdayStart: return "the day snapshot yesterday starts from";
    case Target::firstDay: return "the first day snapshot";
    case Target::volumeLog: return "the volume log";
    case Target::lock: return ".lock";
    }
    return "?";
}

std::vector<std::uint8_t> readBytes(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    return std::vector<std::uint8_t>((std::istreambuf_iterator<char>(file)), {});
}

void writeBytes(const std::string& path, const std::vector<std::uint8_t>& bytes)
{
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    file.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
}

void writeText(const std::string& path, const std::string& text)
{
    writeBytes(path, std::vector<std::uint8_t>(text.begin(), text.end()));
}

struct Damage {
    std::string name;
    std::function<void(const std::string&)> apply;
};

std::vector<Damage> damages()
{
    auto cutAt = [](std::size_t size) {
        return [size](const std::string& path) {
            auto bytes = readBytes(path);
            bytes.resize(std::min(size, bytes.size()));
            writeBytes(path, bytes);
        };
    };
    return {
        { "missing", [](const std::string& path) { fs::remove(path); } },
        { "empty", cutAt(0) },
        { "cut at 3", cutAt(3) },
        { "cut at 4", cutAt(4) },
        { "cut at 5", cutAt(5) },
        { "cut at 30", cutAt(30) },
        { "cut in half", [](const std::string& path) { auto bytes = readBytes(path); bytes.resize(bytes.size() / 2); writeBytes(path, bytes); } },
        { "random bytes", [](const std::string& path) {
             std::mt19937 random(7);
             std::vector<std::uint8_t> bytes(std::max<std::size_t>(readBytes(path).size(), 64));
             for (auto& byte : bytes)
                 byte = static_cast<std::uint8_t>(random());
             writeBytes(path, bytes);
         } },
        { "5 bytes flipped", [](const std::string& path) {
             auto bytes = readBytes(path);
             for (std::size_t i = 0; i < 5 && !bytes.empty(); ++i)
                 bytes[(bytes.size() / 2 + i * 7) % bytes.size()] ^= 0xFF;
             writeBytes(path, bytes);
         } },
        { "version byte 7", [](const std::string& path) { auto bytes = readBytes(path); if (bytes.size() > 4) bytes[4] = 7; writeBytes(path, bytes); } },
        { "wrong JSON shape", [](const std::string& path) { writeText(path, R"({"nextID":"x","sources":{"a":1}})"); } },
        { "JSON of a newer version", [](const std::string& path) {
             auto json = nlohmann::json::parse(readBytes(path), nullptr, false);
             if (json.is_object()) {
                 json["formatVersion"] = 2;
                 json["addedLater"] = { { "anything", true } };
             }
             writeText(path, json.dump());
         } },
    };
}

nlohmann::json structured(const AgentResult& result)
{
    return nlohmann::json::parse(result.encoded())["structured"];
}

// A place scanned at 09:00 on each of ten days, and again at 10:00 on the last; the clock
// stands at noon that day. "grow" grows by 5 MB a day, "steady" stays, "small" is never kept.
class HistoryDamageTest : public ::testing::Test {
protected:
    // The answers' caches go with the test, not into the user's.
    fixtures::DataHome home;

    void SetUp() override
    {
        auto opened = open();
        for (int day = 1; day <= days; ++day)
            saveWithColors(*opened, place, treeFor(20 + 5 * day), utc(2024, 6, day, 9), Snapshot::Volume { 1'000 * MB, (500 - day) * MB });
        saveWithColors(*opened, place, treeFor(80), utc(2024, 6, days, 10), Snapshot::Volume { 1'000 * MB, 480 * MB });
        record = *opened->record(place);
        ASSERT_EQ(record.entries.size(), static_cast<std::size_t>(days));
    }

    std::unique_ptr<HistoryStore> open()
    {
        auto opened = HistoryStore::open(directory(), Calendar::fixed(0), HistoryStore::defaultSizeLimit, [this] { return now; });
        EXPECT_TRUE(opened);
        return opened ? std::move(*opened) : nullptr;
    }

    std::string directory() const { return folder / "History"; }
    std::string placeFolder() const { return directory() + "/" + record.folder; }

    static std::shared_ptr<const ScanTree> treeFor(std::int64_t growMB)
    {
        return treeOf("/data", { { "grow/a.bin", growMB * MB }, { "steady/b.bin", 30 * MB }, { "small/c.bin", 1 * MB } });
    }

    std::string pathOf(Target target) const
    {
        switch (target) {
        case Target::index: return directory() + "/index.json";
        case Target::source: return placeFolder() + "/source.json";
        case Target::current: return placeFolder() + "/current.snap";
        case Target::yesterdayStart: return placeFolder() + "/" + record.entries[days - 2].file;
        case Target::firstDay: return placeFolder() + "/" + record.entries[0].file;
        case Target::volumeLog: return directory() + "/Volumes/" + VolumeMeasurement::logFileName(place.volume);
        case Target::lock: return directory() + "/.lock";
        }
        return {};
    }

    // The .snap files that decode, by name.
    std::set<std::string> intactSnapshots() const
    {
        std::set<std::string> names;
        for (const auto& entry : fs::directory_iterator(placeFolder())) {
            std::string name = entry.path().filename();
            if (!name.ends_with(".snap"))
                continue;
            auto snapshot = Snapshot::decode(readBytes(entry.path()));
            if (snapshot && snapshot->isConsistent())
                names.insert(name);
        }
        return names;
    }

    AgentResult ask(HistoryStore& store, const std::string& command, std::map<std::string, std::string> arguments)
    {
        arguments.emplace("path", "/data");
        SnapshotAnswers::Context context;
        context.store = &store;
        return SnapshotAnswers::answer(AgentCommands::Request { command, arguments, true }, context);
    }

    Date dayAt(int day) const { return utc(2024, 6, day, 9); }

    fixtures::TempFolder folder;
    Date now = utc(2024, 6, days, 12);
    HistorySource place { "/data", "volume-1" };
    HistoryStore::SourceRecord record;
};

std::string isoOf(Date date)
{
    return *AgentFormat::isoDate(date).stringValue();
}

}

TEST_F(HistoryDamageTest, EveryReaderAnswersFromWhatIsIntactAndNothingIntactIsLost)
{
    const Target targets[] { Target::index, Target::source, Target::current, Target::yesterdayStart, Target::firstDay, Target::volumeLog, Target::lock };
    // The history as saved, to put back between cases.
    const fs::path pristine = folder / "pristine";
    fs::copy(directory(), pristine, fs::copy_options::recursive);

    for (Target target : targets) {
        for (const Damage& damage : damages()) {
            const std::string label = targetName(target) + ", " + damage.name;
            fs::remove_all(directory());
            fs::copy(pristine, directory(), fs::copy_options::recursive);
            damage.apply(pathOf(target));
            const std::set<std::string> intact = intactSnapshots();
            const bool currentDamaged = !intact.contains("current.snap");
            const bool yesterdayDamaged = !intact.contains(record.entries[days - 2].file);
            const bool firstDamaged = !intact.contains(record.entries[0].file);

            auto store = open();
            ASSERT_TRUE(store) << label;

            // history: every intact day is listed with its size; a damaged day that is still
            // there is named as damaged.
            AgentResult history = ask(*store, "history", {});
            ASSERT_FALSE(history.isError) << label << ": " << history.text;
            std::map<std::string, std::string> states;
            const nlohmann::json historyJSON = structured(history);
            for (const auto& point : historyJSON["points"])
                states[point["date"].get<std::string>()] = point["state"].get<std::string>();
            for (int day = 1; day <= days; ++day) {
                const std::string& file = record.entries[static_cast<std::size_t>(day - 1)].file;
                if (intact.contains(file))
                    EXPECT_EQ(states[isoOf(dayAt(day))], "kept") << label << ", day " << day;
                else if (fs::exists(placeFolder() + "/" + file))
                    EXPECT_EQ(states[isoOf(dayAt(day))], "damaged") << label << ", day " << day;
            }

            // changes over two periods: from the start the period asks for, or the nearest
            // intact one, said as such; to the latest intact snapshot.
            const Date latest = currentDamaged ? dayAt(days) : utc(2024, 6, days, 10);
            struct Period {
                std::string name;
                int startDay;
                bool startDamaged;
                int fallbackDay;
            };
            for (const Period& period : { Period { "yesterday", days - 1, yesterdayDamaged, days - 2 }, Period { "month", 1, firstDamaged, 2 } }) {
                AgentResult changes = ask(*store, "changes", { { "period", period.name } });
                ASSERT_FALSE(changes.isError) << label << ", " << period.name << ": " << changes.text;
                nlohmann::json json = structured(changes);
                EXPECT_EQ(json["to"], isoOf(latest)) << label << ", " << period.name;
                EXPECT_FALSE(json["one_snapshot_only"].get<bool>()) << label;
                if (period.startDamaged && fs::exists(pathOf(period.startDay == 1 ? Target::firstDay : Target::yesterdayStart))) {
                    EXPECT_EQ(json["from"], isoOf(dayAt(period.fallbackDay))) << label << ", " << period.name;
                    EXPECT_EQ(json["unreadable_start"], isoOf(dayAt(period.startDay))) << label << ", " << period.name;
                    EXPECT_NE(changes.text.find("couldn't be read"), std::string::npos) << label;
                } else if (!period.startDamaged) {
                    EXPECT_EQ(json["from"], isoOf(dayAt(period.startDay))) << label << ", " << period.name;
                    EXPECT_TRUE(json["unreadable_start"].is_null()) << label;
                }
            }

            AgentResult types = ask(*store, "types", {});
            EXPECT_FALSE(types.isError) << label << ": " << types.text;
            // The disks' record reads the same store: a damaged one never makes it fail.
            AgentResult disks = ask(*store, "disks", {});
            EXPECT_FALSE(disks.isError) << label << ": " << disks.text;

            SpaceAlert alert { "3F2A9C1E-0B7D-4C55-8E21-6A9F0D3B7C10", "/data/grow", { SpaceAlert::Condition::Size { 50 * MB } } };
            AlertReading reading = AlertReadings::read(alert, store.get(), now);
            EXPECT_EQ(reading.state, AlertReading::State::exceeded) << label;

            // Every scan that measured the volume has its line, whatever happened to the log.
            auto measurements = store->measurements(place.volume);
            ASSERT_TRUE(measurements) << label;
            std::set<Date> measured;
            for (const VolumeMeasurement& measurement : *measurements)
                measured.insert(measurement.date);
            for (int day = 1; day <= days; ++day) {
                if (intact.contains(record.entries[static_cast<std::size_t>(day - 1)].file))
                    EXPECT_TRUE(measured.contains(dayAt(day))) << label << ", day " << day;
            }

            // The next save keeps every intact snapshot and replaces a damaged current one.
            now = utc(2024, 6, days + 1, 12);
            saveWithColors(*store, place, treeFor(90), utc(2024, 6, days + 1, 9));
            std::set<std::string> after = intactSnapshots();
            for (const std::string& name : intact)
                EXPECT_TRUE(after.contains(name)) << label << ": " << name << " disappeared";
            EXPECT_TRUE(after.contains("current.snap")) << label;
            auto reopened = open();
            std::set<std::string> listed;
            for (const HistoryEntry& entry : reopened->entries(place))
                listed.insert(entry.file);
            for (const std::string& name : intact)
                EXPECT_TRUE(name == "current.snap" || listed.contains(name)) << label << ": " << name << " not listed";
            EXPECT_EQ(listed.size(), static_cast<std::size_t>(days + 1) - (fs::exists(pathOf(target)) || target != Target::firstDay && target != Target::yesterdayStart ? 0 : 1)) << label;
            EXPECT_FALSE(reopened->indexProblem()) << label;
            now = utc(2024, 6, days, 12);
        }
    }
}

TEST_F(HistoryDamageTest, ADamagedIndexIsSetAsideRebuiltWithItsKeptMarksAndToldOnce)
{
    {
        auto store = open();
        ASSERT_TRUE(store->keep(place, record.entries[2].id, "before the clean-up"));
    }
    const std::string indexPath = directory() + "/index.json";
    const std::string damaged = R"({"nextID": 3, "sources": [)";
    writeText(indexPath, damaged);

    auto store = open();
    auto notice = store->recoveryNotice();
    ASSERT_TRUE(notice);
    EXPECT_NE(notice->find("The history's index was damaged. Tarnwick rebuilt it from the snapshots on disk and kept the damaged one as "
                  + indexPath + ".damaged-"),
        std::string::npos)
        << *notice;
    std::vector<std::string> aside;
    for (const auto& entry : fs::directory_iterator(directory())) {
        if (entry.path().filename().string().starts_with("index.json.damaged-"))
            aside.push_back(entry.path());
    }
    ASSERT_EQ(aside.size(), 1u);
    EXPECT_EQ(readBytes(aside[0]), std::vector<std::uint8_t>(damaged.begin(), damaged.end()));
    EXPECT_EQ(store->entries(place).size(), static_cast<std::size_t>(days));
    EXPECT_FALSE(store->indexProblem());
    // The kept mark and its note, which no snapshot file holds, come back from their copy.
    for (const HistoryEntry& entry : store->entries(place)) {
        EXPECT_EQ(entry.isKept, entry.id == record.entries[2].id) << entry.id;
        EXPECT_EQ(entry.note, entry.isKept ? std::optional<std::string>("before the clean-up") : std::nullopt) << entry.id;
    }
    // A second process finds a good index, and nothing to tell.
    EXPECT_FALSE(open()->recoveryNotice());
    // The new index hands out ids after every file's.
    now = utc(2024, 6, days + 1, 12);
    saveWithColors(*store, place, treeFor(90), utc(2024, 6, days + 1, 9));
    std::set<std::int64_t> ids;
    for (const HistoryEntry& entry : open()->entries(place))
        EXPECT_TRUE(ids.insert(entry.id).second) << entry.id;
}

TEST_F(HistoryDamageTest, ADeletedIndexIsRebuiltAndTheNextSaveDeletesNothing)
{
    fs::remove(directory() + "/index.json");
    const std::set<std::string> before = intactSnapshots();
    auto store = open();
    EXPECT_EQ(store->entries(place).size(), static_cast<std::size_t>(days));
    EXPECT_EQ(*store->recoveryNotice(), "The history's index was missing. Tarnwick rebuilt it from the snapshots on disk.");
    now = utc(2024, 6, days + 1, 12);
    saveWithColors(*store, place, treeFor(90), utc(2024, 6, days + 1, 9));
    std::set<std::string> after = intactSnapshots();
    for (const std::string& name : before)
        EXPECT_TRUE(after.contains(name)) << name;
    EXPECT_EQ(open()->entries(place).size(), static_cast<std::size_t>(days + 1));
}

// A day file damaged today carries today's date once the index is rebuilt: the next scan of
// the day still leaves an intact day snapshot for it, not the damaged file in its place.
TEST_F(HistoryDamageTest, ADamagedDayOfTodayGivesWayToTheNextScan)
{
    const std::string damagedFile = placeFolder() + "/" + record.entries[days - 1].file; // today, 09:00
    writeText(damagedFile, "not a snapshot any more");
    fs::last_write_time(damagedFile, std::chrono::file_clock::from_sys(utc(2024, 6, days, 9, 30)));
    fs::remove(directory() + "/index.json");
    auto store = open();
    saveWithColors(*store, place, treeFor(90), utc(2024, 6, days, 11));
    std::vector<HistoryEntry> today;
    for (const HistoryEntry& entry : open()->entries(place)) {
        if (entry.date >= utc(2024, 6, days) && entry.date < utc(2024, 6, days + 1))
            today.push_back(entry);
    }
    ASSERT_EQ(today.size(), 1u);
    EXPECT_TRUE(Snapshot::decode(readBytes(placeFolder() + "/" + today[0].file)).has_value()) << today[0].file;
    EXPECT_EQ(intactSnapshots().size(), static_cast<std::size_t>(days) + 1); // every day and current.snap
}

TEST_F(HistoryDamageTest, DaySnapshotsASaveWroteButDidNotListAreAdoptedNotSwept)
{
    // As a save killed after writing its day snapshot and before its index: the file is
    // there, the index is the one before.
    const std::string indexPath = directory() + "/index.json";
    const auto indexBefore = readBytes(indexPath);
    now = utc(2024, 6, days + 1, 12);
    {
        auto store = open();
        saveWithColors(*store, place, treeFor(90), utc(2024, 6, days + 1, 9));
    }
    writeBytes(indexPath, indexBefore);
    auto store = open();
    EXPECT_EQ(store->entries(place).size(), static_cast<std::size_t>(days));
    now = utc(2024, 6, days + 2, 12);
    saveWithColors(*store, place, treeFor(95), utc(2024, 6, days + 2, 9));
    std::vector<HistoryEntry> entries = open()->entries(place);
    ASSERT_EQ(entries.size(), static_cast<std::size_t>(days + 2));
    EXPECT_EQ(entries[days].date, utc(2024, 6, days + 1, 9));
}

TEST_F(HistoryDamageTest, AFolderAnIndexDoesNotListIsAdopted)
{
    // A first save of a place killed before its index was written.
    const std::string indexPath = directory() + "/index.json";
    writeText(indexPath, R"({"nextID": 1, "sources": []})");
    auto store = open();
    EXPECT_EQ(store->entries(place).size(), static_cast<std::size_t>(days));
}

namespace {

// Runs body in a child process inside a user and mount namespace of its own, where it may
// mount a small file system without privileges. Returns what body reports ("" when all is
// well), or absent when such namespaces are not available here.
std::optional<std::string> inOwnNamespace(const std::function<std::string()>& body)
{
    int pipe[2];
    if (::pipe(pipe) != 0)
        return std::nullopt;
    const uid_t uid = ::getuid();
    const gid_t gid = ::getgid();
    pid_t child = ::fork();
    if (child == 0) {
        ::close(pipe[0]);
        std::string report;
        if (::unshare(CLONE_NEWUSER | CLONE_NEWNS) != 0) {
            report = "unavailable";
        } else {
            std::ofstream("/proc/self/setgroups") << "deny";
            std::ofstream("/proc/self/uid_map") << "0 " << uid << " 1";
            std::ofstream("/proc/self/gid_map") << "0 " << gid << " 1";
            report = body();
        }
        (void)!::write(pipe[1], report.data(), report.size());
        ::_exit(0);
    }
    ::close(pipe[1]);
    std::string report;
    char buffer[4096];
    for (ssize_t n; (n = ::read(pipe[0], buffer, sizeof buffer)) > 0;)
        report.append(buffer, static_cast<std::size_t>(n));
    ::close(pipe[0]);
    int status = 0;
    ::waitpid(child, &status, 0);
    if (report == "unavailable")
        return std::nullopt;
    if (!WIFEXITED(status))
        return "the child died: " + report;
    return report;
}

}

// The store on a small file system filled up: a save that can write its snapshot but not the
// index fails whole, with current.snap put back, and the next save once there is room works.
TEST_F(HistoryDamageTest, OnAFullDiskASaveFailsWholeAndChangesNothing)
{
    const std::string mounted = folder / "small-disk";
    fs::create_directory(mounted);
    auto report = inOwnNamespace([&]() -> std::string {
        if (::mount("tmpfs", mounted.c_str(), "tmpfs", 0, "size=2m") != 0)
            return "unavailable";
        fs::copy(directory(), mounted + "/History", fs::copy_options::recursive);
        const std::string history = mounted + "/History";
        auto store = HistoryStore::open(history, Calendar::fixed(0), HistoryStore::defaultSizeLimit, [this] { return now; });
        if (!store)
            return "the store didn't open";
        const std::string placePath = history + "/" + record.folder;
        const auto indexBefore = readBytes(history + "/index.json");
        const auto currentBefore = readBytes(placePath + "/current.snap");
        // A later scan of the same day: it replaces current.snap and writes the index only.
        HistoryStore::SnapshotFiles files = filesFor(treeFor(85), utc(2024, 6, days, 11));
        struct statvfs space {};
        ::statvfs(mounted.c_str(), &space);
        const std::uint64_t pageSize = space.f_bsize;
        const std::uint64_t needed = (files.current.size() + pageSize - 1) / pageSize;
        {
            std::ofstream filler(mounted + "/filler", std::ios::binary);
            std::vector<char> block(pageSize, 'x');
            for (std::uint64_t page = 0; page + needed < space.f_bavail; ++page)
                filler.write(block.data(), static_cast<std::streamsize>(block.size()));
        }
        std::string problems;
        auto saved = (*store)->save(place, files);
        if (saved)
            problems += "the save succeeded on a full disk; ";
        else if (saved.error().systemError != ENOSPC)
            problems += "the save failed with " + saved.error().message() + "; ";
        if (readBytes(history + "/index.json") != indexBefore)
            problems += "index.json changed; ";
        if (readBytes(placePath + "/current.snap") != currentBefore)
            problems += "current.snap wasn't put back; ";
        auto reopened = HistoryStore::open(history, Calendar::fixed(0), HistoryStore::defaultSizeLimit, [this] { return now; });
        if (!reopened || (*reopened)->entries(place).size() != static_cast<std::size_t>(days) || (*reopened)->indexProblem())
            problems += "the store as left doesn't read whole; ";
        fs::remove(mounted + "/filler");
        if (!(*store)->save(place, files))
            problems += "the save with room again failed; ";
        ::umount(mounted.c_str());
        return problems;
    });
    if (!report)
        GTEST_SKIP() << "user namespaces are not available here";
    EXPECT_EQ(*report, "");
}
