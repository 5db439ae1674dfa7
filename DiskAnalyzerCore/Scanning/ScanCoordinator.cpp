#include "Scanning/ScanCoordinator.hpp"

#include <cassert>
#include <limits>

namespace tarnwick {

ScanCoordinator::~ScanCoordinator()
{
    cancel();
    waitUntilIdle();
    std::thread last;
    {
        std::scoped_lock guard(m_lock);
        last = std::move(m_lastThread);
    }
    if (last.joinable())
        last.join();
}

std::shared_ptr<FileScanner> ScanCoordinator::submit(std::shared_ptr<FileScanner> scanner, Deliver deliver)
{
    std::unique_lock guard(m_lock);
    assert(m_generation < std::numeric_limits<std::uint64_t>::max() && "scan generation overflow");
    Job job { scanner, ++m_generation, std::move(deliver) };
    m_currentJob = job;
    if (m_running) {
        m_running->scanner->cancel();
        m_queued = std::move(job); // a job queued before is dropped here, never run
        return scanner;
    }
    m_running = job;
    guard.unlock();
    start(std::move(job));
    return scanner;
}

void ScanCoordinator::cancel()
{
    std::unique_lock guard(m_lock);
    if (!m_currentJob)
        return;
    if (m_queued && m_queued->generation == m_currentJob->generation) {
        Job job = std::move(*m_queued);
        m_queued.reset();
        m_currentJob.reset();
        guard.unlock();
        ScanOutcome outcome;
        outcome.status = ScanOutcome::Status::stopped();
        outcome.startedAt = outcome.finishedAt = std::chrono::system_clock::now();
        outcome.itemCount = 0;
        job.deliver(std::move(outcome));
        return;
    }
    m_currentJob->scanner->cancel();
}

std::uint64_t ScanCoordinator::generation() const
{
    std::scoped_lock guard(m_lock);
    return m_generation;
}

bool ScanCoordinator::isBusy() const
{
    std::scoped_lock guard(m_lock);
    return m_running.has_value() || m_queued.has_value();
}

void ScanCoordinator::waitUntilIdle()
{
    std::unique_lock guard(m_lock);
    m_idle.wait(guard, [this] { return !m_running && !m_queued; });
}

void ScanCoordinator::start(Job job)
{
    // Each scan thread first reaps the one before it, so finished threads never pile up.
    std::scoped_lock guard(m_lock);
    std::thread previous = std::move(m_lastThread);
    m_lastThread = std::thread([this, job = std::move(job), previous = std::move(previous)]() mutable {
        if (previous.joinable())
            previous.join();
        ScanOutcome outcome = job.scanner->scan();
        finished(job, std::move(outcome));
    });
}

void ScanCoordinator::finished(const Job& job, ScanOutcome outcome)
{
    {
        std::scoped_lock guard(m_lock);
        if (m_currentJob && m_currentJob->generation == job.generation)
            m_currentJob.reset();
    }
    // A superseded scan still tells its own caller that it ended, as stopped. The job counts
    // as running until its caller has been told: whoever waits for idle may then read what
    // the delivery wrote.
    if (job.deliver)
        job.deliver(std::move(outcome));
    std::optional<Job> next;
    {
        std::scoped_lock guard(m_lock);
        m_running.reset();
        if (m_queued) {
            next = std::move(m_queued);
            m_queued.reset();
            m_running = next;
        }
    }
    if (next) {
        start(std::move(*next));
        return;
    }
    m_idle.notify_all();
}

}
