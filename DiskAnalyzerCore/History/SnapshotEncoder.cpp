#include "History/SnapshotEncoder.hpp"

#include "Compression/Lzfse.hpp"
#include "History/SnapshotLayout.hpp"
#include "History/Varint.hpp"

#include <cassert>

namespace tarnwick::SnapshotEncoder {

namespace {

using Bytes = std::vector<std::uint8_t>;

void appendDay(Bytes& out, std::int32_t day, std::int32_t origin)
{
    if (day == Snapshot::unknownDay) {
        Varint::append(out, SnapshotLayout::unknownDayMarker);
        return;
    }
    Varint::append(out, Varint::zigzag(static_cast<std::int64_t>(day) - origin) + 1);
}

void appendRests(Bytes& out, const std::vector<RestPart>* parts, std::int64_t unit)
{
    if (parts) {
        for (const RestPart& part : *parts) {
            std::int64_t units = part.bytes / unit;
            if (units <= 0)
                continue;
            out.push_back(SnapshotLayout::restTag(part.mode, part.key));
            Varint::append(out, static_cast<std::uint64_t>(units));
        }
    }
    out.push_back(SnapshotLayout::restListEnd);
}

void appendName(Bytes& out, const std::string& name)
{
    Varint::append(out, name.size());
    out.insert(out.end(), name.begin(), name.end());
}

void appendParent(Bytes& out, const Snapshot& snapshot, std::size_t i)
{
    if (i == 0)
        out.push_back(0);
    else
        Varint::append(out, i - static_cast<std::size_t>(snapshot.parents[i]));
}

void appendColorRecord(Bytes& out, const Snapshot& snapshot, std::size_t i, std::int32_t dayOrigin)
{
    const auto node = static_cast<std::int32_t>(i);
    appendParent(out, snapshot, i);
    out.push_back(static_cast<std::uint8_t>(snapshot.kinds[i]));
    std::uint8_t flags = snapshot.flags[i].raw & SnapshotLayout::colorFlagMask;
    out.push_back(snapshot.hidden[i] ? flags | SnapshotLayout::hiddenBit : flags);
    const std::int64_t unit = SnapshotLayout::sizeUnit(node);
    const std::int64_t units = std::max<std::int64_t>(snapshot.preciseAllocated[i], 0) / unit;
    Varint::append(out, static_cast<std::uint64_t>(units));
    // Counted from the size as written, so that logical sizes come back exact; wrapping
    // arithmetic keeps even absurd values reversible.
    const std::uint64_t written = static_cast<std::uint64_t>(units) * static_cast<std::uint64_t>(unit);
    Varint::append(out, Varint::zigzag(static_cast<std::int64_t>(static_cast<std::uint64_t>(snapshot.logical[i]) - written)));
    appendName(out, snapshot.names[i]);
    if (!isContainer(snapshot.kinds[i]))
        return;
    appendDay(out, snapshot.lastChangeDays[i], dayOrigin);
    appendDay(out, snapshot.oldestItemDays[i], dayOrigin);
    auto created = snapshot.ownCreationDays.find(node);
    appendDay(out, created == snapshot.ownCreationDays.end() ? Snapshot::unknownDay : created->second, dayOrigin);
    auto rests = snapshot.restContent.parts.find(NodeID { node });
    appendRests(out, rests == snapshot.restContent.parts.end() ? nullptr : &rests->second, unit);
}

void appendPlainRecord(Bytes& out, const Snapshot& snapshot, std::size_t i)
{
    appendParent(out, snapshot, i);
    out.push_back(static_cast<std::uint8_t>(snapshot.kinds[i]));
    out.push_back(snapshot.flags[i].raw & SnapshotLayout::plainFlagMask);
    Varint::append(out, static_cast<std::uint64_t>(std::max<std::int64_t>(snapshot.allocated[i], 0) / snapshot.threshold));
    appendName(out, snapshot.names[i]);
}

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
    Bytes out;
    out.reserve(json.size() + Varint::maximumLength + 24 * n);
    Varint::append(out, json.size());
    out.insert(out.end(), json.begin(), json.end());
    for (std::size_t i = 0; i < n; ++i) {
        if (withColors)
            appendColorRecord(out, snapshot, i, head.dayOrigin);
        else
            appendPlainRecord(out, snapshot, i);
    }
    if (out.size() > Snapshot::maximumBodySize)
        return std::unexpected(Snapshot::EncodingError::tooLarge);
    return out;
}

std::expected<std::vector<std::uint8_t>, Snapshot::EncodingError> encode(const Snapshot& snapshot, Snapshot::Colors colors)
{
    auto plain = body(snapshot, colors);
    if (!plain)
        return std::unexpected(plain.error());
    Bytes compressed = Lzfse::encode(*plain);
    Bytes file;
    file.reserve(SnapshotLayout::prefixLength + compressed.size());
    file.insert(file.end(), SnapshotLayout::magic.begin(), SnapshotLayout::magic.end());
    file.push_back(Snapshot::currentVersion);
    file.insert(file.end(), compressed.begin(), compressed.end());
    return file;
}

}
