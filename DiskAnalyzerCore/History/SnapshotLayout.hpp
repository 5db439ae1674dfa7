#pragma once

#include "Classification/ContentCategory.hpp"
#include "Classification/ModeBucketMaps.hpp"
#include "Classification/RestBuckets.hpp"

#include <array>
#include <cstdint>

// Constants of the snapshot file shared by its writer and its reader; the layout itself is
// described in History/SNAPSHOT-FORMAT.md.
namespace tarnwick::SnapshotLayout {

inline constexpr std::array<std::uint8_t, 4> magic { 'T', 'S', 'N', 'P' };
inline constexpr std::size_t prefixLength = 5; // magic and version byte

// Flag bits a record keeps: all but `scanning` with colours; without them only
// allocatedUnknown, incomplete and contentsUnread. With colours, 0x80 marks a hidden node.
inline constexpr std::uint8_t colorFlagMask = 0x7F;
inline constexpr std::uint8_t plainFlagMask = 0x15;
inline constexpr std::uint8_t hiddenBit = 0x80;

// With colours, sizes (and rest parts) are written in bytes for the root and in these
// units for every other node.
inline constexpr std::int64_t colorUnit = 100'000;

// A day value of 0 means unknown; a known day d is written as zigzag(d - dayOrigin) + 1.
inline constexpr std::uint64_t unknownDayMarker = 0;

// A rest part starts with a tag byte: its mode times 16 plus its key. This byte ends a list.
inline constexpr std::uint8_t restListEnd = 127;
inline constexpr int restModeCount = 4;

// The smallest record: parent, kind, flags, size and name length of one byte each.
inline constexpr std::size_t minimumRecordLength = 5;

constexpr std::uint8_t restTag(RestMode mode, std::uint8_t key)
{
    return static_cast<std::uint8_t>(static_cast<std::uint8_t>(mode) * 16 + key);
}

// How many keys a rest mode has: content categories, date groups with "no date", visibility.
constexpr int restKeyCount(RestMode mode)
{
    switch (mode) {
    case RestMode::content:
        return static_cast<int>(ContentCategories::count);
    case RestMode::modified:
    case RestMode::created:
        return ModeBucketMaps::dateWidth;
    case RestMode::hidden:
        return ModeBucketMaps::visibilityWidth;
    }
    return 0;
}

constexpr bool isValidRestPart(RestMode mode, std::uint8_t key)
{
    return static_cast<int>(mode) < restModeCount && key < restKeyCount(mode);
}

constexpr std::int64_t sizeUnit(std::int32_t node) { return node == 0 ? 1 : colorUnit; }

}
