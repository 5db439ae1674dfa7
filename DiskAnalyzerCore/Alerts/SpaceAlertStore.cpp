#include "Alerts/SpaceAlertStore.hpp"

#include "Alerts/AlertCheck.hpp"
#include "Alerts/AlertPeriods.hpp"
#include "Platform/UserDefaults.hpp"

#include <algorithm>
#include <cctype>
#include <optional>

namespace tarnwick {

namespace {

using Json = nlohmann::json;

// The stored alerts as decoded, with the entries that could not be, kept to be written back.
struct Stored {
    SpaceAlertStore::Contents contents;
    std::vector<Json> unreadable;
};

Stored decode(const Json& settings)
{
    Stored stored;
    auto alerts = settings.find(SpaceAlertStore::alertsKey);
    if (alerts != settings.end() && !alerts->is_array())
        stored.contents.problems.push_back({ SpaceAlert::DecodingError::Case::invalidValue, std::string(SpaceAlertStore::alertsKey) });
    if (alerts != settings.end() && alerts->is_array()) {
        for (const Json& entry : *alerts) {
            auto alert = SpaceAlert::fromJSON(entry);
            if (alert) {
                stored.contents.alerts.push_back(std::move(*alert));
            } else {
                stored.contents.problems.push_back(alert.error());
                stored.unreadable.push_back(entry);
            }
        }
    }
    auto notified = settings.find(SpaceAlertStore::notifiedKey);
    if (notified != settings.end() && notified->is_array()) {
        for (const Json& id : *notified) {
            if (id.is_string())
                stored.contents.notified.insert(id.get<std::string>());
        }
    }
    return stored;
}

void encode(const Stored& stored, Json& settings)
{
    Json alerts = Json::array();
    for (const SpaceAlert& alert : stored.contents.alerts)
        alerts.push_back(alert.toJSON());
    for (const Json& entry : stored.unreadable)
        alerts.push_back(entry);
    settings[std::string(SpaceAlertStore::alertsKey)] = std::move(alerts);
    // A std::set iterates in sorted order, as the notified ids are stored.
    settings[std::string(SpaceAlertStore::notifiedKey)] = Json(stored.contents.notified);
}

bool isShortForm(std::string_view text)
{
    return text.size() == 8 && std::ranges::all_of(text, [](char c) { return std::isxdigit(static_cast<unsigned char>(c)); });
}

std::optional<AlertError> placeError(std::string_view path, SpaceAlertStore::PlaceKind kind, const SpaceAlert::Condition& condition)
{
    if (path.empty() || path.front() != '/')
        return AlertError { AlertError::Case::invalidPlace, {} };
    if (kind == SpaceAlertStore::PlaceKind::disk && !condition.watchesDisk())
        return AlertError { AlertError::Case::diskTakesDiskUsed, {} };
    if (kind == SpaceAlertStore::PlaceKind::folder && condition.watchesDisk())
        return AlertError { AlertError::Case::folderTakesFolderLimits, {} };
    const auto* growth = std::get_if<SpaceAlert::Condition::Growth>(&condition.value);
    if (growth != nullptr && !AlertPeriods::isRawValue(growth->period))
        return AlertError { AlertError::Case::unknownPeriod, {} };
    return std::nullopt;
}

// A new id whose short form no other alert shows, so that the short form names one alert.
std::string freshID(const std::vector<SpaceAlert>& alerts)
{
    for (;;) {
        std::string id = SpaceAlert::newID();
        if (std::ranges::none_of(alerts, [&](const SpaceAlert& alert) { return alert.shortID() == SpaceAlert::shortForm(id); }))
            return id;
    }
}

// The indexes of the alerts that idOrPlace names: its id, else its short id, else its place.
std::expected<std::vector<std::size_t>, AlertError> matching(const std::vector<SpaceAlert>& alerts, std::string_view idOrPlace)
{
    std::vector<std::size_t> found;
    auto collect = [&](auto&& matches) {
        for (std::size_t i = 0; i < alerts.size(); ++i) {
            if (matches(alerts[i]))
                found.push_back(i);
        }
    };
    if (auto id = SpaceAlert::canonicalID(idOrPlace))
        collect([&](const SpaceAlert& alert) { return alert.id == *id; });
    else if (isShortForm(idOrPlace))
        collect([&](const SpaceAlert& alert) { return alert.shortID() == SpaceAlert::shortForm(idOrPlace); });
    if (found.size() > 1)
        return std::unexpected(AlertError { AlertError::Case::ambiguousShortID, {} });
    if (found.empty() && !idOrPlace.empty()) {
        std::string place = SpaceAlertStore::normalizedPlace(idOrPlace);
        collect([&](const SpaceAlert& alert) { return SpaceAlertStore::normalizedPlace(alert.path) == place; });
    }
    if (found.empty())
        return std::unexpected(AlertError { AlertError::Case::notFound, {} });
    return found;
}

}

SpaceAlertStore::SpaceAlertStore(UserDefaults& defaults)
    : m_defaults(defaults)
{
}

std::string SpaceAlertStore::normalizedPlace(std::string_view path)
{
    while (path.size() > 1 && path.back() == '/')
        path.remove_suffix(1);
    return std::string(path);
}

SpaceAlertStore::Contents SpaceAlertStore::contents() const
{
    return decode(m_defaults.all()).contents;
}

std::expected<SpaceAlertStore::Added, AlertError> SpaceAlertStore::add(
    std::string_view path, PlaceKind kind, SpaceAlert::Condition condition)
{
    if (auto error = placeError(path, kind, condition))
        return std::unexpected(*error);
    std::string place = normalizedPlace(path);
    std::optional<Added> added;
    auto saved = m_defaults.update([&](Json& settings) {
        Stored stored = decode(settings);
        auto& alerts = stored.contents.alerts;
        auto same = std::ranges::find_if(alerts, [&](const SpaceAlert& alert) {
            return normalizedPlace(alert.path) == place && condition.replaces(alert.condition);
        });
        if (same != alerts.end()) {
            same->condition = condition;
            stored.contents.notified.erase(same->id);
            added = Added { *same, true };
        } else {
            alerts.push_back({ freshID(alerts), place, condition });
            added = Added { alerts.back(), false };
        }
        encode(stored, settings);
    });
    if (!saved)
        return std::unexpected(AlertError { AlertError::Case::notSaved, saved.error().text() });
    return std::move(*added);
}

std::expected<std::vector<SpaceAlert>, AlertError> SpaceAlertStore::remove(std::string_view idOrPlace)
{
    std::expected<std::vector<SpaceAlert>, AlertError> result;
    auto saved = m_defaults.update([&](Json& settings) {
        Stored stored = decode(settings);
        auto& alerts = stored.contents.alerts;
        auto found = matching(alerts, idOrPlace);
        if (!found) {
            result = std::unexpected(found.error());
            return;
        }
        for (std::size_t index : *found) {
            result->push_back(alerts[index]);
            stored.contents.notified.erase(alerts[index].id);
        }
        std::erase_if(alerts, [&](const SpaceAlert& alert) { return std::ranges::count(*result, alert) > 0; });
        encode(stored, settings);
    });
    if (!saved)
        return std::unexpected(AlertError { AlertError::Case::notSaved, saved.error().text() });
    return result;
}

std::expected<std::vector<std::string>, AlertError> SpaceAlertStore::notify(const std::map<std::string, AlertReading>& readings)
{
    std::vector<std::string> toNotify;
    auto saved = m_defaults.update([&](Json& settings) {
        Stored stored = decode(settings);
        // Only alerts that still exist: another process may have removed one since it was read.
        std::map<std::string, AlertReading> current;
        for (const SpaceAlert& alert : stored.contents.alerts) {
            if (auto reading = readings.find(alert.id); reading != readings.end())
                current.insert(*reading);
        }
        AlertCheck::Notifications next = AlertCheck::notifications(current, stored.contents.notified);
        toNotify = std::move(next.toNotify);
        stored.contents.notified = std::move(next.notified);
        encode(stored, settings);
    });
    if (!saved)
        return std::unexpected(AlertError { AlertError::Case::notSaved, saved.error().text() });
    return toNotify;
}

}
