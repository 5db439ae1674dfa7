#include "Scanning/AdaptiveWorkers.hpp"

#include <algorithm>

namespace tarnwick {

std::optional<int> AdaptiveWorkers::decide(const Measurement& measurement)
{
    int before = m_current;
    if (m_trialPending) {
        m_trialPending = false;
        if (measurement.itemsPerSecond < 1.15 * m_rateBeforeTrial) {
            m_current = m_countBeforeTrial;
            m_frozen = true;
        }
    } else if (measurement.load > 0.9 && m_current >= 5) {
        m_current = std::max(m_current, 8) / 2;
        m_frozen = true;
    } else if (m_frozen || measurement.load >= 0.5 || measurement.waitingFolders < static_cast<std::size_t>(m_current)
        || m_current >= maximum) {
        // keep the count
    } else {
        m_trialPending = true;
        m_countBeforeTrial = m_current;
        m_rateBeforeTrial = measurement.itemsPerSecond;
        m_current = std::min(m_current * 2, maximum);
    }
    if (m_current == before)
        return std::nullopt;
    return m_current;
}

}
