#pragma once

#include <atomic>

namespace tarnwick {

// How many folders a scan may keep open beyond the one each worker is reading. Keeping a
// folder open lets its subfolders be opened relative to it, which is cheaper than walking
// their path from the root; past the budget they are opened by path, so the descriptors a
// scan holds stay bounded whatever the tree's shape or how far the collector lags.
class DescriptorBudget {
public:
    explicit DescriptorBudget(int limit)
        : m_limit(limit)
    {
    }

    // For a process whose soft open-file limit is softLimit, with up to workers folders
    // being read at once: the scan as a whole takes a quarter of the limit, at least 64.
    static int forProcess(int softLimit, int workers);

    [[nodiscard]] bool tryAcquire();
    void release() { m_inUse.fetch_sub(1, std::memory_order_relaxed); }
    [[nodiscard]] int inUse() const { return m_inUse.load(std::memory_order_relaxed); }
    [[nodiscard]] int limit() const { return m_limit; }

private:
    const int m_limit;
    std::atomic<int> m_inUse { 0 };
};

}
