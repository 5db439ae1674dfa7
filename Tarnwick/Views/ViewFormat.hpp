#pragma once

#include "Scanning/NodeID.hpp"
#include "Scanning/NodeKind.hpp"
#include "Scanning/TreeDate.hpp"

#include <QString>

#include <cstdint>
#include <optional>

namespace tarnwick {

class ScanTree;

// How the window writes sizes, shares, dates and kinds; sizes and shares read as they do on
// the command line.
namespace ViewFormat {

// Decimal units, with "≥" for a lower bound.
QString size(std::int64_t bytes, bool lowerBound = false);
QString size(const ScanTree& tree, NodeID node);
QString percent(double share);
// A signed change: "+1.20 GB", "−300 MB", with "≈" in front when it is uncertain.
QString change(std::int64_t bytes, bool uncertain = false);
// Local date and time, or the unknown-date word.
QString date(std::optional<Date> date);
QString kind(NodeKind kind);
// The format label of an item ("JPEG image", "Git repository"), else its kind.
QString format(const ScanTree& tree, NodeID node);
// The root as its path, any other node as its name.
QString name(const ScanTree& tree, NodeID node);
// The last part of the root's path ("/" for the file system's root), any other node's name.
QString shortName(const ScanTree& tree, NodeID node);
QString count(std::int64_t value);
// A path as people read it, with "~" for the home folder: "~/Projects/build".
QString homePath(const std::string& path, const std::string& home);

}

}
