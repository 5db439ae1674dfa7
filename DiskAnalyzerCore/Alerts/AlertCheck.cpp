#include "Alerts/AlertCheck.hpp"

namespace tarnwick::AlertCheck {

namespace {

using State = AlertReading::State;
using Condition = SpaceAlert::Condition;

// Whether part is more than percent of whole, without rounding or overflow.
bool aboveShare(std::int64_t part, int percent, std::int64_t whole)
{
    return static_cast<__int128>(part) * 100 > static_cast<__int128>(percent) * whole;
}

double percentOf(std::int64_t part, std::int64_t whole)
{
    return static_cast<double>(part) * 100.0 / static_cast<double>(whole);
}

AlertReading measured(bool exceeded, double value, Date measuredAt)
{
    return { exceeded ? State::exceeded : State::below, value, measuredAt, std::nullopt, false, std::nullopt };
}

}

AlertReading readDisk(const Condition::DiskUsed& limit, const std::optional<Disk>& disk, Date now)
{
    if (!disk)
        return AlertReading::unknown(AlertReading::Unknown::diskNotMounted);
    if (disk->total <= 0)
        return AlertReading::unknown(AlertReading::Unknown::capacityUnknown);
    std::int64_t used = disk->total - disk->available;
    return measured(aboveShare(used, limit.percent, disk->total), percentOf(used, disk->total), now);
}

AlertReading readFolder(const Condition& condition, const std::optional<Folder>& folder)
{
    if (!folder || condition.watchesDisk())
        return AlertReading::unknown(AlertReading::Unknown::notMeasuredYet);
    if (const auto* size = std::get_if<Condition::Size>(&condition.value))
        return measured(folder->size > size->bytes, static_cast<double>(folder->size), folder->measuredAt);
    if (const auto* share = std::get_if<Condition::Share>(&condition.value)) {
        if (!folder->capacity || *folder->capacity <= 0)
            return AlertReading::unknown(AlertReading::Unknown::capacityUnknown);
        return measured(aboveShare(folder->size, share->percent, *folder->capacity),
            percentOf(folder->size, *folder->capacity), folder->measuredAt);
    }
    const auto& growth = std::get<Condition::Growth>(condition.value);
    if (!folder->growth)
        return AlertReading::unknown(AlertReading::Unknown::notMeasuredYet);
    AlertReading reading = measured(folder->growth->change > growth.bytes, static_cast<double>(folder->growth->change),
        folder->measuredAt);
    reading.since = folder->growth->since;
    reading.uncertain = folder->growth->uncertain;
    return reading;
}

Notifications notifications(const std::map<std::string, AlertReading>& readings, const std::set<std::string>& notified)
{
    Notifications result { {}, notified };
    for (const auto& [id, reading] : readings) {
        if (reading.state == State::exceeded && result.notified.insert(id).second)
            result.toNotify.push_back(id);
        else if (reading.state == State::below)
            result.notified.erase(id);
    }
    return result;
}

}
