#include "SnapshotCommands.hpp"

#include "Agent/AgentErrorCode.hpp"
#include "Agent/AgentFormat.hpp"
#include "Agent/EchoedText.hpp"
#include "Support/Phrases.hpp"
#include "Support/ByteFormat.hpp"
#include "AgentPlaces.hpp"
#include "Classification/ContentCategory.hpp"
#include "History/HistoryChanges.hpp"
#include "History/ChangeOverPeriod.hpp"
#include "Platform/MountTable.hpp"
#include "SnapshotPlaces.hpp"
#include "Support/UnicodeNames.hpp"

#include <algorithm>

namespace tarnwick::SnapshotCommands {

namespace {

using namespace HistoryQueries;

constexpr long long defaultLimit = 15;
constexpr std::size_t listedElsewhere = 10; // grew most and read by one scan, at most
constexpr std::string_view notKeptText = "under 10 MB";
constexpr std::string_view notKeptReason = "under_10_mb";

struct Compared {
    HistoryPlaces::Located located;
    ChangeOverPeriod over;
};

std::expected<Compared, AgentResult> compare(HistoryStore& store, const std::string& path, HistoryPeriod period, std::size_t limit)
{
    auto located = SnapshotPlaces::locate(&store, path);
    if (!located)
        return std::unexpected(located.error());
    auto over = ChangeOverPeriod::of(store, *located, period, limit);
    if (!over)
        return std::unexpected(AgentResult::failure(AgentErrorCode::noHistory, ChangeTexts::message(over.error())));
    return Compared { std::move(*located), std::move(*over) };
}

// A size as known: a place a snapshot does not keep is under 10 MB there (or not there at all).
std::string sizeText(std::int64_t bytes, bool kept)
{
    return kept ? ByteFormat::format(bytes) : std::string(notKeptText);
}

JSONValue sizeJSON(std::int64_t bytes, bool kept)
{
    return kept ? JSONValue(bytes) : JSONValue();
}

std::string_view presenceWord(Presence presence)
{
    switch (presence) {
    case Presence::both:
        return "both";
    case Presence::earlierOnly:
        return "earlier_only";
    case Presence::laterOnly:
        return "later_only";
    }
    return "both";
}

std::string below(const std::string& place, const std::string& path)
{
    return std::string(UnicodeNames::dropPathPrefix(path, place));
}

std::vector<TypeChange> changedTypes(const Changes& changes)
{
    std::vector<TypeChange> types;
    for (const TypeChange& type : changes.byType) {
        if (type.change() != 0)
            types.push_back(type);
    }
    std::stable_sort(types.begin(), types.end(), [](const TypeChange& a, const TypeChange& b) {
        return std::abs(static_cast<double>(a.change())) > std::abs(static_cast<double>(b.change()));
    });
    return types;
}

// Sizes a snapshot does not know (the place was under 10 MB there) are null, with the reason,
// and so is the change: crossing the threshold is not growth.
JSONValue::Object changeJSON(const PlaceChange& change)
{
    const bool before = change.presence != Presence::laterOnly, after = change.presence != Presence::earlierOnly;
    JSONValue::Object object { { "path", change.path }, { "size_before_bytes", sizeJSON(change.before, before) },
        { "size_after_bytes", sizeJSON(change.after, after) },
        { "change_bytes", before && after ? JSONValue(change.change()) : JSONValue() }, { "uncertain", change.isUncertain },
        { "presence", std::string(presenceWord(change.presence)) } };
    object["unknown_size_reason"] = before && after ? JSONValue() : JSONValue(std::string(notKeptReason));
    return object;
}

JSONValue::Object placeJSON(const Compared& compared, std::size_t shown)
{
    const Changes& changes = compared.over.changes;
    JSONValue::Array inside, grew, types, oneScan;
    for (std::size_t i = 0; i < std::min(shown, changes.inside.size()); ++i) {
        JSONValue::Object entry = changeJSON(changes.inside[i]);
        entry["name"] = below(changes.place, changes.inside[i].path);
        inside.push_back(std::move(entry));
    }
    for (std::size_t i = 0; i < std::min({ shown, listedElsewhere, changes.grewMost.size() }); ++i)
        grew.push_back(changeJSON(changes.grewMost[i]));
    for (const TypeChange& type : changedTypes(changes)) {
        types.push_back(JSONValue::Object { { "type", std::string(ContentCategories::agentKey(type.category)) },
            { "size_before_bytes", type.before }, { "size_after_bytes", type.after }, { "change_bytes", type.change() } });
    }
    std::size_t oneScanShown = std::min({ shown, listedElsewhere, changes.readByOneScan.size() });
    for (std::size_t i = 0; i < oneScanShown; ++i) {
        const OneScanPlace& place = changes.readByOneScan[i];
        oneScan.push_back(JSONValue::Object { { "path", place.path },
            { "read_by", place.readBy == ReadBy::earlierScan ? "earlier_scan" : "later_scan" } });
    }
    std::int64_t more = changes.moreInside + static_cast<std::int64_t>(changes.inside.size() - inside.size());
    const HistoryPlaces::Located& located = compared.located;
    const bool before = changes.presence != Presence::laterOnly, after = changes.presence != Presence::earlierOnly;
    return JSONValue::Object {
        { "path", changes.place },
        { "history_of", located.record.source.path },
        { "period", SnapshotPlaces::periodName(compared.over.period) },
        { "from", AgentFormat::isoDate(changes.from->date) },
        { "to", AgentFormat::isoDate(changes.to->date) },
        { "one_snapshot_only", compared.over.snapshotCount <= 1 },
        { "snapshot_count", static_cast<std::int64_t>(compared.over.snapshotCount) },
        { "history_starts", AgentFormat::isoDate(compared.over.historyStart) },
        { "covers_period", compared.over.reachesPeriod },
        { "unreadable_start", compared.over.unreadableStart ? JSONValue(AgentFormat::isoDate(compared.over.unreadableStart->date)) : JSONValue() },
        { "unreadable_latest", located.latestIsCurrent || located.skipped.empty() ? JSONValue() : JSONValue(AgentFormat::isoDate(located.skipped.front().date)) },
        { "in_latest_snapshot", located.isInLatest() },
        { "last_kept", located.isInLatest() ? JSONValue() : JSONValue(AgentFormat::isoDate(located.keptIn->date)) },
        { "size_before_bytes", sizeJSON(changes.sizeBefore, before) },
        { "size_after_bytes", sizeJSON(changes.sizeAfter, after) },
        { "incomplete", changes.beforeIncomplete || changes.afterIncomplete },
        { "unknown_size_reason", before && after ? JSONValue() : JSONValue(std::string(notKeptReason)) },
        { "change_bytes", before && after ? JSONValue(changes.change) : JSONValue() },
        { "uncertain", changes.isUncertain },
        { "sizes", changes.sizes == SizeBasis::precise ? "precise" : "rounded_to_10_mb" },
        { "inside", inside },
        { "more_inside", more },
        { "other_items_bytes", changes.rest.change() },
        { "other_items_before_bytes", changes.rest.before },
        { "other_items_after_bytes", changes.rest.after },
        { "grew_most", grew },
        { "by_type", changes.from->hasColors && changes.to->hasColors ? JSONValue(types) : JSONValue() },
        { "read_by_one_scan", oneScan },
        { "read_by_one_scan_more", static_cast<std::int64_t>(changes.readByOneScan.size() - oneScanShown) },
    };
}

std::string insideLine(const Changes& changes, const PlaceChange& change)
{
    const std::string sizes = sizeText(change.before, change.presence != Presence::laterOnly) + " → "
        + sizeText(change.after, change.presence != Presence::earlierOnly);
    if (change.presence != Presence::both)
        return "  " + EchoedText::visible(below(changes.place, change.path)) + ": " + sizes;
    return "  " + Phrases::signedSize(change.change(), change.isUncertain) + "  " + EchoedText::visible(below(changes.place, change.path)) + "  " + sizes;
}

std::string grewMostLine(const PlaceChange& change)
{
    if (change.presence != Presence::both)
        return "  " + EchoedText::visible(change.path) + ": " + sizeText(change.before, change.presence != Presence::laterOnly) + " → "
            + sizeText(change.after, change.presence != Presence::earlierOnly);
    return "  " + Phrases::signedSize(change.change(), change.isUncertain) + "  " + EchoedText::visible(change.path);
}

// The first line: the place's change, or, when one end does not keep it, its two sizes.
std::string headline(const Compared& compared)
{
    const Changes& changes = compared.over.changes;
    const std::string since = Phrases::localTime(changes.from->date) + " (" + SnapshotPlaces::periodName(compared.over.period) + ")";
    const std::string at = Phrases::localTime(changes.to->date);
    switch (changes.presence) {
    case Presence::both:
        return EchoedText::shown(changes.place) + ": " + Phrases::signedSize(changes.change, changes.isUncertain) + " since " + since + ", from "
            + AgentFormat::size(changes.sizeBefore, changes.beforeIncomplete) + " to " + AgentFormat::size(changes.sizeAfter, changes.afterIncomplete)
            + " at " + at + ".";
    case Presence::laterOnly:
        return EchoedText::shown(changes.place) + ": " + std::string(notKeptText) + " at " + since + " → " + AgentFormat::size(changes.sizeAfter, changes.afterIncomplete) + " at " + at
            + ". " + std::string(Snapshot::keepRule);
    case Presence::earlierOnly:
        break;
    }
    return EchoedText::shown(changes.place) + ": " + AgentFormat::size(changes.sizeBefore, changes.beforeIncomplete) + " at " + since + " → " + std::string(notKeptText) + " at " + at
        + " (not in the latest snapshot: deleted, moved or under 10 MB).";
}

// What the answer stands on, when it is not simply two readable snapshots a period apart.
std::string caveats(const Compared& compared)
{
    const Changes& changes = compared.over.changes;
    const HistoryPlaces::Located& located = compared.located;
    std::string text;
    if (!located.latestIsCurrent && !located.skipped.empty()) {
        // The first scan of a day is saved twice, as the latest and as the day's snapshot.
        if (Phrases::localTime(located.skipped.front().date) == Phrases::localTime(changes.to->date))
            text += "\nThe latest snapshot's file couldn't be read, so this answers from its copy kept as that day's snapshot.";
        else
            text += "\nThe latest snapshot, of " + Phrases::localTime(located.skipped.front().date)
                + ", couldn't be read, so this answers from the one of " + Phrases::localTime(changes.to->date) + ".";
    }
    if (compared.over.unreadableStart)
        text += "\nThe snapshot of " + Phrases::localTime(compared.over.unreadableStart->date) + " couldn't be read, so this compares with the nearest one, of "
            + Phrases::localTime(changes.from->date) + ".";
    if (!located.isInLatest() && changes.presence == Presence::both)
        text += "\nIt is not in the latest snapshot; the last one that kept it is of " + Phrases::localTime(located.keptIn->date) + ".";
    if (compared.over.snapshotCount <= 1)
        text += "\nTarnwick has one snapshot of this place so far; a change needs another one from a later day.";
    else if (!compared.over.reachesPeriod)
        text += "\nThe history starts on " + Phrases::localDay(compared.over.historyStart) + ", so it is shorter than this period.";
    return text;
}

std::string placeText(const Compared& compared, std::size_t shown)
{
    const Changes& changes = compared.over.changes;
    std::string text = headline(compared) + caveats(compared);
    std::size_t listed = std::min(shown, changes.inside.size());
    if (listed > 0)
        text += "\nChanged inside, largest change first:";
    for (std::size_t i = 0; i < listed; ++i)
        text += "\n" + insideLine(changes, changes.inside[i]);
    std::int64_t more = changes.moreInside + static_cast<std::int64_t>(changes.inside.size() - listed);
    if (more > 0)
        text += "\n  " + std::to_string(more) + " more changed " + (more == 1 ? "place" : "places") + " inside.";
    if (changes.rest.change() != 0)
        text += "\nOther items: " + Phrases::signedSize(changes.rest.change(), changes.rest.isUncertain) + " ("
            + std::string(ChangeTexts::restExplanation) + ").";
    std::size_t grew = std::min({ shown, listedElsewhere, changes.grewMost.size() });
    if (grew > 0)
        text += "\nWhere the space went, deep down:";
    for (std::size_t i = 0; i < grew; ++i)
        text += "\n" + grewMostLine(changes.grewMost[i]);
    std::string types;
    for (const TypeChange& type : changedTypes(changes))
        types += (types.empty() ? "" : ", ") + std::string(ContentCategories::displayLabel(type.category)) + " " + Phrases::signedSize(type.change());
    if (!types.empty())
        text += "\nBy type: " + types + ".";
    std::size_t oneScan = std::min({ shown, listedElsewhere, changes.readByOneScan.size() });
    if (!changes.readByOneScan.empty())
        text += "\n" + std::string(ChangeTexts::uncertainMark) + ": " + std::string(ChangeTexts::uncertainExplanation);
    for (std::size_t i = 0; i < oneScan; ++i) {
        const OneScanPlace& place = changes.readByOneScan[i];
        text += "\n  " + place.path + " (read in full by the " + (place.readBy == ReadBy::earlierScan ? "earlier" : "later") + " scan only)";
    }
    return text;
}

AgentResult answerFor(const std::vector<Compared>& places, std::size_t shown, bool everyDisk, bool shrunk)
{
    std::string text;
    JSONValue::Array disks;
    for (const Compared& compared : places) {
        text += (text.empty() ? "" : "\n\n") + placeText(compared, shown);
        disks.push_back(placeJSON(compared, shown));
    }
    if (shrunk)
        text += "\nListed " + std::to_string(shown) + " changed places each to fit 8 KB; ask about a folder for more.";
    JSONValue::Object json;
    if (everyDisk) {
        json = JSONValue::Object { { "disks", disks } };
        json["period"] = places.empty() ? JSONValue() : JSONValue(SnapshotPlaces::periodName(places.front().over.period));
    } else {
        json = *disks.front().objectValue();
    }
    json["shrunk_to_fit"] = shrunk;
    return AgentResult::success(text, JSONValue(json));
}

}

AgentResult changes(const Request& request, const Context& context)
{
    HistoryPeriod period = SnapshotPlaces::period(request.arguments);
    auto limit = static_cast<std::size_t>(AgentPlaces::integer(request.arguments, "limit", defaultLimit));
    std::vector<std::string> paths;
    bool everyDisk = false;
    if (auto argument = AgentPlaces::argument(request.arguments, "path")) {
        auto path = AgentPlaces::expand(*argument);
        if (!path)
            return path.error();
        paths.push_back(*path);
    } else if (context.openFolder) {
        paths.push_back(*context.openFolder);
    } else {
        everyDisk = true;
        for (const DiskMount& disk : MountTable::disks())
            paths.push_back(disk.mount.mountPoint);
    }

    std::unique_ptr<HistoryStore> owned;
    HistoryStore* store = SnapshotPlaces::history(context, owned);
    if (!store)
        return SnapshotPlaces::noHistory();
    std::vector<Compared> places;
    for (const std::string& path : paths) {
        auto compared = compare(*store, path, period, limit);
        if (compared)
            places.push_back(std::move(*compared));
        else if (!everyDisk)
            return compared.error();
    }
    if (places.empty())
        return SnapshotPlaces::noHistory();

    std::size_t available = 0;
    for (const Compared& compared : places)
        available = std::max({ available, compared.over.changes.inside.size(), compared.over.changes.grewMost.size(), compared.over.changes.readByOneScan.size() });
    int count = static_cast<int>(std::min(available, std::max(limit, listedElsewhere)));
    auto fitting = AgentFormat::largestFitting(count, [&](int shown) {
        return answerFor(places, static_cast<std::size_t>(shown), everyDisk, shown < count);
    });
    if (!fitting)
        return AgentResult::failure(AgentErrorCode::outputTooLarge, "These changes cannot fit within the 8 KB output limit; ask about one folder.");
    return *fitting;
}

}
