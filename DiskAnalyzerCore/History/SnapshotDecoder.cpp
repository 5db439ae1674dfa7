#include "History/SnapshotDecoder.hpp"

#include "Compression/Lzfse.hpp"
#include "History/SnapshotLayout.hpp"
#include "History/SnapshotPaths.hpp"
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

// One record as the file has it, its sizes scaled to bytes.
struct Record {
    std::int32_t parent = -1;
    NodeKind kind = NodeKind::directory;
    std::uint8_t flags = 0;
    std::int64_t bytes = 0;        // precise with colours (the node's unit), else rounded to the threshold
    std::int64_t logicalDifference = 0; // with colours
    std::span<const std::uint8_t> name;
};

// Reads the records after the header, checking every field as it goes, and hands each to
// the sink: record() for the record, days() and rest() for a folder's day values and rests.
// Every reader of snapshot files goes through here, so they agree on what is damaged.
template <typename Sink>
bool readRecords(Varint::Reader& reader, const Snapshot::Header& header, std::uint8_t version, Sink& sink)
{
    const auto n = static_cast<std::size_t>(header.nodeCount);
    const bool withColors = header.hasColors;
    const bool withDayValues = withColors && version >= Snapshot::currentVersion;
    for (std::size_t i = 0; i < n; ++i) {
        const auto node = static_cast<std::int32_t>(i);
        Record record;
        if (i == 0) {
            if (reader.byte() != 0)
                return false;
        } else {
            std::optional<std::uint64_t> distance = reader.varint();
            if (!distance || *distance == 0 || *distance > i)
                return false;
            record.parent = static_cast<std::int32_t>(i - *distance);
        }
        std::optional<std::uint8_t> kind = reader.byte();
        std::optional<std::uint8_t> flags = reader.byte();
        std::optional<std::uint64_t> units = reader.varint();
        if (!kind || *kind > static_cast<std::uint8_t>(NodeKind::other) || !flags || !units)
            return false;
        record.kind = static_cast<NodeKind>(*kind);
        record.flags = *flags;
        std::optional<std::int64_t> bytes = scaled(*units, withColors ? SnapshotLayout::sizeUnit(node) : header.threshold);
        if (!bytes)
            return false;
        record.bytes = *bytes;
        if (withColors) {
            std::optional<std::uint64_t> difference = reader.varint();
            if (!difference)
                return false;
            record.logicalDifference = Varint::unzigzag(*difference);
        }
        std::optional<std::uint64_t> nameLength = reader.varint();
        auto name = nameLength ? reader.bytes(*nameLength) : std::nullopt;
        if (!name)
            return false;
        record.name = *name;
        sink.record(i, record);
        if (!withDayValues || !isContainer(record.kind))
            continue;
        std::optional<std::int32_t> lastChange = day(reader, header.dayOrigin);
        std::optional<std::int32_t> oldest = day(reader, header.dayOrigin);
        std::optional<std::int32_t> created = day(reader, header.dayOrigin);
        if (!lastChange || !oldest || !created)
            return false;
        sink.days(i, *lastChange, *oldest, *created);
        for (;;) {
            std::optional<std::uint8_t> tag = reader.byte();
            if (!tag)
                return false;
            if (*tag == SnapshotLayout::restListEnd)
                break;
            auto mode = static_cast<RestMode>(*tag / 16);
            auto key = static_cast<std::uint8_t>(*tag % 16);
            if (!SnapshotLayout::isValidRestPart(mode, key))
                return false;
            std::optional<std::uint64_t> restUnits = reader.varint();
            std::optional<std::int64_t> restBytes = restUnits ? scaled(*restUnits, SnapshotLayout::sizeUnit(node)) : std::nullopt;
            if (!restBytes)
                return false;
            sink.rest(RestPart { mode, key, *restBytes });
        }
    }
    return reader.atEnd();
}

// Fills a whole snapshot value.
struct SnapshotSink {
    Snapshot& snapshot;

    void record(std::size_t i, const Record& record)
    {
        snapshot.parents[i] = record.parent;
        snapshot.kinds[i] = record.kind;
        if (snapshot.hasColors) {
            snapshot.flags[i] = NodeFlags(record.flags & SnapshotLayout::colorFlagMask);
            snapshot.hidden[i] = (record.flags & SnapshotLayout::hiddenBit) != 0;
            snapshot.preciseAllocated[i] = record.bytes;
            snapshot.allocated[i] = record.bytes / snapshot.threshold * snapshot.threshold;
            snapshot.logical[i] = static_cast<std::int64_t>(static_cast<std::uint64_t>(record.bytes) + static_cast<std::uint64_t>(record.logicalDifference));
            snapshot.restContent.firstPart[i] = static_cast<std::int32_t>(snapshot.restContent.parts.size());
        } else {
            snapshot.flags[i] = NodeFlags(record.flags & SnapshotLayout::plainFlagMask);
            snapshot.allocated[i] = record.bytes;
        }
        snapshot.names[i] = nameFrom(record.name);
    }

    void days(std::size_t i, std::int32_t lastChange, std::int32_t oldest, std::int32_t created)
    {
        snapshot.lastChangeDays[i] = lastChange;
        snapshot.oldestItemDays[i] = oldest;
        if (created != Snapshot::unknownDay)
            snapshot.ownCreationDays.emplace_back(static_cast<std::int32_t>(i), created);
    }

    void rest(const RestPart& part) { snapshot.restContent.parts.push_back(part); }
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

// The body's JSON header, when it is one a body of this length can follow.
std::optional<Snapshot::Header> readHeader(Varint::Reader& reader)
{
    std::optional<std::uint64_t> headerLength = reader.varint();
    auto headerBytes = headerLength ? reader.bytes(*headerLength) : std::nullopt;
    if (!headerBytes)
        return std::nullopt;
    std::optional<Snapshot::Header> header
        = Snapshot::Header::parse(std::string_view(reinterpret_cast<const char*>(headerBytes->data()), headerBytes->size()));
    if (!header || !headerIsUsable(*header, reader.remaining()))
        return std::nullopt;
    return header;
}

}

// Follows one place through the records: the deepest node on its way matched so far, and the
// flags of everything in that node's subtree, which in pre-order is the run of nodes after it
// whose parents are no earlier than it.
struct OutlineSink {
    SnapshotOutline& outline;
    const std::vector<std::string_view>& components;
    std::int64_t threshold;
    std::int32_t deepest = -1;
    std::size_t matched = 0;
    bool inSubtree = false;

    void record(std::size_t i, const Record& record)
    {
        const auto node = static_cast<std::int32_t>(i);
        if (i == 0)
            outline.rootSize = record.bytes;
        const NodeFlags flags(record.flags & (outline.hasColors ? SnapshotLayout::colorFlagMask : SnapshotLayout::plainFlagMask));
        if (inSubtree && record.parent < deepest)
            inSubtree = false;
        if (i == 0 || (record.parent == deepest && matched < components.size() && isNext(record.name))) {
            if (i != 0)
                ++matched;
            deepest = node;
            inSubtree = true;
            outline.readWholeBelow = true;
            if (matched == components.size()) {
                outline.node = node;
                outline.preciseSize = record.bytes;
                outline.roundedSize = outline.hasColors ? record.bytes / threshold * threshold : record.bytes;
                outline.isIncomplete = flags.contains(NodeFlag::incomplete);
            }
        }
        if (inSubtree && (flags.contains(NodeFlag::incomplete) || flags.contains(NodeFlag::contentsUnread)))
            outline.readWholeBelow = false;
    }

    bool isNext(std::span<const std::uint8_t> raw)
    {
        std::string_view name(reinterpret_cast<const char*>(raw.data()), raw.size());
        std::string_view wanted = components[matched];
        if (name == wanted)
            return true;
        // The full reader matches names exactly first, then normalised: a name that would
        // only match so is left to it.
        bool plain = std::all_of(name.begin(), name.end(), [](char c) { return static_cast<unsigned char>(c) < 0x80; })
            && std::all_of(wanted.begin(), wanted.end(), [](char c) { return static_cast<unsigned char>(c) < 0x80; });
        if (!plain && UnicodeNames::normalized(nameFrom(raw)) == UnicodeNames::normalized(wanted))
            outline.needsWholeSnapshot = true;
        return false;
    }

    void days(std::size_t, std::int32_t, std::int32_t, std::int32_t) { }
    void rest(const RestPart&) { }
};

std::expected<Snapshot, Snapshot::DecodingError> decodeBody(std::span<const std::uint8_t> body, std::uint8_t version)
{
    Varint::Reader reader(body);
    std::optional<Snapshot::Header> header = readHeader(reader);
    if (!header)
        return std::unexpected(Error::damaged());

    const auto n = static_cast<std::size_t>(header->nodeCount);
    Snapshot snapshot = emptySnapshot(*header, n);
    if (header->hasColors)
        snapshot.restContent.parts.reserve(4 * n);
    SnapshotSink sink { snapshot };
    if (!readRecords(reader, *header, version, sink))
        return std::unexpected(Error::damaged());
    if (header->hasColors)
        snapshot.restContent.firstPart[n] = static_cast<std::int32_t>(snapshot.restContent.parts.size());
    if (version < Snapshot::currentVersion)
        takeDatesFromTimestamps(snapshot);
    return snapshot;
}

namespace {

std::expected<std::vector<std::uint8_t>, Snapshot::DecodingError> bodyOf(std::span<const std::uint8_t> bytes, std::uint8_t& version)
{
    if (bytes.size() < SnapshotLayout::magic.size() || !std::equal(SnapshotLayout::magic.begin(), SnapshotLayout::magic.end(), bytes.begin()))
        return std::unexpected(Error::notASnapshot());
    if (bytes.size() < SnapshotLayout::prefixLength)
        return std::unexpected(Error::damaged());
    version = bytes[SnapshotLayout::magic.size()];
    if (version != Snapshot::currentVersion && version != Snapshot::previousVersion)
        return std::unexpected(Error::unsupportedVersion(version));
    auto body = Lzfse::decode(bytes.subspan(SnapshotLayout::prefixLength), Snapshot::maximumBodySize);
    if (!body)
        return std::unexpected(Error::damaged());
    return std::move(*body);
}

}

std::expected<SnapshotOutline, Snapshot::DecodingError> outline(std::span<const std::uint8_t> bytes, std::string_view place)
{
    std::uint8_t version = 0;
    auto body = bodyOf(bytes, version);
    if (!body)
        return std::unexpected(body.error());
    Varint::Reader reader(*body);
    std::optional<Snapshot::Header> header = readHeader(reader);
    if (!header)
        return std::unexpected(Error::damaged());
    SnapshotOutline result;
    result.date = header->date;
    if (header->volumeTotal && header->volumeAvailable)
        result.volume = Snapshot::Volume { *header->volumeTotal, *header->volumeAvailable };
    result.hasColors = header->hasColors;
    result.coversWhole = !header->coverage;
    auto components = SnapshotPaths::components(header->rootPath, place);
    static const std::vector<std::string_view> none;
    OutlineSink sink { result, components ? *components : none, header->threshold };
    if (!readRecords(reader, *header, version, sink))
        return std::unexpected(Error::damaged());
    if (!components)
        result.node.reset();
    return result;
}

std::expected<Snapshot, Snapshot::DecodingError> decode(std::span<const std::uint8_t> bytes)
{
    std::uint8_t version = 0;
    auto body = bodyOf(bytes, version);
    if (!body)
        return std::unexpected(body.error());
    return decodeBody(*body, version);
}

}
