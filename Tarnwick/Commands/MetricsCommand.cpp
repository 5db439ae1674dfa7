#include "SnapshotCommands.hpp"

#include "Agent/AgentErrorCode.hpp"
#include "Agent/EchoedText.hpp"
#include "AgentPlaces.hpp"
#include "History/HistoryStore.hpp"
#include "Metrics/ExpositionText.hpp"
#include "Metrics/HistoryMetrics.hpp"
#include "Metrics/TextfileWriter.hpp"
#include "MetricsTextfile.hpp"
#include "Platform/UserDefaults.hpp"
#include "SnapshotPlaces.hpp"

#include <filesystem>

namespace tarnwick::SnapshotCommands {

namespace {

JSONValue familiesJSON(const std::vector<MetricFamily>& families)
{
    JSONValue::Array list;
    for (const MetricFamily& family : families) {
        JSONValue::Array samples;
        for (const MetricFamily::Sample& sample : family.samples) {
            JSONValue::Object labels;
            for (const auto& [name, value] : sample.labels)
                labels[name] = value;
            samples.push_back(JSONValue::Object { { "labels", labels }, { "value", sample.value } });
        }
        list.push_back(JSONValue::Object { { "name", family.name }, { "help", family.help }, { "type", "gauge" }, { "samples", samples } });
    }
    return list;
}

// --write DIR: the file now, and the setting that has the app rewrite it after every snapshot.
// An empty DIR turns the setting off.
AgentResult writeInto(const std::string& given, const std::vector<MetricFamily>& families, UserDefaults& defaults)
{
    if (given.empty()) {
        if (auto removed = defaults.remove(MetricsTextfile::folderKey); !removed)
            return AgentResult::failure(AgentErrorCode::generic, "Tarnwick couldn't change its settings: " + removed.error().text());
        return AgentResult::success("Tarnwick no longer writes its metrics after each snapshot.",
            JSONValue(JSONValue::Object { { "folder", JSONValue() }, { "written", JSONValue() } }));
    }
    std::error_code error;
    std::string folder = given.starts_with("~") ? AgentPlaces::expand(given).value_or(given) : std::filesystem::absolute(given, error).lexically_normal().string();
    if (folder.size() > 1 && folder.ends_with('/'))
        folder.pop_back();
    auto written = TextfileWriter::write(folder, ExpositionText::render(families));
    if (!written)
        return AgentResult::failure(AgentErrorCode::invalidPath, written.error().message());
    std::string text = "Wrote " + EchoedText::shown(*written) + ": " + std::to_string(HistoryMetrics::seriesCount(families)) + " series" + ".";
    if (auto saved = defaults.set(MetricsTextfile::folderKey, folder); !saved)
        text += "\nThe setting couldn't be saved (" + saved.error().text() + "), so Tarnwick won't rewrite it after each snapshot.";
    else
        text += "\nTarnwick rewrites it after every snapshot it saves while it runs.";
    return AgentResult::success(text, JSONValue(JSONValue::Object {
        { "folder", folder }, { "written", *written }, { "series_count", static_cast<std::int64_t>(HistoryMetrics::seriesCount(families)) } }));
}

}

AgentResult metrics(const Request& request, const Context& context)
{
    std::unique_ptr<HistoryStore> owned;
    HistoryStore* store = SnapshotPlaces::history(context, owned);
    UserDefaults defaults(UserDefaults::standardPath());
    std::vector<MetricFamily> families = store ? MetricsTextfile::figures(*store, defaults) : std::vector<MetricFamily> {};
    if (auto folder = AgentPlaces::argument(request.arguments, "write"))
        return writeInto(*folder, families, defaults);
    std::string text = ExpositionText::render(families);
    // The printer ends the answer with a line feed; the text's own last one would be a blank line.
    if (!text.empty())
        text.pop_back();
    return AgentResult::success(text, JSONValue(JSONValue::Object {
        { "families", familiesJSON(families) }, { "series_count", static_cast<std::int64_t>(HistoryMetrics::seriesCount(families)) } }));
}

}
