#include "Scanning/DirectoryQueue.hpp"

#include <algorithm>
#include <iterator>
#include <utility>

namespace tarnwick {

void DirectoryQueue::add(std::vector<DirectoryTask> tasks)
{
    if (tasks.empty())
        return;
    std::size_t count = tasks.size();
    {
        std::scoped_lock guard(m_lock);
        if (m_tasks.empty())
            m_tasks = std::move(tasks);
        else
            std::move(tasks.begin(), tasks.end(), std::back_inserter(m_tasks));
    }
    if (m_idleWorkers.load(std::memory_order_relaxed) == 0)
        return;
    if (count == 1)
        m_condition.notify_one();
    else
        m_condition.notify_all();
}

std::optional<DirectoryTask> DirectoryQueue::take()
{
    std::unique_lock guard(m_lock);
    for (;;) {
        if (m_workerCount > m_workerTarget || (m_isClosed && m_tasks.empty())) {
            --m_workerCount;
            return std::nullopt;
        }
        if (!m_tasks.empty()) {
            DirectoryTask task = std::move(m_tasks.back());
            m_tasks.pop_back();
            return task;
        }
        m_idleWorkers.fetch_add(1, std::memory_order_relaxed);
        m_condition.wait(guard);
        m_idleWorkers.fetch_sub(1, std::memory_order_relaxed);
    }
}

int DirectoryQueue::setWorkerTarget(int target)
{
    int toStart;
    {
        std::scoped_lock guard(m_lock);
        m_workerTarget = target;
        toStart = std::max(0, target - m_workerCount);
        m_workerCount += toStart;
    }
    m_condition.notify_all();
    return toStart;
}

void DirectoryQueue::close()
{
    {
        std::scoped_lock guard(m_lock);
        m_isClosed = true;
    }
    m_condition.notify_all();
}

std::vector<DirectoryTask> DirectoryQueue::drain()
{
    std::scoped_lock guard(m_lock);
    return std::exchange(m_tasks, {});
}

std::size_t DirectoryQueue::waitingCount()
{
    std::scoped_lock guard(m_lock);
    return m_tasks.size();
}

int DirectoryQueue::workerTarget()
{
    std::scoped_lock guard(m_lock);
    return m_workerTarget;
}

}
