#include "SnapshotCommands.hpp"

#include "Agent/AgentErrorCode.hpp"
#include "Agent/AgentFormat.hpp"
#include "Agent/EchoedText.hpp"
#include "AgentMessages.hpp"
#include "AgentPlaces.hpp"
#include "Alerts/AlertReadings.hpp"
#include "Alerts/AlertPeriods.hpp"
#include "Alerts/AlertTexts.hpp"
#include "Platform/UserDefaults.hpp"
#include "SnapshotPlaces.hpp"

#include <algorithm>
#include <sys/stat.h>
#include <cctype>

namespace tarnwick::SnapshotCommands {

namespace {

using Condition = SpaceAlert::Condition;

constexpr std::string_view dailyScansKey = "DailyScansEnabled";

bool dailySnapshotOn(UserDefaults& defaults)
{
    auto value = defaults.value(dailyScansKey);
    return value && value->is_boolean() && value->get<bool>();
}

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

void addReading(JSONValue::Object& json, const SpaceAlert& alert, const AlertReading& reading)
{
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

AgentResult alertFailure(const AlertError& error)
{
    std::string_view code = AgentErrorCode::generic;
    switch (error.reason) {
    case AlertError::Case::notFound:
        code = AgentErrorCode::notFound;
        break;
    case AlertError::Case::invalidPlace:
        code = AgentErrorCode::invalidPath;
        break;
    case AlertError::Case::ambiguousShortID:
    case AlertError::Case::diskTakesDiskUsed:
    case AlertError::Case::folderTakesFolderLimits:
    case AlertError::Case::unknownPeriod:
        code = AgentErrorCode::invalidArgument;
        break;
    case AlertError::Case::notSaved:
        break;
    }
    return AgentResult::failure(code, error.text());
}

std::optional<Condition> conditionOf(const Request& request)
{
    const auto& arguments = request.arguments;
    if (AgentPlaces::argument(arguments, "fuller_than_percent"))
        return Condition { Condition::DiskUsed { static_cast<int>(AgentPlaces::integer(arguments, "fuller_than_percent", 0)) } };
    if (AgentPlaces::argument(arguments, "larger_than"))
        return Condition { Condition::Size { AgentPlaces::integer(arguments, "larger_than", 0) } };
    if (AgentPlaces::argument(arguments, "share_percent"))
        return Condition { Condition::Share { static_cast<int>(AgentPlaces::integer(arguments, "share_percent", 0)) } };
    if (AgentPlaces::argument(arguments, "grows_by")) {
        std::string period = AgentPlaces::argument(arguments, "period").value_or(std::string(AlertPeriods::defaultRawValue));
        std::string raw = std::string(AlertPeriods::fromCommandLineName(period).value_or(period));
        return Condition { Condition::Growth { AgentPlaces::integer(arguments, "grows_by", 0), raw } };
    }
    return std::nullopt;
}

bool looksLikeID(std::string_view text)
{
    bool shortForm = text.size() == 8 && std::ranges::all_of(text, [](char c) { return std::isxdigit(static_cast<unsigned char>(c)); });
    return shortForm || SpaceAlert::canonicalID(text).has_value();
}

AgentResult listAnswer(const std::vector<std::pair<SpaceAlert, AlertReading>>& readings, std::size_t problems, bool dailyOn, std::size_t shown)
{
    std::string text;
    if (readings.empty())
        text = "No alerts are set. " + std::string(AlertTexts::rules);
    else
        text = std::to_string(readings.size()) + (readings.size() == 1 ? " alert" : " alerts") + ", each with its latest measurement:";
    JSONValue::Array list;
    std::size_t exceeded = 0;
    for (const auto& [alert, reading] : readings)
        exceeded += reading.state == AlertReading::State::exceeded ? 1 : 0;
    for (std::size_t i = 0; i < shown; ++i) {
        const auto& [alert, reading] = readings[i];
        JSONValue::Object json = alertJSON(alert);
        addReading(json, alert, reading);
        list.push_back(std::move(json));
        text += "\n  " + alertLine(alert) + ": " + readingText(alert, reading);
    }
    if (shown < readings.size())
        text += "\nListed " + std::to_string(shown) + " of " + std::to_string(readings.size()) + " alerts to fit 8 KB.";
    if (exceeded > 0)
        text += "\n" + std::to_string(exceeded) + (exceeded == 1 ? " alert is exceeded." : " alerts are exceeded.");
    if (problems > 0)
        text += "\n" + std::to_string(problems) + " stored " + (problems == 1 ? "alert" : "alerts")
            + " can't be read by this version of Tarnwick; kept as they are.";
    std::string note = dailyOn || readings.empty() ? std::string() : AlertTexts::dailySnapshotOff();
    if (!note.empty())
        text += "\n" + note;
    return AgentResult::success(text, JSONValue(JSONValue::Object {
        { "alerts", list },
        { "alert_count", static_cast<std::int64_t>(readings.size()) },
        { "exceeded_count", static_cast<std::int64_t>(exceeded) },
        { "unreadable_alerts", static_cast<std::int64_t>(problems) },
        { "daily_snapshot", dailyOn },
        { "note", note.empty() ? JSONValue() : JSONValue(note) },
        { "shrunk_to_fit", shown < readings.size() },
    }));
}

}

AgentResult alerts(const Request&, const Context& context)
{
    UserDefaults defaults(UserDefaults::standardPath());
    SpaceAlertStore store(defaults);
    SpaceAlertStore::Contents contents = store.contents();
    std::unique_ptr<HistoryStore> owned;
    HistoryStore* history = SnapshotPlaces::history(context, owned);
    Date now = std::chrono::system_clock::now();
    std::vector<std::pair<SpaceAlert, AlertReading>> readings;
    for (const SpaceAlert& alert : contents.alerts)
        readings.emplace_back(alert, AlertReadings::read(alert, history, now));
    bool dailyOn = dailySnapshotOn(defaults);
    auto fitting = AgentFormat::largestFitting(static_cast<int>(readings.size()),
        [&](int shown) { return listAnswer(readings, contents.problems.size(), dailyOn, static_cast<std::size_t>(shown)); });
    if (!fitting)
        return AgentResult::failure(AgentErrorCode::outputTooLarge, "The alerts cannot fit within the 8 KB output limit.");
    return *fitting;
}

AgentResult addAlert(const Request& request, const Context& context)
{
    auto path = AgentPlaces::expand(AgentPlaces::argument(request.arguments, "path").value_or(""));
    if (!path)
        return path.error();
    // An alert on a place that isn't there would never be measured.
    struct stat info {};
    if (::stat(path->c_str(), &info) != 0)
        return AgentResult::failure(AgentErrorCode::invalidPath, AgentMessages::noSuchPlace(*path));
    if (!S_ISDIR(info.st_mode))
        return AgentResult::failure(AgentErrorCode::invalidPath, AgentMessages::notAFolder(*path));
    auto condition = conditionOf(request);
    if (!condition)
        return AgentResult::failure(AgentErrorCode::invalidArgument, "add-alert needs one limit: --fuller-than, --larger-than, --share or --grows-by.");
    UserDefaults defaults(UserDefaults::standardPath());
    SpaceAlertStore store(defaults);
    auto added = store.add(*path, AlertReadings::placeKind(*path), *condition);
    if (!added)
        return alertFailure(added.error());

    std::unique_ptr<HistoryStore> owned;
    AlertReading reading = AlertReadings::read(added->alert, SnapshotPlaces::history(context, owned), std::chrono::system_clock::now());
    std::string text = (added->replaced ? "Changed the limit of alert " : "Set alert ") + added->alert.shortID() + ": " + EchoedText::shown(added->alert.path) + " "
        + AlertReadings::limitText(added->alert.condition) + ".\nNow: " + readingText(added->alert, reading);
    text += "\n" + AlertTexts::oneAlertPerKind();
    bool dailyOn = dailySnapshotOn(defaults);
    std::string note = dailyOn ? std::string() : AlertTexts::dailySnapshotOff();
    if (!note.empty())
        text += "\n" + note;
    JSONValue::Object alert = alertJSON(added->alert);
    addReading(alert, added->alert, reading);
    return AgentResult::success(text, JSONValue(JSONValue::Object { { "alert", alert }, { "replaced", added->replaced }, { "daily_snapshot", dailyOn },
        { "note", note.empty() ? JSONValue() : JSONValue(note) } }));
}

AgentResult removeAlert(const Request& request, const Context&)
{
    std::string argument = AgentPlaces::argument(request.arguments, "path").value_or("");
    std::vector<std::string> names;
    if (looksLikeID(argument)) {
        names.push_back(argument);
    } else {
        auto path = AgentPlaces::expand(argument);
        if (!path)
            return path.error();
        names = HistoryPlaces::pathForms(*path);
    }
    UserDefaults defaults(UserDefaults::standardPath());
    SpaceAlertStore store(defaults);
    std::expected<std::vector<SpaceAlert>, AlertError> removed = std::unexpected(AlertError { AlertError::Case::notFound, {} });
    for (const std::string& name : names) {
        removed = store.remove(name);
        if (removed || removed.error().reason != AlertError::Case::notFound)
            break;
    }
    if (!removed)
        return alertFailure(removed.error());
    std::string text = removed->size() == 1 ? "Removed alert " + alertLine(removed->front()) + "."
                                            : "Removed " + std::to_string(removed->size()) + " alerts:";
    JSONValue::Array list;
    for (const SpaceAlert& alert : *removed) {
        list.push_back(alertJSON(alert));
        if (removed->size() > 1)
            text += "\n  " + alertLine(alert);
    }
    return AgentResult::success(text, JSONValue(JSONValue::Object { { "removed", list } }));
}

}
