#include "AnswerPages.hpp"

#include "Agent/AgentFormat.hpp"
#include "Agent/EchoedText.hpp"
#include "ChangesAnswer.hpp"
#include "Classification/ContentCategory.hpp"
#include "History/Snapshot.hpp"
#include "SnapshotPlaces.hpp"
#include "Support/ByteFormat.hpp"
#include "Support/Phrases.hpp"
#include "Support/UnicodeNames.hpp"

#include <algorithm>

namespace tarnwick::AnswerPages {

namespace {

using namespace HistoryQueries;
using Place = ChangesAnswer::Place;

constexpr std::size_t listedElsewhere = 10; // grew most and read by one scan, at most
constexpr std::string_view notKeptText = "under 10 MB";
constexpr std::string_view notKeptReason = "under_10_mb";

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

// Sizes a snapshot does not know (the place was under 10 MB there) are null, with the reason,
// and so is the change: crossing the threshold is not growth.
JSONValue::Object changeJSON(const PlaceChange& change)
{
    const bool before = change.presence != Presence::laterOnly, after = change.presence != Presence::earlierOnly;
    JSONValue::Object object { { "path", EchoedText::shortened(change.path) }, { "size_before_bytes", sizeJSON(change.before, before) },
        { "size_after_bytes", sizeJSON(change.after, after) },
        { "change_bytes", before && after ? JSONValue(change.change()) : JSONValue() }, { "uncertain", change.isUncertain },
        { "presence", std::string(presenceWord(change.presence)) } };
    object["unknown_size_reason"] = before && after ? JSONValue() : JSONValue(std::string(notKeptReason));
    return object;
}

JSONValue typesJSON(const Place& place)
{
    if (!place.byType)
        return JSONValue();
    JSONValue::Array types;
    for (const TypeChange& type : *place.byType) {
        types.push_back(JSONValue::Object { { "type", std::string(ContentCategories::agentKey(type.category)) },
            { "size_before_bytes", type.before }, { "size_after_bytes", type.after }, { "change_bytes", type.change() } });
    }
    return types;
}

JSONValue::Object placeJSON(const Place& place, std::size_t shown)
{
    JSONValue::Array inside, grew, oneScan;
    for (std::size_t i = 0; i < std::min(shown, place.inside.size()); ++i) {
        JSONValue::Object entry = changeJSON(place.inside[i]);
        entry["name"] = EchoedText::shortened(below(place.path, place.inside[i].path));
        inside.push_back(std::move(entry));
    }
    for (std::size_t i = 0; i < std::min({ shown, listedElsewhere, place.grewMost.size() }); ++i)
        grew.push_back(changeJSON(place.grewMost[i]));
    std::size_t oneScanShown = std::min({ shown, listedElsewhere, place.readByOneScan.size() });
    for (std::size_t i = 0; i < oneScanShown; ++i) {
        const OneScanPlace& one = place.readByOneScan[i];
        oneScan.push_back(JSONValue::Object { { "path", EchoedText::shortened(one.path) },
            { "read_by", one.readBy == ReadBy::earlierScan ? "earlier_scan" : "later_scan" } });
    }
    std::int64_t more = place.moreInside + static_cast<std::int64_t>(place.inside.size() - inside.size());
    const bool before = place.presence != Presence::laterOnly, after = place.presence != Presence::earlierOnly;
    return JSONValue::Object {
        { "path", EchoedText::shortened(place.path) },
        { "history_of", EchoedText::shortened(place.historyOf) },
        { "period", SnapshotPlaces::periodName(place.period) },
        { "from", AgentFormat::isoDate(place.from) },
        { "to", AgentFormat::isoDate(place.to) },
        { "one_snapshot_only", place.snapshotCount <= 1 },
        { "snapshot_count", static_cast<std::int64_t>(place.snapshotCount) },
        { "history_starts", AgentFormat::isoDate(place.historyStart) },
        { "covers_period", place.coversPeriod },
        { "unreadable_start", AgentFormat::isoDate(place.unreadableStart) },
        { "unreadable_latest", AgentFormat::isoDate(place.unreadableLatest) },
        { "in_latest_snapshot", !place.lastKept },
        { "last_kept", AgentFormat::isoDate(place.lastKept) },
        { "size_before_bytes", sizeJSON(place.sizeBefore, before) },
        { "size_after_bytes", sizeJSON(place.sizeAfter, after) },
        { "incomplete", place.beforeIncomplete || place.afterIncomplete },
        { "unknown_size_reason", before && after ? JSONValue() : JSONValue(std::string(notKeptReason)) },
        { "change_bytes", before && after ? JSONValue(place.change) : JSONValue() },
        { "uncertain", place.isUncertain },
        { "sizes", place.sizes == SizeBasis::precise ? "precise" : "rounded_to_10_mb" },
        { "inside", inside },
        { "more_inside", more },
        { "other_items_bytes", place.rest.change() },
        { "other_items_before_bytes", place.rest.before },
        { "other_items_after_bytes", place.rest.after },
        { "grew_most", grew },
        { "by_type", typesJSON(place) },
        { "read_by_one_scan", oneScan },
        { "read_by_one_scan_more", static_cast<std::int64_t>(place.readByOneScan.size() - oneScanShown) },
    };
}

std::string sizesText(const PlaceChange& change)
{
    return sizeText(change.before, change.presence != Presence::laterOnly) + " → " + sizeText(change.after, change.presence != Presence::earlierOnly);
}

std::string insideLine(const Place& place, const PlaceChange& change)
{
    const std::string name = EchoedText::shown(below(place.path, change.path));
    if (change.presence != Presence::both)
        return "  " + name + ": " + sizesText(change);
    return "  " + Phrases::signedSize(change.change(), change.isUncertain) + "  " + name + "  " + sizesText(change);
}

std::string grewMostLine(const PlaceChange& change)
{
    if (change.presence != Presence::both)
        return "  " + EchoedText::shown(change.path) + ": " + sizesText(change);
    return "  " + Phrases::signedSize(change.change(), change.isUncertain) + "  " + EchoedText::shown(change.path);
}

// The first line: the place's change, or, when one end does not keep it, its two sizes.
std::string headline(const Place& place)
{
    const std::string path = EchoedText::shown(place.path);
    const std::string since = Phrases::localTime(place.from) + " (" + SnapshotPlaces::periodName(place.period) + ")";
    const std::string at = Phrases::localTime(place.to);
    switch (place.presence) {
    case Presence::both:
        return path + ": " + Phrases::signedSize(place.change, place.isUncertain) + " since " + since + ", from "
            + AgentFormat::size(place.sizeBefore, place.beforeIncomplete) + " to " + AgentFormat::size(place.sizeAfter, place.afterIncomplete)
            + " at " + at + ".";
    case Presence::laterOnly:
        return path + ": " + std::string(notKeptText) + " at " + since + " → " + AgentFormat::size(place.sizeAfter, place.afterIncomplete) + " at " + at
            + ". " + std::string(Snapshot::keepRule);
    case Presence::earlierOnly:
        break;
    }
    return path + ": " + AgentFormat::size(place.sizeBefore, place.beforeIncomplete) + " at " + since + " → " + std::string(notKeptText) + " at " + at
        + " (not in the latest snapshot: deleted, moved or under 10 MB).";
}

// What the answer stands on, when it is not simply two readable snapshots a period apart.
std::string caveats(const Place& place)
{
    std::string text;
    if (place.unreadableLatest) {
        // The first scan of a day is saved twice, as the latest and as the day's snapshot.
        if (Phrases::localTime(*place.unreadableLatest) == Phrases::localTime(place.to))
            text += "\nThe latest snapshot's file couldn't be read, so this answers from its copy kept as that day's snapshot.";
        else
            text += "\nThe latest snapshot, of " + Phrases::localTime(*place.unreadableLatest) + ", couldn't be read, so this answers from the one of "
                + Phrases::localTime(place.to) + ".";
    }
    if (place.unreadableStart)
        text += "\nThe snapshot of " + Phrases::localTime(*place.unreadableStart) + " couldn't be read, so this compares with the nearest one, of "
            + Phrases::localTime(place.from) + ".";
    if (place.lastKept && place.presence == Presence::both)
        text += "\nIt is not in the latest snapshot; the last one that kept it is of " + Phrases::localTime(*place.lastKept) + ".";
    if (place.snapshotCount <= 1)
        text += "\nTarnwick has one snapshot of this place so far; a change needs another one from a later day.";
    else if (!place.coversPeriod)
        text += "\nThe history starts on " + Phrases::localDay(place.historyStart) + ", so it is shorter than this period.";
    return text;
}

std::string placeText(const Place& place, std::size_t shown)
{
    std::string text = headline(place) + caveats(place);
    std::size_t listed = std::min(shown, place.inside.size());
    if (listed > 0)
        text += "\nChanged inside, largest change first:";
    for (std::size_t i = 0; i < listed; ++i)
        text += "\n" + insideLine(place, place.inside[i]);
    std::int64_t more = place.moreInside + static_cast<std::int64_t>(place.inside.size() - listed);
    if (more > 0)
        text += "\n  " + std::to_string(more) + " more changed " + (more == 1 ? "place" : "places") + " inside.";
    if (place.rest.change() != 0)
        text += "\nOther items: " + Phrases::signedSize(place.rest.change(), place.rest.isUncertain) + " (" + std::string(ChangeTexts::restExplanation) + ").";
    std::size_t grew = std::min({ shown, listedElsewhere, place.grewMost.size() });
    if (grew > 0)
        text += "\nWhere the space went, deep down:";
    for (std::size_t i = 0; i < grew; ++i)
        text += "\n" + grewMostLine(place.grewMost[i]);
    std::string types;
    for (const TypeChange& type : place.byType.value_or(std::vector<TypeChange> {}))
        types += (types.empty() ? "" : ", ") + std::string(ContentCategories::displayLabel(type.category)) + " " + Phrases::signedSize(type.change());
    if (!types.empty())
        text += "\nBy type: " + types + ".";
    std::size_t oneScan = std::min({ shown, listedElsewhere, place.readByOneScan.size() });
    if (!place.readByOneScan.empty())
        text += "\n" + std::string(ChangeTexts::uncertainMark) + ": " + std::string(ChangeTexts::uncertainExplanation);
    for (std::size_t i = 0; i < oneScan; ++i) {
        const OneScanPlace& one = place.readByOneScan[i];
        text += "\n  " + EchoedText::shown(one.path) + " (read in full by the " + (one.readBy == ReadBy::earlierScan ? "earlier" : "later") + " scan only)";
    }
    return text;
}

}

// The first `shown` changed places of each list (at most ten deep down and read by one scan).
AgentResult page(const ChangesAnswer& answer, int shown)
{
    const auto count = static_cast<std::size_t>(shown);
    const bool shrunk = count < listedCount(answer);
    std::string text;
    JSONValue::Array disks;
    for (const Place& place : answer.places) {
        text += (text.empty() ? "" : "\n\n") + placeText(place, count);
        disks.push_back(placeJSON(place, count));
    }
    if (shrunk)
        text += "\nListed " + std::to_string(shown) + " changed places each to fit 8 KB; ask about a folder for more.";
    JSONValue::Object json;
    if (answer.everyDisk) {
        json = JSONValue::Object { { "disks", disks } };
        json["period"] = answer.places.empty() ? JSONValue() : JSONValue(SnapshotPlaces::periodName(answer.places.front().period));
    } else {
        json = *disks.front().objectValue();
    }
    json["shrunk_to_fit"] = shrunk;
    return AgentResult::success(text, JSONValue(json));
}

std::size_t listedCount(const ChangesAnswer& answer)
{
    std::size_t available = 0;
    for (const Place& place : answer.places)
        available = std::max({ available, place.inside.size(), place.grewMost.size(), place.readByOneScan.size() });
    return std::min(available, std::max(answer.limit, listedElsewhere));
}

}
