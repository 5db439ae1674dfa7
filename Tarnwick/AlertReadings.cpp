#include "AlertReadings.hpp"

#include "History/HistoryChanges.hpp"
#include "History/HistoryPeriod.hpp"
#include "History/HistoryStore.hpp"
#include "History/ScanRecorder.hpp"
#include "History/Snapshot.hpp"
#include "Platform/MountTable.hpp"
#include "Platform/VolumeIdentity.hpp"
#include "Scanning/ScopeResolver.hpp"

#include <chrono>

namespace tarnwick::AlertReadings {

namespace {

bool isInside(const std::string& path, const std::string& mountPoint)
{
    if (mountPoint == "/")
        return path.starts_with("/");
    return path == mountPoint || (path.starts_with(mountPoint) && path.size() > mountPoint.size() && path[mountPoint.size()] == '/');
}

std::shared_ptr<const Snapshot> load(HistoryStore& store, const HistorySource& source, const HistoryEntry& entry)
{
    auto bytes = store.load(source, entry.id);
    if (!bytes)
        return nullptr;
    auto snapshot = Snapshot::decode(*bytes);
    return snapshot ? std::make_shared<const Snapshot>(std::move(*snapshot)) : nullptr;
}

}

std::vector<Disk> systemDisks()
{
    std::vector<Disk> disks;
    for (const DiskMount& mount : MountTable::disks())
        disks.push_back({ mount.mount.mountPoint, ScanRecorder::sourceFor(ScopeResolver::realPath(mount.mount.mountPoint)) });
    return disks;
}

std::optional<Disk> holding(const std::vector<Disk>& disks, const std::string& path)
{
    const Disk* best = nullptr;
    for (const Disk& disk : disks) {
        if (isInside(path, disk.mountPoint) && (!best || disk.mountPoint.size() > best->mountPoint.size()))
            best = &disk;
    }
    return best ? std::optional(*best) : std::nullopt;
}

std::optional<AlertCheck::Folder> folder(HistoryStore& store, const Disk& disk, const std::string& path,
    const SpaceAlert::Condition& condition)
{
    std::optional<HistoryStore::SourceRecord> record = store.record(disk.source);
    if (!record || !record->current)
        return std::nullopt;
    std::shared_ptr<const Snapshot> latest = load(store, disk.source, *record->current);
    if (!latest)
        return std::nullopt;
    std::optional<std::int32_t> node = latest->node(path);
    if (!node)
        return std::nullopt;
    AlertCheck::Folder measured { latest->date, latest->size(*node), std::nullopt, std::nullopt };
    if (latest->volume)
        measured.capacity = latest->volume->total;
    if (const auto* growth = std::get_if<SpaceAlert::Condition::Growth>(&condition.value)) {
        std::optional<HistoryPeriod> period = HistoryPeriod::fromRawValue(growth->period);
        std::optional<HistoryEntry> start = period ? period->startEntry(record->entries, store.now(), store.calendar()) : std::nullopt;
        std::shared_ptr<const Snapshot> earlier = start ? load(store, disk.source, *start) : nullptr;
        if (earlier) {
            if (auto changes = HistoryQueries::changes(earlier, latest, path))
                measured.growth = AlertCheck::Growth { changes->change, changes->isUncertain, start->date };
        }
    }
    return measured;
}

std::map<std::string, AlertReading> read(const std::vector<SpaceAlert>& alerts, const std::vector<Disk>& disks, HistoryStore* store)
{
    std::map<std::string, AlertReading> readings;
    Date now = std::chrono::system_clock::now();
    for (const SpaceAlert& alert : alerts) {
        if (const auto* limit = std::get_if<SpaceAlert::Condition::DiskUsed>(&alert.condition.value)) {
            std::optional<AlertCheck::Disk> measured;
            bool mounted = std::ranges::any_of(disks, [&](const Disk& disk) { return disk.mountPoint == alert.path; });
            if (auto space = mounted ? VolumeIdentity::space(alert.path) : std::nullopt)
                measured = AlertCheck::Disk { space->total, space->available };
            readings[alert.id] = AlertCheck::readDisk(*limit, measured, now);
            continue;
        }
        std::optional<Disk> disk = holding(disks, alert.path);
        std::optional<AlertCheck::Folder> measured = disk && store ? folder(*store, *disk, alert.path, alert.condition) : std::nullopt;
        readings[alert.id] = AlertCheck::readFolder(alert.condition, measured);
    }
    return readings;
}

}
