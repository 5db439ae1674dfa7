#pragma once

#include "History/LiveEntry.hpp"

#include <expected>
#include <string>
#include <string_view>
#include <vector>

namespace tarnwick {

// Lists one folder's current contents as LiveEntry values, with the scanner's own calls
// (one directory stream, one metadata read per entry, never following a link), so the
// entries agree with what a scan would have recorded for them.
namespace FolderListing {

enum class Visibility : bool { visible, hidden };

struct Error {
    std::string path;
    int errorNumber = 0;

    // "Couldn't read “PATH”: the system's description of the error."
    [[nodiscard]] std::string message() const;
    bool operator==(const Error&) const = default;
};

// Entries in display order: larger on disk first, then by name. Items inside a hidden
// folder are hidden too, as are names that begin with "." and a home folder's "Library".
std::expected<std::vector<LiveEntry>, Error> list(const std::string& path, Visibility folder = Visibility::visible);

}

}
