#include "MetricsTextfile.hpp"

#include "Alerts/AlertReadings.hpp"
#include "History/HistoryStore.hpp"
#include "Metrics/ExpositionText.hpp"
#include "Metrics/HistoryMetrics.hpp"
#include "Platform/SystemLog.hpp"
#include "Platform/UserDefaults.hpp"

namespace tarnwick {

MetricsTextfile::MetricsTextfile(HistoryStore& store, std::string defaultsPath)
    : m_store(store)
    , m_defaultsPath(std::move(defaultsPath))
{
}

std::optional<std::string> MetricsTextfile::folder(UserDefaults& defaults)
{
    std::optional<nlohmann::json> value = defaults.value(folderKey);
    if (!value || !value->is_string() || value->get<std::string>().empty())
        return std::nullopt;
    return value->get<std::string>();
}

std::vector<MetricFamily> MetricsTextfile::figures(HistoryStore& store, UserDefaults& defaults)
{
    std::vector<HistoryMetrics::AlertState> alerts;
    for (const SpaceAlert& alert : SpaceAlertStore(defaults).alerts())
        alerts.push_back({ alert, AlertReadings::read(alert, &store, store.now()) });
    return HistoryMetrics::make(store, alerts, MountedVolume::find);
}

std::optional<TextfileWriter::Failure> MetricsTextfile::snapshotSaved()
{
    UserDefaults defaults(m_defaultsPath);
    std::optional<std::string> target = folder(defaults);
    if (!target)
        return std::nullopt;
    std::lock_guard guard(m_mutex);
    auto written = TextfileWriter::write(*target, ExpositionText::render(figures(m_store, defaults)));
    if (written) {
        m_told.reset();
        return std::nullopt;
    }
    std::pair cause { *target, written.error().reason };
    if (m_told != cause) {
        m_told = cause;
        SystemLog::write(SystemLog::Level::error, "metrics", written.error().message());
    }
    return written.error();
}

}
