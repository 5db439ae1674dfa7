#include "History/Snapshot.hpp"

#include "History/SnapshotDecoder.hpp"
#include "History/SnapshotEncoder.hpp"
#include "History/SnapshotLayout.hpp"
#include "History/SnapshotPaths.hpp"

#include <algorithm>
#include <cmath>

namespace tarnwick {

std::int64_t Snapshot::size(std::int32_t node) const
{
    auto index = static_cast<std::size_t>(node);
    if (hasColors && index < preciseAllocated.size())
        return preciseAllocated[index];
    return index < allocated.size() ? allocated[index] : 0;
}

std::optional<std::int32_t> Snapshot::ownCreationDay(std::int32_t node) const
{
    auto found = std::lower_bound(ownCreationDays.begin(), ownCreationDays.end(), node,
        [](const std::pair<std::int32_t, std::int32_t>& entry, std::int32_t wanted) { return entry.first < wanted; });
    if (found == ownCreationDays.end() || found->first != node)
        return std::nullopt;
    return found->second;
}

std::span<const RestPart> Snapshot::Rests::of(std::int32_t node) const
{
    if (node < 0 || static_cast<std::size_t>(node) + 1 >= firstPart.size())
        return {};
    auto first = static_cast<std::size_t>(firstPart[static_cast<std::size_t>(node)]);
    auto last = static_cast<std::size_t>(firstPart[static_cast<std::size_t>(node) + 1]);
    if (first > last || last > parts.size())
        return {};
    return std::span(parts).subspan(first, last - first);
}

RestBuckets Snapshot::Rests::buckets() const
{
    RestBuckets result;
    for (std::size_t node = 0; node + 1 < firstPart.size(); ++node) {
        std::span<const RestPart> own = of(static_cast<std::int32_t>(node));
        if (!own.empty())
            result.parts.emplace(NodeID { static_cast<std::int32_t>(node) }, std::vector<RestPart>(own.begin(), own.end()));
    }
    return result;
}

std::string Snapshot::path(std::int32_t node) const
{
    std::vector<std::int32_t> chain;
    for (std::int32_t current = node; current > 0 && current < nodeCount(); current = parents[static_cast<std::size_t>(current)])
        chain.push_back(current);
    std::string result = rootPath;
    while (result.size() > 1 && result.back() == '/')
        result.pop_back();
    for (auto it = chain.rbegin(); it != chain.rend(); ++it) {
        if (result != "/")
            result += '/';
        result += names[static_cast<std::size_t>(*it)];
    }
    return result;
}

std::optional<std::int32_t> Snapshot::node(std::string_view atPath) const
{
    std::optional<std::vector<std::string_view>> components = SnapshotPaths::components(rootPath, atPath);
    if (!components || nodeCount() == 0)
        return std::nullopt;
    SnapshotPaths::Location location = SnapshotPaths::locate(*this, *components);
    if (!location.found(components->size()))
        return std::nullopt;
    return location.deepest;
}

bool Snapshot::isConsistent() const
{
    const std::size_t n = names.size();
    if (n == 0 || n > static_cast<std::size_t>(std::numeric_limits<std::int32_t>::max()) || threshold <= 0)
        return false;
    if (parents.size() != n || kinds.size() != n || flags.size() != n || allocated.size() != n)
        return false;
    if (parents[0] != -1)
        return false;
    for (std::size_t i = 1; i < n; ++i) {
        if (parents[i] < 0 || static_cast<std::size_t>(parents[i]) >= i)
            return false;
    }
    if (!timestamps.empty() && timestamps.size() != n)
        return false;
    auto validNode = [n](std::int32_t node) { return node >= 0 && static_cast<std::size_t>(node) < n; };
    if (!hasColors) {
        return preciseAllocated.empty() && logical.empty() && hidden.empty() && lastChangeDays.empty() && oldestItemDays.empty()
            && ownCreationDays.empty() && restContent.firstPart.empty() && restContent.parts.empty() && restDays.empty();
    }
    if (preciseAllocated.size() != n || logical.size() != n || hidden.size() != n || lastChangeDays.size() != n
        || oldestItemDays.size() != n)
        return false;
    for (std::size_t i = 0; i < ownCreationDays.size(); ++i) {
        auto [node, day] = ownCreationDays[i];
        if (!validNode(node) || day == unknownDay || (i > 0 && ownCreationDays[i - 1].first >= node))
            return false;
    }
    const std::vector<std::int32_t>& first = restContent.firstPart;
    if (first.size() != n + 1 || first[0] != 0 || static_cast<std::size_t>(first[n]) != restContent.parts.size())
        return false;
    for (std::size_t i = 0; i < n; ++i) {
        if (first[i] > first[i + 1])
            return false;
    }
    for (const RestPart& part : restContent.parts) {
        if (!SnapshotLayout::isValidRestPart(part.mode, part.key) || part.bytes < 0)
            return false;
    }
    return true;
}

std::expected<std::vector<std::uint8_t>, Snapshot::EncodingError> Snapshot::encode(Colors colors) const
{
    return SnapshotEncoder::encode(*this, colors);
}

std::expected<Snapshot::Encoded, Snapshot::EncodingError> Snapshot::encodeForStore(Snapshot snapshot)
{
    auto bytes = snapshot.encode(Colors::asKept);
    if (!bytes)
        return std::unexpected(bytes.error());
    Encoded encoded { std::move(snapshot), std::move(*bytes), {} };
    encoded.day = encoded.current;
    return encoded;
}

std::expected<Snapshot, Snapshot::DecodingError> Snapshot::decode(std::span<const std::uint8_t> bytes)
{
    return SnapshotDecoder::decode(bytes);
}

namespace SnapshotDates {

namespace {
constexpr double microsecondsPerSecond = 1e6;
// About 250 years either way of 2001: inside the clock's nanosecond range, and every whole
// microsecond in it is exact as a double.
constexpr double largestSeconds = 8e9;
}

double secondsSinceReference(Date date)
{
    auto microseconds = std::chrono::floor<std::chrono::microseconds>(date.time_since_epoch()).count();
    auto sinceReference = microseconds - TreeDate::referenceUnixSeconds * 1'000'000;
    return static_cast<double>(sinceReference) / microsecondsPerSecond;
}

std::optional<Date> fromSecondsSinceReference(double seconds)
{
    if (!std::isfinite(seconds) || std::fabs(seconds) > largestSeconds)
        return std::nullopt;
    auto microseconds = static_cast<std::int64_t>(std::llround(seconds * microsecondsPerSecond)) + TreeDate::referenceUnixSeconds * 1'000'000;
    return Date(std::chrono::duration_cast<Date::duration>(std::chrono::microseconds(microseconds)));
}

Date truncatedToMicroseconds(Date date)
{
    return Date(std::chrono::duration_cast<Date::duration>(std::chrono::floor<std::chrono::microseconds>(date.time_since_epoch())));
}

}

}
