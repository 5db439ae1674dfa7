#include "TaskQueue.hpp"

namespace tarnwick {

void TaskQueue::post(std::function<void()> task)
{
    {
        std::scoped_lock guard(m_lock);
        m_tasks.push_back(std::move(task));
    }
    m_changed.notify_one();
}

void TaskQueue::run()
{
    for (;;) {
        std::function<void()> task;
        {
            std::unique_lock guard(m_lock);
            m_changed.wait(guard, [this] { return m_stopping || !m_tasks.empty(); });
            if (m_tasks.empty())
                return;
            task = std::move(m_tasks.front());
            m_tasks.pop_front();
        }
        task();
    }
}

void TaskQueue::stop()
{
    {
        std::scoped_lock guard(m_lock);
        m_stopping = true;
    }
    m_changed.notify_all();
}

void TaskQueue::reopen()
{
    std::scoped_lock guard(m_lock);
    m_stopping = false;
}

}
