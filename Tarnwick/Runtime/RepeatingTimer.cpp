#include "RepeatingTimer.hpp"

#include "Platform/ProcessResources.hpp"

#include <sys/prctl.h>

namespace tarnwick {

RepeatingTimer::RepeatingTimer(std::chrono::milliseconds interval, std::chrono::milliseconds tolerance, std::function<void()> task)
    : m_interval(interval)
    , m_tolerance(tolerance)
    , m_task(std::move(task))
    , m_thread([this] { run(); })
{
}

RepeatingTimer::~RepeatingTimer()
{
    stop();
}

void RepeatingTimer::requestStop()
{
    {
        std::scoped_lock guard(m_lock);
        m_stopping = true;
    }
    m_changed.notify_all();
}

void RepeatingTimer::stop()
{
    requestStop();
    if (m_thread.joinable() && m_thread.get_id() != std::this_thread::get_id())
        m_thread.join();
}

bool RepeatingTimer::isStopping() const
{
    std::scoped_lock guard(m_lock);
    return m_stopping;
}

void RepeatingTimer::run()
{
    ProcessResources::prepareScanThread("Tarnwick daily", ScanPriority::background);
    auto slack = std::chrono::duration_cast<std::chrono::nanoseconds>(m_tolerance).count();
    if (slack > 0)
        ::prctl(PR_SET_TIMERSLACK, static_cast<unsigned long>(slack), 0, 0, 0);
    for (;;) {
        {
            std::unique_lock guard(m_lock);
            if (m_changed.wait_for(guard, m_interval, [this] { return m_stopping; }))
                return;
        }
        m_task();
    }
}

}
