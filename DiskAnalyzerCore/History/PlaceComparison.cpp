#include "History/PlaceComparison.hpp"

#include "History/Snapshot.hpp"
#include "History/SnapshotMatching.hpp"
#include "History/SnapshotPaths.hpp"

namespace tarnwick {

using HistoryQueries::ChangesError;
using HistoryQueries::Presence;
using HistoryQueries::ReadBy;
using HistoryQueries::SizeBasis;

namespace {

bool readInPart(NodeFlags flags) { return flags.contains(NodeFlag::incomplete) || flags.contains(NodeFlag::contentsUnread); }

std::int64_t sizeOf(const Snapshot& snapshot, std::int32_t node, SizeBasis sizes)
{
    if (node < 0)
        return 0;
    auto index = static_cast<std::size_t>(node);
    return sizes == SizeBasis::precise ? snapshot.preciseAllocated[index] : snapshot.allocated[index];
}

}

std::expected<PlaceComparison, ChangesError> PlaceComparison::make(const Snapshot& earlier, const Snapshot& later,
    const SnapshotMatching& matching, std::string_view place, SizeBasis sizes)
{
    auto earlierComponents = SnapshotPaths::components(earlier.rootPath, place);
    auto laterComponents = SnapshotPaths::components(later.rootPath, place);
    if (!earlierComponents || !laterComponents)
        return std::unexpected(ChangesError::outsideSnapshots);
    SnapshotPaths::Location inEarlier = SnapshotPaths::locate(earlier, *earlierComponents);
    SnapshotPaths::Location inLater = SnapshotPaths::locate(later, *laterComponents);
    std::int32_t earlierPlace = inEarlier.found(earlierComponents->size()) ? inEarlier.deepest : -1;
    std::int32_t laterPlace = inLater.found(laterComponents->size()) ? inLater.deepest : -1;
    if (earlierPlace < 0 && laterPlace < 0)
        return std::unexpected(ChangesError::notKept);

    PlaceComparison comparison(earlier, later);
    comparison.collectPairs(matching, earlierPlace, laterPlace);
    comparison.measure(sizes);
    comparison.judgeReading(readInPart(earlier.flags[static_cast<std::size_t>(inEarlier.deepest)]),
        readInPart(later.flags[static_cast<std::size_t>(inLater.deepest)]));
    return comparison;
}

void PlaceComparison::collectPairs(const SnapshotMatching& matching, std::int32_t earlierPlace, std::int32_t laterPlace)
{
    std::vector<std::int32_t> pairOfEarlier(static_cast<std::size_t>(m_earlier->nodeCount()), -1);
    std::vector<std::int32_t> pairOfLater(static_cast<std::size_t>(m_later->nodeCount()), -1);
    m_pairs.push_back(Pair { earlierPlace, laterPlace, -1 });
    if (earlierPlace >= 0)
        pairOfEarlier[static_cast<std::size_t>(earlierPlace)] = 0;
    if (laterPlace >= 0)
        pairOfLater[static_cast<std::size_t>(laterPlace)] = 0;
    // A node is below the place exactly when its parent already has a pair.
    if (earlierPlace >= 0) {
        for (std::size_t i = static_cast<std::size_t>(earlierPlace) + 1; i < pairOfEarlier.size(); ++i) {
            std::int32_t parentPair = pairOfEarlier[static_cast<std::size_t>(m_earlier->parents[i])];
            if (parentPair < 0)
                continue;
            std::int32_t later = matching.laterOf(static_cast<std::int32_t>(i));
            if (later >= 0 && pairOfLater[static_cast<std::size_t>(m_later->parents[static_cast<std::size_t>(later)])] != parentPair)
                later = -1;
            auto index = static_cast<std::int32_t>(m_pairs.size());
            m_pairs.push_back(Pair { static_cast<std::int32_t>(i), later, parentPair });
            pairOfEarlier[i] = index;
            if (later >= 0)
                pairOfLater[static_cast<std::size_t>(later)] = index;
        }
    }
    if (laterPlace >= 0) {
        for (std::size_t j = static_cast<std::size_t>(laterPlace) + 1; j < pairOfLater.size(); ++j) {
            if (pairOfLater[j] >= 0)
                continue;
            std::int32_t parentPair = pairOfLater[static_cast<std::size_t>(m_later->parents[j])];
            if (parentPair < 0)
                continue;
            pairOfLater[j] = static_cast<std::int32_t>(m_pairs.size());
            m_pairs.push_back(Pair { -1, static_cast<std::int32_t>(j), parentPair });
        }
    }
}

void PlaceComparison::measure(SizeBasis sizes)
{
    m_before.resize(m_pairs.size());
    m_after.resize(m_pairs.size());
    for (std::size_t p = 0; p < m_pairs.size(); ++p) {
        m_before[p] = sizeOf(*m_earlier, m_pairs[p].earlier, sizes);
        m_after[p] = sizeOf(*m_later, m_pairs[p].later, sizes);
    }
}

void PlaceComparison::judgeReading(bool earlierContextUnread, bool laterContextUnread)
{
    const std::size_t n = m_pairs.size();
    m_earlierUnread.resize(n);
    m_laterUnread.resize(n);
    for (std::size_t p = 0; p < n; ++p) {
        const Pair& pair = m_pairs[p];
        const bool parentEarlier = pair.parent >= 0 ? m_earlierUnread[static_cast<std::size_t>(pair.parent)] : earlierContextUnread;
        const bool parentLater = pair.parent >= 0 ? m_laterUnread[static_cast<std::size_t>(pair.parent)] : laterContextUnread;
        m_earlierUnread[p] = pair.earlier >= 0 ? readInPart(m_earlier->flags[static_cast<std::size_t>(pair.earlier)]) : parentEarlier;
        m_laterUnread[p] = pair.later >= 0 ? readInPart(m_later->flags[static_cast<std::size_t>(pair.later)]) : parentLater;
    }
    m_uncertain.assign(n, false);
    for (std::size_t p = n; p-- > 0;) {
        if (m_earlierUnread[p] != m_laterUnread[p])
            m_uncertain[p] = true;
        if (m_uncertain[p] && m_pairs[p].parent >= 0)
            m_uncertain[static_cast<std::size_t>(m_pairs[p].parent)] = true;
    }
}

std::vector<PlaceComparison::OneScanPair> PlaceComparison::readByOneScan() const
{
    const std::size_t n = m_pairs.size();
    // The end at which a differing pair was read in part, if it keeps the pair there.
    auto unreadKeptEnd = [&](std::size_t p) -> std::optional<ReadBy> {
        const Pair& pair = m_pairs[p];
        if (m_earlierUnread[p] == m_laterUnread[p])
            return std::nullopt;
        if (m_earlierUnread[p])
            return pair.earlier >= 0 ? std::optional(ReadBy::laterScan) : std::nullopt;
        return pair.later >= 0 ? std::optional(ReadBy::earlierScan) : std::nullopt;
    };
    std::vector<bool> hasListedInside(n, false);
    std::vector<std::optional<ReadBy>> candidate(n);
    for (std::size_t p = n; p-- > 1;) {
        candidate[p] = unreadKeptEnd(p);
        if (candidate[p]) {
            std::size_t parent = static_cast<std::size_t>(m_pairs[p].parent);
            if (unreadKeptEnd(parent) == candidate[p])
                hasListedInside[parent] = true;
        }
    }
    if (n > 0)
        candidate[0] = unreadKeptEnd(0);
    std::vector<OneScanPair> result;
    for (std::size_t p = 0; p < n; ++p) {
        if (candidate[p] && !hasListedInside[p])
            result.push_back(OneScanPair { p, *candidate[p] });
    }
    return result;
}

Presence PlaceComparison::presence(std::size_t pair) const
{
    if (m_pairs[pair].earlier < 0)
        return Presence::laterOnly;
    return m_pairs[pair].later < 0 ? Presence::earlierOnly : Presence::both;
}

std::string PlaceComparison::path(std::size_t pair) const
{
    const Pair& p = m_pairs[pair];
    return p.later >= 0 ? m_later->path(p.later) : m_earlier->path(p.earlier);
}

HistoryQueries::PlaceChange PlaceComparison::change(std::size_t pair) const
{
    return HistoryQueries::PlaceChange { path(pair), m_before[pair], m_after[pair], presence(pair), m_uncertain[pair] };
}

}
