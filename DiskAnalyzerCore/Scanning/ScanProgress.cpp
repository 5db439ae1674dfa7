#include "Scanning/ScanProgress.hpp"

namespace tarnwick {

ScanProgress::Snapshot ScanProgress::state() const
{
    std::scoped_lock guard(m_stateLock);
    return m_state;
}

void ScanProgress::setState(Snapshot snapshot)
{
    std::scoped_lock guard(m_stateLock);
    m_state = std::move(snapshot);
}

std::shared_ptr<const ScanPreview> ScanProgress::latestPreview() const
{
    std::scoped_lock guard(m_previewLock);
    return m_latestPreview;
}

void ScanProgress::setLatestPreview(std::shared_ptr<const ScanPreview> preview)
{
    std::scoped_lock guard(m_previewLock);
    m_latestPreview = std::move(preview);
}

}
