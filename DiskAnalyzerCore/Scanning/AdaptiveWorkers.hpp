#pragma once

#include <cstddef>
#include <optional>

namespace tarnwick {

// Tunes the number of scan workers from measurements taken about once a second. The rate of
// items over one second of a cold disk swings by half from second to second, so it cannot
// tell whether more workers help; where the workers' time goes can. While they spend most of
// it blocked, neither running nor waiting for a processor, they wait for the disk, which
// serves more requests the more it is given, and a blocked thread costs nothing: the most
// workers are used at once. Workers that keep the processors overloaded are halved, once.
class AdaptiveWorkers {
public:
    static constexpr int initial = 4;
    static constexpr int maximum = 16;
    // Below this share of their time running or ready to run, the workers wait on the disk.
    static constexpr double waitingOnDisk = 0.6;

    struct Measurement {
        double itemsPerSecond = 0;
        double load = 0; // processor time used / (elapsed time x worker count)
        std::size_t waitingFolders = 0;
        // Time running or ready to run / (elapsed time x worker count); without it, the load
        // stands in, which cannot tell a busy machine from a slow disk.
        std::optional<double> runnable;
    };

    // Returns the new worker count when it changes.
    std::optional<int> decide(const Measurement& measurement);
    [[nodiscard]] int current() const { return m_current; }

private:
    int m_current = initial;
    bool m_frozen = false;
};

}
