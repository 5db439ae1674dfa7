#pragma once

#include "Scanning/DescriptorBudget.hpp"
#include "Scanning/DirectoryQueue.hpp"
#include "Scanning/ListingQueue.hpp"
#include "Scanning/ScanCoverage.hpp"
#include "Scanning/ScanOutcome.hpp"
#include "Platform/ScanPriority.hpp"
#include "Scanning/ScanProgress.hpp"

#include <atomic>
#include <functional>
#include <memory>
#include <mutex>
#include <string>

namespace tarnwick {

// Reads a folder hierarchy's metadata, never file contents, as fast as the file system
// allows: a pool of workers lists whole folders and one collecting thread, the caller
// of scan(), builds the tree. Links and other file systems are recorded, never followed.
class FileScanner {
public:
    struct Hooks {
        std::function<void(const std::string& path)> directoryEntered;   // before a folder is opened
        std::function<void(const std::string& path)> directoryBatchRead; // after each batch read from it
    };

    struct Workers {
        enum class Mode { fixed, adaptive };
        Mode mode = Mode::adaptive;
        int count = 0;
        static Workers fixed(int count) { return { Mode::fixed, count < 1 ? 1 : count }; }
        static Workers adaptive() { return { Mode::adaptive, 0 }; }
    };

    enum class Previews { off, on };

    struct Options {
        std::string root;
        ScanCoverage coverage;
        std::shared_ptr<ScanProgress> progress;
        Hooks hooks;
        Workers workers = Workers::adaptive();
        Previews previews = Previews::off;
        ScanPriority priority = ScanPriority::userInitiated;
    };

    struct StopState {
        bool cancelled = false;
        bool sourceLost = false;
    };

    // The most workers a scan runs; with the root, also the most descriptors it holds.
    static constexpr int maximumWorkers = 64;

    explicit FileScanner(Options options);
    ~FileScanner();
    FileScanner(const FileScanner&) = delete;
    FileScanner& operator=(const FileScanner&) = delete;

    // Runs the whole scan on the calling thread and returns its outcome.
    ScanOutcome scan();
    // The user stopped the scan; it ends at the next batch boundary.
    void cancel();
    // The volume went away.
    void sourceLost();
    [[nodiscard]] StopState stopState() const;
    [[nodiscard]] int peakWorkers() const;
    [[nodiscard]] const std::shared_ptr<ScanProgress>& progress() const { return m_options.progress; }
    [[nodiscard]] const std::string& root() const { return m_options.root; }

private:
    class Collector;
    void setWorkerTarget(int target);
    void runWorker();
    [[nodiscard]] bool isStopped() const { return m_stopped.load(std::memory_order_relaxed); }

    Options m_options;
    int m_rootDescriptor = -1;
    // Declared before the queues: tasks and listings still queued give their places back.
    std::unique_ptr<DescriptorBudget> m_budget;
    mutable std::mutex m_stopLock;
    StopState m_stopState;
    std::atomic<bool> m_stopped { false };
    mutable std::mutex m_peakLock;
    int m_peakWorkers = 0;
    DirectoryQueue m_directories;
    ListingQueue m_listings;
    std::mutex m_threadsLock;
    std::vector<std::thread> m_threads;
};

}
