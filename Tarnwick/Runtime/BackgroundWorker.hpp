#pragma once

#include "TaskQueue.hpp"

#include <functional>
#include <thread>

namespace tarnwick {

// One thread for slow work the main executor must not wait for (saving snapshots),
// done in the order handed in. The destructor finishes what was handed in.
class BackgroundWorker {
public:
    BackgroundWorker()
        : m_thread([this] { m_queue.run(); })
    {
    }
    ~BackgroundWorker()
    {
        m_queue.stop();
        m_thread.join();
    }
    BackgroundWorker(const BackgroundWorker&) = delete;
    BackgroundWorker& operator=(const BackgroundWorker&) = delete;

    void post(std::function<void()> task) { m_queue.post(std::move(task)); }

private:
    TaskQueue m_queue;
    std::thread m_thread;
};

}
