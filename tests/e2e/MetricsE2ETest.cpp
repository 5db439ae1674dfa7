#include "Alerts/SpaceAlertStore.hpp"
#include "History/HistoryTestSupport.hpp"
#include "Platform/UserDefaults.hpp"
#include "Platform/VolumeIdentity.hpp"
#include "Tarnwick/SavedScans.hpp"
#include "e2e/CommandLineHarness.hpp"

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include <chrono>
#include <functional>
#include <thread>

using namespace tarnwick;
using namespace tarnwick::fixtures;
using namespace tarnwick::testing;

namespace {

constexpr std::int64_t GB = 1'000'000'000;
const std::string fakeTimeLibrary = "/usr/lib/x86_64-linux-gnu/faketime/libfaketime.so.1";

// A port nobody listens on now, for a server of the test's own.
int freeLoopbackPort()
{
    int probe = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address {};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t length = sizeof address;
    ::bind(probe, reinterpret_cast<sockaddr*>(&address), sizeof address);
    ::getsockname(probe, reinterpret_cast<sockaddr*>(&address), &length);
    ::close(probe);
    return ntohs(address.sin_port);
}

// A plain HTTP/1.0 GET on the loopback; empty when nothing answers.
std::string httpGet(int port, const std::string& path)
{
    int connection = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address {};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<std::uint16_t>(port));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    std::string response;
    if (::connect(connection, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0) {
        std::string request = "GET " + path + " HTTP/1.0\r\nHost: 127.0.0.1\r\n\r\n";
        if (::send(connection, request.data(), request.size(), MSG_NOSIGNAL) == static_cast<ssize_t>(request.size())) {
            char buffer[65536];
            while (ssize_t count = ::recv(connection, buffer, sizeof buffer, 0)) {
                if (count < 0)
                    break;
                response.append(buffer, static_cast<std::size_t>(count));
            }
        }
    }
    ::close(connection);
    return response;
}

class MetricsE2E : public CommandLineE2E {
protected:
    // A month of daily snapshots taken under faked dates, as a server's daily snapshot leaves
    // them: a disk that fills up, a second disk with places named with quotes, backslashes,
    // line feeds and bytes that are not UTF-8, and a place in this test's folder on the disk
    // that is really mounted. Alerts: one exceeded, one quiet, one that can't be measured.
    void buildHistory()
    {
        m_place.makeFolder("served");
        m_realPlace = m_place / "served";
        std::optional<std::string> realVolume = VolumeIdentity::identifier(m_realPlace);
        ASSERT_TRUE(realVolume);
        Date clock = utc(2024, 6, 1, 9);
        auto store = HistoryStore::open(m_home / "data/tarnwick/History", Calendar::current(), HistoryStore::defaultSizeLimit, [&] { return clock; });
        ASSERT_TRUE(store);
        for (int day = 1; day <= 30; ++day) {
            clock = utc(2024, 6, day, 9);
            saveScan(**store, { "/srv/data", "vol-a" }, *treeOf("/srv/data", { { "logs/x.log", (50 + 20 * day) * MB } }), clock,
                Snapshot::Volume { 2000 * GB, 1000 * GB - day * 25 * GB });
            if (day > 20) {
                for (const std::string& odd : oddPlaces)
                    saveScan(**store, { odd, "vol-b" }, *treeOf(odd, { { "f.bin", (10 + day) * MB } }), clock, Snapshot::Volume { 500 * GB, 100 * GB });
            }
            saveScan(**store, { m_realPlace, *realVolume }, *treeOf(m_realPlace, { { "r.bin", 40 * MB } }), clock);
        }
        UserDefaults defaults(m_home / "config/tarnwick/defaults.json");
        SpaceAlertStore alerts(defaults);
        using Condition = SpaceAlert::Condition;
        ASSERT_TRUE(alerts.add("/srv/data", SpaceAlertStore::PlaceKind::folder, Condition { Condition::Size { 100 * MB } }));
        ASSERT_TRUE(alerts.add(oddPlaces[0], SpaceAlertStore::PlaceKind::folder, Condition { Condition::Size { 1000 * GB } }));
        ASSERT_TRUE(alerts.add("/nowhere/at/all", SpaceAlertStore::PlaceKind::folder, Condition { Condition::Size { GB } }));
    }

    // The tool as the day after the history's last scan sees it.
    ProcessRun tarnwickAtTheEnd(const std::string& arguments, const std::string& launcher = "")
    {
        return tarnwick(arguments, "LD_PRELOAD='" + fakeTimeLibrary + "' FAKETIME='@2024-06-30 12:00:00' TZ=UTC " + launcher);
    }

    const std::vector<std::string> oddPlaces {
        "/mnt/b/say \"cheese\"",
        "/mnt/b/back\\slash",
        "/mnt/b/two\nlines",
        "/mnt/b/latin1 caf\xe9",
    };
    TempFolder m_place;
    std::string m_realPlace;
};

}

TEST_F(MetricsE2E, PromtoolAcceptsTheMetricsOfAMonthUnderFakedDates)
{
    if (!std::filesystem::exists(fakeTimeLibrary) || ::system("command -v promtool >/dev/null") != 0)
        GTEST_SKIP() << "libfaketime or promtool is not installed";
    buildHistory();
    ProcessRun metrics = tarnwickAtTheEnd("metrics");
    ASSERT_EQ(metrics.status, 0) << metrics.err;
    std::ofstream(m_home / "metrics.prom") << metrics.out;
    ProcessRun check = runCommand("promtool check metrics < '" + m_home / "metrics.prom" + "'", m_home / "promtool.txt");
    EXPECT_EQ(check.status, 0) << check.err << check.out << metrics.out;

    const std::string& text = metrics.out;
    for (std::string_view expected : {
             // 40 MB, as snapshots keep sizes to 10 MB.
             "tarnwick_place_size_bytes{path=\"/mnt/b/say \\\"cheese\\\"\",volume=\"vol-b\"} 40000000\n",
             "tarnwick_place_size_bytes{path=\"/mnt/b/back\\\\\\\\slash\",volume=\"vol-b\"} 40000000\n",
             "tarnwick_place_size_bytes{path=\"/mnt/b/two\\nlines\",volume=\"vol-b\"} 40000000\n",
             // The history keeps a name that is not UTF-8 as UTF-8 already.
             "tarnwick_place_size_bytes{path=\"/mnt/b/latin1 caf",
         })
        EXPECT_NE(text.find(expected), std::string::npos) << expected << "\n" << text;
    // The disk of this test's folder is mounted: its mount point, and its reserve.
    EXPECT_NE(text.find("tarnwick_disk_reserved_bytes{mountpoint=\"/"), std::string::npos) << text;
    // One alert exceeded, one quiet, the unmeasurable one left out.
    std::size_t exceeded = text.find("tarnwick_alert_exceeded{");
    ASSERT_NE(exceeded, std::string::npos) << text;
    std::string alertLines = text.substr(exceeded);
    EXPECT_NE(alertLines.find(",path=\"/srv/data\"} 1\n"), std::string::npos) << alertLines;
    EXPECT_NE(alertLines.find(",path=\"/mnt/b/say \\\"cheese\\\"\"} 0\n"), std::string::npos) << alertLines;
    EXPECT_EQ(alertLines.find("/nowhere"), std::string::npos) << alertLines;

    // The JSON holds the same series.
    nlohmann::json json = nlohmann::json::parse(tarnwickAtTheEnd("metrics --json").out);
    std::size_t sampleLines = 0;
    for (std::size_t at = 0; (at = text.find("\ntarnwick_", at)) != std::string::npos; ++at)
        ++sampleLines;
    EXPECT_EQ(json["series_count"], sampleLines);
    EXPECT_GT(sampleLines, 20u);
}

TEST_F(MetricsE2E, AFailedWriteUnderFakedDatesSaysWhyAndChangesNothing)
{
    if (!std::filesystem::exists(fakeTimeLibrary))
        GTEST_SKIP() << "libfaketime is not installed";
    buildHistory();
    m_home.makeFolder("textfiles");
    const std::string folder = m_home / "textfiles";
    ProcessRun written = tarnwickAtTheEnd("metrics --write '" + folder + "'");
    ASSERT_EQ(written.status, 0) << written.err;
    const std::string good = readFile(folder + "/tarnwick.prom");
    ASSERT_GT(good.size(), 2048u);
    EXPECT_NE(good.find("tarnwick_place_change_bytes{path=\"/srv/data\",volume=\"vol-a\",period=\"week\"} 140000000\n"), std::string::npos) << good;

    // A file size limit of 1 KB cuts the write short, as a full disk would.
    ProcessRun limited = tarnwickAtTheEnd("metrics --write '" + folder + "'", "prlimit --fsize=1024 --");
    EXPECT_EQ(limited.status, 1);
    EXPECT_NE(limited.err.find("Tarnwick couldn't write the metrics into " + folder + ": File too large."), std::string::npos) << limited.err;
    EXPECT_EQ(readFile(folder + "/tarnwick.prom"), good);
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder), {}), 1);

    // The setting still names the folder that worked.
    EXPECT_EQ(UserDefaults(m_home / "config/tarnwick/defaults.json").value("MetricsTextfileDirectory"), folder);
}

// The app writes tarnwick.prom after a scan; a real node_exporter, started on a loopback port
// with its textfile collector on that folder, serves the series.
TEST_F(MetricsE2E, NodeExporterServesTheSeriesTheAppWritesAfterAScan)
{
    const std::string exporter = "/usr/bin/prometheus-node-exporter";
    if (!std::filesystem::exists(exporter))
        GTEST_SKIP() << "prometheus-node-exporter is not installed";
    m_place.makeFile("served/big.bin", 25'000'000);
    m_home.makeFolder("textfiles");
    const std::string folder = m_home / "textfiles";
    ASSERT_EQ(tarnwick("metrics --write '" + folder + "'").status, 0);
    std::filesystem::remove(folder + "/tarnwick.prom");

    ASSERT_EQ(tarnwick("scan '" + m_place.path() + "'").status, 0);
    ASSERT_EQ(tarnwick("wait --timeout 60").status, 0);
    const std::string sizeLine = "tarnwick_place_size_bytes{path=\"" + m_place.path() + "\"";
    ASSERT_TRUE(eventually([&] { return readFile(folder + "/tarnwick.prom").find(sizeLine) != std::string::npos; }))
        << readFile(folder + "/tarnwick.prom");

    const int port = freeLoopbackPort();
    const std::string listen = "--web.listen-address=127.0.0.1:" + std::to_string(port);
    const std::string directory = "--collector.textfile.directory=" + folder;
    pid_t pid = ::fork();
    ASSERT_GE(pid, 0);
    if (pid == 0) {
        int null = ::open("/dev/null", O_WRONLY);
        ::dup2(null, STDOUT_FILENO);
        ::dup2(null, STDERR_FILENO);
        ::execl(exporter.c_str(), exporter.c_str(), listen.c_str(), "--collector.disable-defaults", "--collector.textfile", directory.c_str(),
            static_cast<char*>(nullptr));
        ::_exit(127);
    }
    std::string response;
    eventually([&] { return !(response = httpGet(port, "/metrics")).empty(); });
    ::kill(pid, SIGTERM);
    int status = 0;
    ::waitpid(pid, &status, 0);

    ASSERT_TRUE(response.starts_with("HTTP/1.0 200") || response.starts_with("HTTP/1.1 200")) << response.substr(0, 200);
    EXPECT_NE(response.find(sizeLine), std::string::npos) << response;
    EXPECT_NE(response.find("tarnwick_place_snapshot_timestamp_seconds{"), std::string::npos) << response;
    // The collector read the file without an error.
    EXPECT_NE(response.find("node_textfile_scrape_error 0"), std::string::npos) << response;
}

// The file outlives the app, across reboots too: a starting app writes it again at once, so
// that the alerts' readings in it are current before any scan.
TEST_F(MetricsE2E, AStartingAppWritesTheFileBeforeAnyScan)
{
    m_home.makeFolder("textfiles");
    const std::string folder = m_home / "textfiles";
    ASSERT_EQ(tarnwick("metrics --write '" + folder + "'").status, 0);
    std::filesystem::remove(folder + "/tarnwick.prom");
    // A disk's alert is measured on the spot, with no snapshot.
    ASSERT_EQ(tarnwick("add-alert / --fuller-than 99").status, 0);

    ASSERT_EQ(tarnwick("wait --timeout 1").status, 0);
    EXPECT_TRUE(eventually([&] { return readFile(folder + "/tarnwick.prom").find("tarnwick_alert_exceeded{") != std::string::npos; }))
        << readFile(folder + "/tarnwick.prom");
}

TEST(MetricsRules, PromtoolAcceptsTheExampleRules)
{
    if (::system("command -v promtool >/dev/null") != 0)
        GTEST_SKIP() << "promtool is not installed";
    EXPECT_EQ(::system("promtool check rules " TARNWICK_SOURCE_DIR "/dist/prometheus/tarnwick.rules.yml >/dev/null"), 0);
}
