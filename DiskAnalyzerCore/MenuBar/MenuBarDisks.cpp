#include "MenuBar/MenuBarDisks.hpp"

#include "Alerts/AlertCheck.hpp"
#include "Alerts/SpaceAlertStore.hpp"
#include "History/ChangeOverPeriod.hpp"
#include "History/HistoryPeriod.hpp"
#include "History/HistoryStore.hpp"
#include "History/ScanRecorder.hpp"
#include "History/HistoryPlaces.hpp"
#include "Platform/MountTable.hpp"
#include "Platform/UserDefaults.hpp"
#include "Platform/VolumeIdentity.hpp"
#include "Scanning/ScopeResolver.hpp"

namespace tarnwick {

namespace {

bool isInside(const std::string& path, const std::string& mountPoint)
{
    if (mountPoint == "/")
        return path.starts_with("/");
    return path == mountPoint || (path.starts_with(mountPoint) && path[mountPoint.size()] == '/');
}


}

MenuBarDisks::MenuBarDisks(HistoryStore* store, UserDefaults& defaults)
    : m_store(store)
    , m_defaults(defaults)
{
}

std::vector<MenuBarDisks::Disk> MenuBarDisks::systemDisks()
{
    std::vector<Disk> disks;
    for (const DiskMount& mount : MountTable::disks())
        disks.push_back({ ScanRecorder::sourceFor(ScopeResolver::realPath(mount.mount.mountPoint)), mount.isDiskImage });
    return disks;
}

std::string MenuBarDisks::name(const std::string& mountPoint)
{
    if (mountPoint == "/")
        return "System Disk";
    std::string trimmed = mountPoint;
    while (trimmed.size() > 1 && trimmed.back() == '/')
        trimmed.pop_back();
    return trimmed.substr(trimmed.rfind('/') + 1);
}

std::optional<MenuBarDisks::Change> MenuBarDisks::changeSinceYesterday(const HistorySource& source)
{
    if (!m_store)
        return std::nullopt;
    std::optional<HistoryStore::SourceRecord> record = m_store->record(source);
    if (!record || !record->current)
        return std::nullopt;
    Date now = m_store->now();
    std::optional<HistoryEntry> start = HistoryPeriod(HistoryPeriod::yesterday).startEntry(record->entries, now, m_store->calendar());
    if (!start || !HistoryPeriod(HistoryPeriod::yesterday).reachesBack(start->date, now, m_store->calendar()) || record->current->date <= start->date)
        return std::nullopt;
    auto key = std::tuple(source.path, source.volume, start->id, record->current->date);
    {
        std::scoped_lock guard(m_lock);
        if (auto known = m_changes.find(key); known != m_changes.end())
            return known->second;
    }
    // The same comparison as the changes command's: damaged files are passed over, and there
    // is no change when the start and the latest intact snapshot are one and the same.
    std::optional<Change> change;
    if (auto located = HistoryPlaces::locate(*m_store, std::span(&source.path, 1), source.volume)) {
        auto compared = ChangeOverPeriod::of(*m_store, *located, HistoryPeriod::yesterday, 0);
        if (compared && compared->reachesPeriod && compared->startsEarlier())
            change = Change { compared->changes.change, compared->changes.isUncertain,
                compared->unreadableStart ? std::optional(compared->changes.from->date) : std::nullopt };
    }
    std::scoped_lock guard(m_lock);
    m_changes[key] = change;
    return change;
}

bool MenuBarDisks::isAlerted(const Disk& disk, const std::vector<Disk>& disks)
{
    SpaceAlertStore alerts(m_defaults);
    SpaceAlertStore::Contents contents = alerts.contents();
    std::optional<VolumeIdentity::Space> space;
    bool spaceRead = false;
    for (const SpaceAlert& alert : contents.alerts) {
        if (const auto* limit = std::get_if<SpaceAlert::Condition::DiskUsed>(&alert.condition.value)) {
            if (alert.path != disk.source.path)
                continue;
            if (!spaceRead) {
                space = VolumeIdentity::space(disk.source.path);
                spaceRead = true;
            }
            std::optional<AlertCheck::Disk> measured;
            if (space)
                measured = AlertCheck::Disk { space->total, space->available };
            if (AlertCheck::readDisk(*limit, measured, std::chrono::system_clock::now()).state == AlertReading::State::exceeded)
                return true;
            continue;
        }
        // A folder alert belongs to the disk whose mount point holds it most closely; the
        // alert watch remembers which folder alerts are exceeded.
        if (!contents.notified.contains(alert.id) || !isInside(alert.path, disk.source.path))
            continue;
        bool closer = false;
        for (const Disk& other : disks) {
            if (other.source.path.size() > disk.source.path.size() && isInside(alert.path, other.source.path))
                closer = true;
        }
        if (!closer)
            return true;
    }
    return false;
}

std::vector<MenuBarDisk> MenuBarDisks::read(const std::vector<Disk>& disks)
{
    std::vector<MenuBarDisk> result;
    int number = 0;
    for (const Disk& disk : disks) {
        MenuBarDisk item;
        item.id = disk.source.volume;
        item.name = name(disk.source.path);
        item.isDiskImage = disk.isDiskImage;
        if (auto space = VolumeIdentity::space(disk.source.path)) {
            item.capacity = space->total;
            item.available = space->available;
        }
        if (auto change = changeSinceYesterday(disk.source)) {
            item.change = change->bytes;
            item.changeIsUncertain = change->isUncertain;
            item.changeSince = change->since;
        }
        item.isAlerted = isAlerted(disk, disks);
        if (disks.size() > 1)
            item.number = ++number;
        result.push_back(std::move(item));
    }
    return result;
}

}
