#include "e2e/CommandLineHarness.hpp"

#include <chrono>
#include <functional>
#include <thread>

using tarnwick::fixtures::CommandLineE2E;
using tarnwick::fixtures::eventually;
using tarnwick::fixtures::duTotals;
using tarnwick::fixtures::ProcessRun;
using tarnwick::fixtures::readFile;
using tarnwick::fixtures::TempFolder;

namespace {

// The commands answered from the history and the settings: once through the running app,
// then by the tool alone after the app is gone.
class SnapshotCommandsE2E : public CommandLineE2E {
protected:
    // A place with folders that snapshots keep (10 MB and more) and one they don't.
    void makePlace()
    {
        m_place.makeFile("videos/trip.mov", 30'000'000);
        m_place.makeFile("code/build/main.o", 12'000'000);
        m_place.makeFile(".cache/blob.bin", 15'000'000);
        m_place.makeFile("small/notes.txt", 2'000);
    }

    // Scans the place in the app and waits until its snapshot is saved.
    void scanIntoHistory()
    {
        ASSERT_EQ(tarnwick("scan '" + m_place.path() + "'").status, 0);
        ASSERT_EQ(tarnwick("wait --timeout 60").status, 0);
        ASSERT_TRUE(eventually([&] { return tarnwick("history '" + m_place.path() + "'").status == 0; }));
    }

    std::string quoted(const std::string& relative = "") const
    {
        return "'" + (relative.empty() ? m_place.path() : m_place / relative) + "'";
    }

    std::string settingsText() { return readFile(m_home / "config/tarnwick/defaults.json"); }

    TempFolder m_place;
};

nlohmann::json groupNamed(const nlohmann::json& types, const std::string& key)
{
    for (const auto& group : types["groups"]) {
        if (group["key"] == key)
            return group;
    }
    return nullptr;
}

}

TEST_F(SnapshotCommandsE2E, HistoryAnswersFromTheSnapshotsWithoutStartingTheApp)
{
    makePlace();
    scanIntoHistory();
    nlohmann::json historyInApp = json("history " + quoted());
    nlohmann::json changesInApp = json("changes " + quoted() + " --period week");
    nlohmann::json typesInApp = json("types " + quoted());
    EXPECT_EQ(typesInApp["source"], "scan");
    stopApps();
    ASSERT_TRUE(appProcesses().empty());

    const std::int64_t allocated = duTotals(m_place.path()).allocated;
    nlohmann::json history = json("history " + quoted());
    EXPECT_EQ(history, historyInApp);
    ASSERT_EQ(history["points"].size(), 1u);
    EXPECT_EQ(history["points"][0]["size_bytes"], allocated);
    EXPECT_EQ(history["disk"], nullptr);

    nlohmann::json changes = json("changes " + quoted() + " --period week");
    EXPECT_EQ(changes, changesInApp);
    EXPECT_EQ(changes["size_after_bytes"], allocated);
    EXPECT_EQ(changes["change_bytes"], 0);
    EXPECT_EQ(changes["one_snapshot_only"], true);
    EXPECT_EQ(changes["period"], "week");

    nlohmann::json types = json("types " + quoted());
    EXPECT_EQ(types["source"], "snapshot");
    EXPECT_EQ(types["size_bytes"], allocated);
    ASSERT_FALSE(types["groups"].empty());
    EXPECT_EQ(types["groups"][0]["key"], "video");
    EXPECT_EQ(types["groups"][0]["places"][0]["path"], m_place / "videos");
    std::int64_t grouped = 0;
    for (const auto& group : types["groups"])
        grouped += group["size_bytes"].get<std::int64_t>();
    EXPECT_EQ(grouped, allocated);
    // The same groups as the scan on screen had, give or take the snapshot's rounding.
    for (const auto& group : typesInApp["groups"]) {
        nlohmann::json same = groupNamed(types, group["key"]);
        ASSERT_NE(same, nullptr) << group["key"];
        EXPECT_NEAR(same["size_bytes"].get<double>(), group["size_bytes"].get<double>(), 200'000);
    }

    nlohmann::json hidden = json("types " + quoted() + " --by hidden");
    EXPECT_EQ(groupNamed(hidden, "hidden")["places"][0]["path"], m_place / ".cache");
    nlohmann::json firstPage = json("types " + quoted() + " --limit 1");
    ASSERT_EQ(firstPage["groups"].size(), 1u);
    EXPECT_EQ(firstPage["next_cursor"], 1);
    nlohmann::json secondPage = json("types " + quoted() + " --limit 1 --cursor 1");
    EXPECT_EQ(secondPage["groups"][0]["key"], types["groups"][1]["key"]);
    nlohmann::json ratio = json("types " + quoted() + " --by ratio --folders 2");
    EXPECT_EQ(ratio["mode"], "ratio");
    EXPECT_EQ(ratio["lowest"].size(), 2u);
    EXPECT_EQ(ratio["places_per_extreme"], 2);

    nlohmann::json disks = json("disks");
    nlohmann::json holding;
    for (const auto& disk : disks["disks"]) {
        std::string mount = disk["mount_point"];
        if (m_place.path().starts_with(mount == "/" ? "/" : mount + "/") && (holding.is_null() || mount.size() > holding["mount_point"].get<std::string>().size()))
            holding = disk;
    }
    if (!holding.is_null()) {
        EXPECT_GE(holding["snapshot_days"], 1);
        EXPECT_GT(holding["capacity_bytes"], 0);
        EXPECT_NE(holding["latest_snapshot"], nullptr);
    }

    const std::pair<std::string, std::string> failures[] = {
        { "history " + quoted("small"), "NO_HISTORY: Tarnwick keeps no history here." },
        { "changes '/no/such/place'", "NO_HISTORY: Tarnwick keeps no history here." },
        { "types relative/place", "INVALID_PATH: " },
        { "types", "NOT_SCANNED: " },
    };
    for (const auto& [arguments, message] : failures) {
        ProcessRun run = tarnwick(arguments);
        EXPECT_EQ(run.status, 1) << arguments;
        EXPECT_TRUE(run.err.starts_with(message)) << arguments << ": " << run.err;
    }
    EXPECT_TRUE(appProcesses().empty());
}

TEST_F(SnapshotCommandsE2E, AlertsRoundTripWithoutTheApp)
{
    nlohmann::json disk = json("add-alert / --fuller-than 99");
    std::string diskID = disk["alert"]["id"];
    EXPECT_EQ(diskID.size(), 8u);
    EXPECT_EQ(disk["alert"]["place_kind"], "disk");
    EXPECT_EQ(disk["alert"]["fuller_than_percent"], 99);
    EXPECT_NE(disk["alert"]["state"], "unknown");

    nlohmann::json size = json("add-alert " + quoted() + " --larger-than 1G");
    nlohmann::json again = json("add-alert " + quoted() + " --larger-than 2G");
    EXPECT_EQ(again["replaced"], true);
    EXPECT_EQ(again["alert"]["id"], size["alert"]["id"]);
    EXPECT_EQ(again["alert"]["larger_than_bytes"], 2'000'000'000);
    EXPECT_EQ(again["alert"]["state"], "unknown"); // no snapshot keeps the place yet
    nlohmann::json growth = json("add-alert " + quoted() + " --grows-by 5G --period week");
    EXPECT_EQ(growth["alert"]["period"], "week");

    nlohmann::json listed = json("alerts");
    ASSERT_EQ(listed["alerts"].size(), 3u);
    EXPECT_EQ(listed["daily_snapshot"], false);
    EXPECT_NE(listed["note"], nullptr);

    nlohmann::json byID = json("remove-alert " + diskID);
    ASSERT_EQ(byID["removed"].size(), 1u);
    EXPECT_EQ(byID["removed"][0]["path"], "/");
    nlohmann::json byPlace = json("remove-alert " + quoted() + "/");
    EXPECT_EQ(byPlace["removed"].size(), 2u);
    EXPECT_TRUE(json("alerts")["alerts"].empty());

    const struct {
        std::string arguments;
        int status;
        std::string message;
    } failures[] = {
        { "remove-alert " + quoted(), 1, "NOT_FOUND: No alert has that ID or place. Run alerts for the list." },
        { "remove-alert " + diskID, 1, "NOT_FOUND: No alert has that ID or place. Run alerts for the list." },
        { "remove-alert relative", 1, "INVALID_PATH: " },
        { "add-alert " + quoted() + " --fuller-than 50", 1, "INVALID_ARGUMENT: " },
        { "add-alert / --larger-than 1G", 1, "INVALID_ARGUMENT: A disk takes --fuller-than PERCENT." },
        { "add-alert relative --larger-than 1G", 1, "INVALID_PATH: " },
        { "add-alert '/nonexistent' --larger-than 1G", 1, "INVALID_PATH: /nonexistent doesn't exist." },
        { "add-alert " + quoted() + " --larger-than 1G --period week", 2, "--period goes with --grows-by." },
        { "add-alert " + quoted(), 2, "add-alert needs one limit: " },
    };
    for (const auto& test : failures) {
        ProcessRun run = tarnwick(test.arguments);
        EXPECT_EQ(run.status, test.status) << test.arguments;
        EXPECT_TRUE(run.err.starts_with(test.message)) << test.arguments << ": " << run.err;
    }
    ProcessRun notFound = tarnwick("remove-alert 0badc0de --json");
    EXPECT_EQ(nlohmann::json::parse(notFound.out)["error"], "NOT_FOUND");
    EXPECT_TRUE(appProcesses().empty());
}

TEST_F(SnapshotCommandsE2E, TheAppNotifiesPassedLimitsOnceAndRemembersThem)
{
    makePlace();
    std::string folderID = json("add-alert " + quoted() + " --larger-than 1M")["alert"]["uuid"];
    std::string quietID = json("add-alert " + quoted() + " --share 99")["alert"]["uuid"];
    std::string diskID = json("add-alert / --fuller-than 1")["alert"]["uuid"];
    scanIntoHistory();
    // The disk is read when the app starts, the folder when its snapshot is saved.
    EXPECT_TRUE(eventually([&] {
        std::string settings = settingsText();
        return settings.find(folderID) != std::string::npos && settings.find(diskID) != std::string::npos;
    })) << settingsText();
    nlohmann::json alerts = json("alerts");
    ASSERT_EQ(alerts["alerts"].size(), 3u);
    EXPECT_EQ(alerts["alerts"][0]["state"], "exceeded");
    EXPECT_EQ(alerts["alerts"][0]["value_bytes"], duTotals(m_place.path()).allocated);
    EXPECT_EQ(alerts["alerts"][1]["state"], "below");
    EXPECT_EQ(alerts["exceeded_count"], 2);
    EXPECT_EQ(settingsText().find(quietID), settingsText().rfind(quietID)); // listed once: as an alert, never as notified

    // A new limit re-arms the alert: it is no longer among the notified.
    json("add-alert " + quoted() + " --larger-than 2M");
    std::string settings = settingsText();
    std::size_t notified = settings.find("SpaceAlertsNotified");
    ASSERT_NE(notified, std::string::npos);
    EXPECT_EQ(settings.find(folderID, notified), std::string::npos);
}

// A history on a read-only mount (made in a user namespace of its own, so no privileges are
// needed): it is read as ever, and a scan whose snapshot cannot be saved says so in wait and
// status, leaving what was saved as it was.
TEST_F(SnapshotCommandsE2E, AReadOnlyHistoryIsReadAndAFailedSaveIsTold)
{
    if (tarnwick::fixtures::runShell("unshare -rm true >/dev/null 2>&1") != 0)
        GTEST_SKIP() << "user namespaces are not available here";
    makePlace();
    scanIntoHistory();
    stopApps();
    const std::string history = m_home / "data/tarnwick/History";
    auto readIndex = [&] { return readFile(history + "/index.json"); };
    const std::string indexBefore = readIndex();

    const std::string run = "env " + m_environment + " " + TARNWICK_EXECUTABLE + " ";
    const std::string out = m_home / "out";
    const std::string script = "mount --bind '" + history + "' '" + history + "' && mount -o remount,bind,ro '" + history + "' && "
        + run + "history " + quoted() + " --json >'" + out + ".history' 2>&1; echo $? >'" + out + ".history-status'; "
        + run + "scan " + quoted() + " >/dev/null 2>&1; " + run + "wait --timeout 60 --json >'" + out + ".wait' 2>&1; "
        + run + "status --json >'" + out + ".status' 2>&1";
    ASSERT_EQ(tarnwick::fixtures::runShell("unshare -rm sh -c \"" + script + "\""), 0);
    auto readOut = [&](const std::string& suffix) { return readFile(out + suffix); };

    EXPECT_EQ(readOut(".history-status"), "0\n") << readOut(".history");
    nlohmann::json answered = nlohmann::json::parse(readOut(".history"), nullptr, false);
    ASSERT_TRUE(answered.is_object()) << readOut(".history");
    EXPECT_EQ(answered["points"].size(), 1u);

    for (const std::string suffix : { ".wait", ".status" }) {
        nlohmann::json status = nlohmann::json::parse(readOut(suffix), nullptr, false);
        ASSERT_TRUE(status.is_object()) << suffix << ": " << readOut(suffix);
        ASSERT_TRUE(status["snapshot_not_saved"].is_string()) << suffix << ": " << readOut(suffix);
        std::string problem = status["snapshot_not_saved"];
        EXPECT_TRUE(problem.starts_with("The snapshot couldn't be saved: ")) << problem;
        EXPECT_NE(problem.find("Read-only file system"), std::string::npos) << problem;
    }
    EXPECT_EQ(readIndex(), indexBefore);
}

// A month of daily scans by one app whose clock is moved a day at a time (libfaketime, which
// the app's clocks follow), then the history read through the command line, intact and after
// damage to its files.
TEST_F(SnapshotCommandsE2E, AMonthOfDailyScansUnderFakedDates)
{
    const std::string library = "/usr/lib/x86_64-linux-gnu/faketime/libfaketime.so.1";
    if (!std::filesystem::exists(library))
        GTEST_SKIP() << "libfaketime is not installed";
    const std::string clockFile = m_home / "faked-time";
    auto setDay = [&](int day) { std::ofstream(clockFile, std::ios::trunc) << "@2024-06-" << (day < 10 ? "0" : "") << day << " 09:00:00\n"; };
    setDay(1);
    const std::string plainEnvironment = m_environment;
    m_environment += " LD_PRELOAD='" + library + "' FAKETIME_TIMESTAMP_FILE='" + clockFile + "' FAKETIME_NO_CACHE=1 DONT_FAKE_MONOTONIC=1 TZ=UTC";

    constexpr int days = 30;
    m_place.makeFile("steady/base.bin", 30'000'000);
    for (int day = 1; day <= days; ++day) {
        setDay(day);
        m_place.makeFile("grow/day" + std::to_string(day) + ".bin", 2'000'000);
        // The first day scans the place; later days scan it again (scan would open the result).
        ASSERT_EQ(tarnwick(day == 1 ? "scan " + quoted() : std::string("rescan")).status, 0) << day;
        ASSERT_EQ(tarnwick("wait --timeout 60").status, 0) << day;
    }
    ASSERT_TRUE(eventually([&] { return json("history " + quoted())["snapshot_count"] == days; })) << tarnwick("history " + quoted()).out;
    stopApps();
    // The tool alone, at noon of the last day.
    std::ofstream(clockFile, std::ios::trunc) << "@2024-06-30 12:00:00\n";
    nlohmann::json history = json("history " + quoted());
    ASSERT_EQ(history["points"].size(), static_cast<std::size_t>(days)) << history.dump();
    EXPECT_EQ(history["points"][0]["date"], "2024-06-01T09:00:00Z");

    nlohmann::json yesterday = json("changes " + quoted("grow"));
    EXPECT_EQ(yesterday["one_snapshot_only"], false) << yesterday.dump();
    EXPECT_EQ(yesterday["from"], "2024-06-29T09:00:00Z");
    EXPECT_NEAR(yesterday["change_bytes"].get<double>(), 2'000'000, 200'000);
    nlohmann::json week = json("changes " + quoted("grow") + " --period week");
    EXPECT_EQ(week["from"], "2024-06-23T09:00:00Z");
    EXPECT_NEAR(week["change_bytes"].get<double>(), 14'000'000, 300'000);
    EXPECT_EQ(week["covers_period"], true);
    nlohmann::json month = json("changes " + quoted() + " --period month");
    EXPECT_EQ(month["covers_period"], false);
    EXPECT_EQ(month["history_starts"], "2024-06-01T09:00:00Z");

    // Damage: yesterday's day snapshot, then the index. Everything intact still answers.
    const std::string store = m_home / "data/tarnwick/History";
    nlohmann::json index = nlohmann::json::parse(std::ifstream(store + "/index.json"));
    const std::string folder = store + "/" + index["sources"][0]["folder"].get<std::string>();
    // The last day entry is today's; the one before it is yesterday's.
    const auto& entries = index["sources"][0]["entries"];
    const std::string yesterdayFile = entries[entries.size() - 2]["file"];
    // Damaged where it lies, as by the disk: its modification time stays the scan's.
    const auto modified = std::filesystem::last_write_time(folder + "/" + yesterdayFile);
    std::ofstream(folder + "/" + yesterdayFile, std::ios::trunc) << "TSNP\x07garbage";
    std::filesystem::last_write_time(folder + "/" + yesterdayFile, modified);

    nlohmann::json damaged = json("history " + quoted());
    ASSERT_EQ(damaged["points"].size(), static_cast<std::size_t>(days)) << damaged.dump();
    EXPECT_EQ(damaged["points"][days - 2]["state"], "damaged");
    nlohmann::json fallback = json("changes " + quoted("grow"));
    EXPECT_EQ(fallback["unreadable_start"], "2024-06-29T09:00:00Z") << fallback.dump();
    EXPECT_EQ(fallback["from"], "2024-06-28T09:00:00Z");
    ProcessRun text = tarnwick("changes " + quoted("grow"));
    EXPECT_NE(text.out.find("couldn't be read, so this compares with the nearest one, of 2024-06-28"), std::string::npos) << text.out;

    // Then the index: rebuilt from the files, every intact day still there.
    std::ofstream(store + "/index.json", std::ios::trunc) << "{\"nextID\":\"x\",\"sources\":{\"a\":1}}";
    nlohmann::json rebuilt = json("history " + quoted());
    int kept = 0;
    for (const auto& point : rebuilt["points"])
        kept += point["state"] == "kept" ? 1 : 0;
    EXPECT_EQ(kept, days - 1) << rebuilt.dump();
    bool setAside = false;
    for (const auto& entry : std::filesystem::directory_iterator(store))
        setAside = setAside || entry.path().filename().string().starts_with("index.json.damaged-");
    EXPECT_TRUE(setAside);
    m_environment = plainEnvironment;
}
