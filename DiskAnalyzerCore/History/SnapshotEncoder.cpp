#include "History/SnapshotEncoder.hpp"

#include "Compression/Lzfse.hpp"
#include "History/SnapshotLayout.hpp"
#include "History/Varint.hpp"

#include <cassert>
#include <cmath>

namespace tarnwick::SnapshotEncoder {

namespace {

// Writes the records of one snapshot in node order. Own creation days are sorted by node,
// so they are met with one cursor rather than looked up.
class RecordWriter {
public:
    RecordWriter(Varint::Writer& out, const Snapshot& snapshot, std::int32_t dayOrigin)
        : m_out(out)
        , m_snapshot(snapshot)
        , m_dayOrigin(dayOrigin)
    {
    }

    void writeWithColors(std::size_t i)
    {
        const auto node = static_cast<std::int32_t>(i);
        writeParent(i);
        m_out.byte(static_cast<std::uint8_t>(m_snapshot.kinds[i]));
        std::uint8_t flags = m_snapshot.flags[i].raw & SnapshotLayout::colorFlagMask;
        m_out.byte(m_snapshot.hidden[i] ? flags | SnapshotLayout::hiddenBit : flags);
        const std::int64_t unit = SnapshotLayout::sizeUnit(node);
        const std::int64_t units = std::max<std::int64_t>(m_snapshot.preciseAllocated[i], 0) / unit;
        m_out.varint(static_cast<std::uint64_t>(units));
        // Counted from the size as written, so that logical sizes come back exact; wrapping
        // arithmetic keeps even absurd values reversible.
        const std::uint64_t written = static_cast<std::uint64_t>(units) * static_cast<std::uint64_t>(unit);
        m_out.signedVarint(static_cast<std::int64_t>(static_cast<std::uint64_t>(m_snapshot.logical[i]) - written));
        writeName(i);
        if (!isContainer(m_snapshot.kinds[i]))
            return;
        writeDay(m_snapshot.lastChangeDays[i]);
        writeDay(m_snapshot.oldestItemDays[i]);
        writeDay(ownCreationDay(node));
        writeRests(node, unit);
    }

    void writeWithoutColors(std::size_t i)
    {
        writeParent(i);
        m_out.byte(static_cast<std::uint8_t>(m_snapshot.kinds[i]));
        m_out.byte(m_snapshot.flags[i].raw & SnapshotLayout::plainFlagMask);
        m_out.varint(static_cast<std::uint64_t>(std::max<std::int64_t>(m_snapshot.allocated[i], 0) / m_snapshot.threshold));
        writeName(i);
    }

private:
    void writeParent(std::size_t i)
    {
        if (i == 0)
            m_out.byte(0);
        else
            m_out.varint(i - static_cast<std::size_t>(m_snapshot.parents[i]));
    }

    void writeName(std::size_t i)
    {
        const std::string& name = m_snapshot.names[i];
        m_out.varint(name.size());
        m_out.bytes(name.data(), name.size());
    }

    void writeDay(std::int32_t day)
    {
        if (day == Snapshot::unknownDay)
            m_out.varint(SnapshotLayout::unknownDayMarker);
        else
            m_out.varint(Varint::zigzag(static_cast<std::int64_t>(day) - m_dayOrigin) + 1);
    }

    std::int32_t ownCreationDay(std::int32_t node)
    {
        const auto& days = m_snapshot.ownCreationDays;
        while (m_nextCreation < days.size() && days[m_nextCreation].first < node)
            ++m_nextCreation;
        if (m_nextCreation < days.size() && days[m_nextCreation].first == node)
            return days[m_nextCreation].second;
        return Snapshot::unknownDay;
    }

    // Parts are written in whole units of the node's size unit, rounded to the nearest, so
    // that the parts of many folders add up without a bias; a part that rounds to nothing is
    // left out.
    void writeRests(std::int32_t node, std::int64_t unit)
    {
        for (const RestPart& part : m_snapshot.restContent.of(node)) {
            const std::int64_t units = part.bytes / unit + (part.bytes % unit >= (unit + 1) / 2 ? 1 : 0);
            if (units <= 0)
                continue;
            m_out.byte(SnapshotLayout::restTag(part.mode, part.key));
            m_out.varint(static_cast<std::uint64_t>(units));
        }
        m_out.byte(SnapshotLayout::restListEnd);
    }

    Varint::Writer& m_out;
    const Snapshot& m_snapshot;
    std::int32_t m_dayOrigin;
    std::size_t m_nextCreation = 0;
};

bool wantsColors(const Snapshot& snapshot, Snapshot::Colors colors)
{
    assert((colors != Snapshot::Colors::with || snapshot.hasColors) && "colours asked of a snapshot without them");
    return colors != Snapshot::Colors::without && snapshot.hasColors;
}

}

Snapshot::Header header(const Snapshot& snapshot, bool withColors)
{
    Snapshot::Header header;
    header.date = snapshot.date;
    header.detail = snapshot.detail;
    header.threshold = snapshot.threshold;
    header.rootPath = snapshot.rootPath;
    if (snapshot.volume) {
        header.volumeTotal = snapshot.volume->total;
        header.volumeAvailable = snapshot.volume->available;
    }
    header.nodeCount = snapshot.nodeCount();
    header.hasColors = withColors;
    if (withColors) {
        if (!snapshot.lastChangeDays.empty() && snapshot.lastChangeDays[0] != Snapshot::unknownDay)
            header.dayOrigin = snapshot.lastChangeDays[0];
        if (!snapshot.restDays.empty())
            header.restDays = snapshot.restDays;
        if (!snapshot.timestamps.empty())
            header.timestamps = snapshot.timestamps;
    }
    if (!snapshot.coverage.isWhole())
        header.coverage = snapshot.coverage.readableFolders;
    return header;
}

std::expected<std::vector<std::uint8_t>, Snapshot::EncodingError> body(const Snapshot& snapshot, Snapshot::Colors colors)
{
    if (!snapshot.isConsistent())
        return std::unexpected(Snapshot::EncodingError::inconsistent);
    const bool withColors = wantsColors(snapshot, colors);
    const Snapshot::Header head = header(snapshot, withColors);
    const std::string json = head.json();
    const auto n = static_cast<std::size_t>(snapshot.nodeCount());
    Varint::Writer out(json.size() + Varint::maximumLength + 24 * n);
    out.varint(json.size());
    out.bytes(json.data(), json.size());
    RecordWriter records(out, snapshot, head.dayOrigin);
    for (std::size_t i = 0; i < n; ++i) {
        if (withColors)
            records.writeWithColors(i);
        else
            records.writeWithoutColors(i);
        if (out.size() > Snapshot::maximumBodySize)
            return std::unexpected(Snapshot::EncodingError::tooLarge);
    }
    return std::move(out).finish();
}

std::expected<std::vector<std::uint8_t>, Snapshot::EncodingError> encode(const Snapshot& snapshot, Snapshot::Colors colors)
{
    auto plain = body(snapshot, colors);
    if (!plain)
        return std::unexpected(plain.error());
    std::vector<std::uint8_t> compressed = Lzfse::encode(*plain);
    std::vector<std::uint8_t> file;
    file.reserve(SnapshotLayout::prefixLength + compressed.size());
    file.insert(file.end(), SnapshotLayout::magic.begin(), SnapshotLayout::magic.end());
    file.push_back(Snapshot::currentVersion);
    file.insert(file.end(), compressed.begin(), compressed.end());
    return file;
}

}
