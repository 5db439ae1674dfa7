#include "History/SnapshotDecoder.hpp"

#include "Compression/Lzfse.hpp"
#include "History/SnapshotLayout.hpp"
#include "History/Varint.hpp"
#include "Support/UnicodeNames.hpp"

#include <algorithm>

namespace tarnwick::SnapshotDecoder {

namespace {

using Error = Snapshot::DecodingError;
constexpr std::int64_t largest = std::numeric_limits<std::int64_t>::max();

std::optional<std::int64_t> scaled(std::uint64_t units, std::int64_t unit)
{
    if (units > static_cast<std::uint64_t>(largest / unit))
        return std::nullopt;
    return static_cast<std::int64_t>(units) * unit;
}

std::string nameFrom(std::span<const std::uint8_t> bytes)
{
    std::string_view raw(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    bool ascii = std::all_of(raw.begin(), raw.end(), [](char c) { return static_cast<unsigned char>(c) < 0x80; });
    if (ascii || UnicodeNames::isValidUTF8(raw))
        return std::string(raw);
    return UnicodeNames::repaired(raw);
}

std::optional<std::int32_t> day(Varint::Reader& reader, std::int32_t origin)
{
    std::optional<std::uint64_t> value = reader.varint();
    if (!value)
        return std::nullopt;
    if (*value == SnapshotLayout::unknownDayMarker)
        return Snapshot::unknownDay;
    std::int64_t result = static_cast<std::int64_t>(origin) + Varint::unzigzag(*value - 1);
    // A known day that lands on the "unknown" value, or outside 32 bits, cannot have been written.
    if (result <= std::numeric_limits<std::int32_t>::min() || result > std::numeric_limits<std::int32_t>::max())
        return std::nullopt;
    return static_cast<std::int32_t>(result);
}

bool readRests(Varint::Reader& reader, std::int64_t unit, std::vector<RestPart>& parts)
{
    for (;;) {
        std::optional<std::uint8_t> tag = reader.byte();
        if (!tag)
            return false;
        if (*tag == SnapshotLayout::restListEnd)
            return true;
        auto mode = static_cast<RestMode>(*tag / 16);
        auto key = static_cast<std::uint8_t>(*tag % 16);
        if (!SnapshotLayout::isValidRestPart(mode, key))
            return false;
        std::optional<std::uint64_t> units = reader.varint();
        std::optional<std::int64_t> bytes = units ? scaled(*units, unit) : std::nullopt;
        if (!bytes)
            return false;
        parts.push_back(RestPart { mode, key, *bytes });
    }
}

struct RecordReader {
    Varint::Reader& reader;
    Snapshot& snapshot;
    std::int32_t dayOrigin;
    bool withColors;
    bool withDayValues; // version 6 with colours

    bool read(std::size_t i)
    {
        const auto node = static_cast<std::int32_t>(i);
        if (!readParent(i))
            return false;
        std::optional<std::uint8_t> kind = reader.byte();
        std::optional<std::uint8_t> flags = reader.byte();
        std::optional<std::uint64_t> units = reader.varint();
        if (!kind || *kind > static_cast<std::uint8_t>(NodeKind::other) || !flags || !units)
            return false;
        snapshot.kinds[i] = static_cast<NodeKind>(*kind);
        if (withColors) {
            snapshot.flags[i] = NodeFlags(*flags & SnapshotLayout::colorFlagMask);
            snapshot.hidden[i] = (*flags & SnapshotLayout::hiddenBit) != 0;
            std::optional<std::int64_t> precise = scaled(*units, SnapshotLayout::sizeUnit(node));
            std::optional<std::uint64_t> difference = reader.varint();
            if (!precise || !difference)
                return false;
            snapshot.preciseAllocated[i] = *precise;
            snapshot.allocated[i] = *precise / snapshot.threshold * snapshot.threshold;
            std::int64_t logicalDifference = Varint::unzigzag(*difference);
            snapshot.logical[i] = static_cast<std::int64_t>(static_cast<std::uint64_t>(*precise) + static_cast<std::uint64_t>(logicalDifference));
        } else {
            snapshot.flags[i] = NodeFlags(*flags & SnapshotLayout::plainFlagMask);
            std::optional<std::int64_t> rounded = scaled(*units, snapshot.threshold);
            if (!rounded)
                return false;
            snapshot.allocated[i] = *rounded;
        }
        std::optional<std::uint64_t> nameLength = reader.varint();
        auto name = nameLength ? reader.bytes(*nameLength) : std::nullopt;
        if (!name)
            return false;
        snapshot.names[i] = nameFrom(*name);
        if (withColors)
            snapshot.restContent.firstPart[i] = static_cast<std::int32_t>(snapshot.restContent.parts.size());
        if (withDayValues && isContainer(snapshot.kinds[i]))
            return readDaysAndRests(i);
        return true;
    }

    bool readParent(std::size_t i)
    {
        if (i == 0) {
            std::optional<std::uint8_t> marker = reader.byte();
            snapshot.parents[0] = -1;
            return marker == 0;
        }
        std::optional<std::uint64_t> distance = reader.varint();
        if (!distance || *distance == 0 || *distance > i)
            return false;
        snapshot.parents[i] = static_cast<std::int32_t>(i - *distance);
        return true;
    }

    bool readDaysAndRests(std::size_t i)
    {
        const auto node = static_cast<std::int32_t>(i);
        std::optional<std::int32_t> lastChange = day(reader, dayOrigin);
        std::optional<std::int32_t> oldest = day(reader, dayOrigin);
        std::optional<std::int32_t> created = day(reader, dayOrigin);
        if (!lastChange || !oldest || !created)
            return false;
        snapshot.lastChangeDays[i] = *lastChange;
        snapshot.oldestItemDays[i] = *oldest;
        if (*created != Snapshot::unknownDay)
            snapshot.ownCreationDays.emplace_back(node, *created);
        return readRests(reader, SnapshotLayout::sizeUnit(node), snapshot.restContent.parts);
    }
};

Snapshot emptySnapshot(const Snapshot::Header& header, std::size_t n)
{
    Snapshot snapshot;
    snapshot.date = header.date;
    snapshot.detail = header.detail;
    snapshot.threshold = header.threshold;
    snapshot.rootPath = header.rootPath;
    if (header.volumeTotal && header.volumeAvailable)
        snapshot.volume = Snapshot::Volume { *header.volumeTotal, *header.volumeAvailable };
    snapshot.hasColors = header.hasColors;
    snapshot.names.resize(n);
    snapshot.parents.resize(n);
    snapshot.kinds.resize(n);
    snapshot.flags.resize(n);
    snapshot.allocated.resize(n);
    if (header.hasColors) {
        snapshot.preciseAllocated.resize(n);
        snapshot.logical.resize(n);
        snapshot.hidden.resize(n);
        snapshot.lastChangeDays.assign(n, Snapshot::unknownDay);
        snapshot.oldestItemDays.assign(n, Snapshot::unknownDay);
        snapshot.restContent.firstPart.assign(n + 1, 0);
        if (header.restDays)
            snapshot.restDays = *header.restDays;
    }
    if (header.coverage)
        snapshot.coverage.readableFolders = *header.coverage;
    if (header.hasColors && header.timestamps)
        snapshot.timestamps = *header.timestamps;
    return snapshot;
}

// Version 5 files kept a snapshot's dates in their header only.
void takeDatesFromTimestamps(Snapshot& snapshot)
{
    if (!snapshot.hasColors || snapshot.timestamps.empty())
        return;
    for (std::size_t i = 0; i < snapshot.timestamps.size(); ++i) {
        const Snapshot::Timestamps& dates = snapshot.timestamps[i];
        snapshot.lastChangeDays[i] = dates.modified;
        snapshot.oldestItemDays[i] = dates.oldest;
        if (dates.created != Snapshot::unknownDay)
            snapshot.ownCreationDays.emplace_back(static_cast<std::int32_t>(i), dates.created);
    }
}

bool headerIsUsable(const Snapshot::Header& header, std::size_t recordBytes)
{
    if (header.threshold <= 0 || header.nodeCount < 1)
        return false;
    if (static_cast<std::uint64_t>(header.nodeCount) > recordBytes / SnapshotLayout::minimumRecordLength)
        return false;
    if (header.volumeTotal.has_value() != header.volumeAvailable.has_value())
        return false;
    return !header.timestamps || header.timestamps->size() == static_cast<std::size_t>(header.nodeCount);
}

}

std::expected<Snapshot, Snapshot::DecodingError> decodeBody(std::span<const std::uint8_t> body, std::uint8_t version)
{
    Varint::Reader reader(body);
    std::optional<std::uint64_t> headerLength = reader.varint();
    auto headerBytes = headerLength ? reader.bytes(*headerLength) : std::nullopt;
    if (!headerBytes)
        return std::unexpected(Error::damaged());
    std::optional<Snapshot::Header> header
        = Snapshot::Header::parse(std::string_view(reinterpret_cast<const char*>(headerBytes->data()), headerBytes->size()));
    if (!header || !headerIsUsable(*header, reader.remaining()))
        return std::unexpected(Error::damaged());

    const auto n = static_cast<std::size_t>(header->nodeCount);
    Snapshot snapshot = emptySnapshot(*header, n);
    const bool withDayValues = header->hasColors && version >= Snapshot::currentVersion;
    RecordReader records { reader, snapshot, header->dayOrigin, header->hasColors, withDayValues };
    if (header->hasColors)
        snapshot.restContent.parts.reserve(4 * n);
    for (std::size_t i = 0; i < n; ++i) {
        if (!records.read(i))
            return std::unexpected(Error::damaged());
    }
    if (header->hasColors)
        snapshot.restContent.firstPart[n] = static_cast<std::int32_t>(snapshot.restContent.parts.size());
    if (!reader.atEnd())
        return std::unexpected(Error::damaged());
    if (version < Snapshot::currentVersion)
        takeDatesFromTimestamps(snapshot);
    return snapshot;
}

std::expected<Snapshot, Snapshot::DecodingError> decode(std::span<const std::uint8_t> bytes)
{
    if (bytes.size() < SnapshotLayout::magic.size() || !std::equal(SnapshotLayout::magic.begin(), SnapshotLayout::magic.end(), bytes.begin()))
        return std::unexpected(Error::notASnapshot());
    if (bytes.size() < SnapshotLayout::prefixLength)
        return std::unexpected(Error::damaged());
    const std::uint8_t version = bytes[SnapshotLayout::magic.size()];
    if (version != Snapshot::currentVersion && version != Snapshot::previousVersion)
        return std::unexpected(Error::unsupportedVersion(version));
    auto body = Lzfse::decode(bytes.subspan(SnapshotLayout::prefixLength), Snapshot::maximumBodySize);
    if (!body)
        return std::unexpected(Error::damaged());
    return decodeBody(*body, version);
}

}
