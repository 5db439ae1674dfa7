#pragma once

#include <cstddef>
#include <expected>
#include <string>
#include <vector>

namespace tarnwick::LocalFiles {

// Small reads of configuration on the local machine (desktop entries, the system's
// release file, application folders). Links are followed here, unlike in a scan:
// Flatpak exports its desktop entries as links.

struct Entry {
    std::string name;
    bool isFolder = false;
};

// The entries of a folder except "." and "..", in no particular order; errno on failure.
std::expected<std::vector<Entry>, int> list(const std::string& folder);

// The whole file when it is at most maxBytes long; errno on failure, EFBIG when larger.
std::expected<std::string, int> read(const std::string& file, std::size_t maxBytes);

}
