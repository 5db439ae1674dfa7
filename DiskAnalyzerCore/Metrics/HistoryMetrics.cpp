#include "Metrics/HistoryMetrics.hpp"

#include "History/ChangeOverPeriod.hpp"
#include "History/HistoryPeriod.hpp"
#include "History/HistoryPlaces.hpp"
#include "History/HistoryStore.hpp"
#include "History/SnapshotLoader.hpp"
#include "History/VolumeTimeline.hpp"

#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <map>
#include <set>

namespace tarnwick::HistoryMetrics {

namespace {

using Sample = MetricFamily::Sample;
using Labels = std::vector<std::pair<std::string, std::string>>;

// The families in output order; make() fills them by index.
enum Family : std::size_t {
    diskCapacity,
    diskAvailable,
    diskReserved,
    diskFullIn,
    diskHistoryLength,
    placeSize,
    placeSnapshotTime,
    placeChange,
    alertExceeded,
    familyCount,
};

struct Description {
    std::string_view name;
    std::string_view help;
};

constexpr std::array<Description, familyCount> descriptions { {
    { "disk_capacity_bytes", "Capacity of a disk that holds a scanned place; from its latest measurement while it is not mounted." },
    { "disk_available_bytes", "Space available to unprivileged users on the disk; from its latest measurement while it is not mounted." },
    { "disk_reserved_bytes", "Free space only the system may use (the file system's reserve), while the disk is mounted." },
    { "disk_full_in_seconds",
        "Seconds from now until the available space runs out at the pace of the past 30 days; absent without a forecast." },
    { "disk_history_seconds",
        "How far back the history of the disk's places reaches: from the oldest snapshot still kept to the latest (86400 a day)." },
    { "place_size_bytes", "Size on disk of a scanned place at its latest readable snapshot." },
    { "place_snapshot_timestamp_seconds", "When the latest readable snapshot of the place was taken, in seconds since 1970." },
    { "place_change_bytes",
        "Change of the place's size on disk since the start of the period (yesterday, week, month); absent while the history is "
        "shorter than the period." },
    { "alert_exceeded", "1 when the alert's limit is passed, 0 when it is not; absent while it cannot be measured." },
} };

constexpr std::array<HistoryPeriod::Value, 3> changePeriods { HistoryPeriod::yesterday, HistoryPeriod::week, HistoryPeriod::month };

// The names the command line's --period takes.
std::string_view periodLabel(HistoryPeriod::Value period)
{
    switch (period) {
    case HistoryPeriod::week:
        return "week";
    case HistoryPeriod::month:
        return "month";
    default:
        return "yesterday";
    }
}

std::int64_t unixSeconds(Date date)
{
    return std::chrono::duration_cast<std::chrono::seconds>(date.time_since_epoch()).count();
}

class Builder {
public:
    explicit Builder(HistoryStore& store)
        : m_store(store)
    {
        for (std::size_t f = 0; f < familyCount; ++f)
            m_families[f] = MetricFamily { std::string(prefix) + std::string(descriptions[f].name), std::string(descriptions[f].help),
                MetricFamily::Type::gauge, {} };
    }

    void add(Family family, Labels labels, std::int64_t value)
    {
        m_families[family].samples.push_back(Sample { std::move(labels), value });
    }

    void addDisk(const std::string& volume, std::span<const HistoryStore::SourceRecord> records, const MountedVolume::Lookup& mounted);
    void addPlace(const HistoryStore::SourceRecord& record);

    std::vector<MetricFamily> finish()
    {
        std::vector<MetricFamily> result;
        for (MetricFamily& family : m_families) {
            if (family.samples.empty())
                continue;
            std::ranges::sort(family.samples, {}, &Sample::labels);
            result.push_back(std::move(family));
        }
        return result;
    }

private:
    HistoryStore& m_store;
    std::array<MetricFamily, familyCount> m_families;
};

void Builder::addDisk(const std::string& volume, std::span<const HistoryStore::SourceRecord> records, const MountedVolume::Lookup& mounted)
{
    std::vector<std::string> places;
    std::optional<Date> oldest;
    std::optional<Date> newest;
    auto span = [&](Date date) {
        oldest = std::min(oldest.value_or(date), date);
        newest = std::max(newest.value_or(date), date);
    };
    for (const HistoryStore::SourceRecord& record : records) {
        if (record.source.volume != volume)
            continue;
        places.push_back(record.source.path);
        for (const HistoryEntry& entry : record.entries)
            span(entry.date);
        if (record.current)
            span(record.current->date);
    }
    // The shallowest place first: a disk's own scan finds its mount soonest.
    std::ranges::sort(places, {}, [](const std::string& path) { return std::ranges::count(path, '/'); });
    std::optional<MountedVolume> mount = mounted ? mounted(volume, places) : std::nullopt;
    std::vector<VolumeMeasurement> measurements = m_store.measurements(volume).value_or(std::vector<VolumeMeasurement> {});
    const Date now = m_store.now();
    VolumeTimeline timeline = VolumeTimeline::make(measurements, now, m_store.calendar());

    Labels labels { { "mountpoint", mount ? mount->mountPoint : std::string() }, { "volume", volume } };
    if (mount) {
        add(diskCapacity, labels, mount->space.total);
        add(diskAvailable, labels, mount->space.available);
        add(diskReserved, labels, mount->space.reserved);
    } else if (timeline.latest) {
        add(diskCapacity, labels, timeline.latest->total);
        add(diskAvailable, labels, timeline.latest->available);
    }
    if (timeline.forecast) {
        auto left = std::chrono::duration_cast<std::chrono::seconds>(timeline.forecast->runOutDate() - now).count();
        add(diskFullIn, labels, std::max<std::int64_t>(left, 0));
    }
    if (oldest)
        add(diskHistoryLength, labels, std::chrono::duration_cast<std::chrono::seconds>(*newest - *oldest).count());
}

void Builder::addPlace(const HistoryStore::SourceRecord& record)
{
    std::optional<SnapshotLoader::Latest> latest = SnapshotLoader::latest(m_store, record);
    if (!latest)
        return;
    // The scanned place is the root of every snapshot of its record: found by the record, not
    // by its path, which need not be UTF-8 for the matching of typed paths.
    const std::shared_ptr<const Snapshot>& current = latest->loaded.snapshot;
    const HistoryPlaces::Located located { record, current, latest->loaded.entry, latest->isCurrent,
        latest->skipped, current->rootPath, current, latest->loaded.entry, 0 };
    Labels labels { { "path", record.source.path }, { "volume", record.source.volume } };
    add(placeSize, labels, located.current->size(located.node));
    add(placeSnapshotTime, labels, unixSeconds(located.latest.date));
    for (HistoryPeriod::Value period : changePeriods) {
        auto change = ChangeOverPeriod::of(m_store, located, period, 0);
        // A start that is the latest snapshot itself, or later than the period's start, would
        // tell the change over a shorter time as if it were the period's.
        if (!change || !change->reachesPeriod || !change->startsEarlier())
            continue;
        Labels withPeriod = labels;
        withPeriod.emplace_back("period", std::string(periodLabel(period)));
        add(placeChange, std::move(withPeriod), change->changes.change);
    }
}

}

std::vector<MetricFamily> make(HistoryStore& store, std::span<const AlertState> alerts, const MountedVolume::Lookup& mounted)
{
    Builder builder(store);
    HistoryStore::Index index = store.index();
    std::set<std::string> volumes;
    for (const HistoryStore::SourceRecord& record : index.sources)
        volumes.insert(record.source.volume);
    for (const std::string& volume : volumes)
        builder.addDisk(volume, index.sources, mounted);
    for (const HistoryStore::SourceRecord& record : index.sources)
        builder.addPlace(record);
    for (const AlertState& state : alerts) {
        if (state.reading.state == AlertReading::State::unknown)
            continue;
        builder.add(alertExceeded, { { "alert_id", state.alert.id }, { "path", state.alert.path } },
            state.reading.state == AlertReading::State::exceeded ? 1 : 0);
    }
    return builder.finish();
}

std::size_t seriesCount(std::span<const MetricFamily> families)
{
    std::size_t count = 0;
    for (const MetricFamily& family : families)
        count += family.samples.size();
    return count;
}

}
