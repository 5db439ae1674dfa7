#pragma once

#include <cstddef>
#include <optional>

namespace tarnwick {

// Tunes the number of scan workers from measurements taken about once a second:
// more workers are tried only while the processor is idle and folders are waiting,
// and a trial is kept only when it makes the scan at least 15 % faster.
class AdaptiveWorkers {
public:
    static constexpr int initial = 4;
    static constexpr int maximum = 16;

    struct Measurement {
        double itemsPerSecond = 0;
        double load = 0; // processor time used / (elapsed time x worker count)
        std::size_t waitingFolders = 0;
    };

    // Returns the new worker count when it changes.
    std::optional<int> decide(const Measurement& measurement);
    [[nodiscard]] int current() const { return m_current; }

private:
    int m_current = initial;
    bool m_frozen = false;
    bool m_trialPending = false;
    int m_countBeforeTrial = 0;
    double m_rateBeforeTrial = 0;
};

}
