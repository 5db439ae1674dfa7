#include "AgentTools.hpp"

#include "AppModel.hpp"
#include "MainExecutor.hpp"
#include "Scanning/ScopeResolver.hpp"

#include "Support/TempFolder.hpp"

#include <gtest/gtest.h>

#include <condition_variable>
#include <mutex>
#include <thread>

using namespace tarnwick;
using AgentCommands::Request;

namespace {

// A first scan held at one folder until the test lets it go, so that the commands meet it
// running, with a preview of what it has found so far.
class FirstScanAnswersTest : public ::testing::TestWithParam<bool> {
protected:
    void SetUp() override
    {
        m_place.makeFile("big/video.mov", 300'000);
        m_place.makeFile("big/notes.txt", 2'000);
        m_place.makeFile("held/later.txt", 1'000);
        m_earlier.makeFile("old.txt", 1'000);
        m_loop = std::thread([this] { m_executor.run(); });
    }
    void TearDown() override
    {
        release();
        m_executor.stop();
        m_loop.join();
    }

    void hold(const std::string& path)
    {
        if (!path.ends_with("/held"))
            return;
        std::unique_lock lock(m_mutex);
        m_released.wait(lock, [&] { return m_isReleased; });
    }
    void release()
    {
        std::scoped_lock lock(m_mutex);
        m_isReleased = true;
        m_released.notify_all();
    }

    AgentResult ask(std::string command, std::map<std::string, std::string> arguments = {})
    {
        return m_tools.handle(Request { std::move(command), std::move(arguments), false });
    }
    template <class Condition>
    bool waitFor(Condition condition)
    {
        for (int i = 0; i < 500; ++i) {
            if (m_executor.runAndWait<bool>(condition))
                return true;
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        }
        return false;
    }

    fixtures::TempFolder m_place;
    fixtures::TempFolder m_earlier;
    std::mutex m_mutex;
    std::condition_variable m_released;
    bool m_isReleased = false;
    MainExecutor m_executor;
    AppModel m_model { m_executor, FileScanner::Hooks { [this](const std::string& path) { hold(path); }, {} } };
    AgentTools m_tools { m_model, m_executor };
    std::thread m_loop;
};

}

// During a first scan of a place summary and find answer from what it has found so far,
// marked as lower bounds, as the window shows it, whether or not another place's result was
// on screen before; show puts the place on the map once the result replaces the preview.
TEST_P(FirstScanAnswersTest, CommandsAnswerFromThePreviewAndShowWaitsForTheResult)
{
    if (GetParam()) {
        ASSERT_FALSE(ask("scan", { { "path", m_earlier.path() } }).isError);
        ASSERT_TRUE(waitFor([&] { return m_model.result().has_value() && !m_model.runningScan(); }));
    }
    ASSERT_FALSE(ask("scan", { { "path", m_place.path() } }).isError);
    ASSERT_TRUE(waitFor([&] { return m_model.runningScan() && m_model.runningScan()->scanner->progress()->latestPreview() != nullptr; }));

    AgentResult summary = ask("summary");
    ASSERT_FALSE(summary.isError) << summary.text;
    EXPECT_NE(summary.text.find("The scan is still running"), std::string::npos) << summary.text;
    EXPECT_NE(summary.text.find("≥"), std::string::npos) << summary.text;
    AgentResult find = ask("find", { { "path", m_place.path() + "/big" } });
    ASSERT_FALSE(find.isError) << find.text;
    EXPECT_NE(find.text.find("video.mov"), std::string::npos) << find.text;

    AgentResult notYet = ask("summary", { { "path", m_place.path() + "/held/later.txt" } });
    EXPECT_EQ(notYet.errorCode(), std::string("NOT_SCANNED")) << notYet.text;
    EXPECT_NE(notYet.text.find("found so far"), std::string::npos) << notYet.text;

    AgentResult show = ask("show", { { "path", m_place.path() + "/big/video.mov" } });
    ASSERT_FALSE(show.isError) << show.text;
    EXPECT_NE(show.text.find("Will select"), std::string::npos) << show.text;
    EXPECT_TRUE(*show.structured->member("still_scanning")->boolValue());

    release();
    ASSERT_TRUE(waitFor([&] { return m_model.result() && m_model.result()->tree->rootPath() == m_place.path() && !m_model.runningScan(); }));
    m_executor.runAndWait<bool>([&] {
        const ScanTree& tree = *m_model.result()->tree;
        EXPECT_EQ(tree.path(m_model.openFolder()), m_place.path() + "/big");
        EXPECT_TRUE(m_model.selection() && tree.path(*m_model.selection()) == m_place.path() + "/big/video.mov");
        return true;
    });
    AgentResult after = ask("show", { { "path", m_place.path() + "/held" } });
    EXPECT_NE(after.text.find("Opened"), std::string::npos) << after.text;
}

INSTANTIATE_TEST_SUITE_P(Scans, FirstScanAnswersTest, ::testing::Bool(),
    [](const auto& info) { return info.param ? "AfterAnotherPlace" : "First"; });
