#include "AnswerPages.hpp"

#include "Agent/AgentFormat.hpp"
#include "Agent/EchoedText.hpp"
#include "Agent/OutputLimit.hpp"
#include "Support/ByteFormat.hpp"
#include "Support/Phrases.hpp"
#include "TypesAnswer.hpp"

namespace tarnwick::AnswerPages {

namespace {

std::string sourceText(const TypesAnswer& answer)
{
    if (answer.snapshotDate)
        return "from the snapshot of " + Phrases::localTime(*answer.snapshotDate) + "; snapshot places include retained folders only";
    return "from the scan on screen";
}

JSONValue::Object header(const TypesAnswer& answer)
{
    return JSONValue::Object {
        { "path", EchoedText::shortened(answer.path) },
        { "mode", std::string(ColorModes::commandLineName(answer.mode)) },
        { "title", std::string(ColorModes::title(answer.mode)) },
        { "source", answer.snapshotDate ? "snapshot" : "scan" },
        { "snapshot_date", AgentFormat::isoDate(answer.snapshotDate) },
        { "size_bytes", answer.bytes },
        { "incomplete", answer.incomplete },
    };
}

std::string headerText(const TypesAnswer& answer)
{
    return EchoedText::shown(answer.path) + " by " + std::string(ColorModes::title(answer.mode)) + ": " + AgentFormat::size(answer.bytes, answer.incomplete)
        + ", " + sourceText(answer) + ".";
}

// One group with its first `places` places and apps, in the text and as JSON.
JSONValue::Object groupEntry(const TypesAnswer& answer, const TypeGroups::Group& group, std::size_t number, std::size_t places, std::string& text)
{
    double share = answer.bytes > 0 ? static_cast<double>(group.bytes) / static_cast<double>(answer.bytes) : 0;
    // Unread parts of the place may hold bytes of any group.
    text += "\n" + std::to_string(number) + ". " + EchoedText::shown(group.label) + "  " + AgentFormat::size(group.bytes, answer.incomplete) + "  "
        + AgentFormat::percent(share);
    JSONValue::Array list;
    for (std::size_t p = 0; p < std::min(places, group.places.size()); ++p) {
        list.push_back(JSONValue::Object { { "path", EchoedText::shortened(group.places[p].path) }, { "size_bytes", group.places[p].bytes } });
        text += "\n     " + ByteFormat::format(group.places[p].bytes) + "  " + EchoedText::shown(group.places[p].path);
    }
    JSONValue::Object entry { { "key", EchoedText::shortened(group.key) }, { "label", EchoedText::shortened(group.label) },
        { "size_bytes", group.bytes }, { "incomplete", answer.incomplete }, { "share", share }, { "places", list } };
    if (!group.apps.empty()) {
        JSONValue::Array apps;
        std::string names;
        for (std::size_t a = 0; a < std::min(places, group.apps.size()); ++a) {
            apps.push_back(JSONValue::Object { { "name", EchoedText::shortened(group.apps[a].path) }, { "size_bytes", group.apps[a].bytes } });
            names += (names.empty() ? "" : ", ") + EchoedText::shown(group.apps[a].path) + " " + ByteFormat::format(group.apps[a].bytes);
        }
        entry["apps"] = apps;
        if (!names.empty())
            text += "\n     Apps in it: " + names;
    }
    return entry;
}

JSONValue::Object ratioJSON(const TypeGroups::Ratio& ratio)
{
    return JSONValue::Object { { "path", EchoedText::shortened(ratio.path) }, { "size_bytes", ratio.allocated }, { "logical_bytes", ratio.logical },
        { "incomplete", ratio.allocatedIncomplete || ratio.logicalIncomplete }, { "ratio", ratio.ratio ? JSONValue(*ratio.ratio) : JSONValue() } };
}

std::string ratioLine(const TypeGroups::Ratio& ratio)
{
    return "  " + Phrases::ratio(ratio.ratio) + "  " + EchoedText::shown(ratio.path) + "  (" + AgentFormat::size(ratio.allocated, ratio.allocatedIncomplete)
        + " on disk, " + AgentFormat::size(ratio.logical, ratio.logicalIncomplete) + ")";
}

}

// The first `shown` groups from the cursor, each with up to `places` places.
AgentResult page(const TypesAnswer& answer, int shown, int places)
{
    const TypesAnswer::Groups& page = std::get<TypesAnswer::Groups>(answer.listing);
    const auto perGroup = static_cast<std::size_t>(places);
    std::string text = headerText(answer);
    JSONValue::Array groups;
    for (std::size_t i = 0; i < static_cast<std::size_t>(shown); ++i)
        groups.push_back(groupEntry(answer, page.groups[i], page.first + i + 1, perGroup, text));
    std::size_t next = page.first + static_cast<std::size_t>(shown);
    bool more = next < page.count;
    if (page.count == 0)
        text += "\nNo bytes to group here.";
    else if (shown > 0)
        text += "\nGroups " + std::to_string(page.first + 1) + " to " + std::to_string(next) + " of " + std::to_string(page.count)
            + (more ? "; next page: --cursor " + std::to_string(next) : "") + ".";
    else
        text += "\nNo groups after " + std::to_string(page.count) + ".";
    JSONValue note;
    if (perGroup < page.perGroup) {
        note = OutputLimit::placesLimited(places);
        text += "\n" + *note.stringValue();
    }
    JSONValue::Object json = header(answer);
    json["groups"] = groups;
    json["group_count"] = static_cast<std::int64_t>(page.count);
    json["cursor"] = static_cast<std::int64_t>(page.first);
    json["next_cursor"] = more ? JSONValue(static_cast<std::int64_t>(next)) : JSONValue();
    json["folders_per_group"] = static_cast<std::int64_t>(perGroup);
    json["note"] = note;
    return AgentResult::success(text, JSONValue(json));
}

// The place's ratio and the first `shown` items of each extreme.
AgentResult page(const TypesAnswer& answer, int shown)
{
    const TypesAnswer::Ratios& ratios = std::get<TypesAnswer::Ratios>(answer.listing);
    const TypeGroups::Ratio& place = ratios.extremes.place;
    const auto count = static_cast<std::size_t>(shown);
    std::string text = EchoedText::shown(answer.path) + ", on disk / size: " + Phrases::ratio(place.ratio) + " ("
        + AgentFormat::size(place.allocated, place.allocatedIncomplete) + " on disk, " + AgentFormat::size(place.logical, place.logicalIncomplete)
        + " logical), " + sourceText(answer) + ".";
    if (!place.ratio)
        text += "\nThe ratio is unknown: a size here is unknown or incomplete.";
    JSONValue::Object json = header(answer);
    json["logical_bytes"] = place.logical;
    json["ratio"] = place.ratio ? JSONValue(*place.ratio) : JSONValue();
    auto list = [&](const std::vector<TypeGroups::Ratio>& extremes, std::string_view title) {
        JSONValue::Array array;
        std::size_t listed = std::min(count, extremes.size());
        if (listed > 0)
            text += "\n" + std::string(title);
        for (std::size_t i = 0; i < listed; ++i) {
            array.push_back(ratioJSON(extremes[i]));
            text += "\n" + ratioLine(extremes[i]);
        }
        return array;
    };
    json["lowest"] = list(ratios.extremes.lowest, "Lowest on disk / size, items of 10 MB and more:");
    json["highest"] = list(ratios.extremes.highest, "Highest on disk / size:");
    json["places_per_extreme"] = static_cast<std::int64_t>(count);
    json["note"] = JSONValue();
    if (count < ratios.perExtreme) {
        std::string note = OutputLimit::extremesLimited(shown);
        json["note"] = note;
        text += "\n" + note;
    }
    return AgentResult::success(text, JSONValue(json));
}

}
