#include "Support/TempFolder.hpp"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include <fcntl.h>
#include <signal.h>
#include <sys/stat.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <fstream>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

extern char** environ;

namespace tarnwick {
namespace {

// The built executable as the user runs it: the app with its window (rendered offscreen)
// or without one, and the command line talking to it.
class WindowedAppTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        home.makeFile("Movies/trip.mp4", 2'000'000);
        home.makeFile("notes.txt", 10'000);
        private_.makeFolder("data");
        private_.makeFolder("config");
        private_.makeFolder("run");
        chmod((private_ / "run").c_str(), 0700);
    }

    void TearDown() override
    {
        if (m_app > 0) {
            kill(m_app, SIGKILL);
            waitpid(m_app, nullptr, 0);
        }
    }

    std::vector<std::string> environment(bool window) const
    {
        std::vector<std::string> variables {
            "HOME=" + home.path(),
            "XDG_DATA_HOME=" + (private_ / "data"),
            "XDG_CONFIG_HOME=" + (private_ / "config"),
            "XDG_CACHE_HOME=" + (private_ / "cache"),
            "XDG_RUNTIME_DIR=" + (private_ / "run"),
            "PATH=/usr/bin:/bin",
            "DISPLAY=",
            "WAYLAND_DISPLAY=",
        };
        if (window)
            variables.push_back("QT_QPA_PLATFORM=offscreen");
        return variables;
    }

    void startApp(bool window)
    {
        std::vector<std::string> variables = environment(window);
        std::vector<char*> envp;
        for (std::string& variable : variables)
            envp.push_back(variable.data());
        envp.push_back(nullptr);
        // Started as a user starts it, with no words: this process becomes the app.
        std::string program = TARNWICK_EXECUTABLE;
        char* argv[] = { program.data(), nullptr };
        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
        posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
        ASSERT_EQ(posix_spawn(&m_app, program.c_str(), &actions, nullptr, argv, envp.data()), 0);
        posix_spawn_file_actions_destroy(&actions);
        // Once it listens, a second start hands the place to it, as `make run` does.
        ASSERT_TRUE(waitUntil([](const nlohmann::json& status) { return status.value("running", false); }));
        auto [opened, status] = tool("--open '" + home.path() + "'");
        ASSERT_EQ(status, 0) << opened;
    }

    // Runs the command line with the app's environment; its output and exit status.
    std::pair<std::string, int> tool(const std::string& arguments) const
    {
        std::string command = "env -i";
        for (const std::string& variable : environment(false))
            command += " '" + variable + "'";
        command += std::string(" '") + TARNWICK_EXECUTABLE + "' " + arguments + " 2>&1";
        std::FILE* pipe = popen(command.c_str(), "r");
        std::string output;
        char buffer[4096];
        while (std::size_t read = std::fread(buffer, 1, sizeof buffer, pipe))
            output.append(buffer, read);
        int status = pclose(pipe);
        return { output, WIFEXITED(status) ? WEXITSTATUS(status) : -1 };
    }

    template <typename Condition>
    bool waitUntil(Condition holds) const
    {
        auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(30);
        while (std::chrono::steady_clock::now() < deadline) {
            auto [output, status] = tool("status --json");
            if (status == 0) {
                auto json = nlohmann::json::parse(output, nullptr, false);
                if (json.is_object() && holds(json))
                    return true;
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(100));
        }
        return false;
    }

    bool waitForScan() const
    {
        return waitUntil([](const nlohmann::json& status) { return status.value("running", false) && status["scanned_path"].is_string(); });
    }

    bool loaded(const std::string& library) const
    {
        std::ifstream maps("/proc/" + std::to_string(m_app) + "/maps");
        std::stringstream text;
        text << maps.rdbuf();
        return text.str().find(library) != std::string::npos;
    }

    int terminate()
    {
        kill(m_app, SIGTERM);
        int status = 0;
        for (int i = 0; i < 100; ++i) {
            if (waitpid(m_app, &status, WNOHANG) == m_app) {
                m_app = 0;
                return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(100));
        }
        return -2;
    }

    fixtures::TempFolder home;
    fixtures::TempFolder private_;
    pid_t m_app = 0;
};

TEST_F(WindowedAppTest, WithADisplayTheWindowAndTheCommandLineShareTheApp)
{
    startApp(true);
    ASSERT_TRUE(waitForScan());
    EXPECT_TRUE(loaded("libqoffscreen")) << "the Qt application runs";
    auto [shown, status] = tool("show '" + (home / "Movies") + "' --color modified");
    EXPECT_EQ(status, 0) << shown;
    auto [answer, statusAgain] = tool("status --json");
    ASSERT_EQ(statusAgain, 0);
    auto json = nlohmann::json::parse(answer);
    EXPECT_EQ(json["open_folder"], home / "Movies");
    EXPECT_EQ(json["color_mode"], "modified");
    EXPECT_EQ(terminate(), 0);
}

TEST_F(WindowedAppTest, WithoutADisplayTheAppRunsWithoutQt)
{
    startApp(false);
    ASSERT_TRUE(waitForScan());
    EXPECT_FALSE(loaded("libqoffscreen"));
    EXPECT_FALSE(loaded("libqxcb"));
    auto [summary, status] = tool("summary");
    EXPECT_EQ(status, 0);
    EXPECT_NE(summary.find("Movies"), std::string::npos) << summary;
    EXPECT_EQ(terminate(), 0);
}

}
}
