#include "e2e/CommandLineHarness.hpp"

#include <spawn.h>

extern char** environ;

namespace tarnwick {
namespace {

using fixtures::ProcessRun;

// The built executable as the user runs it: the app with its window (rendered offscreen)
// or without one, and the command line talking to it.
class WindowedAppTest : public fixtures::CommandLineE2E {
protected:
    void TearDown() override
    {
        if (m_app > 0) {
            kill(m_app, SIGKILL);
            waitpid(m_app, nullptr, 0);
        }
        CommandLineE2E::TearDown();
    }

    void startApp(bool window)
    {
        m_home.makeFile("home/Movies/trip.mp4", 2'000'000);
        m_home.makeFile("home/notes.txt", 10'000);
        // Started as a user starts it, with no words: this process becomes the app (the shell
        // and env replace themselves with it).
        std::string command = "exec env " + m_environment + " QT_QPA_PLATFORM=" + (window ? "offscreen" : "") + " '" + TARNWICK_EXECUTABLE
            + "' >/dev/null 2>&1";
        const char* argv[] = { "/bin/sh", "-c", command.c_str(), nullptr };
        ASSERT_EQ(posix_spawn(&m_app, "/bin/sh", nullptr, nullptr, const_cast<char**>(argv), environ), 0);
        // Once it listens, a second start hands the place to it, as `make run` does.
        ASSERT_TRUE(fixtures::eventually([&] { return status().value("running", false); }));
        ProcessRun opened = tarnwick("--open '" + home() + "'");
        ASSERT_EQ(opened.status, 0) << opened.err;
        ASSERT_TRUE(fixtures::eventually([&] { return status()["scanned_path"].is_string(); }));
    }

    std::string home() const { return m_home / "home"; }

    nlohmann::json status()
    {
        auto json = nlohmann::json::parse(tarnwick("status --json").out, nullptr, false);
        return json.is_object() ? json : nlohmann::json::object();
    }

    bool loaded(const std::string& library) const
    {
        return fixtures::readFile("/proc/" + std::to_string(m_app) + "/maps").find(library) != std::string::npos;
    }

    int terminate()
    {
        kill(m_app, SIGTERM);
        int status = 0;
        for (int i = 0; i < 100; ++i, usleep(100'000)) {
            if (waitpid(m_app, &status, WNOHANG) == m_app) {
                m_app = 0;
                return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
            }
        }
        return -2;
    }

    pid_t m_app = 0;
};

TEST_F(WindowedAppTest, WithADisplayTheWindowAndTheCommandLineShareTheApp)
{
    startApp(true);
    EXPECT_TRUE(loaded("libqoffscreen")) << "the Qt application runs";
    ProcessRun shown = tarnwick("show '" + home() + "/Movies' --color modified");
    EXPECT_EQ(shown.status, 0) << shown.out << shown.err;
    nlohmann::json shownStatus = json("status");
    EXPECT_EQ(shownStatus["open_folder"], home() + "/Movies");
    EXPECT_EQ(shownStatus["color_mode"], "modified");
    EXPECT_EQ(terminate(), 0);
}

TEST_F(WindowedAppTest, WithoutADisplayTheAppRunsWithoutQt)
{
    startApp(false);
    EXPECT_FALSE(loaded("libqoffscreen"));
    EXPECT_FALSE(loaded("libqxcb"));
    ProcessRun summary = tarnwick("summary");
    EXPECT_EQ(summary.status, 0);
    EXPECT_NE(summary.out.find("Movies"), std::string::npos) << summary.out;
    EXPECT_EQ(terminate(), 0);
}

}
}
