#pragma once

#include "Scanning/FileScanner.hpp"

#include <condition_variable>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

namespace tarnwick {

// Runs at most one scan at a time. A new request stops the running scan and waits
// for it to wind down; a request that was only queued is dropped when superseded,
// so it never runs and never delivers.
class ScanCoordinator {
public:
    using Deliver = std::function<void(ScanOutcome)>;

    struct Job {
        std::shared_ptr<FileScanner> scanner;
        std::uint64_t generation = 0;
        Deliver deliver;
    };

    ScanCoordinator() = default;
    ~ScanCoordinator();
    ScanCoordinator(const ScanCoordinator&) = delete;
    ScanCoordinator& operator=(const ScanCoordinator&) = delete;

    // Returns the scanner, so the caller can read its progress.
    std::shared_ptr<FileScanner> submit(std::shared_ptr<FileScanner> scanner, Deliver deliver);
    // Stops the current request: a queued one delivers "stopped" at once, a running one
    // ends at its next batch.
    void cancel();
    [[nodiscard]] std::uint64_t generation() const;
    [[nodiscard]] bool isBusy() const;
    // Blocks until nothing runs or waits (for tests and shutdown).
    void waitUntilIdle();

private:
    void start(Job job);
    void finished(const Job& job, ScanOutcome outcome);

    mutable std::mutex m_lock;
    std::condition_variable m_idle;
    std::uint64_t m_generation = 0;
    std::optional<Job> m_running;
    std::optional<Job> m_queued;
    std::optional<Job> m_currentJob;
    std::thread m_lastThread;
};

}
