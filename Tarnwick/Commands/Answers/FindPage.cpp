#include "AnswerPages.hpp"

#include "Agent/AgentFormat.hpp"
#include "Agent/EchoedText.hpp"
#include "FindAnswer.hpp"

namespace tarnwick::AnswerPages {

namespace {

std::string itemsPhrase(std::int64_t count)
{
    return AgentFormat::counted(count, "item", "items");
}

}

AgentResult page(const FindAnswer& answer, int shown)
{
    std::string text = itemsPhrase(answer.matchCount) + " below " + EchoedText::shown(answer.below) + (answer.matchCount == 1 ? " matches, " : " match, ")
        + AgentFormat::size(answer.matchedBytes, answer.matchedIncomplete || answer.stillScanning) + " in all.";
    if (answer.stillScanning)
        text += "\nThe scan is still running: these are what it has found so far (≥). Run wait for the full answer.";
    JSONValue::Array items;
    for (int i = 0; i < shown; ++i) {
        const FindAnswer::Item& item = answer.items[static_cast<std::size_t>(i)];
        bool lowerBound = item.incomplete || answer.stillScanning;
        items.push_back(JSONValue::Object { { "path", item.path }, { "size_bytes", item.allocated },
            { "logical_bytes", item.logical }, { "incomplete", lowerBound }, { "last_change_inside", AgentFormat::isoDate(item.lastChangeInside) },
            { "hard_link_counted_at", item.hardLinkCountedAt ? JSONValue(EchoedText::shortened(*item.hardLinkCountedAt)) : JSONValue() } });
        // The paths found are the answer itself: written whole, or not at all.
        text += "\n" + AgentFormat::size(item.allocated, lowerBound) + "  " + EchoedText::visible(item.path);
        if (item.hardLinkNote)
            text += "  (" + EchoedText::shown(*item.hardLinkNote) + ")";
    }
    std::int64_t end = answer.start + shown;
    bool more = end < answer.matchCount;
    bool shrunk = static_cast<std::size_t>(shown) < answer.items.size();
    if (shrunk)
        text += "\nListed " + itemsPhrase(shown) + " to fit 8 KB.";
    if (more)
        text += "\nMore with --cursor " + std::to_string(end) + ".";
    return AgentResult::success(text,
        JSONValue(JSONValue::Object { { "path", EchoedText::shortened(answer.below) }, { "match_count", answer.matchCount },
            { "matched_bytes", answer.matchedBytes }, { "incomplete", answer.matchedIncomplete || answer.stillScanning }, { "items", items },
            { "next_cursor", more ? JSONValue(std::to_string(end)) : JSONValue() }, { "shrunk_to_fit", shrunk },
            { "still_scanning", answer.stillScanning } }));
}

}
