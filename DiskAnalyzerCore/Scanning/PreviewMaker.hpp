#pragma once

#include "Scanning/ScanProgress.hpp"
#include "Scanning/TreeBuilder.hpp"

#include <unordered_map>

namespace tarnwick {

// Makes the live preview of a running scan from the builder: the largest places down
// to a small share of the total, at most a budget of nodes, with everything smaller
// folded into its folder's size. The result reads like any finished tree.
namespace PreviewMaker {

// Folders not yet finished, with whether their listing has started.
using PendingFolders = std::unordered_map<std::int32_t, bool>;

inline constexpr std::int32_t defaultBudget = 50000;

std::shared_ptr<const ScanPreview> make(const TreeBuilder& builder, const PendingFolders& pending, const std::string& rootPath,
    std::uint64_t version, std::int32_t budget = defaultBudget);

}

}
