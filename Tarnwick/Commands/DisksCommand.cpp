#include "SnapshotCommands.hpp"

#include "History/VolumeTimeline.hpp"
#include "Platform/MountTable.hpp"
#include "Platform/VolumeIdentity.hpp"
#include "SnapshotPlaces.hpp"

#include <set>
#include <unistd.h>

namespace tarnwick::SnapshotCommands {

namespace {

using Access = DisksAnswer::Access;
using UsedChange = DisksAnswer::UsedChange;

bool readable(const std::string& path)
{
    return ::access(path.c_str(), R_OK | X_OK) == 0;
}

// The measurement a period starts from, by the rule of the history's comparisons: the latest
// at or before its start, else the earliest.
std::optional<UsedChange> usedChange(HistoryPeriod period, const std::vector<VolumeMeasurement>& measurements,
    const std::optional<VolumeIdentity::Space>& now, const HistoryStore& store)
{
    if (!now || measurements.empty())
        return std::nullopt;
    const VolumeMeasurement* start = nullptr;
    const VolumeMeasurement* earliest = nullptr;
    for (const VolumeMeasurement& measurement : measurements) {
        if (!earliest || measurement.date < earliest->date)
            earliest = &measurement;
        if (period.reachesBack(measurement.date, store.now(), store.calendar()) && (!start || measurement.date > start->date))
            start = &measurement;
    }
    if (!start)
        start = earliest;
    std::int64_t usedThen = start->total - start->available;
    std::int64_t usedNow = now->total - now->available;
    return UsedChange { usedNow - usedThen, start->date };
}

DisksAnswer::Disk factsOf(const DiskMount& disk, HistoryStore* store)
{
    DisksAnswer::Disk facts { disk, VolumeIdentity::space(disk.mount.mountPoint), Access::none, 0, std::nullopt, std::nullopt, std::nullopt, 0, std::nullopt };
    std::optional<std::string> volume = VolumeIdentity::identifier(disk.mount.mountPoint);
    facts.access = readable(disk.mount.mountPoint) ? Access::wholeDisk : Access::none;
    if (!store || !volume)
        return facts;
    std::set<std::int64_t> days;
    for (const HistoryStore::SourceRecord& record : store->index().sources) {
        if (record.source.volume != *volume)
            continue;
        for (const HistoryEntry& entry : record.entries)
            days.insert(store->calendar().dayNumber(entry.date));
        if (record.current && (!facts.latestSnapshot || record.current->date > *facts.latestSnapshot))
            facts.latestSnapshot = record.current->date;
        if (facts.access == Access::none && readable(record.source.path))
            facts.access = Access::someFolders;
    }
    facts.snapshotDays = static_cast<std::int64_t>(days.size());
    auto measurements = store->measurements(*volume);
    if (measurements) {
        facts.sinceYesterday = usedChange(HistoryPeriod::yesterday, *measurements, facts.space, *store);
        facts.overMonth = usedChange(HistoryPeriod::month, *measurements, facts.space, *store);
        VolumeTimeline timeline = VolumeTimeline::make(*measurements, store->now(), store->calendar());
        facts.measuredDays = timeline.dayCount;
        facts.forecast = timeline.forecast;
    }
    return facts;
}

}

Answered<DisksAnswer> disks(const Request&, const Context& context)
{
    std::unique_ptr<HistoryStore> owned;
    HistoryStore* store = SnapshotPlaces::history(context, owned);
    DisksAnswer answer { {}, store ? store->calendar() : Calendar::current() };
    for (const DiskMount& disk : MountTable::disks())
        answer.disks.push_back(factsOf(disk, store));
    return answer;
}

}
