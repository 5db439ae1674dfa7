#include "Agent/AgentChannel.hpp"
#include "Agent/AgentListener.hpp"
#include "Platform/AppLauncher.hpp"

#include "Agent/DataHome.hpp"

#include <gtest/gtest.h>

#include <chrono>
#include <fstream>
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

struct Starts {
    int count = 0;
};

AgentChannel::RunSetup setupWith(std::function<bool(const std::string&)> startApp)
{
    return { AgentChannel::socketPath(), "/usr/bin/tarnwick", std::move(startApp), fromSnapshots,
        AgentChannel::Retry { 10, std::chrono::milliseconds(20) } };
}

std::unique_ptr<AgentListener> startApp()
{
    return AgentListener::start({ AgentChannel::socketPath(), *CodeIdentity::own(), fromApp, {} });
}

}

TEST(AgentChannel, RunningAppAnswersEveryCommand)
{
    fixtures::DataHome home;
    auto app = startApp();
    ASSERT_NE(app, nullptr);
    Starts starts;
    auto setup = setupWith([&](const std::string&) { return ++starts.count, true; });
    EXPECT_EQ(AgentChannel::run(Request { "summary", {}, false }, setup), fromApp(Request { "summary", {}, false }));
    EXPECT_EQ(AgentChannel::run(Request { "changes", {}, false }, setup), fromApp(Request { "changes", {}, false }));
    EXPECT_EQ(starts.count, 0);
}

TEST(AgentChannel, WithoutTheAppSnapshotCommandsAnswerThemselves)
{
    fixtures::DataHome home;
    Starts starts;
    auto setup = setupWith([&](const std::string&) { return ++starts.count, true; });
    for (std::string_view command : { "status", "disks", "changes", "history", "types", "alerts", "add-alert", "remove-alert" })
        EXPECT_EQ(AgentChannel::run(Request { std::string(command), {}, false }, setup),
            fromSnapshots(Request { std::string(command), {}, false }));
    EXPECT_EQ(starts.count, 0);
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

TEST(AgentChannel, AppThatDoesNotStartOrAnswerGivesAppNotRunning)
{
    fixtures::DataHome home;
    Starts starts;
    for (std::string_view command : { "scan", "wait", "summary", "find", "show", "rescan" }) {
        AgentResult failed = AgentChannel::run(Request { std::string(command), {}, true }, setupWith([&](const std::string&) {
            ++starts.count;
            return false;
        }));
        EXPECT_EQ(failed, notRunning) << command;
        EXPECT_EQ(failed.exitStatus(), 4);
    }
    EXPECT_EQ(starts.count, 6);
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
        // and the environment it got.
        file << "#!/bin/sh\n"
                "output=$(readlink /proc/$$/fd/1)\n"
                "{ echo \"$1\"; echo \"$(cut -d' ' -f6 /proc/$$/stat) $$\"; echo \"$output\"; echo \"$TARNWICK_MARK\"; }"
                " > \"$0.tmp\"\n"
                "mv \"$0.tmp\" \"" << marker << "\"\n";
    }
    ASSERT_EQ(chmod(script.c_str(), 0755), 0);
    setenv("TARNWICK_MARK", "inherited", 1);
    ASSERT_TRUE(AppLauncher::startInBackground(script));
    unsetenv("TARNWICK_MARK");

    for (int wait = 0; wait < 500 && access(marker.c_str(), F_OK) != 0; ++wait)
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    std::ifstream file(marker);
    std::string word, session, process, output, mark;
    std::getline(file, word);
    file >> session >> process;
    file.ignore();
    std::getline(file, output);
    std::getline(file, mark);
    EXPECT_EQ(word, "--background");
    EXPECT_FALSE(session.empty());
    EXPECT_EQ(session, process); // a session of its own
    EXPECT_EQ(output, "/dev/null");
    EXPECT_EQ(mark, "inherited");

    EXPECT_FALSE(AppLauncher::startInBackground(folder / "missing"));
}
