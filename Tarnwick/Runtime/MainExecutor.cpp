#include "MainExecutor.hpp"

namespace tarnwick {

void MainExecutor::post(std::function<void()> task)
{
    if (m_loop) {
        m_loop->post(std::move(task));
        return;
    }
    m_queue.post(std::move(task));
}

void MainExecutor::run()
{
    m_owner = std::this_thread::get_id();
    if (m_loop) {
        m_loop->run();
        return;
    }
    m_queue.run();
}

void MainExecutor::reopen()
{
    m_queue.reopen();
}

void MainExecutor::stop()
{
    if (m_loop) {
        m_loop->quit();
        return;
    }
    m_queue.stop();
}

}
