#pragma once

#include "Classification/RestBuckets.hpp"
#include "Scanning/NodeFlags.hpp"
#include "Scanning/NodeKind.hpp"
#include "Scanning/ScanCoverage.hpp"
#include "Scanning/TreeDate.hpp"

#include <cstddef>
#include <cstdint>
#include <expected>
#include <limits>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace tarnwick {

// What a snapshot keeps. Stored as its raw byte.
enum class SnapshotDetail : std::uint8_t {
    folders = 0,
};

// The saved, reduced form of one scan: the root and every folder of at least `threshold`
// bytes on disk whose parent is kept too, in pre-order (every parent before its children).
// All per-node arrays hold `nodeCount()` entries; the colour arrays are empty when the
// snapshot has no colours. The file format is described in History/SNAPSHOT-FORMAT.md.
struct Snapshot {
    struct Volume {
        std::int64_t total = 0;
        std::int64_t available = 0;
        bool operator==(const Volume&) const = default;
    };

    // A node's dates as local day numbers, the form version 5 files kept in their header.
    struct Timestamps {
        std::int32_t modified = std::numeric_limits<std::int32_t>::min();
        std::int32_t oldest = std::numeric_limits<std::int32_t>::min();
        std::int32_t created = std::numeric_limits<std::int32_t>::min();
        bool operator==(const Timestamps&) const = default;
    };

    // Per kept folder, how its bytes that no kept child accounts for split by content
    // category, modification and creation date group, and visibility (the colour totals of
    // the scan, less those of the kept subfolders). Flat: node i's parts are
    // parts[firstPart[i]] up to parts[firstPart[i + 1]]; firstPart holds nodeCount + 1
    // entries with colours and none without.
    struct Rests {
        std::vector<std::int32_t> firstPart;
        std::vector<RestPart> parts;

        [[nodiscard]] std::span<const RestPart> of(std::int32_t node) const;
        // In the form a tree made from the snapshot takes them, keyed by node index.
        [[nodiscard]] RestBuckets buckets() const;
        bool operator==(const Rests&) const = default;
    };

    struct Header;
    struct DecodingError;
    struct Encoded;

    // Which detail an encoding writes: without colours, with them (only for a snapshot that
    // has them), or as the snapshot has them.
    enum class Colors : std::uint8_t { without, with, asKept };

    enum class EncodingError : std::uint8_t {
        inconsistent, // the arrays disagree in length, or a parent does not come before its child
        tooLarge,     // the body would exceed what readers accept (maximumBodySize)
    };

    // "Snapshots keep folders of 10 MB and more, rounded down to 10 MB."
    static constexpr std::int64_t keepThreshold = 10'000'000;
    static constexpr std::string_view keepRule = "Snapshots keep folders of 10 MB and more, rounded down to 10 MB.";
    static constexpr std::int32_t unknownDay = std::numeric_limits<std::int32_t>::min();
    static constexpr std::uint8_t currentVersion = 6;
    static constexpr std::uint8_t previousVersion = 5;
    // A reader refuses bodies that decompress to more than this; the writer never makes one.
    static constexpr std::size_t maximumBodySize = std::size_t { 1 } << 30;

    Date date {};
    SnapshotDetail detail = SnapshotDetail::folders;
    std::int64_t threshold = keepThreshold;
    std::string rootPath;
    std::optional<Volume> volume;
    std::vector<std::string> names;
    std::vector<std::int32_t> parents; // -1 for the root
    std::vector<NodeKind> kinds;
    std::vector<NodeFlags> flags;
    std::vector<std::int64_t> allocated; // rounded down to a multiple of threshold
    bool hasColors = false;
    std::vector<std::int64_t> preciseAllocated;
    std::vector<std::int64_t> logical;
    std::vector<bool> hidden;
    std::vector<std::int32_t> lastChangeDays; // unknownDay when not known
    std::vector<std::int32_t> oldestItemDays;
    // Node -> creation day of the node itself, sorted by node, only for nodes that have one.
    std::vector<std::pair<std::int32_t, std::int32_t>> ownCreationDays;
    // Per-node dates in the version 5 form; empty in snapshots reduced now, whose dates are
    // in the three day columns above.
    std::vector<Timestamps> timestamps;
    // The local day numbers that separated the date groups of the date rest parts when the
    // snapshot was made (start of its day, 7 days, 30 days and a year before); empty
    // without colours.
    std::vector<std::int32_t> restDays;
    Rests restContent;
    ScanCoverage coverage;

    [[nodiscard]] std::int32_t nodeCount() const { return static_cast<std::int32_t>(names.size()); }
    // The size comparisons use: preciseAllocated when the snapshot has colours, else the
    // rounded size.
    [[nodiscard]] std::int64_t size(std::int32_t node) const;
    [[nodiscard]] std::optional<std::int32_t> ownCreationDay(std::int32_t node) const;
    // The absolute path of a node.
    [[nodiscard]] std::string path(std::int32_t node) const;
    // The node at an absolute path (or one relative to the root); absent when not kept.
    [[nodiscard]] std::optional<std::int32_t> node(std::string_view atPath) const;
    // Whether the arrays agree with each other (lengths, parents before children).
    [[nodiscard]] bool isConsistent() const;

    [[nodiscard]] std::expected<std::vector<std::uint8_t>, EncodingError> encode(Colors colors = Colors::asKept) const;
    // The value and both files the history store writes for one save.
    static std::expected<Encoded, EncodingError> encodeForStore(Snapshot snapshot);
    static std::expected<Snapshot, DecodingError> decode(std::span<const std::uint8_t> bytes);

    bool operator==(const Snapshot&) const = default;
};

// The JSON header at the start of a file's body. Keys in this order: "date", "detail",
// "threshold", "rootPath", "volumeTotal", "volumeAvailable", "nodeCount", "dayOrigin",
// "hasColors", "restDays", "coverage", "timestamps"; absent optionals are left out.
struct Snapshot::Header {
    Date date {}; // written as seconds since 2001-01-01 00:00:00 UTC
    SnapshotDetail detail = SnapshotDetail::folders;
    std::int64_t threshold = keepThreshold;
    std::string rootPath;
    std::optional<std::int64_t> volumeTotal;
    std::optional<std::int64_t> volumeAvailable;
    std::int64_t nodeCount = 0;
    std::int32_t dayOrigin = 0; // node day values are written as differences from it
    bool hasColors = false;
    std::optional<std::vector<std::int32_t>> restDays;
    std::optional<std::vector<std::string>> coverage;
    std::optional<std::vector<Timestamps>> timestamps;

    [[nodiscard]] std::string json() const;
    // Absent for anything that is not a header object with the required keys and types.
    static std::optional<Header> parse(std::string_view json);

    bool operator==(const Header&) const = default;
};

// Why bytes could not be read as a snapshot. Carries no message of its own.
struct Snapshot::DecodingError {
    enum class Case : std::uint8_t { unsupportedVersion, notASnapshot, damaged };

    Case reason = Case::damaged;
    std::uint8_t version = 0; // the version byte read, for unsupportedVersion

    static DecodingError unsupportedVersion(std::uint8_t version) { return { Case::unsupportedVersion, version }; }
    static DecodingError notASnapshot() { return { Case::notASnapshot, 0 }; }
    static DecodingError damaged() { return { Case::damaged, 0 }; }

    bool operator==(const DecodingError&) const = default;
};

// One save at once: the value, the bytes of "current.snap" and those of the day's own
// file. Both files keep the snapshot's colours when it has them: the day files are what
// period comparisons start from, and the change by content type needs colours at both ends.
struct Snapshot::Encoded {
    Snapshot snapshot;
    std::vector<std::uint8_t> current;
    std::vector<std::uint8_t> day;
};

// Dates in headers: seconds since 2001-01-01 00:00:00 UTC as a number, to the microsecond.
namespace SnapshotDates {
double secondsSinceReference(Date date);
// Absent for values out of the range a snapshot can hold.
std::optional<Date> fromSecondsSinceReference(double seconds);
// Snapshot dates keep whole microseconds, so that a date survives its JSON form.
Date truncatedToMicroseconds(Date date);
}

}
