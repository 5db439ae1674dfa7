#pragma once

#include "Scanning/DirectoryListing.hpp"

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <vector>

namespace tarnwick {

// Listings travelling from the workers to the collecting thread, in arrival order.
class ListingQueue {
public:
    // Wakes a waiting collector only for an urgent listing (workers may be starving for
    // folders) or once a batch has gathered, so that a scan of many small folders does
    // not pay a thread switch for each of them.
    void add(DirectoryListing listing, bool urgent);
    // Waits up to the timeout for listings (or a wake-up) and takes all that arrived.
    std::vector<DirectoryListing> takeAll(std::chrono::milliseconds timeout);
    // Wakes the collector early, for example after a stop request.
    void wake();

private:
    std::mutex m_lock;
    std::condition_variable m_condition;
    std::vector<DirectoryListing> m_listings;
    bool m_woken = false;
    bool m_collectorWaiting = false;
    static constexpr std::size_t batchSize = 32;
};

}
