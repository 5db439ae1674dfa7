#pragma once

#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>

namespace tarnwick {

// One thread for slow work the main executor must not wait for (saving snapshots),
// done in the order handed in. The destructor finishes what was handed in.
class BackgroundWorker {
public:
    BackgroundWorker();
    ~BackgroundWorker();
    BackgroundWorker(const BackgroundWorker&) = delete;
    BackgroundWorker& operator=(const BackgroundWorker&) = delete;

    void post(std::function<void()> task);

private:
    void run();

    std::mutex m_lock;
    std::condition_variable m_changed;
    std::deque<std::function<void()>> m_tasks;
    bool m_stopping = false;
    std::thread m_thread;
};

}
