#pragma once

#include <string>

namespace tarnwick {

// The text-mode start: scans a folder (the home folder by default) and prints its size,
// its largest items with their shares, the rest, and what could not be read.
namespace HomeSummary {
int run(const std::string& path);
}

}
