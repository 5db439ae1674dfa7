#pragma once

#include "Classification/OwnerPlaces.hpp"

namespace tarnwick::InstalledOwners {

// The installed applications as owners of places on disk, read the first time they are asked
// for and kept for the rest of the process: every scan's owners are attributed from this one
// reading. Thread-safe.
const OwnerPlaces& places();

}
