#include "Answers/AnswerRenderer.hpp"
#include "Answers/FindAnswer.hpp"
#include "Answers/ScanAnswer.hpp"
#include "Answers/ShowAnswer.hpp"
#include "Answers/StatusAnswer.hpp"
#include "Answers/SummaryAnswer.hpp"

#include "Agent/AgentErrorCode.hpp"
#include "Agent/EchoedText.hpp"
#include "Agent/OutputLimit.hpp"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <functional>
#include <numeric>
#include <sstream>

using namespace tarnwick;

namespace {

// A name that would forge a line of the answer and colour the terminal if printed raw.
const std::string forging = "name\nFORGED line\t\x1b[31m";
// A path far longer than an answer may be, holding the same.
const std::string hugePath = "/" + std::string(100'000, 'p') + "/" + forging;

nlohmann::json json(const AgentResult& result)
{
    return JSONCoding::toJSON(result.structured.value()).value();
}

std::vector<std::string> lines(const std::string& text)
{
    std::vector<std::string> all;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);)
        all.push_back(line);
    return all;
}

// Every string of the JSON, wherever it is.
void strings(const nlohmann::json& value, std::vector<std::string>& found)
{
    if (value.is_string())
        found.push_back(value.get<std::string>());
    for (const auto& member : value)
        if (value.is_structured())
            strings(member, found);
}

SummaryAnswer::Item summaryItem(std::string name, std::int64_t bytes)
{
    return SummaryAnswer::Item { .name = name, .path = "/place/" + name, .kind = NodeKind::file, .allocated = bytes, .logical = bytes };
}

SummaryAnswer hostileSummary()
{
    SummaryAnswer answer { .path = hugePath, .allocated = 5'000, .logical = 5'000, .childCount = 3 };
    answer.contentTypes = std::vector<ContentShare> { { ContentCategory::video, 4'000 } };
    answer.facts.owners = std::vector<PlaceFacts::Share> { { hugePath, forging + hugePath, 4'000 } };
    answer.facts.lowest = { TypeGroups::Ratio { hugePath, 10, 4'000, 0.0025 } };
    answer.items = { summaryItem(forging, 4'000), summaryItem(std::string(200, 'n') + forging, 1'000) };
    answer.items[0].hardLinkNote = "also at " + hugePath;
    answer.items[0].hardLinkCountedAt = hugePath;
    return answer;
}

struct Case {
    std::string name;
    std::function<AgentResult()> render;
};

void PrintTo(const Case& answer, std::ostream* out)
{
    *out << answer.name;
}

class EveryAppAnswer : public ::testing::TestWithParam<Case> {};

// Whatever an answer repeats, it arrives whole: within 8 KB as text and as JSON, no line of
// it forged by a name, no escape sequence reaching the terminal, no repeated path longer than
// the echo limit, and the JSON keeping a short name as it is.
TEST_P(EveryAppAnswer, StaysWithin8KBAndPrintsOddNamesVisibly)
{
    AgentResult result = GetParam().render();
    ASSERT_FALSE(result.isError) << result.text;
    EXPECT_TRUE(result.fits());
    EXPECT_EQ(result.text.find('\x1b'), std::string::npos);
    EXPECT_EQ(result.text.find('\t'), std::string::npos);
    for (const std::string& line : lines(result.text))
        EXPECT_FALSE(line.starts_with("FORGED")) << line;
    std::vector<std::string> all;
    strings(json(result), all);
    for (const std::string& text : all)
        EXPECT_LE(text.size(), EchoedText::longestEchoBytes) << text.substr(0, 80);
}

INSTANTIATE_TEST_SUITE_P(AppAnswers, EveryAppAnswer,
    ::testing::Values(
        Case { "summary", [] { return AnswerRenderer::rendered(hostileSummary()); } },
        Case { "find", [] {
                  FindAnswer answer { .below = hugePath, .matchCount = 1, .matchedBytes = 10 };
                  answer.items = { FindAnswer::Item { .path = "/place/" + forging, .allocated = 10, .hardLinkNote = "also at " + hugePath,
                      .hardLinkCountedAt = hugePath } };
                  return AnswerRenderer::rendered(answer);
              } },
        Case { "status", [] {
                  StatusAnswer answer { .scanning = StatusAnswer::Scanning { hugePath, 5, hugePath },
                      .scanned = StatusAnswer::Scanned { .root = hugePath, .openFolder = hugePath, .selection = hugePath } };
                  return AnswerRenderer::rendered(answer);
              } },
        Case { "scan", [] { return AnswerRenderer::rendered(ScanAnswer { hugePath, ScanAnswer::Action::opened, WindowPresence::none }); } },
        Case { "show", [] { return AnswerRenderer::rendered(ShowAnswer { hugePath, false, ColorMode::contentType, true, WindowPresence::inFront }); } }),
    [](const auto& info) { return info.param.name; });

// A summary that lists fewer items than asked, to fit, counts the rest as other items: the
// items shown and the others still add up to the folder.
TEST(AppAnswers, ASummaryShrunkToFitKeepsItsItemsAddingUp)
{
    SummaryAnswer answer { .path = "/place", .allocated = 0, .childCount = 0, .otherCount = 7, .otherAllocated = 700 };
    for (int i = 0; i < 400; ++i)
        answer.items.push_back(summaryItem(std::string(150, static_cast<char>('a' + i % 26)) + std::to_string(i), 1'000 + i));
    answer.childCount = static_cast<std::int64_t>(answer.items.size()) + answer.otherCount;
    AgentResult result = AnswerRenderer::rendered(answer);
    ASSERT_FALSE(result.isError);
    EXPECT_TRUE(result.fits());
    nlohmann::json data = json(result);
    EXPECT_TRUE(data["shrunk_to_fit"].get<bool>());
    std::size_t shown = data["items"].size();
    ASSERT_GT(shown, 0U);
    ASSERT_LT(shown, answer.items.size());
    std::int64_t shownBytes = 0;
    for (const auto& item : data["items"])
        shownBytes += item["size_bytes"].get<std::int64_t>();
    std::int64_t allBytes = std::accumulate(answer.items.begin(), answer.items.end(), answer.otherAllocated,
        [](std::int64_t sum, const SummaryAnswer::Item& item) { return sum + item.allocated; });
    EXPECT_EQ(static_cast<std::int64_t>(shown) + data["other_items"]["count"].get<std::int64_t>(), answer.childCount);
    EXPECT_EQ(shownBytes + data["other_items"]["size_bytes"].get<std::int64_t>(), allBytes);
    // The text lists the same items, numbered, and says that it left some out.
    std::size_t numbered = 0;
    for (const std::string& line : lines(result.text))
        numbered += !line.empty() && std::isdigit(static_cast<unsigned char>(line[0])) && line.find(". ") != std::string::npos ? 1 : 0;
    EXPECT_EQ(numbered, shown);
    EXPECT_NE(result.text.find("Listed " + std::to_string(shown) + " items to fit 8 KB"), std::string::npos);
}

// A page of find shrunk to fit points on from where it stopped, in its text and its JSON
// alike, so the next page misses nothing and repeats nothing; a page that cannot hold even
// its first path says so instead of pointing to itself.
TEST(AppAnswers, FindPagesOnFromWhereItStopped)
{
    FindAnswer answer { .below = "/place", .matchCount = 1'000, .matchedBytes = 1'000, .start = 40 };
    for (int i = 0; i < 300; ++i)
        answer.items.push_back(FindAnswer::Item { .path = "/place/" + std::string(120, 'f') + std::to_string(i), .allocated = 1 });
    AgentResult result = AnswerRenderer::rendered(answer);
    ASSERT_FALSE(result.isError);
    nlohmann::json data = json(result);
    std::size_t shown = data["items"].size();
    ASSERT_GT(shown, 0U);
    ASSERT_LT(shown, answer.items.size());
    std::string next = std::to_string(40 + shown);
    EXPECT_EQ(data["next_cursor"], next);
    EXPECT_NE(result.text.find("More with --cursor " + next + "."), std::string::npos);
    EXPECT_EQ(data["items"].back()["path"], answer.items[shown - 1].path);

    answer.items = { FindAnswer::Item { .path = "/" + std::string(9'000, 'x'), .allocated = 1 } };
    AgentResult tooLong = AnswerRenderer::rendered(answer);
    EXPECT_EQ(tooLong.errorCode(), std::string(AgentErrorCode::outputTooLarge));
    EXPECT_NE(tooLong.text.find(OutputLimit::findPathTooLong), std::string::npos);
}

}
