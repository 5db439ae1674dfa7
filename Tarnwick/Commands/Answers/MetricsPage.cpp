#include "AnswerPages.hpp"

#include "Agent/EchoedText.hpp"
#include "Metrics/ExpositionText.hpp"
#include "Metrics/HistoryMetrics.hpp"
#include "MetricsAnswer.hpp"

namespace tarnwick::AnswerPages {

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

// The families whole, label values and all: a collector reads them, and a path cut short
// would name another series.
AgentResult printed(const MetricsAnswer& answer)
{
    std::string text = ExpositionText::render(answer.families);
    // The printer ends the answer with a line feed; the text's own last one would be a blank line.
    if (!text.empty())
        text.pop_back();
    return AgentResult::success(text, JSONValue(JSONValue::Object { { "families", familiesJSON(answer.families) },
        { "series_count", static_cast<std::int64_t>(HistoryMetrics::seriesCount(answer.families)) } }));
}

AgentResult written(const MetricsAnswer& answer, const MetricsAnswer::Written& written)
{
    const auto series = static_cast<std::int64_t>(HistoryMetrics::seriesCount(answer.families));
    std::string text = "Wrote " + EchoedText::shown(written.file) + ": " + std::to_string(series) + " series" + ".";
    if (written.unsavedBecause)
        text += "\nThe setting couldn't be saved (" + *written.unsavedBecause + "), so Tarnwick won't rewrite it after each snapshot.";
    else
        text += "\nTarnwick rewrites it after every snapshot it saves while it runs.";
    return AgentResult::success(text, JSONValue(JSONValue::Object {
        { "folder", EchoedText::shortened(written.folder) }, { "written", EchoedText::shortened(written.file) }, { "series_count", series } }));
}

AgentResult stoppedWriting()
{
    return AgentResult::success("Tarnwick no longer writes its metrics after each snapshot.",
        JSONValue(JSONValue::Object { { "folder", JSONValue() }, { "written", JSONValue() } }));
}

}

AgentResult page(const MetricsAnswer& answer)
{
    if (const auto* file = std::get_if<MetricsAnswer::Written>(&answer.outcome))
        return written(answer, *file);
    if (std::holds_alternative<MetricsAnswer::StoppedWriting>(answer.outcome))
        return stoppedWriting();
    return printed(answer);
}

}
