#include "SnapshotCommands.hpp"

#include "Agent/AgentErrorCode.hpp"
#include "AgentPlaces.hpp"
#include "History/HistoryStore.hpp"
#include "Metrics/ExpositionText.hpp"
#include "Metrics/TextfileWriter.hpp"
#include "MetricsTextfile.hpp"
#include "Platform/UserDefaults.hpp"
#include "SnapshotPlaces.hpp"

#include <filesystem>

namespace tarnwick::SnapshotCommands {

namespace {

// --write DIR: the file now, and the setting that has the app rewrite it after every snapshot.
// An empty DIR turns the setting off.
Answered<MetricsAnswer> writeInto(const std::string& given, MetricsAnswer answer, UserDefaults& defaults)
{
    if (given.empty()) {
        if (auto removed = defaults.remove(MetricsTextfile::folderKey); !removed)
            return std::unexpected(AgentResult::failure(AgentErrorCode::generic, "Tarnwick couldn't change its settings: " + removed.error().text()));
        answer.outcome = MetricsAnswer::StoppedWriting {};
        return answer;
    }
    std::error_code error;
    std::string folder = given.starts_with("~") ? AgentPlaces::expand(given).value_or(given) : std::filesystem::absolute(given, error).lexically_normal().string();
    if (folder.size() > 1 && folder.ends_with('/'))
        folder.pop_back();
    auto written = TextfileWriter::write(folder, ExpositionText::render(answer.families));
    if (!written)
        return std::unexpected(AgentResult::failure(AgentErrorCode::invalidPath, written.error().message()));
    MetricsAnswer::Written file { folder, *written, std::nullopt };
    if (auto saved = defaults.set(MetricsTextfile::folderKey, folder); !saved)
        file.unsavedBecause = saved.error().text();
    answer.outcome = std::move(file);
    return answer;
}

}

Answered<MetricsAnswer> metrics(const Request& request, const Context& context)
{
    std::unique_ptr<HistoryStore> owned;
    HistoryStore* store = SnapshotPlaces::history(context, owned);
    UserDefaults defaults(UserDefaults::standardPath());
    MetricsAnswer answer { store ? MetricsTextfile::figures(*store, defaults) : std::vector<MetricFamily> {}, MetricsAnswer::Printed {} };
    if (auto folder = AgentPlaces::argument(request.arguments, "write"))
        return writeInto(*folder, std::move(answer), defaults);
    return answer;
}

}
