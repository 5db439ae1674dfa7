#include "SnapshotCommands.hpp"

#include "Agent/AgentErrorCode.hpp"
#include "AgentMessages.hpp"
#include "AgentPlaces.hpp"
#include "Alerts/AlertReadings.hpp"
#include "Alerts/AlertPeriods.hpp"
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

}

Answered<AlertsAnswer> alerts(const Request&, const Context& context)
{
    UserDefaults defaults(UserDefaults::standardPath());
    SpaceAlertStore store(defaults);
    SpaceAlertStore::Contents contents = store.contents();
    std::unique_ptr<HistoryStore> owned;
    HistoryStore* history = SnapshotPlaces::history(context, owned);
    Date now = std::chrono::system_clock::now();
    AlertsAnswer answer;
    for (const SpaceAlert& alert : contents.alerts)
        answer.alerts.push_back(AlertsAnswer::Item { alert, AlertReadings::read(alert, history, now) });
    answer.unreadable = contents.problems.size();
    answer.dailySnapshot = dailySnapshotOn(defaults);
    return answer;
}

Answered<AlertAddedAnswer> addAlert(const Request& request, const Context& context)
{
    auto path = AgentPlaces::expand(AgentPlaces::argument(request.arguments, "path").value_or(""));
    if (!path)
        return std::unexpected(path.error());
    // An alert on a place that isn't there would never be measured.
    struct stat info {};
    if (::stat(path->c_str(), &info) != 0)
        return std::unexpected(AgentResult::failure(AgentErrorCode::invalidPath, AgentMessages::noSuchPlace(*path)));
    if (!S_ISDIR(info.st_mode))
        return std::unexpected(AgentResult::failure(AgentErrorCode::invalidPath, AgentMessages::notAFolder(*path)));
    auto condition = conditionOf(request);
    if (!condition)
        return std::unexpected(AgentResult::failure(AgentErrorCode::invalidArgument, "add-alert needs one limit: --fuller-than, --larger-than, --share or --grows-by."));
    UserDefaults defaults(UserDefaults::standardPath());
    SpaceAlertStore store(defaults);
    auto added = store.add(*path, AlertReadings::placeKind(*path), *condition);
    if (!added)
        return std::unexpected(alertFailure(added.error()));

    std::unique_ptr<HistoryStore> owned;
    AlertReading reading = AlertReadings::read(added->alert, SnapshotPlaces::history(context, owned), std::chrono::system_clock::now());
    return AlertAddedAnswer { std::move(added->alert), reading, added->replaced, dailySnapshotOn(defaults) };
}

Answered<AlertsRemovedAnswer> removeAlert(const Request& request, const Context&)
{
    std::string argument = AgentPlaces::argument(request.arguments, "path").value_or("");
    std::vector<std::string> names;
    if (looksLikeID(argument)) {
        names.push_back(argument);
    } else {
        auto path = AgentPlaces::expand(argument);
        if (!path)
            return std::unexpected(path.error());
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
        return std::unexpected(alertFailure(removed.error()));
    return AlertsRemovedAnswer { std::move(*removed) };
}

}
