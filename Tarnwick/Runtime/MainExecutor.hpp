#pragma once

#include "TaskQueue.hpp"

#include <atomic>
#include <functional>
#include <future>
#include <optional>
#include <thread>

namespace tarnwick {

// The one thread that owns the app's state. Everything that reads or changes the model
// runs here, one task after another; other threads hand work in and may wait for it.
class MainExecutor {
public:
    // Another event loop that can take the place of the executor's own queue: the window
    // system's, so that the window, the model and the command line share one thread.
    struct Loop {
        std::function<void(std::function<void()>)> post; // called from any thread
        std::function<void()> run;                       // runs until quit
        std::function<void()> quit;                      // called from any thread
    };

    // Before any other thread posts; from then on post, run and stop go through the loop.
    void useLoop(Loop loop) { m_loop = std::move(loop); }
    void post(std::function<void()> task);
    // Runs task on the main executor and waits for its result; from the main executor
    // itself it runs the task at once.
    template <typename Result>
    Result runAndWait(std::function<Result()> task);
    // Runs tasks until stop() is called. The calling thread becomes the main executor.
    void run();
    void stop();
    // Lets run() be called again after a stop, to finish work handed in while shutting down.
    void reopen();
    [[nodiscard]] bool isCurrent() const { return std::this_thread::get_id() == m_owner.load(); }

private:
    TaskQueue m_queue;
    // Set by run() while the listener's threads may already ask isCurrent().
    std::atomic<std::thread::id> m_owner;
    std::optional<Loop> m_loop;
};

template <typename Result>
Result MainExecutor::runAndWait(std::function<Result()> task)
{
    if (isCurrent())
        return task();
    std::packaged_task<Result()> packaged(std::move(task));
    std::future<Result> result = packaged.get_future();
    auto shared = std::make_shared<std::packaged_task<Result()>>(std::move(packaged));
    post([shared] { (*shared)(); });
    return result.get();
}

}
