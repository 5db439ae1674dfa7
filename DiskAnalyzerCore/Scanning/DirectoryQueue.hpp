#pragma once

#include "Scanning/DirectoryListing.hpp"

#include <atomic>
#include <condition_variable>
#include <mutex>
#include <optional>
#include <vector>

namespace tarnwick {

// Folders waiting for a worker, taken last in first out so the walk goes depth-first
// and few folders are open at once. It also keeps the worker head count: workers
// above the target leave when they next come for work.
class DirectoryQueue {
public:
    void add(std::vector<DirectoryTask> tasks);
    // Blocks until there is a task, or returns nothing when this worker should end.
    std::optional<DirectoryTask> take();
    // Returns how many new workers to start.
    int setWorkerTarget(int target);
    // Ends the scan: waiting workers wake up and leave.
    void close();
    // Removes every waiting task (after a stop) and returns them.
    std::vector<DirectoryTask> drain();
    [[nodiscard]] std::size_t waitingCount();
    // Whether a worker is idle for want of folders, read without the lock.
    [[nodiscard]] bool isStarving() const { return m_idleWorkers.load(std::memory_order_relaxed) > 0; }
    [[nodiscard]] int workerTarget();

private:
    std::mutex m_lock;
    std::condition_variable m_condition;
    std::vector<DirectoryTask> m_tasks;
    bool m_isClosed = false;
    int m_workerTarget = 0;
    int m_workerCount = 0;
    std::atomic<int> m_idleWorkers { 0 };
};

}
