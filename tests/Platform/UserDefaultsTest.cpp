#include "Platform/LoginItem.hpp"
#include "Platform/UserDefaults.hpp"
#include "Support/ScopedEnvironment.hpp"
#include "Support/TempFolder.hpp"

#include <gtest/gtest.h>

#include <cstdlib>
#include <fcntl.h>
#include <fstream>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

using namespace tarnwick;
using nlohmann::json;
using fixtures::readFile;

namespace {

void writeInPlace(const std::string& path, std::string_view text)
{
    int fd = ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
    ASSERT_GE(fd, 0);
    ASSERT_EQ(::write(fd, text.data(), text.size()), static_cast<ssize_t>(text.size()));
    ::close(fd);
}

class UserDefaultsTest : public ::testing::Test {
protected:
    fixtures::TempFolder folder;
    std::string path = folder / "config/tarnwick/defaults.json";
};

}

TEST_F(UserDefaultsTest, MissingFileIsEmptyAndFirstWriteCreatesItsFolder)
{
    UserDefaults defaults(path);
    EXPECT_EQ(defaults.all(), json::object());
    EXPECT_FALSE(defaults.value("DailyScansEnabled"));
    EXPECT_FALSE(defaults.readProblem());

    ASSERT_TRUE(defaults.set("DailyScansEnabled", true));
    struct stat status;
    ASSERT_EQ(::stat(path.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0600u);
    EXPECT_EQ(json::parse(readFile(path)), (json { { "DailyScansEnabled", true } }));
}

TEST_F(UserDefaultsTest, ValuesOfEveryKindReadBackFromAnotherInstance)
{
    const std::pair<std::string, json> cases[] {
        { "Flag", false },
        { "Count", -42 },
        { "Large", 9'223'372'036'854'775'807LL },
        { "Text", "Tarnwick → “quoted”" },
        { "List", json::array({ "b", "a" }) },
        { "Object", { { "z", 1 }, { "a", json::array() } } },
        { "Nothing", nullptr },
    };
    {
        UserDefaults writer(path);
        for (const auto& [key, value] : cases)
            ASSERT_TRUE(writer.set(key, value));
    }
    UserDefaults reader(path);
    for (const auto& [key, value] : cases)
        EXPECT_EQ(reader.value(key), value) << key;

    ASSERT_TRUE(reader.remove("Count"));
    EXPECT_FALSE(reader.value("Count"));
    EXPECT_FALSE(UserDefaults(path).value("Count"));
    // Keys are written sorted, so that the file reads the same however it was changed.
    std::string text = readFile(path);
    EXPECT_LT(text.find("\"Flag\""), text.find("\"Large\""));
    EXPECT_LT(text.find("\"List\""), text.find("\"Nothing\""));
}

TEST_F(UserDefaultsTest, RereadsWhatAnotherWriterChanged)
{
    UserDefaults app(path);
    UserDefaults tool(path);
    ASSERT_TRUE(app.set("MenuBarItemShown", true));
    EXPECT_EQ(tool.value("MenuBarItemShown"), true); // loads the file for the first time
    ASSERT_TRUE(app.set("MenuBarItemShown", false));
    EXPECT_EQ(tool.value("MenuBarItemShown"), false); // replaced by a rename

    // Written in place by something else: a new size, then only a new modification time.
    writeInPlace(path, R"({"MenuBarItemShown": 1})");
    EXPECT_EQ(app.value("MenuBarItemShown"), 1);
    writeInPlace(path, R"({"MenuBarItemShown": 2})");
    timespec times[2] = { { 0, UTIME_OMIT }, { 1'000'000'000, 0 } };
    ASSERT_EQ(::utimensat(AT_FDCWD, path.c_str(), times, 0), 0);
    EXPECT_EQ(app.value("MenuBarItemShown"), 2);

    ASSERT_EQ(::unlink(path.c_str()), 0);
    EXPECT_EQ(app.all(), json::object());
}

TEST_F(UserDefaultsTest, WritersInSeveralProcessesLoseNoChange)
{
    constexpr int processes = 4;
    constexpr int changesEach = 25;
    std::vector<pid_t> children;
    for (int p = 0; p < processes; ++p) {
        pid_t child = ::fork();
        ASSERT_GE(child, 0);
        if (child > 0) {
            children.push_back(child);
            continue;
        }
        UserDefaults defaults(path);
        for (int i = 0; i < changesEach; ++i) {
            auto done = defaults.update([&](json& settings) {
                json& list = settings["Entries"];
                if (!list.is_array())
                    list = json::array();
                list.push_back(p * 1000 + i);
            });
            if (!done)
                ::_exit(1);
        }
        ::_exit(0);
    }
    // By pid: other tests may have left children of their own.
    for (pid_t child : children) {
        int status = 0;
        ASSERT_EQ(::waitpid(child, &status, 0), child);
        EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
    }
    auto entries = UserDefaults(path).value("Entries");
    ASSERT_TRUE(entries);
    EXPECT_EQ(entries->size(), static_cast<std::size_t>(processes * changesEach));
}

TEST_F(UserDefaultsTest, DamagedFileReadsEmptyAndIsKeptAsideOnTheNextWrite)
{
    const std::pair<std::string_view, UserDefaults::ReadProblem::Case> cases[] {
        { "{\"SpaceAlerts\": [", UserDefaults::ReadProblem::Case::notJSON },
        { "\xff\xfe garbage", UserDefaults::ReadProblem::Case::notJSON },
        { "[1, 2]", UserDefaults::ReadProblem::Case::notAnObject },
    };
    folder.makeFolder("config/tarnwick");
    for (const auto& [content, reason] : cases) {
        writeInPlace(path, content);
        UserDefaults defaults(path);
        EXPECT_EQ(defaults.all(), json::object());
        auto problem = defaults.readProblem();
        ASSERT_TRUE(problem);
        EXPECT_EQ(problem->reason, reason);
        EXPECT_NE(problem->text().find(path), std::string::npos);

        ASSERT_TRUE(defaults.set("DailyScansEnabled", true));
        EXPECT_FALSE(defaults.readProblem());
        EXPECT_EQ(readFile(path + ".damaged"), content);
        EXPECT_EQ(UserDefaults(path).all(), (json { { "DailyScansEnabled", true } }));
    }
}

TEST_F(UserDefaultsTest, PlacesThatCannotHoldTheFileGiveErrorsNotCrashes)
{
    folder.makeFolder("config/tarnwick/defaults.json"); // a folder in place of the file
    UserDefaults folderInPlace(path);
    EXPECT_EQ(folderInPlace.all(), json::object());
    EXPECT_EQ(folderInPlace.readProblem().value().reason, UserDefaults::ReadProblem::Case::unreadable);
    EXPECT_EQ(folderInPlace.set("DailyScansEnabled", true).error().reason, UserDefaults::WriteError::Case::notWritten);

    folder.makeFile("file", 10); // a file in place of the folder
    UserDefaults fileInPlace(folder / "file/tarnwick/defaults.json");
    auto written = fileInPlace.set("DailyScansEnabled", true);
    ASSERT_FALSE(written);
    EXPECT_EQ(written.error().reason, UserDefaults::WriteError::Case::folderUnavailable);
    EXPECT_EQ(written.error().text().rfind("Tarnwick couldn't create the folder for its settings, ", 0), 0u);
}

// The settings and the autostart entry both live in the configuration home.
TEST_F(UserDefaultsTest, StandardPathsFollowTheConfigHome)
{
    fixtures::ScopedEnvironment environment { { "XDG_CONFIG_HOME", folder.path() + "/conf/" } };
    EXPECT_EQ(UserDefaults::standardPath(), folder.path() + "/conf/tarnwick/defaults.json");
    EXPECT_EQ(LoginItem::standardPath(), folder.path() + "/conf/autostart/tarnwick.desktop");
    ::setenv("XDG_CONFIG_HOME", "relative/ignored", 1);
    EXPECT_EQ(UserDefaults::standardPath().rfind("/.config/tarnwick/defaults.json"),
        UserDefaults::standardPath().size() - std::string_view("/.config/tarnwick/defaults.json").size());
}
