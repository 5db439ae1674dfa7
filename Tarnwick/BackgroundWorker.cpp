#include "BackgroundWorker.hpp"

namespace tarnwick {

BackgroundWorker::BackgroundWorker()
    : m_thread([this] { run(); })
{
}

BackgroundWorker::~BackgroundWorker()
{
    {
        std::scoped_lock guard(m_lock);
        m_stopping = true;
    }
    m_changed.notify_all();
    m_thread.join();
}

void BackgroundWorker::post(std::function<void()> task)
{
    {
        std::scoped_lock guard(m_lock);
        m_tasks.push_back(std::move(task));
    }
    m_changed.notify_one();
}

void BackgroundWorker::run()
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

}
