#include "Scanning/ListingQueue.hpp"

#include <utility>

namespace tarnwick {

void ListingQueue::add(DirectoryListing listing, bool urgent)
{
    bool wake;
    {
        std::scoped_lock guard(m_lock);
        m_listings.push_back(std::move(listing));
        // Urgency is remembered even while the collector is busy, so that it does not
        // go to sleep on a listing that others are waiting for.
        m_woken = m_woken || urgent;
        wake = m_collectorWaiting && (urgent || m_listings.size() >= batchSize);
    }
    if (wake)
        m_condition.notify_one();
}

std::vector<DirectoryListing> ListingQueue::takeAll(std::chrono::milliseconds timeout)
{
    std::unique_lock guard(m_lock);
    m_collectorWaiting = true;
    m_condition.wait_for(guard, timeout, [this] { return m_listings.size() >= batchSize || m_woken; });
    m_collectorWaiting = false;
    m_woken = false;
    return std::exchange(m_listings, {});
}

void ListingQueue::wake()
{
    {
        std::scoped_lock guard(m_lock);
        m_woken = true;
    }
    m_condition.notify_one();
}

}
