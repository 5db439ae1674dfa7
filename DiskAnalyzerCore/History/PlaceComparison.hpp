#pragma once

#include "History/HistoryChanges.hpp"

#include <cstdint>
#include <expected>
#include <string>
#include <string_view>
#include <vector>

namespace tarnwick {

struct Snapshot;
class SnapshotMatching;

// Two snapshots of one source side by side below one place: every folder kept by either,
// as a pair of node indices (-1 at the end that does not keep it), the place itself first
// and every parent before its children.
//
// Whether a scan read a folder in full: a kept folder is read in part when it is
// `incomplete` or `contentsUnread`; a folder that one scan does not keep counts as read as
// far as its nearest kept ancestor there was (it may have been too small, or unreadable).
// A pair differs when exactly one scan read it in full; its change and the changes of
// everything above it are then uncertain. The deepest differing places are the ones only
// one scan read: a differing folder is listed unless a folder kept inside it differs the
// same way (that one is listed instead).
class PlaceComparison {
public:
    struct Pair {
        std::int32_t earlier = -1;
        std::int32_t later = -1;
        std::int32_t parent = -1; // index of the parent pair; -1 for the place
    };

    static std::expected<PlaceComparison, HistoryQueries::ChangesError> make(const Snapshot& earlier, const Snapshot& later,
        const SnapshotMatching& matching, std::string_view place, HistoryQueries::SizeBasis sizes);

    [[nodiscard]] const std::vector<Pair>& pairs() const { return m_pairs; }
    [[nodiscard]] std::int64_t before(std::size_t pair) const { return m_before[pair]; }
    [[nodiscard]] std::int64_t after(std::size_t pair) const { return m_after[pair]; }
    [[nodiscard]] bool isUncertain(std::size_t pair) const { return m_uncertain[pair]; }
    [[nodiscard]] HistoryQueries::Presence presence(std::size_t pair) const;
    [[nodiscard]] std::string path(std::size_t pair) const;
    [[nodiscard]] HistoryQueries::PlaceChange change(std::size_t pair) const;

    struct OneScanPair {
        std::size_t pair = 0;
        HistoryQueries::ReadBy readBy = HistoryQueries::ReadBy::laterScan;
    };
    // In pair order, so an outer place comes before any place listed inside it.
    [[nodiscard]] std::vector<OneScanPair> readByOneScan() const;

private:
    PlaceComparison(const Snapshot& earlier, const Snapshot& later)
        : m_earlier(&earlier)
        , m_later(&later)
    {
    }
    void collectPairs(const SnapshotMatching& matching, std::int32_t earlierPlace, std::int32_t laterPlace);
    void measure(HistoryQueries::SizeBasis sizes);
    void judgeReading(bool earlierContextUnread, bool laterContextUnread);

    const Snapshot* m_earlier;
    const Snapshot* m_later;
    std::vector<Pair> m_pairs;
    std::vector<std::int64_t> m_before;
    std::vector<std::int64_t> m_after;
    std::vector<bool> m_earlierUnread;
    std::vector<bool> m_laterUnread;
    std::vector<bool> m_uncertain;
};

}
