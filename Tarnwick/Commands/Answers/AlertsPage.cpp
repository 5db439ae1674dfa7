#include "AnswerPages.hpp"

#include "Agent/AgentFormat.hpp"
#include "Agent/EchoedText.hpp"
#include "AlertAddedAnswer.hpp"
#include "AlertsAnswer.hpp"
#include "AlertsRemovedAnswer.hpp"
#include "Alerts/AlertPeriods.hpp"
#include "Alerts/AlertReadings.hpp"
#include "Alerts/AlertTexts.hpp"

// The pages of the three alert commands, which show an alert alike.
namespace tarnwick::AnswerPages {

namespace {

using Condition = SpaceAlert::Condition;

std::string_view conditionWord(Condition::Kind kind)
{
    switch (kind) {
    case Condition::Kind::diskUsed:
        return "fuller_than";
    case Condition::Kind::size:
        return "larger_than";
    case Condition::Kind::share:
        return "share";
    case Condition::Kind::growth:
        return "grows_by";
    }
    return "larger_than";
}

std::string_view stateWord(AlertReading::State state)
{
    switch (state) {
    case AlertReading::State::below:
        return "below";
    case AlertReading::State::exceeded:
        return "exceeded";
    case AlertReading::State::unknown:
        return "unknown";
    }
    return "unknown";
}

JSONValue::Object alertJSON(const SpaceAlert& alert)
{
    const Condition& condition = alert.condition;
    JSONValue::Object json {
        { "id", alert.shortID() },
        { "uuid", alert.id },
        { "path", EchoedText::shortened(alert.path) },
        { "place_kind", condition.watchesDisk() ? "disk" : "folder" },
        { "condition", std::string(conditionWord(condition.kind())) },
        { "fuller_than_percent", JSONValue() },
        { "larger_than_bytes", JSONValue() },
        { "share_percent", JSONValue() },
        { "grows_by_bytes", JSONValue() },
        { "period", JSONValue() },
    };
    if (const auto* diskUsed = std::get_if<Condition::DiskUsed>(&condition.value))
        json["fuller_than_percent"] = diskUsed->percent;
    else if (const auto* size = std::get_if<Condition::Size>(&condition.value))
        json["larger_than_bytes"] = size->bytes;
    else if (const auto* share = std::get_if<Condition::Share>(&condition.value))
        json["share_percent"] = share->percent;
    else if (const auto* growth = std::get_if<Condition::Growth>(&condition.value)) {
        json["grows_by_bytes"] = growth->bytes;
        json["period"] = std::string(AlertPeriods::commandLineName(growth->period).value_or(growth->period));
    }
    return json;
}

JSONValue::Object readAlertJSON(const SpaceAlert& alert, const AlertReading& reading)
{
    JSONValue::Object json = alertJSON(alert);
    bool percent = alert.condition.kind() == Condition::Kind::diskUsed || alert.condition.kind() == Condition::Kind::share;
    json["state"] = std::string(stateWord(reading.state));
    json["exceeded"] = reading.state == AlertReading::State::exceeded;
    json["value_percent"] = reading.value && percent ? JSONValue(*reading.value) : JSONValue();
    json["value_bytes"] = reading.value && !percent ? JSONValue(static_cast<std::int64_t>(*reading.value)) : JSONValue();
    json["measured_at"] = AgentFormat::isoDate(reading.measuredAt);
    json["since"] = AgentFormat::isoDate(reading.since);
    json["uncertain"] = reading.uncertain;
    std::string note = reading.note();
    json["note"] = note.empty() ? JSONValue() : JSONValue(note);
    return json;
}

std::string alertLine(const SpaceAlert& alert)
{
    return alert.shortID() + "  " + EchoedText::shown(alert.path) + "  " + AlertReadings::limitText(alert.condition);
}

std::string readingText(const SpaceAlert& alert, const AlertReading& reading)
{
    if (reading.state == AlertReading::State::unknown)
        return reading.note() + ".";
    return AlertReadings::valueText(alert.condition, reading) + reading.note() + ", "
        + (reading.state == AlertReading::State::exceeded ? "exceeded." : "below the limit.");
}

JSONValue noteJSON(const std::string& note)
{
    return note.empty() ? JSONValue() : JSONValue(note);
}

}

// The first `shown` alerts; the counts are of them all.
AgentResult page(const AlertsAnswer& answer, int shown)
{
    const auto count = static_cast<std::size_t>(shown);
    const std::size_t total = answer.alerts.size();
    std::string text;
    if (answer.alerts.empty())
        text = "No alerts are set. " + std::string(AlertTexts::rules);
    else
        text = std::to_string(total) + (total == 1 ? " alert" : " alerts") + ", each with its latest measurement:";
    std::size_t exceeded = 0;
    for (const AlertsAnswer::Item& item : answer.alerts)
        exceeded += item.reading.state == AlertReading::State::exceeded ? 1 : 0;
    JSONValue::Array list;
    for (std::size_t i = 0; i < count; ++i) {
        const auto& [alert, reading] = answer.alerts[i];
        list.push_back(readAlertJSON(alert, reading));
        text += "\n  " + alertLine(alert) + ": " + readingText(alert, reading);
    }
    if (count < total)
        text += "\nListed " + std::to_string(count) + " of " + std::to_string(total) + " alerts to fit 8 KB.";
    if (exceeded > 0)
        text += "\n" + std::to_string(exceeded) + (exceeded == 1 ? " alert is exceeded." : " alerts are exceeded.");
    if (answer.unreadable > 0)
        text += "\n" + std::to_string(answer.unreadable) + " stored " + (answer.unreadable == 1 ? "alert" : "alerts")
            + " can't be read by this version of Tarnwick; kept as they are.";
    std::string note = answer.dailySnapshot || answer.alerts.empty() ? std::string() : AlertTexts::dailySnapshotOff();
    if (!note.empty())
        text += "\n" + note;
    return AgentResult::success(text, JSONValue(JSONValue::Object {
        { "alerts", list },
        { "alert_count", static_cast<std::int64_t>(total) },
        { "exceeded_count", static_cast<std::int64_t>(exceeded) },
        { "unreadable_alerts", static_cast<std::int64_t>(answer.unreadable) },
        { "daily_snapshot", answer.dailySnapshot },
        { "note", noteJSON(note) },
        { "shrunk_to_fit", count < total },
    }));
}

AgentResult page(const AlertAddedAnswer& answer, int)
{
    const SpaceAlert& alert = answer.alert;
    std::string text = (answer.replaced ? "Changed the limit of alert " : "Set alert ") + alert.shortID() + ": " + EchoedText::shown(alert.path) + " "
        + AlertReadings::limitText(alert.condition) + ".\nNow: " + readingText(alert, answer.reading);
    text += "\n" + AlertTexts::oneAlertPerKind();
    std::string note = answer.dailySnapshot ? std::string() : AlertTexts::dailySnapshotOff();
    if (!note.empty())
        text += "\n" + note;
    return AgentResult::success(text, JSONValue(JSONValue::Object { { "alert", readAlertJSON(alert, answer.reading) }, { "replaced", answer.replaced },
        { "daily_snapshot", answer.dailySnapshot }, { "note", noteJSON(note) } }));
}

// The first `shown` of the removed alerts: a place holds up to one alert of each kind and
// one growth alert per period, and each repeats the place's path.
AgentResult page(const AlertsRemovedAnswer& answer, int shown)
{
    const auto count = static_cast<std::size_t>(shown);
    const std::size_t total = answer.removed.size();
    std::string text = total == 1 ? "Removed alert " + alertLine(answer.removed.front()) + "." : "Removed " + std::to_string(total) + " alerts:";
    JSONValue::Array list;
    for (std::size_t i = 0; i < count; ++i) {
        list.push_back(alertJSON(answer.removed[i]));
        if (total > 1)
            text += "\n  " + alertLine(answer.removed[i]);
    }
    if (count < total)
        text += "\nListed " + std::to_string(count) + " of " + std::to_string(total) + " removed alerts to fit 8 KB.";
    return AgentResult::success(text, JSONValue(JSONValue::Object { { "removed", list }, { "shrunk_to_fit", count < total } }));
}

}
