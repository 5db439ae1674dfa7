#include "Scanning/ScanCoordinator.hpp"
#include "Support/TempFolder.hpp"

#include <gtest/gtest.h>

#include <condition_variable>
#include <mutex>

using namespace tarnwick;
using tarnwick::fixtures::TempFolder;

namespace {

// Scanners whose first folder blocks until released, so tests decide when a scan runs.
class Gate {
public:
    void wait()
    {
        std::unique_lock guard(m_lock);
        m_entered = true;
        m_changed.notify_all();
        m_changed.wait(guard, [this] { return m_open; });
    }
    void waitUntilEntered()
    {
        std::unique_lock guard(m_lock);
        m_changed.wait(guard, [this] { return m_entered; });
    }
    void open()
    {
        std::scoped_lock guard(m_lock);
        m_open = true;
        m_changed.notify_all();
    }

private:
    std::mutex m_lock;
    std::condition_variable m_changed;
    bool m_entered = false;
    bool m_open = false;
};

struct Delivered {
    std::mutex lock;
    std::vector<std::pair<int, ScanOutcome>> outcomes;
    void add(int job, ScanOutcome outcome)
    {
        std::scoped_lock guard(lock);
        outcomes.emplace_back(job, std::move(outcome));
    }
};

std::shared_ptr<FileScanner> makeScanner(const std::string& root, Gate* gate = nullptr)
{
    FileScanner::Options options;
    options.root = root;
    options.progress = std::make_shared<ScanProgress>();
    options.workers = FileScanner::Workers::fixed(1);
    if (gate)
        options.hooks.directoryEntered = [gate](const std::string&) { gate->wait(); };
    return std::make_shared<FileScanner>(options);
}

}

TEST(ScanCoordinator, NewSubmitStopsTheRunningScanAndRunsAfterIt)
{
    TempFolder folder;
    folder.makeFile("a/b", 10);
    Gate gate;
    Delivered delivered;
    ScanCoordinator coordinator;
    coordinator.submit(makeScanner(folder.path(), &gate), [&](ScanOutcome o) { delivered.add(1, std::move(o)); });
    gate.waitUntilEntered();
    coordinator.submit(makeScanner(folder.path()), [&](ScanOutcome o) { delivered.add(2, std::move(o)); });
    EXPECT_EQ(coordinator.generation(), 2u);
    gate.open();
    coordinator.waitUntilIdle();
    ASSERT_EQ(delivered.outcomes.size(), 2u);
    EXPECT_EQ(delivered.outcomes[0].first, 1);
    EXPECT_EQ(delivered.outcomes[0].second.status, ScanOutcome::Status::stopped());
    EXPECT_EQ(delivered.outcomes[1].first, 2);
    EXPECT_EQ(delivered.outcomes[1].second.status, ScanOutcome::Status::completed());
    EXPECT_EQ(delivered.outcomes[1].second.tree->count(), 3);
}

TEST(ScanCoordinator, MiddleOfThreeSubmitsNeverRuns)
{
    TempFolder folder;
    folder.makeFile("a/b", 10);
    Gate gate;
    Delivered delivered;
    ScanCoordinator coordinator;
    auto middle = makeScanner(folder.path());
    coordinator.submit(makeScanner(folder.path(), &gate), [&](ScanOutcome o) { delivered.add(1, std::move(o)); });
    gate.waitUntilEntered();
    coordinator.submit(middle, [&](ScanOutcome o) { delivered.add(2, std::move(o)); });
    coordinator.submit(makeScanner(folder.path()), [&](ScanOutcome o) { delivered.add(3, std::move(o)); });
    gate.open();
    coordinator.waitUntilIdle();
    ASSERT_EQ(delivered.outcomes.size(), 2u);
    EXPECT_EQ(delivered.outcomes[0].first, 1);
    EXPECT_EQ(delivered.outcomes[1].first, 3);
    EXPECT_EQ(middle->progress()->state().itemCount, 0);
}

TEST(ScanCoordinator, CancelOfQueuedJobDeliversStoppedAtOnce)
{
    TempFolder folder;
    Gate gate;
    Delivered delivered;
    ScanCoordinator coordinator;
    coordinator.submit(makeScanner(folder.path(), &gate), [&](ScanOutcome o) { delivered.add(1, std::move(o)); });
    gate.waitUntilEntered();
    coordinator.submit(makeScanner(folder.path()), [&](ScanOutcome o) { delivered.add(2, std::move(o)); });
    coordinator.cancel();
    {
        std::scoped_lock guard(delivered.lock);
        ASSERT_EQ(delivered.outcomes.size(), 1u);
        const ScanOutcome& queued = delivered.outcomes[0].second;
        EXPECT_EQ(delivered.outcomes[0].first, 2);
        EXPECT_EQ(queued.status, ScanOutcome::Status::stopped());
        EXPECT_EQ(queued.tree, nullptr);
        EXPECT_EQ(queued.itemCount, 0);
        EXPECT_EQ(queued.startedAt, queued.finishedAt);
    }
    gate.open();
    coordinator.waitUntilIdle();
    EXPECT_EQ(delivered.outcomes.size(), 2u);
}
