#include "SpaceWatch.hpp"

#include "Alerts/AlertReadings.hpp"
#include "Alerts/AlertTexts.hpp"
#include "Alerts/SpaceAlertStore.hpp"
#include "Platform/SystemLog.hpp"
#include "Platform/UserDefaults.hpp"
#include "History/HistoryPlaces.hpp"
#include "Support/UnicodeNames.hpp"

#include <map>

namespace tarnwick {

namespace {

// Whether one of the saved sources holds the place, as typed or with its links resolved.
bool isHeld(const std::string& place, const std::vector<HistorySource>& saved)
{
    for (const std::string& form : HistoryPlaces::pathForms(place)) {
        for (const HistorySource& source : saved) {
            if (UnicodeNames::hasPathPrefix(form, source.path))
                return true;
        }
    }
    return false;
}

}

SpaceWatch::SpaceWatch(HistoryStore* store, Options options)
    : m_store(store)
    , m_options(std::move(options))
    , m_thread([this] { run(); })
{
}

SpaceWatch::~SpaceWatch()
{
    {
        std::scoped_lock guard(m_lock);
        m_stopping = true;
    }
    m_changed.notify_all();
    m_thread.join();
}

void SpaceWatch::snapshotSaved(const HistorySource& source)
{
    {
        std::scoped_lock guard(m_lock);
        m_saved.push_back(source);
    }
    m_changed.notify_all();
}

void SpaceWatch::logNotification(const std::string& text)
{
    SystemLog::write(SystemLog::Level::info, AlertTexts::logCategory, "notification: " + text);
}

void SpaceWatch::run()
{
    // At start every alert is read once: what passed its limit while the app was closed is
    // told now, and the notified set keeps what was told before from being told again.
    check(Checks { true, true, {} });
    auto nextDiskCheck = std::chrono::steady_clock::now() + m_options.diskInterval;
    std::unique_lock guard(m_lock);
    for (;;) {
        m_changed.wait_until(guard, nextDiskCheck, [this] { return m_stopping || !m_saved.empty(); });
        if (m_stopping)
            return;
        Checks checks { false, false, {} };
        checks.saved.swap(m_saved);
        if (std::chrono::steady_clock::now() >= nextDiskCheck) {
            checks.disks = true;
            nextDiskCheck = std::chrono::steady_clock::now() + m_options.diskInterval;
        }
        guard.unlock();
        check(checks);
        guard.lock();
    }
}

void SpaceWatch::check(const Checks& checks)
{
    UserDefaults defaults(UserDefaults::standardPath());
    SpaceAlertStore alerts(defaults);
    std::vector<SpaceAlert> all = alerts.alerts();
    Date now = std::chrono::system_clock::now();
    std::map<std::string, AlertReading> readings;
    std::map<std::string, const SpaceAlert*> byID;
    for (const SpaceAlert& alert : all) {
        bool wanted = alert.condition.watchesDisk() ? checks.disks : checks.allFolders || isHeld(alert.path, checks.saved);
        if (!wanted)
            continue;
        readings.emplace(alert.id, AlertReadings::read(alert, m_store, now));
        byID.emplace(alert.id, &alert);
    }
    if (readings.empty())
        return;
    auto toNotify = alerts.notify(readings);
    if (!toNotify) {
        SystemLog::write(SystemLog::Level::error, AlertTexts::logCategory, "couldn't save which alerts were notified: " + toNotify.error().text());
        return;
    }
    for (const std::string& id : *toNotify) {
        std::string text = AlertReadings::notificationText(*byID.at(id));
        if (m_options.notifier)
            m_options.notifier(text);
        else
            logNotification(text);
    }
}

}
