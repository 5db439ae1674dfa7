#include "Agent/AgentChannel.hpp"
#include "Agent/AgentListener.hpp"
#include "Platform/AppLauncher.hpp"

#include "Agent/DataHome.hpp"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <fcntl.h>
#include <fstream>
#include <mutex>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

using namespace tarnwick;
using AgentCommands::Request;

namespace {

const AgentResult notRunning = AgentResult::failure("APP_NOT_RUNNING", "Tarnwick didn't start. Ask the user to open it, then try again.");

AgentResult fromApp(const Request& request)
{
    return AgentResult::success("app answered " + request.command);
}

AgentResult fromSnapshots(const Request& request)
{
    return AgentResult::success("snapshots answered " + request.command);
}

AgentChannel::RunSetup setupWith(std::function<bool(const std::string&)> startApp)
{
    return { AgentChannel::socketPath(), AgentChannel::startLockPath(), "/usr/bin/tarnwick", std::move(startApp), fromSnapshots,
        AgentChannel::Retry { 10, std::chrono::milliseconds(20) } };
}

std::unique_ptr<AgentListener> startApp()
{
    return AgentListener::start({ AgentChannel::socketPath(), *CodeIdentity::own(), fromApp, {} });
}

}

// Without the app the commands of the snapshots answer themselves; a running app answers every
// command. Neither starts an app.
TEST(AgentChannel, SnapshotCommandsAnswerThemselvesUntilAnAppRuns)
{
    fixtures::DataHome home;
    int starts = 0;
    auto setup = setupWith([&](const std::string&) { return ++starts, true; });
    auto run = [&](std::string_view command) { return AgentChannel::run(Request { std::string(command), {}, false }, setup); };
    for (std::string_view command : { "status", "disks", "changes", "history", "types", "alerts", "add-alert", "remove-alert" })
        EXPECT_EQ(run(command), fromSnapshots(Request { std::string(command), {}, false }));
    auto app = startApp();
    ASSERT_NE(app, nullptr);
    for (std::string_view command : { "summary", "changes" })
        EXPECT_EQ(run(command), fromApp(Request { std::string(command), {}, false }));
    EXPECT_EQ(starts, 0);
}

TEST(AgentChannel, ScanCommandsStartTheAppAndRetry)
{
    fixtures::DataHome home;
    std::unique_ptr<AgentListener> app;
    std::thread launching;
    std::string startedExecutable;
    // The app comes up a little after the start succeeded, as a real one does.
    auto setup = setupWith([&](const std::string& executable) {
        startedExecutable = executable;
        launching = std::thread([&] {
            std::this_thread::sleep_for(std::chrono::milliseconds(50));
            app = startApp();
        });
        return true;
    });
    setup.retry = { 75, std::chrono::milliseconds(200) };
    EXPECT_EQ(AgentChannel::run(Request { "summary", {}, false }, setup), fromApp(Request { "summary", {}, false }));
    launching.join();
    EXPECT_EQ(startedExecutable, "/usr/bin/tarnwick");
}

TEST(AgentChannel, ToolsRunAtOnceStartOneApp)
{
    fixtures::DataHome home;
    std::mutex mutex;
    std::unique_ptr<AgentListener> app;
    std::thread launching;
    int starts = 0;
    // Each start comes up a while later, as a real app does; a second one would take the
    // socket over and count again.
    auto setup = setupWith([&](const std::string&) {
        std::lock_guard guard(mutex);
        ++starts;
        launching = std::thread([&] {
            std::this_thread::sleep_for(std::chrono::milliseconds(300));
            std::lock_guard guard(mutex);
            app = startApp();
        });
        return true;
    });
    setup.retry = { 75, std::chrono::milliseconds(50) };
    std::vector<std::thread> tools;
    std::atomic<int> answered = 0;
    for (int i = 0; i < 12; ++i) {
        tools.emplace_back([&] {
            if (AgentChannel::run(Request { "summary", {}, false }, setup) == fromApp(Request { "summary", {}, false }))
                ++answered;
        });
    }
    for (std::thread& tool : tools)
        tool.join();
    launching.join();
    EXPECT_EQ(starts, 1);
    EXPECT_EQ(answered, 12);
}

TEST(AgentChannel, AppThatDoesNotStartOrAnswerGivesAppNotRunning)
{
    fixtures::DataHome home;
    int starts = 0;
    for (std::string_view command : { "scan", "wait", "summary", "find", "show", "rescan" }) {
        AgentResult failed = AgentChannel::run(Request { std::string(command), {}, true }, setupWith([&](const std::string&) { return ++starts, false; }));
        EXPECT_EQ(failed, notRunning) << command;
        EXPECT_EQ(failed.exitStatus(), 4);
    }
    EXPECT_EQ(starts, 6);
    // Started, but it never listens.
    EXPECT_EQ(AgentChannel::run(Request { "summary", {}, false }, setupWith([](const std::string&) { return true; })), notRunning);
}

TEST(AppLauncher, StartsDetachedWithTheBackgroundWord)
{
    fixtures::TempFolder folder;
    const std::string marker = folder / "started";
    const std::string script = folder / "app.sh";
    {
        std::ofstream file(script);
        // Writes its first word, its session and own process number, where its output goes,
        // the environment it got, its folder and its open descriptors.
        file << "#!/bin/sh\n"
                "output=$(readlink /proc/$$/fd/1)\n"
                "descriptors=$(ls /proc/$$/fd | sort -n | tr '\\n' ' ')\n"
                "{ echo \"$1\"; echo \"$(cut -d' ' -f6 /proc/$$/stat) $$\"; echo \"$output\"; echo \"$TARNWICK_MARK\"; pwd;"
                " echo \"$descriptors\"; } > \"$0.tmp\"\n"
                "mv \"$0.tmp\" \"" << marker << "\"\n";
    }
    ASSERT_EQ(chmod(script.c_str(), 0755), 0);
    setenv("TARNWICK_MARK", "inherited", 1);
    // A descriptor the caller lets its children inherit, as a shell's `7>&1` does.
    // A number of its own, apart from those the script's shell opens for itself.
    int opened = open("/dev/null", O_RDONLY);
    int inherited = fcntl(opened, F_DUPFD, 57);
    close(opened);
    ASSERT_GE(inherited, 57);
    ASSERT_TRUE(AppLauncher::startInBackground(script));
    close(inherited);
    unsetenv("TARNWICK_MARK");

    for (int wait = 0; wait < 500 && access(marker.c_str(), F_OK) != 0; ++wait)
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    std::ifstream file(marker);
    std::string word, session, process, output, mark, folderName, descriptors;
    std::getline(file, word);
    file >> session >> process;
    file.ignore();
    std::getline(file, output);
    std::getline(file, mark);
    std::getline(file, folderName);
    std::getline(file, descriptors);
    EXPECT_EQ(word, "--background");
    EXPECT_FALSE(session.empty());
    EXPECT_EQ(session, process); // a session of its own
    EXPECT_EQ(output, "/dev/null");
    EXPECT_EQ(mark, "inherited");
    EXPECT_EQ(folderName, "/");
    EXPECT_EQ(descriptors.substr(0, 6), "0 1 2 ") << descriptors;
    EXPECT_EQ(descriptors.find(" " + std::to_string(inherited) + " "), std::string::npos) << descriptors;

    EXPECT_FALSE(AppLauncher::startInBackground(folder / "missing"));
}
