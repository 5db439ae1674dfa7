#include "AppMain.hpp"

#include "Agent/AgentChannel.hpp"
#include "Agent/AgentListener.hpp"
#include "AppHandoff.hpp"
#include "AgentTools.hpp"
#include "AppCommands.hpp"
#include "AppModel.hpp"
#include "DailyScans.hpp"
#include "DiskSnapshot.hpp"
#include "History/HistoryStore.hpp"
#include "RepeatingTimer.hpp"
#include "HistoryRecorder.hpp"
#include "MainExecutor.hpp"
#include "MetricsTextfile.hpp"
#include "Notifier.hpp"
#include "Platform/AppLauncher.hpp"
#include "Platform/FileLock.hpp"
#include "Platform/LoginItem.hpp"
#include "Platform/SystemLog.hpp"
#include "Platform/UserDefaults.hpp"
#include "Platform/UserFolders.hpp"
#include "DesktopHost.hpp"
#include "SpaceWatch.hpp"

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <linux/close_range.h>
#include <pthread.h>
#include <sys/syscall.h>
#include <thread>
#include <unistd.h>

namespace tarnwick::AppMain {

namespace {

std::optional<std::string> openArgument(const std::vector<std::string>& words)
{
    for (std::size_t i = 0; i + 1 < words.size(); ++i) {
        if (words[i] == "--open")
            return words[i + 1];
    }
    return std::nullopt;
}

// Descriptors the starter left open (a pipe's end, a wrapper's files) would stay open as
// long as the app runs and keep their readers waiting; the app needs none of them.
void closeInheritedDescriptors()
{
    ::syscall(SYS_close_range, 3U, ~0U, 0U);
}

bool startedInBackground(const std::vector<std::string>& words)
{
    return std::find(words.begin(), words.end(), AppLauncher::backgroundWord) != words.end();
}

// Termination requests arrive as signals; a thread of their own turns them into a stop of
// the main executor, so no handler runs inside arbitrary code.
std::thread watchForTermination(MainExecutor& executor, sigset_t signals)
{
    return std::thread([&executor, signals] {
        int received = 0;
        sigwait(&signals, &received);
        executor.stop();
    });
}

}

namespace {

// The app itself, once this process holds the app lock.
int runHoldingLock(const std::vector<std::string>& words)
{
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGTERM);
    sigaddset(&signals, SIGINT);
    sigaddset(&signals, SIGHUP);
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    std::signal(SIGPIPE, SIG_IGN);

    int status = 0;
    MainExecutor executor;
    // With a display, Qt's event loop becomes the main executor and the window shows the model.
    std::unique_ptr<DesktopHost> desktop = DesktopLoader::start(executor, words);
    std::thread terminationWatch = watchForTermination(executor, signals);
    {
        AppModel model(executor);
        auto store = HistoryStore::open(UserFolders::dataFolder() + "/" + std::string(HistoryStore::historyFolderName));
        if (!store)
            SystemLog::write(SystemLog::Level::error, "history", "couldn't open the history: " + store.error().message());
        HistoryStore* history = store ? store->get() : nullptr;
        // The command line and other apps save too: their saves reach this app's observers
        // (the window, the tray, the alert watch) as its own do.
        std::unique_ptr<RepeatingTimer> othersSaves;
        if (history)
            othersSaves = std::make_unique<RepeatingTimer>(std::chrono::seconds(2), std::chrono::seconds(1), [history] { history->reloadIfChanged(); });
        SpaceWatch::Options watchOptions;
        if (desktop) {
            // Where the tray can show notifications it does; until it exists they are logged.
            watchOptions.notifier = [&desktop](const std::string& text) {
                if (Notifier* notifier = desktop->notifier())
                    notifier->notify("Tarnwick", text);
                else
                    SystemLog::write(SystemLog::Level::info, "alerts", text);
            };
        }
        SpaceWatch watch(history, watchOptions);
        std::unique_ptr<MetricsTextfile> metrics;
        if (store) {
            metrics = std::make_unique<MetricsTextfile>(**store, UserDefaults::standardPath());
            metrics->writeSoon();
        }
        // Every saved snapshot: the alerts are checked, then the metrics file shows the result.
        auto snapshotSaved = [&watch, &metrics](const HistorySource& source) {
            watch.snapshotSaved(source);
            if (metrics)
                metrics->snapshotSaved();
        };
        std::unique_ptr<HistoryRecorder> recorder;
        if (store) {
            recorder = std::make_unique<HistoryRecorder>(
                **store, snapshotSaved,
                [&desktop](const std::string& text) {
                    if (Notifier* notifier = desktop ? desktop->notifier() : nullptr)
                        notifier->notify("Tarnwick", text);
                });
            model.addResultObserver([&recorder](const AppModel::Result& result) { recorder->record(result); });
        }
        // The daily snapshot needs the history; its saves are checked by the alert watch too.
        UserDefaults defaults(UserDefaults::standardPath());
        std::unique_ptr<DailyScans> dailyScans;
        if (store) {
            std::error_code error;
            dailyScans = std::make_unique<DailyScans>(DailyScans::Services {
                defaults, **store, DailyScans::systemDisks, [] { return PowerState::read(); }, DiskSnapshot::runner(**store, snapshotSaved),
                LoginItem::standardPath(), std::filesystem::read_symlink("/proc/self/exe", error).string() });
            if (std::find(words.begin(), words.end(), AppLauncher::dailySnapshotWord) != words.end())
                dailyScans->startForService();
            else
                dailyScans->startIfEnabled();
        }
        AgentTools tools(model, executor, history, recorder.get());
        auto listener = AgentListener::startForApp([&tools](const AgentCommands::Request& request) { return tools.handle(request); }, {});
        if (!listener && !desktop) {
            // Without a window and without the socket nobody could reach this app.
            status = 1;
            executor.stop();
        }
        std::unique_ptr<DesktopHost::Window> window = desktop ? desktop->openWindow(model, history, dailyScans.get()) : nullptr;
        if (window)
            tools.setWindow(window.get());
        executor.run();
        // Connections may still wait for commands on the main executor: keep running it
        // until the listener has ended them all.
        executor.reopen();
        std::thread stopper([&] {
            if (listener)
                listener->stop();
            executor.stop();
        });
        executor.run();
        stopper.join();
    }
    pthread_kill(terminationWatch.native_handle(), SIGTERM);
    terminationWatch.join();
    return status;
}

}

int run(const std::vector<std::string>& words)
{
    closeInheritedDescriptors();
    if (auto path = openArgument(words))
        return AppHandoff::open(*path);
    // One app per user: the lock is taken before the socket is bound and held until the
    // socket is gone, so only its holder ever replaces or removes the socket file.
    UserFolders::ensureFolder(UserFolders::dataFolder());
    std::unique_ptr<FileLock> instance = FileLock::tryTake(AgentChannel::appLockPath());
    if (!instance) {
        // The tool that started this one finds the running app by itself.
        if (startedInBackground(words))
            return 0;
        return AppHandoff::showRunningApp();
    }
    return runHoldingLock(words);
}

}
