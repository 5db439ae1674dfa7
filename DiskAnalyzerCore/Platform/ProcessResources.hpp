#pragma once

#include "Platform/ScanPriority.hpp"

#include <cstdint>
#include <optional>
#include <string_view>

namespace tarnwick::ProcessResources {

// Raises the soft open-file limit to the smaller of the hard limit and 10240, and returns the
// soft limit then in force.
int raiseOpenFileLimit();
// Names the calling thread (cut to the system's 15-byte limit) and, for background
// scans, lowers its processor and I/O priority.
void prepareScanThread(std::string_view name, ScanPriority priority);
// User plus system processor time of the whole process so far.
double processorSeconds();
// The time every thread of the process has spent running or ready to run (waiting for a
// processor), so far; absent where the system keeps no such account. What remains of the
// threads' time was spent blocked, mostly on the disk.
std::optional<double> runnableSeconds();
// The largest resident memory the process has had, in bytes.
std::int64_t peakResidentBytes();

}
