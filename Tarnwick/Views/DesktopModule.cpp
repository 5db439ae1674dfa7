#include "DesktopHost.hpp"
#include "Views/DesktopApp.hpp"
#include "Views/MainWindow.hpp"

namespace tarnwick {

namespace {

class QtDesktopHost final : public DesktopHost {
public:
    explicit QtDesktopHost(std::unique_ptr<DesktopApp> app)
        : m_app(std::move(app))
    {
    }

    std::unique_ptr<Window> openWindow(AppModel& model) override
    {
        struct OpenWindow final : Window {
            std::unique_ptr<MainWindow> window;
        };
        auto open = std::make_unique<OpenWindow>();
        open->window = m_app->openWindow(model);
        return open;
    }

private:
    std::unique_ptr<DesktopApp> m_app;
};

}

}

extern "C" __attribute__((visibility("default"))) tarnwick::DesktopHost* tarnwickDesktopStart(
    tarnwick::MainExecutor& executor, const std::vector<std::string>& words)
{
    auto app = tarnwick::DesktopApp::start(executor, words);
    if (!app)
        return nullptr;
    return new tarnwick::QtDesktopHost(std::move(app));
}
