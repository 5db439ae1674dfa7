#pragma once

#include "Scanning/ScanTree.hpp"

#include <cstdint>
#include <memory>
#include <mutex>
#include <string>

namespace tarnwick {

// A partial tree for display while a scan runs: bounded in size, with the folders
// still being listed marked as such. The version grows with every new preview.
struct ScanPreview {
    std::shared_ptr<const ScanTree> tree;
    std::uint64_t version = 0;
    std::int64_t itemCount = 0;
};

// What the app polls while a scan runs. Written by the scanning thread, read from any.
class ScanProgress {
public:
    struct Snapshot {
        std::int64_t itemCount = 0;
        std::string currentPath;
    };

    [[nodiscard]] Snapshot state() const;
    void setState(Snapshot snapshot);
    [[nodiscard]] std::shared_ptr<const ScanPreview> latestPreview() const;
    void setLatestPreview(std::shared_ptr<const ScanPreview> preview);

private:
    mutable std::mutex m_stateLock;
    Snapshot m_state;
    mutable std::mutex m_previewLock;
    std::shared_ptr<const ScanPreview> m_latestPreview;
};

}
