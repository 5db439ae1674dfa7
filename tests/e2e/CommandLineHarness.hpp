#pragma once

#include "Support/DiskUsage.hpp"
#include "Support/TempFolder.hpp"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <array>
#include <csignal>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <functional>
#include <string>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace tarnwick::fixtures {

struct ProcessRun {
    int status = -1;
    std::string out;
    std::string err;
};

// Runs a shell command line; its standard error goes through errFile.
inline ProcessRun runCommand(const std::string& command, const std::string& errFile)
{
    ProcessRun run;
    std::string line = command + " 2>'" + errFile + "'";
    FILE* pipe = popen(line.c_str(), "r");
    std::array<char, 4096> buffer;
    while (std::size_t n = fread(buffer.data(), 1, buffer.size(), pipe))
        run.out.append(buffer.data(), n);
    int status = pclose(pipe);
    run.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    run.err = readFile(errFile);
    return run;
}

// Asks every tenth of a second, for at most `seconds`, until condition holds.
inline bool eventually(const std::function<bool()>& condition, int seconds = 30)
{
    for (int i = 0; i < seconds * 10; ++i, usleep(100'000)) {
        if (condition())
            return true;
    }
    return condition();
}

// Drives the built executable as a user would, in a private home whose data and settings
// folders are inside a temporary folder, and ends every app it started.
class CommandLineE2E : public ::testing::Test {
protected:
    void SetUp() override
    {
        m_home.makeFolder("home");
        m_environment = "HOME='" + (m_home / "home") + "' XDG_DATA_HOME='" + (m_home / "data") + "' XDG_CONFIG_HOME='" + (m_home / "config")
            + "' XDG_CACHE_HOME='" + (m_home / "cache") + "' XDG_RUNTIME_DIR='" + (m_home / "run") + "' DISPLAY= WAYLAND_DISPLAY=";
    }
    void TearDown() override { stopApps(); }

    // launcher runs the tool (and so the app it starts), e.g. "prlimit --nofile=128:128 --".
    ProcessRun tarnwick(const std::string& arguments, const std::string& launcher = "")
    {
        return runCommand("env " + m_environment + " " + launcher + " timeout 120 " + TARNWICK_EXECUTABLE + " " + arguments, m_home / "stderr.txt");
    }

    nlohmann::json json(const std::string& arguments)
    {
        ProcessRun run = tarnwick(arguments + " --json");
        EXPECT_LT(run.out.size(), 8192u);
        return nlohmann::json::parse(run.out);
    }

    // The apps of this test: this executable started as the app (no words, or a first word
    // starting with "-"), with an environment that names this test's home folder.
    std::vector<pid_t> appProcesses() { return appProcesses(TARNWICK_EXECUTABLE); }

    // The same for a copy of the executable at path, including one whose file has since been
    // replaced.
    std::vector<pid_t> appProcesses(const std::string& path)
    {
        std::vector<pid_t> pids;
        std::string marker = "HOME=" + (m_home / "home") + '\0';
        std::error_code error;
        std::filesystem::path executable = std::filesystem::canonical(path, error);
        for (const auto& entry : std::filesystem::directory_iterator("/proc")) {
            std::string name = entry.path().filename();
            if (name.find_first_not_of("0123456789") != std::string::npos)
                continue;
            std::filesystem::path running = std::filesystem::read_symlink(entry.path() / "exe", error);
            if (error || (running != executable && running.string() != executable.string() + " (deleted)"))
                continue;
            std::ifstream environ(entry.path() / "environ");
            std::string text((std::istreambuf_iterator<char>(environ)), {});
            std::ifstream cmdline(entry.path() / "cmdline");
            std::string words((std::istreambuf_iterator<char>(cmdline)), {});
            std::size_t firstEnd = words.find('\0');
            std::string firstWord = firstEnd == std::string::npos ? std::string() : words.substr(firstEnd + 1, words.find('\0', firstEnd + 1) - firstEnd - 1);
            if (text.find(marker) != std::string::npos && (firstWord.empty() || firstWord.starts_with("-")))
                pids.push_back(std::stoi(name));
        }
        return pids;
    }

    void stopApps() { stopApps(TARNWICK_EXECUTABLE); }
    void stopApps(const std::string& path)
    {
        for (pid_t pid : appProcesses(path))
            kill(pid, SIGTERM);
        for (int i = 0; i < 50 && !appProcesses(path).empty(); ++i)
            usleep(100'000);
        for (pid_t pid : appProcesses(path))
            kill(pid, SIGKILL);
    }

    std::string socketPath() { return m_home / "data/tarnwick/Tarnwick.sock"; }

    TempFolder m_home;
    std::string m_environment;
};

struct Totals {
    std::int64_t allocated = 0;
    std::int64_t logical = 0;
};

// As du counts: the folder's own blocks and those of every folder below, every file once
// however many names it has; logical sizes are the files' contents.
inline Totals duTotals(const std::string& folder)
{
    return { duTotal(folder), duApparentTotal(folder) - folderSizes(folder) };
}

}
