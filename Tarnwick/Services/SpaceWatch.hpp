#pragma once

#include "History/HistorySource.hpp"

#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace tarnwick {

class HistoryStore;

// The alert watch: while the app runs it checks disk alerts every few minutes and folder
// alerts whenever a snapshot that holds them is saved, and notifies the user of every alert
// that passed its limit, once, until a reading below re-arms it. It works on a thread of its
// own: the readings decode snapshots and ask the file systems, which the main executor must
// not wait for. Alerts and the notified set live in the user defaults, which the command
// line changes too, so every check reads them afresh.
class SpaceWatch {
public:
    // Shows a notification. Until the desktop shows them, notifications go to the log.
    using Notifier = std::function<void(const std::string& text)>;

    struct Options {
        std::chrono::seconds diskInterval { 300 };
        Notifier notifier; // the log when empty
    };

    // store may be null (no history): folder alerts then stay unknown.
    SpaceWatch(HistoryStore* store, Options options);
    ~SpaceWatch();
    SpaceWatch(const SpaceWatch&) = delete;
    SpaceWatch& operator=(const SpaceWatch&) = delete;

    // A snapshot of source was saved: its folder alerts are checked next. Any thread.
    void snapshotSaved(const HistorySource& source);

    // Logs a notification under the category "alerts".
    static void logNotification(const std::string& text);

private:
    struct Checks {
        bool disks = false;
        bool allFolders = false;
        std::vector<HistorySource> saved; // folder alerts that one of these holds
    };

    void run();
    void check(const Checks& checks);

    HistoryStore* m_store;
    Options m_options;
    std::mutex m_lock;
    std::condition_variable m_changed;
    std::vector<HistorySource> m_saved;
    bool m_stopping = false;
    std::thread m_thread; // last: it starts once everything else is ready
};

}
