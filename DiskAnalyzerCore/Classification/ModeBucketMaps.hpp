#pragma once

#include "Classification/BucketMap.hpp"
#include "Classification/DateGroup.hpp"

#include <memory>

namespace tarnwick {

class ScanTree;

// The bucket maps of the date and visibility modes. Every node's own value serves both as
// its bucket and as its folder fallback: bytes a folder's children do not cover count in
// the folder's own date group, or its own visibility.
namespace ModeBucketMaps {

enum class DateKind : bool { modified, created };

// Buckets 0 to 4 are the date groups; bucket 5 takes nodes without a date.
inline constexpr int dateWidth = 6;
inline constexpr int noDateBucket = 5;
// Bucket 0 visible, 1 hidden from Finder; nodes without visibility count as visible.
inline constexpr int visibilityWidth = 2;
inline constexpr int visibleBucket = 0;
inline constexpr int hiddenBucket = 1;

// Modification dates are the last change anywhere inside a folder, as the tree keeps them.
std::shared_ptr<const BucketMap> dates(std::shared_ptr<const ScanTree> tree, DateKind kind, const DateGroup::Boundaries& boundaries);
std::shared_ptr<const BucketMap> hidden(std::shared_ptr<const ScanTree> tree);

struct Maps {
    std::shared_ptr<const BucketMap> modified;
    std::shared_ptr<const BucketMap> created;
    std::shared_ptr<const BucketMap> hidden; // null when not asked for
};
enum class Visibility : bool { without, with };
// Both date maps, and the visibility map when asked for, the same as one by one but in one
// pass over the tree, which costs little more than one map alone.
Maps together(std::shared_ptr<const ScanTree> tree, const DateGroup::Boundaries& boundaries, Visibility visibility);

}

}
