#include "MainExecutor.hpp"
#include "Support/ScopedEnvironment.hpp"
#include "Support/TempFolder.hpp"
#include "Views/DesktopApp.hpp"

#include <gtest/gtest.h>

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstring>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace tarnwick {
namespace {

using fixtures::ScopedEnvironment;

// Listens on the abstract socket name an X server of display :number uses.
class FakeXServer {
public:
    explicit FakeXServer(int number)
    {
        m_fd = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
        std::string name = std::string(1, '\0') + "/tmp/.X11-unix/X" + std::to_string(number);
        sockaddr_un address {};
        address.sun_family = AF_UNIX;
        std::memcpy(address.sun_path, name.data(), name.size());
        m_listening = bind(m_fd, reinterpret_cast<sockaddr*>(&address), static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + name.size())) == 0
            && listen(m_fd, 4) == 0;
    }
    ~FakeXServer() { close(m_fd); }
    [[nodiscard]] bool listening() const { return m_listening; }

private:
    int m_fd = -1;
    bool m_listening = false;
};

TEST(DesktopAppTest, ChoosesAPlatformOnlyWhenADisplayCanBeReached)
{
    const std::optional<std::string> none;
    {
        ScopedEnvironment environment { { "QT_QPA_PLATFORM", "offscreen" }, { "DISPLAY", none }, { "WAYLAND_DISPLAY", none } };
        EXPECT_EQ(DesktopApp::platform(), "offscreen");
    }
    {
        ScopedEnvironment environment { { "QT_QPA_PLATFORM", none }, { "DISPLAY", none }, { "WAYLAND_DISPLAY", none } };
        EXPECT_EQ(DesktopApp::platform(), "") << "no display: the app runs without a window";
    }
    int number = 4000 + static_cast<int>(getpid() % 1000);
    {
        ScopedEnvironment environment { { "QT_QPA_PLATFORM", none }, { "DISPLAY", ":" + std::to_string(number) }, { "WAYLAND_DISPLAY", none } };
        EXPECT_EQ(DesktopApp::platform(), "") << "a display nobody serves";
        FakeXServer server(number);
        ASSERT_TRUE(server.listening());
        EXPECT_EQ(DesktopApp::platform(), "xcb");
    }
    for (const char* display : { ":", ":x1", "unix:" }) {
        ScopedEnvironment environment { { "QT_QPA_PLATFORM", none }, { "DISPLAY", display }, { "WAYLAND_DISPLAY", none } };
        EXPECT_EQ(DesktopApp::platform(), "") << display;
    }
    {
        fixtures::TempFolder runtime;
        ScopedEnvironment environment { { "QT_QPA_PLATFORM", none }, { "DISPLAY", none }, { "WAYLAND_DISPLAY", "wayland-7" },
            { "XDG_RUNTIME_DIR", runtime.path() } };
        EXPECT_EQ(DesktopApp::platform(), "") << "a compositor socket that is not there";
    }
}

TEST(DesktopAppTest, QtsLoopRunsTheExecutorsWorkInOrderAndStopsWhenAsked)
{
    MainExecutor executor;
    DesktopApp::useQtLoop(executor);

    // A stop asked for before the loop runs ends it as soon as it starts.
    executor.stop();
    executor.run();
    EXPECT_TRUE(executor.isCurrent());

    std::vector<int> order;
    std::thread worker([&] {
        for (int i = 0; i < 5; ++i)
            executor.post([&order, i] { order.push_back(i); });
        int answer = executor.runAndWait<int>([] { return 42; });
        executor.post([&order, answer] { order.push_back(answer); });
        executor.stop();
    });
    executor.run();
    worker.join();
    EXPECT_EQ(order, (std::vector<int> { 0, 1, 2, 3, 4, 42 }));

    // From the loop's own thread runAndWait runs the task at once.
    EXPECT_EQ(executor.runAndWait<int>([] { return 7; }), 7);
}

}
}
