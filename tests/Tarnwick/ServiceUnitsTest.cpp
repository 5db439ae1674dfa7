#include "Agent/AgentCommands.hpp"
#include "Platform/AppLauncher.hpp"

#include <gtest/gtest.h>

#include <fstream>
#include <map>
#include <sstream>

using namespace tarnwick;

namespace {

// The [Service] keys of a unit file, each with its last value.
std::map<std::string, std::string> serviceKeys(const std::string& path)
{
    std::ifstream file(path);
    std::map<std::string, std::string> keys;
    std::string line;
    std::string section;
    while (std::getline(file, line)) {
        if (line.starts_with("["))
            section = line;
        else if (section == "[Service]" && !line.starts_with("#") && line.find('=') != std::string::npos)
            keys[line.substr(0, line.find('='))] = line.substr(line.find('=') + 1);
    }
    return keys;
}

}

// What the units ask of the executable must be what it does: start as the app, in the
// background, with the daily snapshot, at the priority of the app's own background scans.
TEST(ServiceUnits, StartTheAppHeadlessWithTheDailySnapshotAtBackgroundPriority)
{
    for (std::string unit : { "dist/systemd/tarnwick.service", "dist/systemd/user/tarnwick.service" }) {
        auto keys = serviceKeys(TARNWICK_SOURCE_DIR "/" + unit);
        ASSERT_TRUE(keys.contains("ExecStart")) << unit;
        std::istringstream line(keys["ExecStart"]);
        std::vector<std::string> words;
        for (std::string word; line >> word;)
            words.push_back(word);
        ASSERT_FALSE(words.empty()) << unit;
        EXPECT_EQ(words.front(), "/usr/bin/tarnwick") << unit;
        words.erase(words.begin());
        EXPECT_EQ(words, (std::vector<std::string> { AppLauncher::backgroundWord, AppLauncher::dailySnapshotWord })) << unit;
        EXPECT_EQ(AgentCommands::startMode(words), AgentCommands::StartMode::app) << unit;
        EXPECT_EQ(keys["Nice"], "10") << unit;
        EXPECT_EQ(keys["IOSchedulingClass"], "idle") << unit;
        EXPECT_EQ(keys["Type"], "simple") << unit;
    }
}
