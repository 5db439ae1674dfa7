#pragma once

#include "History/HistorySource.hpp"
#include "MenuBar/MenuBarDisk.hpp"
#include "Scanning/TreeDate.hpp"

#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <tuple>
#include <vector>

namespace tarnwick {

class HistoryStore;
class UserDefaults;

// The facts the tray item is drawn from, one disk at a time: its space now, its change since
// yesterday's snapshot (the comparison of that snapshot with the latest one), and whether one
// of its alerts is exceeded. Reading decodes snapshots, so it runs off the main thread; the
// comparisons are kept until the disk's snapshots change.
class MenuBarDisks {
public:
    struct Disk {
        HistorySource source; // the mount point and the volume's identifier
        bool isDiskImage = false;
    };

    struct Change {
        std::int64_t bytes = 0;
        bool isUncertain = false;
        std::optional<Date> since; // the start's date, when yesterday's snapshot couldn't be read
    };

    MenuBarDisks(HistoryStore* store, UserDefaults& defaults);

    // The system's disks.
    static std::vector<Disk> systemDisks();
    // "System Disk" for "/", otherwise the mount point's last component.
    static std::string name(const std::string& mountPoint);

    // The disks in the order given, numbered when there are several. Thread-safe.
    std::vector<MenuBarDisk> read(const std::vector<Disk>& disks);

    // The change since yesterday: absent without a day snapshot from before today, or when the
    // latest snapshot is not newer than it.
    std::optional<Change> changeSinceYesterday(const HistorySource& source);

private:
    bool isAlerted(const Disk& disk, const std::vector<Disk>& disks);

    HistoryStore* m_store;
    UserDefaults& m_defaults;
    std::mutex m_lock;
    // By place (path and volume), start snapshot id and the latest snapshot's date.
    std::map<std::tuple<std::string, std::string, std::int64_t, Date>, std::optional<Change>> m_changes;
};

}
