#pragma once

#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <thread>

namespace tarnwick {

// Runs a task on a thread of its own every interval, first one interval after the start. The
// tolerance is the thread's timer slack: the system may wake it up to that much later, so that
// its wake-ups can join others'. The task runs at background priority (nice 10, idle I/O).
// Stopping waits for a running task, which should watch isStopping() to end early.
class RepeatingTimer {
public:
    RepeatingTimer(std::chrono::milliseconds interval, std::chrono::milliseconds tolerance, std::function<void()> task);
    ~RepeatingTimer();
    RepeatingTimer(const RepeatingTimer&) = delete;
    RepeatingTimer& operator=(const RepeatingTimer&) = delete;

    // Asks the timer to end without waiting for a running task.
    void requestStop();
    // Ends the timer, waiting for a running task.
    void stop();
    [[nodiscard]] bool isStopping() const;

private:
    void run();

    std::chrono::milliseconds m_interval;
    std::chrono::milliseconds m_tolerance;
    std::function<void()> m_task;
    mutable std::mutex m_lock;
    std::condition_variable m_changed;
    bool m_stopping = false;
    std::thread m_thread;
};

}
