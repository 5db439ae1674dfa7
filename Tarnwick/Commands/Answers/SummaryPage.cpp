#include "AnswerPages.hpp"

#include "Agent/AgentFormat.hpp"
#include "Agent/EchoedText.hpp"
#include "Classification/ContentCategory.hpp"
#include "Support/Phrases.hpp"
#include "SummaryAnswer.hpp"

namespace tarnwick::AnswerPages {

namespace {

std::string_view kindWord(NodeKind kind)
{
    switch (kind) {
    case NodeKind::directory:
        return "folder";
    case NodeKind::package:
        return "package";
    case NodeKind::file:
        return "file";
    case NodeKind::symlink:
        return "symlink";
    case NodeKind::alias:
        return "alias";
    case NodeKind::mountPoint:
        return "mount_point";
    case NodeKind::other:
        return "other";
    }
    return "other";
}

JSONValue optionalText(const std::optional<std::string>& text)
{
    return text ? JSONValue(*text) : JSONValue();
}

double shareOf(std::int64_t bytes, std::int64_t total)
{
    return total > 0 ? static_cast<double>(bytes) / static_cast<double>(total) : 0;
}

// A page is built in one pass, the text and the JSON side by side.
struct Page {
    const SummaryAnswer& answer;
    std::string text;
    JSONValue::Object json;

    void headline()
    {
        bool lowerBound = answer.incomplete || answer.stillScanning;
        text = EchoedText::shown(answer.path) + ": " + AgentFormat::size(answer.allocated, lowerBound) + " on disk, "
            + AgentFormat::size(answer.logical, lowerBound || answer.logicalIncomplete) + " logical, "
            + AgentFormat::counted(answer.childCount, "item", "items") + " inside"
            + (answer.itemsInAll ? ", " + std::to_string(*answer.itemsInAll) + " in all." : ".");
        if (answer.stillScanning)
            text += "\nThe scan is still running: these are what it has found so far, and sizes are lower bounds (≥). Run wait for the full answer.";
        json = JSONValue::Object {
            { "path", EchoedText::shortened(answer.path) },
            { "kind", std::string(kindWord(answer.kind)) },
            { "size_bytes", answer.allocated },
            { "logical_bytes", answer.logical },
            { "incomplete", lowerBound },
            { "still_scanning", answer.stillScanning },
            { "item_count", answer.childCount },
            { "items_in_all", answer.itemsInAll ? JSONValue(*answer.itemsInAll) : JSONValue() },
            { "status", optionalText(answer.status) },
            { "last_change_inside", AgentFormat::isoDate(answer.lastChangeInside) },
            { "oldest_item", AgentFormat::isoDate(answer.oldestItem) },
            { "size_before_bytes", answer.sizeBeforeRescan ? JSONValue(*answer.sizeBeforeRescan) : JSONValue() },
        };
        if (answer.sizeBeforeRescan)
            text += "\nBefore the rescan: " + AgentFormat::size(*answer.sizeBeforeRescan) + ".";
    }

    void disk()
    {
        const auto& disk = answer.disk;
        json["capacity_bytes"] = disk ? JSONValue(disk->capacity) : JSONValue();
        json["available_bytes"] = disk ? JSONValue(disk->available) : JSONValue();
        json["reserved_bytes"] = disk ? JSONValue(disk->reserved) : JSONValue();
        json["unaccounted_bytes"] = disk ? JSONValue(disk->unaccounted) : JSONValue();
        if (disk) {
            text += "\nDisk: " + AgentFormat::size(disk->capacity) + ", " + AgentFormat::size(disk->available) + " available; "
                + AgentFormat::size(disk->unaccounted) + " used that the scan doesn't account for. Reserved for the system: "
                + AgentFormat::size(disk->reserved) + ".";
        }
    }

    void contentTypes()
    {
        if (!answer.contentTypes) {
            json["content_types"] = JSONValue();
            return;
        }
        JSONValue::Array types;
        std::string line;
        for (const ContentShare& share : *answer.contentTypes) {
            double fraction = shareOf(share.bytes, answer.allocated);
            types.push_back(JSONValue::Object { { "type", std::string(ContentCategories::agentKey(share.category)) },
                { "size_bytes", share.bytes }, { "share", fraction } });
            if (types.size() <= 5)
                line += (line.empty() ? "" : ", ") + std::string(ContentCategories::displayLabel(share.category)) + " " + AgentFormat::percent(fraction);
        }
        json["content_types"] = types;
        if (!line.empty())
            text += "\nContent: " + line + ".";
    }

    void ownersCachesHidden()
    {
        const PlaceFacts& facts = answer.facts;
        json["owners"] = JSONValue();
        if (facts.owners) {
            JSONValue::Array owners;
            std::string line;
            for (const PlaceFacts::Share& owner : *facts.owners) {
                double share = shareOf(owner.bytes, answer.allocated);
                owners.push_back(JSONValue::Object { { "key", EchoedText::shortened(owner.key) }, { "label", EchoedText::shortened(owner.label) },
                    { "size_bytes", owner.bytes }, { "share", share } });
                if (owners.size() <= 3)
                    line += (line.empty() ? "" : ", ") + EchoedText::shown(owner.label) + " " + AgentFormat::percent(share);
            }
            json["owners"] = owners;
            if (!line.empty())
                text += "\nOwners: " + line + ".";
        }
        auto share = [&](const std::optional<std::int64_t>& bytes, const std::string& key) {
            json[key + "_bytes"] = bytes ? JSONValue(*bytes) : JSONValue();
            json[key + "_share"] = bytes ? JSONValue(shareOf(*bytes, answer.allocated)) : JSONValue();
            return bytes ? AgentFormat::size(*bytes) + " (" + AgentFormat::percent(shareOf(*bytes, answer.allocated)) + ")" : std::string();
        };
        std::string caches = share(facts.cacheBytes, "cache");
        std::string hidden = share(facts.hiddenBytes, "hidden");
        if (!caches.empty() && !hidden.empty())
            text += "\nCaches " + caches + ", hidden " + hidden + ".";
        else if (!hidden.empty())
            text += "\nHidden: " + hidden + ".";
    }

    void ratios()
    {
        const PlaceFacts& facts = answer.facts;
        json["ratio"] = facts.ratio.ratio ? JSONValue(*facts.ratio.ratio) : JSONValue();
        auto list = [&](const std::vector<TypeGroups::Ratio>& ratios, std::string& line) {
            JSONValue::Array array;
            for (const TypeGroups::Ratio& ratio : ratios) {
                array.push_back(JSONValue::Object { { "path", EchoedText::shortened(ratio.path) }, { "size_bytes", ratio.allocated },
                    { "logical_bytes", ratio.logical }, { "ratio", ratio.ratio ? JSONValue(*ratio.ratio) : JSONValue() } });
                line += (line.empty() ? "" : ", ") + EchoedText::shown(ratio.path, 200) + " " + Phrases::ratio(ratio.ratio);
            }
            return array;
        };
        std::string low;
        std::string high;
        json["ratio_lowest"] = list(facts.lowest, low);
        json["ratio_highest"] = list(facts.highest, high);
        text += "\nOn disk / size: " + Phrases::ratio(facts.ratio.ratio) + ".";
        if (!low.empty())
            text += " Far less on disk (sparse or compressed): " + low + ".";
        if (!high.empty())
            text += " Far more on disk (small files): " + high + ".";
    }

    // The first `shown` of the largest items; the rest count with the other items.
    void items(std::size_t shown)
    {
        JSONValue::Array items;
        std::int64_t otherCount = answer.otherCount;
        std::int64_t otherAllocated = answer.otherAllocated;
        for (std::size_t i = 0; i < answer.items.size(); ++i) {
            const SummaryAnswer::Item& item = answer.items[i];
            if (i >= shown) {
                ++otherCount;
                otherAllocated += item.allocated;
                continue;
            }
            items.push_back(JSONValue::Object {
                { "name", EchoedText::shortened(item.name) },
                { "path", EchoedText::shortened(item.path) },
                { "kind", std::string(kindWord(item.kind)) },
                { "size_bytes", item.allocated },
                { "logical_bytes", item.logical },
                { "share", item.share },
                { "incomplete", item.incomplete },
                { "status", optionalText(item.status) },
                { "last_change_inside", AgentFormat::isoDate(item.lastChangeInside) },
                { "oldest_item", AgentFormat::isoDate(item.oldestItem) },
                { "hard_link_counted_at", item.hardLinkCountedAt ? JSONValue(EchoedText::shortened(*item.hardLinkCountedAt)) : JSONValue() },
            });
            text += "\n" + std::to_string(i + 1) + ". " + EchoedText::shown(item.name) + (isContainer(item.kind) ? "/" : "") + "  "
                + AgentFormat::size(item.allocated, item.incomplete || answer.stillScanning) + "  " + AgentFormat::percent(item.share)
                + (item.status ? "  (" + *item.status + ")" : "") + (item.hardLinkNote ? "  (" + EchoedText::shown(*item.hardLinkNote) + ")" : "");
        }
        json["items"] = items;
        json["other_items"] = JSONValue::Object { { "count", otherCount }, { "size_bytes", otherAllocated } };
        if (otherCount > 0)
            text += "\nOther items: " + std::to_string(otherCount) + ", " + AgentFormat::size(otherAllocated) + ".";
    }

    void unreadable()
    {
        json["unreadable_places"] = answer.unreadablePlaces;
        if (answer.unreadablePlaces > 0)
            text += "\n" + AgentFormat::counted(answer.unreadablePlaces, "place", "places") + " here couldn't be read, so sizes marked ≥ are lower bounds.";
    }
};

}

AgentResult page(const SummaryAnswer& answer, int shown)
{
    Page page { answer, {}, {} };
    page.headline();
    page.disk();
    page.contentTypes();
    page.ownersCachesHidden();
    page.ratios();
    auto listed = static_cast<std::size_t>(shown);
    page.items(listed);
    page.unreadable();
    bool shrunk = listed < answer.items.size();
    page.json["shrunk_to_fit"] = shrunk;
    if (shrunk)
        page.text += "\nListed " + AgentFormat::counted(shown, "item", "items") + " to fit 8 KB; ask about a folder for more.";
    return AgentResult::success(page.text, JSONValue(page.json));
}

}
