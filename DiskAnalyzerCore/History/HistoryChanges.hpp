#pragma once

#include "Classification/ContentCategory.hpp"
#include "Classification/TimeZone.hpp"
#include "History/Snapshot.hpp"
#include "History/SnapshotOutline.hpp"

#include <cstdint>
#include <expected>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace tarnwick::HistoryQueries {

// Which sizes a comparison reads: the precise ones (to 0.1 MB, the root to the byte) when
// both snapshots have colours, otherwise the sizes rounded down to 10 MB for both, so that
// the rounding never shows as a change.
enum class SizeBasis : std::uint8_t { precise, rounded };

// Whether a place is kept in both snapshots, or only in one of them (new, or gone or below
// 10 MB). A place missing at one end counts as 0 bytes there.
enum class Presence : std::uint8_t { both, earlierOnly, laterOnly };

struct PlaceChange {
    std::string path; // absolute
    std::int64_t before = 0;
    std::int64_t after = 0;
    Presence presence = Presence::both;
    // Only one of the two scans read all of it (or of something inside it): shown with "≈".
    bool isUncertain = false;

    [[nodiscard]] std::int64_t change() const { return after - before; }
    bool operator==(const PlaceChange&) const = default;
};

// What snapshots do not list one by one: a place's size less the sizes of the places kept
// directly inside it, at each end.
struct RestChange {
    std::int64_t before = 0;
    std::int64_t after = 0;
    bool isUncertain = false;

    [[nodiscard]] std::int64_t change() const { return after - before; }
    bool operator==(const RestChange&) const = default;
};

struct TypeChange {
    ContentCategory category = ContentCategory::other;
    std::int64_t before = 0;
    std::int64_t after = 0;

    [[nodiscard]] std::int64_t change() const { return after - before; }
    bool operator==(const TypeChange&) const = default;
};

enum class ReadBy : std::uint8_t { earlierScan, laterScan };

// A place that only one of the two scans could read in full: the deepest such places, not
// every folder above them.
struct OneScanPlace {
    std::string path;
    ReadBy readBy = ReadBy::laterScan;
    bool operator==(const OneScanPlace&) const = default;
};

struct SizePoint {
    Date date {};
    std::int64_t bytes = 0;
    bool isKept = true; // false when the snapshot does not keep the place: under 10 MB or not there
    bool isIncomplete = false; // that scan could not read all of the place: bytes is a lower bound

    bool operator==(const SizePoint&) const = default;
};

struct Changes {
    std::shared_ptr<const Snapshot> from;
    std::shared_ptr<const Snapshot> to;
    std::string place; // absolute path of the compared place
    // Whether both snapshots keep the place; one that is kept at one end only was under
    // 10 MB (or not there) at the other, where its size is not known and counts as 0.
    Presence presence = Presence::both;
    SizeBasis sizes = SizeBasis::rounded;
    std::int64_t sizeBefore = 0;
    std::int64_t sizeAfter = 0;
    // A scan that could not read all of the place: its size is a lower bound.
    bool beforeIncomplete = false;
    bool afterIncomplete = false;
    std::int64_t change = 0;
    bool isUncertain = false;
    // The changed places directly inside, largest change (either way) first.
    std::vector<PlaceChange> inside;
    std::int64_t moreInside = 0;
    RestChange rest;
    // Where the space went deep down: places that grew while none of the places kept inside
    // them accounts for half of that growth or more, largest growth first.
    std::vector<PlaceChange> grewMost;
    // By content category, from the colour totals; empty unless both snapshots have colours.
    std::vector<TypeChange> byType;
    std::vector<OneScanPlace> readByOneScan;
};

enum class ChangesError : std::uint8_t {
    outsideSnapshots, // the place is not the snapshots' place or inside it
    notKept,          // neither snapshot keeps the place
    inconsistent,     // a snapshot's arrays do not fit together
};

inline constexpr std::size_t insideLimit = 20;
inline constexpr std::size_t grewMostLimit = 10;

namespace ChangeTexts {
inline constexpr std::string_view restLabel = "other items";
inline constexpr std::string_view restExplanation
    = "Files and smaller folders, which snapshots don't list one by one, and the rounding of each size";
inline constexpr std::string_view uncertainMark = "≈";
inline constexpr std::string_view uncertainExplanation
    = "Only one of the two scans could read all of it, so the change is uncertain.";
std::string_view message(ChangesError error);
}

// Compares a place (absolute, or relative to the snapshots' place; empty for the whole of
// it) from an earlier snapshot to a later one of the same source. inside lists at most
// insideCount places.
std::expected<Changes, ChangesError> changes(std::shared_ptr<const Snapshot> from, std::shared_ptr<const Snapshot> to,
    std::string_view place = {}, std::size_t insideCount = insideLimit);

// A place's size at each snapshot (oldest first), made comparable with the latest: where a
// snapshot and the latest one did not both read a folder in full, that folder counts with
// its size in the latest snapshot, so a scan that read less (or more) of the place does not
// show as growth (or shrinking). The latest point is its own size. Sizes are precise when
// every snapshot has colours. A snapshot that does not keep the place counts 0 for it.
std::vector<SizePoint> sizeHistory(std::span<const std::shared_ptr<const Snapshot>> snapshots, std::string_view place = {});

// The same from outlines (oldest first, the latest last), when they are enough: when every
// scan read all of the place, and found it by its exact names, nothing needs matching.
// Absent otherwise, and then the snapshots must be read whole.
std::optional<std::vector<SizePoint>> sizeHistory(std::span<const SnapshotOutline> outlines);

// The comparison as text: a header line with the two dates ("yyyy-MM-dd HH:mm" in the given
// zone), then tab-separated rows with sizes in MB (1 MB = 1,000,000 bytes).
std::string exportText(const Changes& changes, const TimeZone& zone);

}
