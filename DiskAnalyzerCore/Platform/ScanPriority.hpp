#pragma once

namespace tarnwick {

// userInitiated: the user is waiting; background: the daily snapshot, which must not
// slow down anything else.
enum class ScanPriority { userInitiated, background };

}
