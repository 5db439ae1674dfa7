#pragma once

#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>

namespace tarnwick {

// Tasks run one after another by whichever thread calls run(); any thread may post.
class TaskQueue {
public:
    void post(std::function<void()> task);
    // Runs tasks until stop() is called and nothing is left.
    void run();
    void stop();
    // Lets run() be called again after a stop.
    void reopen();

private:
    std::mutex m_lock;
    std::condition_variable m_changed;
    std::deque<std::function<void()>> m_tasks;
    bool m_stopping = false;
};

}
