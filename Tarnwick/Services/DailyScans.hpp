#pragma once

#include "History/HistorySource.hpp"
#include "Platform/PowerState.hpp"
#include "Scanning/TreeDate.hpp"

#include <nlohmann/json.hpp>

#include <chrono>
#include <expected>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

namespace tarnwick {

class HistoryStore;
class RepeatingTimer;
class UserDefaults;

// The daily snapshot: while it is on, Tarnwick opens at login, stays in the tray and takes a
// snapshot of each disk once a day in the background, so that changes are ready whenever the
// user looks and folder alerts are measured every day.
//
// The last pass is remembered in the user defaults under lastPassKey:
//
//     {"identity": "2024-06-01T08:13:22Z",
//      "outcomes": [{"disk": "/", "volume": "3c1e…", "outcome": "saved", "detail": ""},
//                   {"disk": "/mnt/backup", "volume": "dev:8:17", "outcome": "alreadyTaken", "detail": ""}]}
//
// identity is when the pass started, in UTC.
class DailyScans {
public:
    static constexpr std::string_view enabledKey = "DailyScansEnabled";
    static constexpr std::string_view showsMenuBarItemKey = "DailyScansShowsMenuBarItem";
    static constexpr std::string_view menuBarItemShownKey = "MenuBarItemShown";
    static constexpr std::string_view lastPassKey = "DailyScansLastPass";
    // This build has no bundle identifier to put in front of ".daily-scans".
    static constexpr std::string_view schedulerIdentifier = "com.quillmere.Quillmere.daily-scans";
    static constexpr std::chrono::seconds interval { 3600 };
    static constexpr std::chrono::seconds tolerance { 1800 };

    enum class Outcome { saved, alreadyTaken, deferred, failed };

    struct DiskOutcome {
        HistorySource disk; // path is the mount point
        Outcome outcome = Outcome::saved;
        std::string detail; // why a scan failed

        bool operator==(const DiskOutcome&) const = default;
    };

    struct Pass {
        Date startedAt {};
        std::vector<DiskOutcome> outcomes;

        [[nodiscard]] nlohmann::json toJSON() const;
        static std::optional<Pass> fromJSON(const nlohmann::json& json);
        bool operator==(const Pass&) const = default;
    };

    // How a pass treats disks: the daily one skips what already has today's snapshot and
    // defers to low power and heat; one the user asks for takes every disk now.
    enum class Mode { daily, now };

    struct Progress {
        bool running = false;
        int done = 0;
        int total = 0;
        std::string disk; // being scanned
    };

    using ShouldDefer = std::function<bool()>;
    // Scans a disk with the defer test, saves the scan into the history and reads the disk's
    // alerts; what came of it.
    using ScanRunner = std::function<DiskOutcome(const HistorySource& disk, const ShouldDefer& shouldDefer)>;

    struct Services {
        UserDefaults& defaults;
        HistoryStore& store; // its clock and calendar say what today is
        std::function<std::vector<HistorySource>()> disks;
        std::function<PowerState()> power;
        ScanRunner scan;
        std::string loginItemPath;
        std::string executable;
        std::chrono::milliseconds interval = DailyScans::interval;
        std::chrono::milliseconds tolerance = DailyScans::tolerance;
    };

    static std::string_view rawValue(Outcome outcome);
    static std::optional<Outcome> outcomeFromRawValue(std::string_view raw);
    // The disks of the system's disk list, as the history keeps them.
    static std::vector<HistorySource> systemDisks();

    explicit DailyScans(Services services);
    ~DailyScans();
    DailyScans(const DailyScans&) = delete;
    DailyScans& operator=(const DailyScans&) = delete;

    [[nodiscard]] bool isEnabled() const;
    // Registers the login item, sets the switch, shows the tray item and starts the scheduler.
    // Fails with the text to show when the login item or the settings cannot be written.
    std::expected<void, std::string> turnOn();
    // Removes the login item, clears the switch, stops the scheduler and hides the tray item
    // when it was shown only for the daily snapshot.
    std::expected<void, std::string> turnOff();
    // At the app's start: the scheduler, when the switch is on.
    void startIfEnabled();
    // At the start of an app run by a service manager for the daily snapshot: the scheduler,
    // whatever the switch says. The switch and the login item stay as the user left them.
    void startForService();
    [[nodiscard]] bool isScheduled() const;

    // One pass on the calling thread. A daily pass stops at once on low power or heat, logging
    // it; it skips disks that have a snapshot dated today. The pass is remembered.
    Pass run(Mode mode, const ShouldDefer& shouldDefer);
    // A pass of every disk now, on a thread of its own; false while another pass runs.
    bool takeSnapshotNow();

    [[nodiscard]] std::optional<Pass> lastPass() const;
    [[nodiscard]] Progress progress() const;
    // Called on any thread after the switch, the progress or the last pass changed.
    using ObserverID = std::uint64_t;
    ObserverID addObserver(std::function<void()> observer);
    void removeObserver(ObserverID id);

private:
    bool hasSnapshotToday(const HistorySource& disk);
    void startScheduler();
    void stopScheduler();
    void scheduledPass();
    void setProgress(Progress progress);
    void changed();

    Services m_services;
    mutable std::mutex m_lock; // guards the members below
    std::shared_ptr<RepeatingTimer> m_scheduler;
    // Schedulers turned off while a pass of theirs ran; they end without being waited for.
    std::vector<std::shared_ptr<RepeatingTimer>> m_retired;
    bool m_closing = false;
    bool m_nowRunning = false;
    Progress m_progress;
    std::vector<std::pair<ObserverID, std::function<void()>>> m_observers;
    ObserverID m_nextObserver = 1;
    std::mutex m_passLock; // one pass at a time
    std::unique_ptr<std::thread> m_nowThread;
};

}
