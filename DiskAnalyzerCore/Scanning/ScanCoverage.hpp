#pragma once

#include <string>
#include <vector>

namespace tarnwick {

// Which places of the source a scan could read in full. A scan of a whole source
// covers everything; a scan limited to places the user granted lists those places.
struct ScanCoverage {
    std::vector<std::string> readableFolders; // empty: the whole source

    static ScanCoverage whole() { return {}; }
    [[nodiscard]] bool isWhole() const { return readableFolders.empty(); }
    bool operator==(const ScanCoverage&) const = default;
};

}
