#pragma once

#include <string>

namespace tarnwick {

// Why an alert could not be set or removed. The texts are what the command line prints.
struct AlertError {
    enum class Case {
        notFound,                // names neither an alert's id nor a place with alerts
        ambiguousShortID,        // a short id that several alerts share
        diskTakesDiskUsed,       // a disk given a folder's limit
        folderTakesFolderLimits, // a folder given a disk's limit
        invalidPlace,            // a place that is not an absolute path
        unknownPeriod,           // a growth period that names no history period
        notSaved,                // carries the settings' own text
    };

    Case reason = Case::notFound;
    std::string detail; // for notSaved

    [[nodiscard]] std::string text() const;
    bool operator==(const AlertError&) const = default;
};

}
