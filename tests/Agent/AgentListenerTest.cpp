#include "Agent/AgentChannel.hpp"
#include "Agent/AgentListener.hpp"
#include "Agent/LineConnection.hpp"
#include "Agent/LineListener.hpp"
#include "Platform/UserFolders.hpp"

#include "Agent/DataHome.hpp"

#include <gtest/gtest.h>

#include <atomic>
#include <future>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <thread>
#include <unistd.h>

using namespace tarnwick;
using AgentCommands::Request;

namespace {

// Answers with what it was asked, so that a test sees the request arrived whole.
AgentResult echo(const Request& request)
{
    std::string text = "ran " + request.command;
    for (const auto& [key, value] : request.arguments)
        text += " " + key + "=" + value;
    return AgentResult::success(text, JSONValue::Object { { "json", request.json } });
}

AgentListener::Configuration ownConfiguration(AgentListener::Handler handler = echo)
{
    return { AgentChannel::socketPath(), *CodeIdentity::own(), std::move(handler), {} };
}

std::optional<std::uint64_t> inodeAt(const std::string& path)
{
    struct stat status;
    if (stat(path.c_str(), &status) != 0)
        return std::nullopt;
    return status.st_ino;
}

// A socket file left behind, as by an app that crashed: bound, then closed without unlink.
void leaveStaleSocket(const std::string& path)
{
    int descriptor = socket(AF_UNIX, SOCK_STREAM, 0);
    sockaddr_un address = *unixSocketAddress(path);
    ASSERT_EQ(bind(descriptor, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
    close(descriptor);
}

}

TEST(AgentListener, RoundTripThroughTheSocketFile)
{
    fixtures::DataHome home;
    auto listener = AgentListener::start(ownConfiguration());
    ASSERT_NE(listener, nullptr);

    const std::string path = AgentChannel::socketPath();
    EXPECT_EQ(path, home.folder() / "data/tarnwick/Tarnwick.sock");
    struct stat status;
    ASSERT_EQ(stat(path.c_str(), &status), 0);
    EXPECT_TRUE(S_ISSOCK(status.st_mode));
    EXPECT_EQ(status.st_mode & 0777, 0600u);

    Request request { "summary", { { "path", "/home/ada/my \"projects\"" }, { "limit", "30" } }, true };
    EXPECT_EQ(AgentChannel::send(request, path),
        AgentResult::success("ran summary limit=30 path=/home/ada/my \"projects\"", JSONValue::Object { { "json", true } }));

    listener->stop();
    EXPECT_FALSE(inodeAt(path));
    EXPECT_EQ(AgentChannel::send(request, path), std::nullopt);
}

TEST(AgentListener, UnreadableLinesAreAnsweredAndTheConnectionStays)
{
    fixtures::DataHome home;
    auto listener = AgentListener::start(ownConfiguration());
    ASSERT_NE(listener, nullptr);
    auto connection = LineConnection::connect(AgentChannel::socketPath());
    ASSERT_NE(connection, nullptr);

    const AgentResult invalid = AgentResult::failure("INVALID_REQUEST", "Tarnwick couldn't read the request.");
    const std::string_view lines[] {
        "garbage",
        "{\"command\":\"status\",\"arguments\":{}}",                   // no "json"
        "{\"command\":\"status\",\"arguments\":{\"limit\":5},\"json\":false}", // a value that is no text
        "{\"command\":\"st\xff\",\"arguments\":{},\"json\":false",     // invalid UTF-8, and cut short
        "[1,2]",
    };
    for (std::string_view line : lines) {
        ASSERT_TRUE(connection->writeLine(line));
        EXPECT_EQ(AgentResult::decoded(*connection->readLine()), invalid) << line;
    }
    // Repaired UTF-8 that still parses is a request.
    ASSERT_TRUE(connection->writeLine("{\"command\":\"st\xff\",\"arguments\":{},\"json\":false}"));
    EXPECT_EQ(AgentResult::decoded(*connection->readLine()), echo(Request { "st\uFFFD", {}, false }));

    std::string deep = "{\"command\":\"status\",\"arguments\":{},\"json\":false,\"x\":" + std::string(100'000, '[')
        + std::string(100'000, ']') + "}";
    ASSERT_TRUE(connection->writeLine(deep));
    EXPECT_EQ(AgentResult::decoded(*connection->readLine()), echo(Request { "status", {}, false }));

    // An empty line ends the connection.
    ASSERT_TRUE(connection->writeLine(""));
    EXPECT_EQ(connection->readLine(), std::nullopt);
}

TEST(AgentListener, StaleSocketFileIsReplaced)
{
    fixtures::DataHome home;
    const std::string path = AgentChannel::socketPath();
    ASSERT_TRUE(UserFolders::ensureFolder(home.folder() / "data/tarnwick"));
    leaveStaleSocket(path);
    ASSERT_TRUE(inodeAt(path));
    EXPECT_EQ(AgentChannel::send(Request { "status", {}, false }, path), std::nullopt);

    auto listener = AgentListener::start(ownConfiguration());
    ASSERT_NE(listener, nullptr);
    EXPECT_TRUE(AgentChannel::send(Request { "status", {}, false }, path));
}

TEST(AgentListener, ASecondInstanceTakesThePathOver)
{
    fixtures::DataHome home;
    const std::string path = AgentChannel::socketPath();
    auto first = AgentListener::start(ownConfiguration([](const Request&) { return AgentResult::success("first"); }));
    auto second = AgentListener::start(ownConfiguration([](const Request&) { return AgentResult::success("second"); }));
    ASSERT_NE(first, nullptr);
    ASSERT_NE(second, nullptr);

    first->stop();
    ASSERT_TRUE(inodeAt(path));
    EXPECT_EQ(AgentChannel::send(Request { "status", {}, false }, path), AgentResult::success("second"));
    second->stop();
    EXPECT_FALSE(inodeAt(path));
}

TEST(AgentListener, AnotherProgramIsRefusedWithoutAnswer)
{
    fixtures::DataHome home;
    auto tarnwick = CodeIdentity::ofExecutable(TARNWICK_EXECUTABLE);
    ASSERT_TRUE(tarnwick);
    ASSERT_NE(tarnwick, CodeIdentity::own());
    std::atomic<int> calls = 0;
    auto listener = AgentListener::start({ AgentChannel::socketPath(), *tarnwick,
        [&](const Request& request) {
            ++calls;
            return echo(request);
        },
        {} });
    ASSERT_NE(listener, nullptr);

    // This test program is not the tarnwick executable, so the app must not listen to it.
    auto connection = LineConnection::connect(AgentChannel::socketPath());
    ASSERT_NE(connection, nullptr);
    connection->writeLine(Request { "status", {}, false }.encoded());
    EXPECT_EQ(connection->readLine(), std::nullopt);
    EXPECT_EQ(AgentChannel::send(Request { "status", {}, false }, AgentChannel::socketPath()), std::nullopt);
    EXPECT_EQ(calls, 0);
}

TEST(AgentListener, PathTooLongForASocket)
{
    fixtures::DataHome home;
    std::string path = home.folder() / std::string(120, 'x');
    EXPECT_EQ(AgentListener::start({ path, *CodeIdentity::own(), echo, {} }), nullptr);
    EXPECT_EQ(LineListener::create(path), nullptr);
    EXPECT_FALSE(inodeAt(path));
}

TEST(AgentListener, EachConnectionHasItsOwnThread)
{
    fixtures::DataHome home;
    std::promise<void> waitStarted;
    std::promise<void> released;
    std::shared_future<void> release = released.get_future().share();
    auto listener = AgentListener::start(ownConfiguration([&](const Request& request) {
        if (request.command == "wait") {
            waitStarted.set_value();
            release.wait();
        } else {
            released.set_value();
        }
        return AgentResult::success(request.command);
    }));
    ASSERT_NE(listener, nullptr);

    // The waiting command blocks its connection until the other connection's command ends it;
    // with one thread for all connections this would never return.
    auto waiting = std::async(std::launch::async,
        [] { return AgentChannel::send(Request { "wait", {}, false }, AgentChannel::socketPath()); });
    waitStarted.get_future().wait();
    EXPECT_EQ(AgentChannel::send(Request { "status", {}, false }, AgentChannel::socketPath()), AgentResult::success("status"));
    EXPECT_EQ(waiting.get(), AgentResult::success("wait"));
}

TEST(AgentListener, CommandsRunThroughTheExecutor)
{
    fixtures::DataHome home;
    // Stands in for the app's main executor: each posted task runs on a thread of its own.
    std::mutex mutex;
    std::vector<std::thread> executorThreads;
    std::thread::id executorThread;
    std::thread::id ranOn;
    auto configuration = ownConfiguration([&](const Request& request) {
        ranOn = std::this_thread::get_id();
        return echo(request);
    });
    configuration.executor = [&](std::function<void()> task) {
        std::lock_guard guard(mutex);
        executorThreads.emplace_back(std::move(task));
        executorThread = executorThreads.back().get_id();
    };
    auto listener = AgentListener::start(std::move(configuration));
    ASSERT_NE(listener, nullptr);
    EXPECT_EQ(AgentChannel::send(Request { "status", {}, false }, AgentChannel::socketPath()), echo(Request { "status", {}, false }));
    std::lock_guard guard(mutex);
    for (std::thread& thread : executorThreads)
        thread.join();
    EXPECT_EQ(ranOn, executorThread);
}

TEST(AgentListener, StoppingDoesNotWaitForAMainExecutorThatNeverRuns)
{
    fixtures::DataHome home;
    std::vector<std::function<void()>> parked; // posted, never run: the main executor is busy stopping
    std::mutex parkedMutex;
    std::atomic<bool> posted = false;
    std::atomic<int> calls = 0;
    auto configuration = ownConfiguration([&](const Request& request) {
        ++calls;
        return echo(request);
    });
    configuration.executor = [&](std::function<void()> task) {
        std::lock_guard guard(parkedMutex);
        parked.push_back(std::move(task));
        posted = true;
    };
    auto listener = AgentListener::start(std::move(configuration));
    ASSERT_NE(listener, nullptr);
    auto client = std::async(std::launch::async,
        [] { return AgentChannel::send(Request { "status", {}, false }, AgentChannel::socketPath()); });
    while (!posted)
        std::this_thread::yield();
    listener->stop();
    EXPECT_EQ(client.get(), std::nullopt);
    // A task that runs after the stop does not call the handler of a stopped listener.
    std::lock_guard guard(parkedMutex);
    for (auto& task : parked)
        task();
    EXPECT_EQ(calls, 0);
}

TEST(AgentListener, AHandlerThatThrowsFailsOnlyItsRequest)
{
    fixtures::DataHome home;
    auto listener = AgentListener::start(ownConfiguration([](const Request& request) -> AgentResult {
        if (request.command == "find")
            throw std::invalid_argument("stoll");
        return echo(request);
    }));
    ASSERT_NE(listener, nullptr);
    auto connection = LineConnection::connect(AgentChannel::socketPath());
    ASSERT_NE(connection, nullptr);
    ASSERT_TRUE(connection->writeLine(Request { "find", {}, false }.encoded()));
    auto failed = AgentResult::decoded(*connection->readLine());
    ASSERT_TRUE(failed.has_value());
    EXPECT_EQ(failed->errorCode(), "ERROR");
    // The same connection, and the app, go on.
    ASSERT_TRUE(connection->writeLine(Request { "status", {}, false }.encoded()));
    EXPECT_EQ(AgentResult::decoded(*connection->readLine())->text, "ran status");
}
