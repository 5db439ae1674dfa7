#include "MainExecutor.hpp"

namespace tarnwick {

void MainExecutor::post(std::function<void()> task)
{
    if (m_loop) {
        m_loop->post(std::move(task));
        return;
    }
    {
        std::scoped_lock guard(m_lock);
        m_tasks.push_back(std::move(task));
    }
    m_changed.notify_one();
}

void MainExecutor::run()
{
    m_owner = std::this_thread::get_id();
    if (m_loop) {
        m_loop->run();
        return;
    }
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

void MainExecutor::reopen()
{
    std::scoped_lock guard(m_lock);
    m_stopping = false;
}

void MainExecutor::stop()
{
    if (m_loop) {
        m_loop->quit();
        return;
    }
    {
        std::scoped_lock guard(m_lock);
        m_stopping = true;
    }
    m_changed.notify_all();
}

}
