#pragma once

#include "Platform/MountInfo.hpp"
#include "Scanning/SourceKind.hpp"

#include <string>

namespace tarnwick {

// A location resolved for scanning: where the scanner starts and what it is.
struct ScanScope {
    std::string selectedURL; // the path the user chose, as given
    std::string scanRoot;    // the real path the scanner starts at
    SourceKind kind = SourceKind::folder;
    MountInfo mount;         // the scanned file system

    bool operator==(const ScanScope&) const = default;
};

}
