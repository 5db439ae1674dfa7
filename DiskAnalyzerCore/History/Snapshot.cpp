#include "History/Snapshot.hpp"

#include "History/SnapshotDecoder.hpp"
#include "History/SnapshotEncoder.hpp"
#include "History/SnapshotLayout.hpp"
#include "History/SnapshotPaths.hpp"

#include <cmath>

namespace tarnwick {

std::int64_t Snapshot::size(std::int32_t node) const
{
    auto index = static_cast<std::size_t>(node);
    if (hasColors && index < preciseAllocated.size())
        return preciseAllocated[index];
    return index < allocated.size() ? allocated[index] : 0;
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
            && ownCreationDays.empty() && restContent.empty() && restDays.empty();
    }
    if (preciseAllocated.size() != n || logical.size() != n || hidden.size() != n || lastChangeDays.size() != n
        || oldestItemDays.size() != n)
        return false;
    for (const auto& [node, day] : ownCreationDays) {
        if (!validNode(node) || day == unknownDay)
            return false;
    }
    for (const auto& [node, parts] : restContent.parts) {
        if (!validNode(node.value))
            return false;
        for (const RestPart& part : parts) {
            if (!SnapshotLayout::isValidRestPart(part.mode, part.key) || part.bytes < 0)
                return false;
        }
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
