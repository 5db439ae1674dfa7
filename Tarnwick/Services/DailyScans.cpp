#include "DailyScans.hpp"

#include "Agent/AgentFormat.hpp"
#include "History/HistoryStore.hpp"
#include "History/ScanRecorder.hpp"
#include "Platform/LoginItem.hpp"
#include "Platform/MountTable.hpp"
#include "Platform/SystemLog.hpp"
#include "Platform/UserDefaults.hpp"
#include "RepeatingTimer.hpp"
#include "Scanning/ScopeResolver.hpp"

#include <array>
#include <ctime>

namespace tarnwick {

namespace {

using Json = nlohmann::json;

constexpr std::string_view logCategory = "daily scans";
constexpr std::array<std::string_view, 4> outcomeNames { "saved", "alreadyTaken", "deferred", "failed" };

bool flag(const Json& settings, std::string_view key)
{
    auto found = settings.find(key);
    return found != settings.end() && found->is_boolean() && found->get<bool>();
}

std::optional<Date> parseISODate(const std::string& text)
{
    std::tm parts {};
    char* end = ::strptime(text.c_str(), "%Y-%m-%dT%H:%M:%SZ", &parts);
    if (end == nullptr || *end != '\0')
        return std::nullopt;
    return std::chrono::system_clock::from_time_t(::timegm(&parts));
}

}

std::string_view DailyScans::rawValue(Outcome outcome)
{
    return outcomeNames[static_cast<std::size_t>(outcome)];
}

std::optional<DailyScans::Outcome> DailyScans::outcomeFromRawValue(std::string_view raw)
{
    for (std::size_t i = 0; i < outcomeNames.size(); ++i) {
        if (outcomeNames[i] == raw)
            return static_cast<Outcome>(i);
    }
    return std::nullopt;
}

Json DailyScans::Pass::toJSON() const
{
    Json outcomesJSON = Json::array();
    for (const DiskOutcome& outcome : outcomes) {
        outcomesJSON.push_back({ { "disk", outcome.disk.path }, { "volume", outcome.disk.volume },
            { "outcome", std::string(rawValue(outcome.outcome)) }, { "detail", outcome.detail } });
    }
    return { { "identity", AgentFormat::isoDateText(startedAt) }, { "outcomes", std::move(outcomesJSON) } };
}

std::optional<DailyScans::Pass> DailyScans::Pass::fromJSON(const Json& json)
{
    if (!json.is_object() || !json.contains("identity") || !json["identity"].is_string() || !json.contains("outcomes")
        || !json["outcomes"].is_array())
        return std::nullopt;
    auto started = parseISODate(json["identity"].get<std::string>());
    if (!started)
        return std::nullopt;
    Pass pass { *started, {} };
    for (const Json& entry : json["outcomes"]) {
        auto text = [&entry](const char* key) -> std::optional<std::string> {
            if (!entry.is_object() || !entry.contains(key) || !entry[key].is_string())
                return std::nullopt;
            return entry[key].get<std::string>();
        };
        auto disk = text("disk"), volume = text("volume"), outcome = text("outcome"), detail = text("detail");
        std::optional<Outcome> kind = outcome ? outcomeFromRawValue(*outcome) : std::nullopt;
        if (!disk || !volume || !kind || !detail)
            return std::nullopt;
        pass.outcomes.push_back({ HistorySource { *disk, *volume }, *kind, *detail });
    }
    return pass;
}

std::vector<HistorySource> DailyScans::systemDisks()
{
    std::vector<HistorySource> disks;
    for (const DiskMount& disk : MountTable::disks())
        disks.push_back(ScanRecorder::sourceFor(ScopeResolver::realPath(disk.mount.mountPoint)));
    return disks;
}

DailyScans::DailyScans(Services services)
    : m_services(std::move(services))
{
}

DailyScans::~DailyScans()
{
    std::vector<std::shared_ptr<RepeatingTimer>> timers;
    {
        std::scoped_lock guard(m_lock);
        m_closing = true;
        m_observers.clear();
        timers = std::move(m_retired);
        if (m_scheduler)
            timers.push_back(std::move(m_scheduler));
    }
    for (auto& timer : timers)
        timer->stop();
    std::unique_ptr<std::thread> now;
    {
        std::scoped_lock guard(m_lock);
        now = std::move(m_nowThread);
    }
    if (now)
        now->join();
}

bool DailyScans::isEnabled() const
{
    return flag(m_services.defaults.all(), enabledKey);
}

std::expected<void, std::string> DailyScans::turnOn()
{
    if (auto installed = LoginItem::install(m_services.loginItemPath, m_services.executable); !installed)
        return std::unexpected(installed.error().text());
    auto saved = m_services.defaults.update([](Json& settings) {
        settings[std::string(enabledKey)] = true;
        if (!flag(settings, menuBarItemShownKey)) {
            settings[std::string(menuBarItemShownKey)] = true;
            settings[std::string(showsMenuBarItemKey)] = true;
        }
    });
    if (!saved) {
        (void)LoginItem::remove(m_services.loginItemPath);
        return std::unexpected(saved.error().text());
    }
    startScheduler();
    changed();
    return {};
}

std::expected<void, std::string> DailyScans::turnOff()
{
    stopScheduler();
    auto saved = m_services.defaults.update([](Json& settings) {
        settings[std::string(enabledKey)] = false;
        // The tray item goes again when it came only with the daily snapshot.
        if (flag(settings, showsMenuBarItemKey)) {
            settings[std::string(menuBarItemShownKey)] = false;
            settings[std::string(showsMenuBarItemKey)] = false;
        }
    });
    auto removed = LoginItem::remove(m_services.loginItemPath);
    changed();
    if (!saved)
        return std::unexpected(saved.error().text());
    if (!removed)
        return std::unexpected(removed.error().text());
    return {};
}

void DailyScans::startIfEnabled()
{
    if (isEnabled())
        startScheduler();
}

void DailyScans::startForService()
{
    startScheduler();
}

bool DailyScans::isScheduled() const
{
    std::scoped_lock guard(m_lock);
    return m_scheduler != nullptr;
}

void DailyScans::startScheduler()
{
    auto timer = std::make_shared<RepeatingTimer>(m_services.interval, m_services.tolerance, [this] { scheduledPass(); });
    std::scoped_lock guard(m_lock);
    if (m_scheduler) {
        m_scheduler->requestStop();
        m_retired.push_back(std::move(m_scheduler));
    }
    m_scheduler = std::move(timer);
    SystemLog::write(SystemLog::Level::info, logCategory, "scheduled " + std::string(schedulerIdentifier));
}

void DailyScans::stopScheduler()
{
    std::scoped_lock guard(m_lock);
    if (!m_scheduler)
        return;
    // A pass that runs notices the stop through its defer test and ends soon after.
    m_scheduler->requestStop();
    m_retired.push_back(std::move(m_scheduler));
}

void DailyScans::scheduledPass()
{
    std::weak_ptr<RepeatingTimer> scheduler;
    {
        std::scoped_lock guard(m_lock);
        scheduler = m_scheduler;
    }
    // Once its scheduler is gone or stopping, a pass defers whatever is left.
    run(Mode::daily, [this, scheduler] {
        std::shared_ptr<RepeatingTimer> timer = scheduler.lock();
        return !timer || timer->isStopping() || m_services.power().asksToDefer();
    });
}

bool DailyScans::hasSnapshotToday(const HistorySource& disk)
{
    HistoryStore& store = m_services.store;
    std::optional<HistoryStore::SourceRecord> record = store.record(disk);
    if (!record)
        return false;
    Date now = store.now();
    if (record->current && store.calendar().isSameDay(record->current->date, now))
        return true;
    for (const HistoryEntry& entry : record->entries) {
        if (store.calendar().isSameDay(entry.date, now))
            return true;
    }
    return false;
}

DailyScans::Pass DailyScans::run(Mode mode, const ShouldDefer& shouldDefer)
{
    std::scoped_lock passGuard(m_passLock);
    Pass pass { m_services.store.now(), {} };
    std::vector<HistorySource> disks = m_services.disks();
    bool deferAll = mode == Mode::daily && m_services.power().asksToDefer();
    if (deferAll)
        SystemLog::write(SystemLog::Level::info, logCategory, "deferred, low power or hot");
    int total = static_cast<int>(disks.size());
    for (int i = 0; i < total; ++i) {
        const HistorySource& disk = disks[static_cast<std::size_t>(i)];
        // Linux asks no questions about the home folders, so no disk is skipped for that.
        if (deferAll) {
            pass.outcomes.push_back({ disk, Outcome::deferred, {} });
        } else if (mode == Mode::daily && hasSnapshotToday(disk)) {
            pass.outcomes.push_back({ disk, Outcome::alreadyTaken, {} });
        } else if (shouldDefer()) {
            pass.outcomes.push_back({ disk, Outcome::deferred, {} });
        } else {
            setProgress({ true, i, total, disk.path });
            pass.outcomes.push_back(m_services.scan(disk, shouldDefer));
            if (pass.outcomes.back().outcome == Outcome::failed)
                SystemLog::write(SystemLog::Level::error, logCategory, disk.path + ": " + pass.outcomes.back().detail);
        }
    }
    if (auto saved = m_services.defaults.set(lastPassKey, pass.toJSON()); !saved)
        SystemLog::write(SystemLog::Level::error, logCategory, "couldn't remember the pass: " + saved.error().text());
    setProgress({ false, total, total, {} });
    return pass;
}

bool DailyScans::takeSnapshotNow()
{
    std::unique_ptr<std::thread> finished;
    {
        std::scoped_lock guard(m_lock);
        if (m_nowRunning || m_closing)
            return false;
        m_nowRunning = true;
        // Shown as running at once, so that the user sees the request taken.
        m_progress = Progress { true, 0, 0, {} };
        finished = std::move(m_nowThread);
    }
    if (finished)
        finished->join();
    changed();
    auto thread = std::make_unique<std::thread>([this] {
        run(Mode::now, [this] {
            std::scoped_lock closing(m_lock);
            return m_closing;
        });
        std::scoped_lock guard(m_lock);
        m_nowRunning = false;
    });
    std::scoped_lock guard(m_lock);
    m_nowThread = std::move(thread);
    return true;
}

std::optional<DailyScans::Pass> DailyScans::lastPass() const
{
    std::optional<Json> stored = m_services.defaults.value(lastPassKey);
    return stored ? Pass::fromJSON(*stored) : std::nullopt;
}

DailyScans::Progress DailyScans::progress() const
{
    std::scoped_lock guard(m_lock);
    return m_progress;
}

DailyScans::ObserverID DailyScans::addObserver(std::function<void()> observer)
{
    std::scoped_lock guard(m_lock);
    m_observers.emplace_back(m_nextObserver, std::move(observer));
    return m_nextObserver++;
}

void DailyScans::removeObserver(ObserverID id)
{
    std::scoped_lock guard(m_lock);
    std::erase_if(m_observers, [id](const auto& entry) { return entry.first == id; });
}

void DailyScans::setProgress(Progress progress)
{
    {
        std::scoped_lock guard(m_lock);
        m_progress = std::move(progress);
    }
    changed();
}

void DailyScans::changed()
{
    std::vector<std::pair<ObserverID, std::function<void()>>> observers;
    {
        std::scoped_lock guard(m_lock);
        observers = m_observers;
    }
    for (const auto& [id, observer] : observers)
        observer();
}

}
