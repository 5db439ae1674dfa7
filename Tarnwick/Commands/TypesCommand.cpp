#include "SnapshotCommands.hpp"

#include "Agent/AgentErrorCode.hpp"
#include "Agent/AgentFormat.hpp"
#include "Agent/EchoedText.hpp"
#include "Support/ByteFormat.hpp"
#include "Support/Phrases.hpp"
#include "Agent/OutputLimit.hpp"
#include "Agent/PageFitting.hpp"
#include "AgentPlaces.hpp"
#include "Classification/TypeGroups.hpp"
#include "History/SnapshotTree.hpp"
#include "SnapshotPlaces.hpp"


namespace tarnwick::SnapshotCommands {

namespace {

constexpr long long defaultPlaces = 5;
constexpr long long defaultGroups = 20;

// Where the colour totals come from: the result on screen, or the latest snapshot.
struct TypesSource {
    std::shared_ptr<const ScanTree> tree;
    NodeID place;
    TypeGroups::Maps maps;
    std::optional<Date> snapshotDate; // absent for the result on screen
    bool hasColors = true;
};

std::expected<TypesSource, AgentResult> sourceFor(const Request& request, const Context& context)
{
    std::string path;
    if (auto argument = AgentPlaces::argument(request.arguments, "path")) {
        auto expanded = AgentPlaces::expand(*argument);
        if (!expanded)
            return std::unexpected(expanded.error());
        path = *expanded;
    } else if (context.openFolder) {
        path = *context.openFolder;
    } else {
        return std::unexpected(AgentResult::failure(AgentErrorCode::notScanned, "Nothing is open in Tarnwick. Give a folder or disk, such as types ~."));
    }
    if (context.tree) {
        for (const std::string& form : HistoryPlaces::pathForms(path)) {
            if (auto node = context.tree->node(form))
                return TypesSource { context.tree, *node, context.analysis ? TypeGroups::Maps::of(*context.analysis) : TypeGroups::Maps {},
                    std::nullopt, true };
        }
    }
    std::unique_ptr<HistoryStore> owned;
    auto located = SnapshotPlaces::locate(SnapshotPlaces::history(context, owned), path);
    if (!located)
        return std::unexpected(located.error());
    const Snapshot& snapshot = *located->keptIn;
    return TypesSource { SnapshotTree::make(snapshot), NodeID { located->node }, {}, snapshot.date, snapshot.hasColors };
}

std::string sourceText(const TypesSource& source)
{
    if (source.snapshotDate)
        return "from the snapshot of " + Phrases::localTime(*source.snapshotDate) + "; snapshot places include retained folders only";
    return "from the scan on screen";
}

JSONValue::Object header(const TypesSource& source, ColorMode mode)
{
    const ScanTree& tree = *source.tree;
    return JSONValue::Object {
        { "path", EchoedText::shortened(tree.path(source.place)) },
        { "mode", std::string(ColorModes::commandLineName(mode)) },
        { "title", std::string(ColorModes::title(mode)) },
        { "source", source.snapshotDate ? "snapshot" : "scan" },
        { "snapshot_date", AgentFormat::isoDate(source.snapshotDate) },
        { "size_bytes", tree.allocatedSize(source.place) },
        { "incomplete", tree.isIncomplete(source.place) },
    };
}

std::string headerText(const TypesSource& source, ColorMode mode)
{
    const ScanTree& tree = *source.tree;
    return EchoedText::shown(tree.path(source.place)) + " by " + std::string(ColorModes::title(mode)) + ": "
        + AgentFormat::size(tree.allocatedSize(source.place), tree.isIncomplete(source.place)) + ", " + sourceText(source) + ".";
}

struct Page {
    std::vector<TypeGroups::Group> groups;
    std::size_t first = 0;    // the cursor
    std::size_t limit = 0;    // groups asked for
    std::size_t perGroup = 0; // places asked for
};

AgentResult groupPage(const TypesSource& source, ColorMode mode, const Page& page, std::size_t shown, std::size_t places)
{
    std::int64_t total = source.tree->allocatedSize(source.place);
    // Unread parts of the place may hold bytes of any group.
    const bool lowerBound = source.tree->isIncomplete(source.place);
    std::string text = headerText(source, mode);
    JSONValue::Array groups;
    for (std::size_t i = page.first; i < page.first + shown; ++i) {
        const TypeGroups::Group& group = page.groups[i];
        double share = total > 0 ? static_cast<double>(group.bytes) / static_cast<double>(total) : 0;
        text += "\n" + std::to_string(i + 1) + ". " + group.label + "  " + AgentFormat::size(group.bytes, lowerBound) + "  " + AgentFormat::percent(share);
        JSONValue::Array list;
        for (std::size_t p = 0; p < std::min(places, group.places.size()); ++p) {
            list.push_back(JSONValue::Object { { "path", group.places[p].path }, { "size_bytes", group.places[p].bytes } });
            text += "\n     " + ByteFormat::format(group.places[p].bytes) + "  " + EchoedText::visible(group.places[p].path);
        }
        JSONValue::Object entry { { "key", group.key }, { "label", group.label }, { "size_bytes", group.bytes }, { "incomplete", lowerBound },
            { "share", share }, { "places", list } };
        if (!group.apps.empty()) {
            JSONValue::Array apps;
            std::string names;
            for (std::size_t a = 0; a < std::min(places, group.apps.size()); ++a) {
                apps.push_back(JSONValue::Object { { "name", group.apps[a].path }, { "size_bytes", group.apps[a].bytes } });
                names += (names.empty() ? "" : ", ") + EchoedText::visible(group.apps[a].path) + " " + ByteFormat::format(group.apps[a].bytes);
            }
            entry["apps"] = apps;
            if (!names.empty())
                text += "\n     Apps in it: " + names;
        }
        groups.push_back(std::move(entry));
    }
    std::size_t next = page.first + shown;
    bool more = next < page.groups.size();
    if (page.groups.empty())
        text += "\nNo bytes to group here.";
    else if (shown > 0)
        text += "\nGroups " + std::to_string(page.first + 1) + " to " + std::to_string(next) + " of " + std::to_string(page.groups.size())
            + (more ? "; next page: --cursor " + std::to_string(next) : "") + ".";
    else
        text += "\nNo groups after " + std::to_string(page.groups.size()) + ".";
    JSONValue note;
    if (places < page.perGroup) {
        note = OutputLimit::placesLimited(static_cast<int>(places));
        text += "\n" + *note.stringValue();
    }
    JSONValue::Object json = header(source, mode);
    json["groups"] = groups;
    json["group_count"] = static_cast<std::int64_t>(page.groups.size());
    json["cursor"] = static_cast<std::int64_t>(page.first);
    json["next_cursor"] = more ? JSONValue(static_cast<std::int64_t>(next)) : JSONValue();
    json["folders_per_group"] = static_cast<std::int64_t>(places);
    json["note"] = note;
    return AgentResult::success(text, JSONValue(json));
}

JSONValue::Object ratioJSON(const TypeGroups::Ratio& ratio)
{
    return JSONValue::Object { { "path", ratio.path }, { "size_bytes", ratio.allocated }, { "logical_bytes", ratio.logical },
        { "incomplete", ratio.allocatedIncomplete || ratio.logicalIncomplete }, { "ratio", ratio.ratio ? JSONValue(*ratio.ratio) : JSONValue() } };
}

AgentResult ratioAnswer(const TypesSource& source, const TypeGroups::Extremes& extremes, std::size_t asked, std::size_t shown)
{
    const TypeGroups::Ratio& place = extremes.place;
    std::string text = EchoedText::shown(place.path) + ", on disk / size: " + Phrases::ratio(place.ratio) + " ("
        + AgentFormat::size(place.allocated, place.allocatedIncomplete) + " on disk, " + AgentFormat::size(place.logical, place.logicalIncomplete)
        + " logical), " + sourceText(source) + ".";
    if (!place.ratio)
        text += "\nThe ratio is unknown: a size here is unknown or incomplete.";
    JSONValue::Object json = header(source, ColorMode::onDiskVsSize);
    json["logical_bytes"] = place.logical;
    json["ratio"] = place.ratio ? JSONValue(*place.ratio) : JSONValue();
    auto list = [&](const std::vector<TypeGroups::Ratio>& extremes, const char* title) {
        JSONValue::Array array;
        std::size_t count = std::min(shown, extremes.size());
        if (count > 0)
            text += std::string("\n") + title;
        for (std::size_t i = 0; i < count; ++i) {
            array.push_back(ratioJSON(extremes[i]));
            text += "\n  " + Phrases::ratio(extremes[i].ratio) + "  " + EchoedText::visible(extremes[i].path) + "  ("
                + AgentFormat::size(extremes[i].allocated, extremes[i].allocatedIncomplete) + " on disk, "
                + AgentFormat::size(extremes[i].logical, extremes[i].logicalIncomplete) + ")";
        }
        return array;
    };
    json["lowest"] = list(extremes.lowest, "Lowest on disk / size, items of 10 MB and more:");
    json["highest"] = list(extremes.highest, "Highest on disk / size:");
    json["places_per_extreme"] = static_cast<std::int64_t>(shown);
    json["note"] = JSONValue();
    if (shown < asked) {
        std::string note = OutputLimit::extremesLimited(static_cast<int>(shown));
        json["note"] = note;
        text += "\n" + note;
    }
    return AgentResult::success(text, JSONValue(json));
}

AgentResult tooLarge(std::string_view message)
{
    return AgentResult::failure(AgentErrorCode::outputTooLarge, message);
}

}

AgentResult types(const Request& request, const Context& context)
{
    ColorMode mode = ColorModes::fromCommandLineName(AgentPlaces::argument(request.arguments, "color").value_or("type")).value_or(ColorMode::contentType);
    auto perGroup = static_cast<std::size_t>(AgentPlaces::integer(request.arguments, "folders_per_type", defaultPlaces));
    auto limit = static_cast<std::size_t>(AgentPlaces::integer(request.arguments, "limit", defaultGroups));
    auto cursor = static_cast<std::size_t>(AgentPlaces::integer(request.arguments, "cursor", 0));
    auto source = sourceFor(request, context);
    if (!source)
        return source.error();
    if (!source->hasColors && mode != ColorMode::owner) {
        return AgentResult::failure(AgentErrorCode::colorUnavailable, "The snapshot of " + EchoedText::shown(source->tree->path(source->place))
                + " keeps no color totals. Scan it again to see it by " + std::string(ColorModes::commandLineName(mode)) + ".");
    }

    if (mode == ColorMode::onDiskVsSize) {
        TypeGroups::Extremes extremes = TypeGroups::ratios(*source->tree, source->place);
        auto fitting = AgentFormat::largestFitting(static_cast<int>(perGroup), [&](int shown) {
            return ratioAnswer(*source, extremes, perGroup, static_cast<std::size_t>(shown));
        });
        if (!fitting)
            return tooLarge(OutputLimit::typesPathTooLong);
        return *fitting;
    }

    auto groups = TypeGroups::groups(source->tree, source->place, mode, source->maps);
    if (!groups) {
        return AgentResult::failure(AgentErrorCode::colorUnavailable,
            "There are no " + std::string(ColorModes::title(mode)) + " totals for " + EchoedText::shown(source->tree->path(source->place)) + ".");
    }
    Page page { std::move(*groups), 0, limit, perGroup };
    page.first = std::min(cursor, page.groups.size());
    std::size_t available = std::min(limit, page.groups.size() - page.first);
    auto fitted = PageFitting::fit(static_cast<int>(available), static_cast<int>(perGroup), [&](int shown, int places) {
        return groupPage(*source, mode, page, static_cast<std::size_t>(shown), static_cast<std::size_t>(places));
    });
    if (!fitted)
        return tooLarge(groupPage(*source, mode, page, 0, 0).fits() ? OutputLimit::typesGroupTooLarge : OutputLimit::typesPathTooLong);
    return fitted->result;
}

}
