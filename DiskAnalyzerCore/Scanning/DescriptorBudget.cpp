#include "Scanning/DescriptorBudget.hpp"

#include <algorithm>

namespace tarnwick {

int DescriptorBudget::forProcess(int softLimit, int workers)
{
    // The root and each worker's open folder come first; with a long path a worker briefly
    // holds one more.
    int forScan = std::max(64, softLimit / 4);
    return std::max(0, forScan - 1 - 2 * workers);
}

bool DescriptorBudget::tryAcquire()
{
    int used = m_inUse.load(std::memory_order_relaxed);
    while (used < m_limit) {
        if (m_inUse.compare_exchange_weak(used, used + 1, std::memory_order_relaxed))
            return true;
    }
    return false;
}

}
