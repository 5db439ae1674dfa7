#include "e2e/CommandLineHarness.hpp"

#include <chrono>
#include <thread>

using tarnwick::fixtures::CommandLineE2E;
using tarnwick::fixtures::ProcessRun;
using tarnwick::fixtures::TempFolder;

namespace {

using Clock = std::chrono::steady_clock;

double secondsSince(Clock::time_point start)
{
    return std::chrono::duration<double>(Clock::now() - start).count();
}

}

class SingleAppE2E : public CommandLineE2E {
protected:
    // A shell line run in this test's environment, ended after limit seconds at the latest.
    ProcessRun shell(const std::string& line, int limitSeconds = 30)
    {
        std::string quoted = "'" + line + "'";
        return tarnwick::fixtures::runCommand("env " + m_environment + " timeout " + std::to_string(limitSeconds) + " sh -c " + quoted, m_home / "stderr.txt");
    }

    std::string executable() const { return TARNWICK_EXECUTABLE; }

    // Waits until the apps have settled (the ones that lost have ended) and the app answers.
    void waitForOneAnsweringApp()
    {
        tarnwick::fixtures::eventually([&] { return appProcesses().size() == 1 && tarnwick("status").status == 0; }, 5);
    }
};

TEST_F(SingleAppE2E, TwoAppsStartedAtOnceLeaveOne)
{
    // Two started as the tool starts them, one as a user does; all at the same moment.
    // None is waited for: the one that wins runs on.
    std::string app = executable() + " >/dev/null 2>&1 </dev/null";
    shell(executable() + " --background >/dev/null 2>&1 & " + executable() + " --background >/dev/null 2>&1 & " + app + " &", 20);
    waitForOneAnsweringApp();
    ASSERT_EQ(appProcesses().size(), 1u);
    // The user's start found an app running and said so instead of becoming a second one;
    // or it is the one app, and a --background start found it.
    nlohmann::json status = json("status");
    EXPECT_EQ(status["running"], true);
    std::this_thread::sleep_for(std::chrono::milliseconds(500));
    EXPECT_EQ(appProcesses().size(), 1u);
    EXPECT_TRUE(std::filesystem::exists(socketPath()));
}

TEST_F(SingleAppE2E, TwentyToolsWithoutAnAppStartOne)
{
    auto start = Clock::now();
    ProcessRun run = shell("seq 1 20 | xargs -P 20 -I{} " + executable() + " summary --json", 60);
    EXPECT_LT(secondsSince(start), 30);
    // Every one of them got the app's answer: nothing is scanned yet.
    std::size_t answers = 0;
    for (std::size_t at = run.out.find("NOT_SCANNED"); at != std::string::npos; at = run.out.find("NOT_SCANNED", at + 1))
        ++answers;
    EXPECT_EQ(answers, 20u) << run.out;
    std::this_thread::sleep_for(std::chrono::milliseconds(500));
    EXPECT_EQ(appProcesses().size(), 1u);
}

TEST_F(SingleAppE2E, OpenWhileAnAppScansHandsThePlaceToIt)
{
    TempFolder place;
    place.makeFile("inside/file.bin", 20'000);
    // A scan large enough to be running still when --open arrives.
    ASSERT_EQ(tarnwick("scan /usr").status, 0);
    std::vector<pid_t> apps = appProcesses();
    ASSERT_EQ(apps.size(), 1u);

    auto start = Clock::now();
    ProcessRun opened = shell(executable() + " --open " + place.path(), 10);
    EXPECT_LT(secondsSince(start), 2.0);
    EXPECT_EQ(opened.status, 0) << opened.err;
    EXPECT_NE(opened.out.find(place.path()), std::string::npos) << opened.out;

    EXPECT_EQ(appProcesses(), apps);
    ASSERT_EQ(tarnwick("wait --timeout 60").status, 0);
    nlohmann::json status = json("status");
    EXPECT_EQ(status["running"], true);
    EXPECT_EQ(status["scanned_path"], place.path());
    EXPECT_EQ(appProcesses(), apps);
    EXPECT_TRUE(std::filesystem::exists(socketPath()));

    // A plain start while it runs says so and ends.
    start = Clock::now();
    ProcessRun again = shell(executable(), 10);
    EXPECT_LT(secondsSince(start), 2.0);
    EXPECT_EQ(again.status, 0) << again.err;
    EXPECT_NE(again.out.find("already running"), std::string::npos) << again.out;
    EXPECT_EQ(appProcesses(), apps);
}

TEST_F(SingleAppE2E, AnAppStartedByTheToolKeepsNoneOfItsDescriptors)
{
    TempFolder place;
    place.makeFile("a.txt", 100);
    auto start = Clock::now();
    // cat ends when every writer of its pipe has closed it; fd 7 is one more writer.
    ProcessRun run = shell(executable() + " scan " + place.path() + " 7>&1 | cat", 20);
    EXPECT_LT(secondsSince(start), 10);
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_NE(run.out.find("Scanning"), std::string::npos) << run.out;
    EXPECT_EQ(appProcesses().size(), 1u);
}

TEST_F(SingleAppE2E, AfterAnUpgradeTheNewToolStillReachesTheRunningApp)
{
    TempFolder installed;
    TempFolder place;
    place.makeFile("a.txt", 100);
    const std::string tool = installed / "tarnwick";
    std::filesystem::copy_file(executable(), tool);
    ASSERT_EQ(shell(tool + " scan " + place.path()).status, 0);
    std::vector<pid_t> apps = appProcesses(tool);
    ASSERT_EQ(apps.size(), 1u);
    // A package manager puts the new file in place by renaming it over the old one.
    std::filesystem::copy_file(executable(), tool + ".new");
    std::filesystem::rename(tool + ".new", tool);

    ProcessRun status = shell(tool + " status --json", 30);
    EXPECT_EQ(status.status, 0) << status.err;
    EXPECT_NE(status.out.find("\"running\": true"), std::string::npos) << status.out;
    EXPECT_EQ(appProcesses(tool), apps);
    stopApps(tool);
}
