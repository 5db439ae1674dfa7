#include "Agent/EchoedText.hpp"
#include "Agent/OutputLimit.hpp"
#include "Answers/AlertAddedAnswer.hpp"
#include "Answers/AlertsAnswer.hpp"
#include "Answers/AlertsRemovedAnswer.hpp"
#include "Answers/AnswerPages.hpp"
#include "Answers/AnswerRenderer.hpp"
#include "Answers/ChangesAnswer.hpp"
#include "Answers/DisksAnswer.hpp"
#include "Answers/FindAnswer.hpp"
#include "Answers/HistoryAnswer.hpp"
#include "Answers/MetricsAnswer.hpp"
#include "Answers/ScanAnswer.hpp"
#include "Answers/ShowAnswer.hpp"
#include "Answers/StatusAnswer.hpp"
#include "Answers/SummaryAnswer.hpp"
#include "Answers/TypesAnswer.hpp"
#include "Agent/AgentErrorCode.hpp"

#include <gtest/gtest.h>

#include <functional>
#include <regex>

using namespace tarnwick;
using namespace std::chrono_literals;

// Answers built directly, as their handlers would from a history, and rendered: whatever the
// names in them, each must arrive whole within 8 KB, with its text and JSON telling the same.
namespace {

const Date day = Date {} + 20'000 * 24h;
const std::string alertID = "3F2A9C1E-0B7D-4C55-8E21-6A9F0D3B7C10";

using HistoryQueries::PlaceChange;

std::string numbered(const std::string& name, std::size_t i)
{
    return name + "/" + std::to_string(i);
}

HistoryAnswer historyAbout(const std::string& name, std::size_t rows)
{
    HistoryAnswer answer { name, name, true, day, {}, HistoryAnswer::Disk { name, { { day, 100'000'000'000, 40'000'000'000 } } } };
    for (std::size_t i = 0; i < rows; ++i) {
        const Date date = day + static_cast<int>(i) * 24h;
        answer.rows.push_back({ date, HistoryQueries::SizePoint { date, 52'000'000, true, false } });
    }
    return answer;
}

ChangesAnswer changesAbout(const std::string& name, std::size_t count)
{
    ChangesAnswer::Place place;
    place.path = name;
    place.historyOf = name;
    place.from = day;
    place.to = day + 24h;
    place.snapshotCount = 2;
    place.sizeBefore = 1'000'000'000;
    place.sizeAfter = 3'000'000'000;
    place.change = 2'000'000'000;
    place.byType = std::vector { HistoryQueries::TypeChange { ContentCategory::video, 0, 2'000'000'000 } };
    for (std::size_t i = 0; i < count; ++i) {
        place.inside.push_back(PlaceChange { numbered(name, i), 0, 100'000'000 });
        place.grewMost.push_back(PlaceChange { numbered(name + "/deep", i), 0, 50'000'000 });
        place.readByOneScan.push_back({ numbered(name + "/locked", i), HistoryQueries::ReadBy::laterScan });
    }
    place.grewMost.resize(std::min<std::size_t>(count, HistoryQueries::grewMostLimit));
    return ChangesAnswer { { place }, false, count };
}

DisksAnswer disksAbout(const std::string& name, std::size_t count)
{
    DisksAnswer answer { {}, Calendar::fixed(0) };
    for (std::size_t i = 0; i < count; ++i) {
        DisksAnswer::Disk disk { DiskMount { MountInfo { name, name, "fuse." + name, i, true, false }, false },
            VolumeIdentity::Space { 100'000'000'000, 40'000'000'000, 0 }, DisksAnswer::Access::wholeDisk, 3, day,
            DisksAnswer::UsedChange { 1'000'000, day }, std::nullopt, 3, std::nullopt };
        answer.disks.push_back(std::move(disk));
    }
    return answer;
}

TypesAnswer groupsAbout(const std::string& name, std::size_t groups, std::size_t places, std::size_t cursor = 0)
{
    TypesAnswer::Groups listing { {}, cursor, cursor + groups, places };
    for (std::size_t g = 0; g < groups; ++g) {
        TypeGroups::Group group { "ext_" + std::to_string(g), "." + name, 1'000'000, {}, {} };
        for (std::size_t p = 0; p < places; ++p)
            group.places.push_back({ numbered(name, p), 100'000 });
        group.apps.push_back({ name, 10'000 });
        listing.groups.push_back(std::move(group));
    }
    return TypesAnswer { name, ColorMode::contentType, day, 1'000'000'000, false, std::move(listing) };
}

TypesAnswer ratiosAbout(const std::string& name, std::size_t count)
{
    TypeGroups::Extremes extremes { { name, 2'000'000, 1'000'000, 2.0, false, false }, {}, {} };
    for (std::size_t i = 0; i < count; ++i) {
        extremes.lowest.push_back({ numbered(name, i), 10'000'000, 40'000'000, 0.25, false, false });
        extremes.highest.push_back({ numbered(name, i), 40'000'000, 10'000'000, 4.0, false, false });
    }
    return TypesAnswer { name, ColorMode::onDiskVsSize, std::nullopt, 2'000'000, false, TypesAnswer::Ratios { extremes, count } };
}

SpaceAlert alertOn(const std::string& name, std::int64_t bytes)
{
    return SpaceAlert { alertID, name, SpaceAlert::Condition { SpaceAlert::Condition::Size { bytes } } };
}

AlertsAnswer alertsAbout(const std::string& name, std::size_t count)
{
    AlertsAnswer answer { {}, 0, true };
    for (std::size_t i = 0; i < count; ++i)
        answer.alerts.push_back({ alertOn(name, 1'000'000'000), AlertReading { AlertReading::State::exceeded, 2e9, day, {}, false, {} } });
    return answer;
}

AlertsRemovedAnswer removedAbout(const std::string& name, std::size_t count)
{
    AlertsRemovedAnswer answer;
    for (std::size_t i = 0; i < count; ++i)
        answer.removed.push_back(alertOn(name, static_cast<std::int64_t>(i + 1) * 1'000'000'000));
    return answer;
}

SummaryAnswer::Item summaryItem(const std::string& name, std::int64_t bytes)
{
    return SummaryAnswer::Item { .name = name, .path = "/place/" + name, .kind = NodeKind::file, .allocated = bytes, .logical = bytes };
}

SummaryAnswer summaryAbout(const std::string& name)
{
    SummaryAnswer answer { .path = name, .allocated = 5'000, .logical = 5'000, .childCount = 2 };
    answer.contentTypes = std::vector<ContentShare> { { ContentCategory::video, 4'000 } };
    answer.facts.owners = std::vector<PlaceFacts::Share> { { "org.example.app", "Example " + name.substr(0, 300), 4'000 } };
    answer.facts.lowest = { TypeGroups::Ratio { "/place/sparse", 10, 4'000, 0.0025 } };
    answer.items = { summaryItem(name, 4'000), summaryItem("b", 1'000) };
    answer.items[0].hardLinkNote = "also at " + name;
    answer.items[0].hardLinkCountedAt = name;
    return answer;
}

// The paths find lists are its answer, whole or not at all; the place below which it looked
// and a hard link's other place are what it repeats.
FindAnswer foundBelow(const std::string& name)
{
    FindAnswer answer { .below = name, .matchCount = 1, .matchedBytes = 10 };
    answer.items = { FindAnswer::Item { .path = "/place/found", .allocated = 10, .hardLinkNote = "also at " + name, .hardLinkCountedAt = name } };
    return answer;
}

// One command's answer about a place named `name`, rendered, and the lists of its JSON that
// must hold something: a list emptied to make room for a path would hide a path left whole.
struct Case {
    std::string_view command;
    std::function<AgentResult(const std::string& name)> render;
    std::vector<std::string_view> lists;
};

const std::vector<Case>& everyAnswer()
{
    static const std::vector<Case> cases {
        { "status",
            [](const std::string& name) {
                return AnswerRenderer::rendered(StatusAnswer { .scanning = StatusAnswer::Scanning { name, 5, name },
                    .scanned = StatusAnswer::Scanned { .root = name, .openFolder = name, .selection = name } });
            },
            {} },
        { "scan", [](const std::string& name) { return AnswerRenderer::rendered(ScanAnswer { name, ScanAnswer::Action::opened, WindowPresence::none }); }, {} },
        { "show",
            [](const std::string& name) {
                return AnswerRenderer::rendered(ShowAnswer { name, false, ColorMode::contentType, true, WindowPresence::inFront });
            },
            {} },
        { "summary", [](const std::string& name) { return AnswerRenderer::rendered(summaryAbout(name)); }, { "items", "owners", "ratio_lowest" } },
        { "find", [](const std::string& name) { return AnswerRenderer::rendered(foundBelow(name)); }, { "items" } },
        { "history", [](const std::string& name) { return AnswerRenderer::rendered(historyAbout(name, 3)); }, { "points", "disk/available_by_day" } },
        { "changes", [](const std::string& name) { return AnswerRenderer::rendered(changesAbout(name, 2)); },
            { "inside", "grew_most", "read_by_one_scan" } },
        { "disks", [](const std::string& name) { return AnswerRenderer::rendered(disksAbout(name, 2)); }, { "disks" } },
        { "types", [](const std::string& name) { return AnswerRenderer::rendered(groupsAbout(name, 2, 1)); },
            { "groups", "groups/0/places", "groups/0/apps" } },
        { "types --color ratio", [](const std::string& name) { return AnswerRenderer::rendered(ratiosAbout(name, 1)); }, { "lowest", "highest" } },
        { "alerts", [](const std::string& name) { return AnswerRenderer::rendered(alertsAbout(name, 2)); }, { "alerts" } },
        { "add-alert",
            [](const std::string& name) {
                return AnswerRenderer::rendered(AlertAddedAnswer { alertOn(name, 1'000'000'000), AlertReading::unknown(AlertReading::Unknown::notMeasuredYet), true, false });
            },
            {} },
        { "remove-alert", [](const std::string& name) { return AnswerRenderer::rendered(removedAbout(name, 2)); }, { "removed" } },
        { "metrics --write",
            [](const std::string& name) {
                return AnswerRenderer::rendered(MetricsAnswer { {}, MetricsAnswer::Written { name, name + "/tarnwick.prom", std::nullopt } });
            },
            {} },
    };
    return cases;
}

// The member at a path of keys and indexes, "groups/0/places"; null when there is none.
const JSONValue* at(const JSONValue& json, std::string_view path)
{
    const JSONValue* value = &json;
    while (value && !path.empty()) {
        std::size_t slash = path.find('/');
        std::string_view step = path.substr(0, slash);
        path = slash == std::string_view::npos ? std::string_view {} : path.substr(slash + 1);
        if (const JSONValue::Array* array = value->arrayValue())
            value = std::stoul(std::string(step)) < array->size() ? &(*array)[std::stoul(std::string(step))] : nullptr;
        else
            value = value->member(step);
    }
    return value;
}

void eachString(const JSONValue& json, const std::function<void(const std::string&)>& visit)
{
    if (const std::string* text = json.stringValue())
        visit(*text);
    if (const JSONValue::Array* array = json.arrayValue()) {
        for (const JSONValue& item : *array)
            eachString(item, visit);
    }
    if (const JSONValue::Object* object = json.objectValue()) {
        for (const auto& [key, value] : *object)
            eachString(value, visit);
    }
}

std::size_t listSize(const AgentResult& result, std::string_view path)
{
    const JSONValue* list = result.structured ? at(*result.structured, path) : nullptr;
    return list && list->arrayValue() ? list->arrayValue()->size() : 0;
}

std::size_t longestRun(std::string_view text, char c)
{
    std::size_t longest = 0, run = 0;
    for (char each : text) {
        run = each == c ? run + 1 : 0;
        longest = std::max(longest, run);
    }
    return longest;
}

}

TEST(AnswerRenderer, AHundredThousandCharacterPathIsShortenedInTextAndJSON)
{
    const std::string name = "/home/" + std::string(100'000 - 6, 'x');
    for (const Case& test : everyAnswer()) {
        SCOPED_TRACE(test.command);
        AgentResult result = test.render(name);
        ASSERT_FALSE(result.isError) << result.text;
        EXPECT_TRUE(result.fits());
        EXPECT_LE(longestRun(result.text, 'x'), EchoedText::longestEchoBytes);
        ASSERT_TRUE(result.structured);
        eachString(*result.structured, [](const std::string& text) { EXPECT_LE(text.size(), EchoedText::longestEchoBytes) << text.substr(0, 80); });
        for (std::string_view list : test.lists)
            EXPECT_GT(listSize(result, list), 0u) << list;
    }
}

TEST(AnswerRenderer, NamesAreVisibleInTheTextAndRawInTheJSON)
{
    const struct {
        std::string name;
        std::string_view shown;
    } names[] {
        { "/home/ann/line\nbreak", "/home/ann/line\\nbreak" },
        { "/home/ann/tab\there", "/home/ann/tab\\there" },
        { "/home/ann/\x1b[2Jcleared", "/home/ann/\\x1b[2Jcleared" },
        { "/home/ann/back\\slash\r", "/home/ann/back\\\\slash\\r" },
    };
    for (const Case& test : everyAnswer()) {
        for (const auto& [name, shown] : names) {
            SCOPED_TRACE(std::string(test.command) + " " + std::string(shown));
            AgentResult result = test.render(name);
            ASSERT_FALSE(result.isError) << result.text;
            EXPECT_NE(result.text.find(shown), std::string::npos) << result.text;
            // Line feeds only between lines: none forged by a name, no other control character.
            for (char c : result.text)
                EXPECT_TRUE(c == '\n' || (static_cast<unsigned char>(c) >= 0x20 && c != 0x7F)) << static_cast<int>(c);
            EXPECT_EQ(result.text.find("\nbreak"), std::string::npos);
            bool raw = false;
            eachString(*result.structured, [&](const std::string& text) { raw = raw || text.starts_with(name); });
            EXPECT_TRUE(raw) << "the JSON keeps names as they are";
            for (std::string_view list : test.lists)
                EXPECT_GT(listSize(result, list), 0u) << list;
        }
    }
}

// Too many items for 8 KB: each list shrinks to what fits, and the text and JSON say so alike:
// the count in the sentence is the count listed in the JSON, and one item more would not fit.
TEST(AnswerRenderer, LongListsShrinkAndSaySo)
{
    const std::string name = "/srv/" + std::string(300, 'p');
    struct Listing {
        std::function<AgentResult()> rendered;
        std::function<AgentResult(int shown)> page;
    };
    auto listing = [](auto answer) {
        return Listing { [answer] { return AnswerRenderer::rendered(answer); }, [answer](int shown) { return AnswerPages::page(answer, shown); } };
    };
    const struct {
        std::string_view command;
        Listing answer;
        std::size_t all;
        std::string pattern; // its first group: the count listed
        std::string_view list;
    } cases[] {
        { "history", listing(historyAbout(name, 2000)), 2000, "The latest (\\d+) to fit 8 KB; (\\d+) earlier ones left out\\.", "points" },
        { "changes", listing(changesAbout(name, 300)), 300, "Listed (\\d+) changed places each to fit 8 KB; ask about a folder for more\\.", "inside" },
        { "disks", listing(disksAbout(name, 300)), 300, "Listed (\\d+) of 300 disks to fit 8 KB\\.", "disks" },
        { "alerts", listing(alertsAbout(name, 300)), 300, "Listed (\\d+) of 300 alerts to fit 8 KB\\.", "alerts" },
        { "remove-alert", listing(removedAbout(name + std::string(4000, 'q'), 12)), 12, "Listed (\\d+) of 12 removed alerts to fit 8 KB\\.", "removed" },
        { "types --color ratio", listing(ratiosAbout(name + std::string(2000, 'r'), 10)), 10,
            "Extremes limited to (\\d+) to fit 8 KB; narrow PATH for detail\\.", "lowest" },
    };
    for (const auto& test : cases) {
        SCOPED_TRACE(test.command);
        AgentResult result = test.answer.rendered();
        ASSERT_FALSE(result.isError) << result.text;
        EXPECT_TRUE(result.fits());
        std::smatch match;
        ASSERT_TRUE(std::regex_search(result.text, match, std::regex(test.pattern))) << result.text;
        std::size_t listed = std::stoul(match[1]);
        EXPECT_GT(listed, 0u);
        EXPECT_LT(listed, test.all);
        EXPECT_EQ(listSize(result, test.list), listed);
        if (const JSONValue* shrunk = result.structured->member("shrunk_to_fit")) {
            EXPECT_EQ(*shrunk, JSONValue(true));
        }
        EXPECT_FALSE(test.answer.page(static_cast<int>(listed) + 1).fits());
        // Nothing left out, nothing said about it.
        AgentResult whole = test.answer.page(static_cast<int>(test.all));
        EXPECT_FALSE(std::regex_search(whole.text, std::regex(test.pattern)));
    }
}

TEST(AnswerRenderer, ChangesCountWhatTheyLeaveOutInBothForms)
{
    AgentResult result = AnswerRenderer::rendered(changesAbout("/srv/" + std::string(300, 'p'), 300));
    ASSERT_FALSE(result.isError) << result.text;
    std::int64_t more = *result.structured->member("more_inside")->intValue();
    EXPECT_EQ(more, 300 - static_cast<std::int64_t>(listSize(result, "inside")));
    EXPECT_NE(result.text.find("\n  " + std::to_string(more) + " more changed places inside."), std::string::npos) << result.text;
    EXPECT_EQ(*result.structured->member("read_by_one_scan_more")->intValue(), 300 - static_cast<std::int64_t>(listSize(result, "read_by_one_scan")));
}

// A page of groups holds fewer groups before it lists fewer places in each, and the cursor
// leads on to the rest; only a group too large alone with its places has them cut, and says so.
TEST(AnswerRenderer, TypesPageFewerGroupsBeforeFewerPlaces)
{
    const struct {
        std::string_view what;
        std::string name;
        std::size_t groups, places;
        bool placesCut;
    } cases[] {
        { "every group fits", "/srv/a", 5, 3, false },
        { "groups shrink, places stay", "/srv/" + std::string(200, 'g'), 40, 5, false },
        { "one group with its places is too large", "/srv/" + std::string(900, 'g'), 3, 10, true },
    };
    for (const auto& test : cases) {
        SCOPED_TRACE(test.what);
        TypesAnswer answer = groupsAbout(test.name, test.groups, test.places);
        AgentResult result = AnswerRenderer::rendered(answer);
        ASSERT_FALSE(result.isError) << result.text;
        EXPECT_TRUE(result.fits());
        const std::size_t shown = listSize(result, "groups");
        const auto places = static_cast<std::size_t>(*result.structured->member("folders_per_group")->intValue());
        EXPECT_EQ(listSize(result, "groups/0/places"), places);
        EXPECT_EQ(places < test.places, test.placesCut);
        EXPECT_EQ(result.text.find(OutputLimit::placesLimited(static_cast<int>(places))) != std::string::npos, test.placesCut) << result.text;
        EXPECT_EQ(result.structured->member("note")->isNull(), !test.placesCut);
        if (test.placesCut) {
            EXPECT_EQ(shown, 1u);
            EXPECT_FALSE(AnswerPages::page(answer, 1, static_cast<int>(places) + 1).fits());
        } else if (shown < test.groups) {
            EXPECT_FALSE(AnswerPages::page(answer, static_cast<int>(shown) + 1, static_cast<int>(places)).fits());
        }
        const JSONValue* next = result.structured->member("next_cursor");
        EXPECT_EQ(next->isNull(), shown == test.groups);
        if (shown < test.groups) {
            EXPECT_EQ(*next->intValue(), static_cast<std::int64_t>(shown));
            EXPECT_NE(result.text.find("; next page: --cursor " + std::to_string(shown) + "."), std::string::npos) << result.text;
        }
    }
}

TEST(AnswerRenderer, ATypesPagePastTheLastGroupSaysSo)
{
    TypesAnswer answer = groupsAbout("/srv/a", 0, 5, 7);
    AgentResult result = AnswerRenderer::rendered(answer);
    ASSERT_FALSE(result.isError);
    EXPECT_NE(result.text.find("\nNo groups after 7."), std::string::npos) << result.text;
    EXPECT_EQ(listSize(result, "groups"), 0u);
    EXPECT_TRUE(result.structured->member("next_cursor")->isNull());
}

TEST(AnswerRenderer, FailuresPassThroughAsTheyAre)
{
    AgentResult failure = AgentResult::failure("NO_HISTORY", "Tarnwick keeps no history here.");
    EXPECT_EQ(AnswerRenderer::rendered(Answered<ChangesAnswer>(std::unexpected(failure))), failure);
    EXPECT_EQ(AnswerRenderer::rendered(Answered<TypesAnswer>(std::unexpected(failure))), failure);
}

// A summary that lists fewer items than asked, to fit, counts the rest as other items: the
// items shown and the others still add up to the folder, and the text lists the same ones.
TEST(AnswerRenderer, ASummaryShrunkToFitKeepsItsItemsAddingUp)
{
    SummaryAnswer answer { .path = "/place", .otherCount = 7, .otherAllocated = 700 };
    for (int i = 0; i < 400; ++i)
        answer.items.push_back(summaryItem(std::string(150, static_cast<char>('a' + i % 26)) + std::to_string(i), 1'000 + i));
    answer.childCount = static_cast<std::int64_t>(answer.items.size()) + answer.otherCount;
    AgentResult result = AnswerRenderer::rendered(answer);
    ASSERT_FALSE(result.isError);
    EXPECT_TRUE(result.fits());
    EXPECT_TRUE(*at(*result.structured, "shrunk_to_fit")->boolValue());
    std::size_t shown = listSize(result, "items");
    ASSERT_GT(shown, 0U);
    ASSERT_LT(shown, answer.items.size());
    std::int64_t shownBytes = 0;
    for (const JSONValue& item : *at(*result.structured, "items")->arrayValue())
        shownBytes += *item.member("size_bytes")->intValue();
    std::int64_t allBytes = answer.otherAllocated;
    for (const SummaryAnswer::Item& item : answer.items)
        allBytes += item.allocated;
    EXPECT_EQ(static_cast<std::int64_t>(shown) + *at(*result.structured, "other_items/count")->intValue(), answer.childCount);
    EXPECT_EQ(shownBytes + *at(*result.structured, "other_items/size_bytes")->intValue(), allBytes);
    EXPECT_NE(result.text.find("\n" + std::to_string(shown) + ". "), std::string::npos);
    EXPECT_EQ(result.text.find("\n" + std::to_string(shown + 1) + ". "), std::string::npos);
    EXPECT_NE(result.text.find("Listed " + std::to_string(shown) + " items to fit 8 KB"), std::string::npos);
}

// A page of find shrunk to fit points on from where it stopped, in its text and its JSON
// alike, so the next page misses nothing and repeats nothing; a page that cannot hold even
// its first path says so instead of pointing to itself.
TEST(AnswerRenderer, FindPagesOnFromWhereItStopped)
{
    FindAnswer answer { .below = "/place", .matchCount = 1'000, .matchedBytes = 1'000, .start = 40 };
    for (int i = 0; i < 300; ++i)
        answer.items.push_back(FindAnswer::Item { .path = "/place/" + std::string(120, 'f') + std::to_string(i), .allocated = 1 });
    AgentResult result = AnswerRenderer::rendered(answer);
    ASSERT_FALSE(result.isError);
    std::size_t shown = listSize(result, "items");
    ASSERT_GT(shown, 0U);
    ASSERT_LT(shown, answer.items.size());
    std::string next = std::to_string(40 + shown);
    EXPECT_EQ(*at(*result.structured, "next_cursor")->stringValue(), next);
    EXPECT_NE(result.text.find("More with --cursor " + next + "."), std::string::npos);
    EXPECT_EQ(*at(*result.structured, "items/" + std::to_string(shown - 1) + "/path")->stringValue(), answer.items[shown - 1].path);

    answer.items = { FindAnswer::Item { .path = "/" + std::string(9'000, 'x'), .allocated = 1 } };
    AgentResult tooLong = AnswerRenderer::rendered(answer);
    EXPECT_EQ(tooLong.errorCode(), std::string(AgentErrorCode::outputTooLarge));
    EXPECT_NE(tooLong.text.find(OutputLimit::findPathTooLong), std::string::npos);
}
