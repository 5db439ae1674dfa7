#include "e2e/CommandLineHarness.hpp"

#include <sys/socket.h>
#include <sys/un.h>

using tarnwick::fixtures::CommandLineE2E;
using tarnwick::fixtures::duTotals;
using tarnwick::fixtures::ProcessRun;
using tarnwick::fixtures::TempFolder;
using tarnwick::fixtures::Totals;

TEST_F(CommandLineE2E, ScanWaitSummaryAndFindMatchTheFileSystem)
{
    TempFolder place;
    place.makeFile("big/video.mov", 3'000'000);
    place.makeFile("big/notes.txt", 5000);
    place.makeFile("small/a.txt", 100);
    place.makeSparseFile("disk.img", 40'000'000);
    for (int i = 0; i < 400; ++i)
        place.makeFile("many/" + std::string(180, 'n') + std::to_string(i), 10);

    ProcessRun scan = tarnwick("scan '" + place.path() + "'");
    ASSERT_EQ(scan.status, 0) << scan.err;
    ASSERT_EQ(tarnwick("wait --timeout 60").status, 0);

    Totals expected = duTotals(place.path());
    nlohmann::json summary = json("summary '" + place.path() + "'");
    EXPECT_EQ(summary["size_bytes"], expected.allocated);
    EXPECT_EQ(summary["logical_bytes"], expected.logical);
    EXPECT_EQ(summary["item_count"], 4);
    EXPECT_EQ(summary["items"][0]["name"], "big");
    EXPECT_EQ(summary["items"][0]["size_bytes"], duTotals(place / "big").allocated);

    // Hundreds of long names still give an answer under 8 KB that says it was shortened.
    nlohmann::json many = json("summary '" + (place / "many") + "' --limit 100");
    EXPECT_EQ(many["shrunk_to_fit"], true);
    EXPECT_LT(many["items"].size(), 100u);
    ProcessRun manyText = tarnwick("summary '" + (place / "many") + "' --limit 100");
    EXPECT_LT(manyText.out.size(), 8192u);
    // find says so too when it lists fewer than asked for.
    nlohmann::json manyFound = json("find '" + (place / "many") + "' --limit 100");
    EXPECT_EQ(manyFound["shrunk_to_fit"], true);
    EXPECT_LT(manyFound["items"].size(), 100u);
    ProcessRun manyFoundText = tarnwick("find '" + (place / "many") + "' --limit 100");
    EXPECT_NE(manyFoundText.out.find(" to fit 8 KB."), std::string::npos) << manyFoundText.out;

    nlohmann::json found = json("find '" + place.path() + "' --min-size 1M");
    ASSERT_EQ(found["items"].size(), 1u);
    EXPECT_EQ(found["items"][0]["path"], place / "big/video.mov");

    nlohmann::json status = json("status");
    EXPECT_EQ(status["running"], true);
    EXPECT_EQ(status["scanned_path"], place.path());

    EXPECT_EQ(tarnwick("show '" + (place / "big") + "'").status, 0);
    EXPECT_EQ(json("status")["open_folder"], place / "big");

    ProcessRun outside = tarnwick("summary /usr");
    EXPECT_EQ(outside.status, 1);
    EXPECT_TRUE(outside.err.starts_with("NOT_SCANNED: ")) << outside.err;
    ProcessRun relative = tarnwick("summary relative/path");
    EXPECT_TRUE(relative.err.starts_with("INVALID_PATH: ")) << relative.err;
}

TEST_F(CommandLineE2E, UsageErrorsAndHelpNeverStartTheApp)
{
    const std::pair<const char*, const char*> cases[] = {
        { "frobnicate", "Tarnwick has no command frobnicate. Run help for the list." },
        { "changes --limit 0", "--limit doesn't take 0: How many changed items to list, 1 to 50; 15 by default." },
        { "history", "history needs a path: history PATH." },
        { "status /tmp", "status takes no path." },
        { "find --min-size -1G", "--min-size doesn't take -1G: " },
        { "add-alert / --fuller-than 90 --share 5", "add-alert needs one limit: --fuller-than, --larger-than, --share or --grows-by." },
    };
    for (auto [arguments, message] : cases) {
        ProcessRun run = tarnwick(arguments);
        EXPECT_EQ(run.status, 2) << arguments;
        EXPECT_TRUE(run.err.starts_with(message)) << arguments << ": " << run.err;
    }
    EXPECT_EQ(tarnwick("help").status, 0);
    EXPECT_EQ(tarnwick("help changes").status, 0);
    EXPECT_TRUE(appProcesses().empty());
    EXPECT_FALSE(std::filesystem::exists(socketPath()));
}

TEST_F(CommandLineE2E, AnotherProgramGetsNoAnswer)
{
    ASSERT_EQ(tarnwick("scan '" + (m_home / "home") + "'").status, 0);
    int fd = socket(AF_UNIX, SOCK_STREAM, 0);
    sockaddr_un address {};
    address.sun_family = AF_UNIX;
    std::snprintf(address.sun_path, sizeof address.sun_path, "%s", socketPath().c_str());
    ASSERT_EQ(connect(fd, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
    std::string line = "{\"arguments\":{},\"command\":\"status\",\"json\":true}\n";
    (void)!send(fd, line.data(), line.size(), MSG_NOSIGNAL);
    char buffer[64];
    EXPECT_LE(read(fd, buffer, sizeof buffer), 0); // closed (or reset) without an answer
    close(fd);
    struct stat info;
    ASSERT_EQ(stat(socketPath().c_str(), &info), 0);
    EXPECT_EQ(info.st_mode & 0777, 0600u);
}

TEST_F(CommandLineE2E, AppNotRunningWhenItCannotStart)
{
    // A data folder that cannot be created keeps the app from listening.
    m_environment += " XDG_DATA_HOME=/proc/no-such-place";
    ProcessRun run = tarnwick("summary --json");
    EXPECT_EQ(run.status, 4) << run.out << run.err;
    EXPECT_NE(run.out.find("APP_NOT_RUNNING"), std::string::npos);
}
