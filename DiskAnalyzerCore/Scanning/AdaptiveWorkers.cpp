#include "Scanning/AdaptiveWorkers.hpp"

#include <algorithm>

namespace tarnwick {

std::optional<int> AdaptiveWorkers::decide(const Measurement& measurement)
{
    int before = m_current;
    double runnable = measurement.runnable.value_or(measurement.load);
    if (measurement.load > 0.9 && m_current >= 5) {
        m_current = std::max(m_current, 8) / 2;
        m_frozen = true;
    } else if (!m_frozen && runnable < waitingOnDisk && measurement.waitingFolders >= static_cast<std::size_t>(m_current)) {
        m_current = maximum;
    }
    if (m_current == before)
        return std::nullopt;
    return m_current;
}

}
