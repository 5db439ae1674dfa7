#pragma once

#include "Classification/TimeZone.hpp"

#include <memory>

namespace tarnwick {

class ScanTree;
struct Snapshot;

// A scan tree made from a snapshot, so that what works on the result on screen (colour
// maps, their group totals) works on a saved scan too. Node i of the tree is node i of the
// snapshot. Every folder's bytes that no kept folder inside it accounts for become bytes of
// the folder itself, and the snapshot's rest parts say which colour groups they belong to.
// Dates are kept as local days; a node stands at midday of its day.
namespace SnapshotTree {

std::shared_ptr<const ScanTree> make(const Snapshot& snapshot, const TimeZone& zone = TimeZone::system());

}

}
