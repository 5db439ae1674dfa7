#include "Agent/AgentCommands.hpp"

#include <gtest/gtest.h>

#include <sstream>

using namespace tarnwick;
using namespace tarnwick::AgentCommands;

namespace {

std::vector<std::string> split(std::string_view line)
{
    std::vector<std::string> words;
    std::istringstream stream { std::string(line) };
    for (std::string word; stream >> word;)
        words.push_back(word);
    return words;
}

Invocation parseLine(std::string_view line)
{
    return parse(split(line));
}

Invocation run(std::string command, std::map<std::string, std::string> arguments, bool json = false)
{
    return { Invocation::Run { Request { std::move(command), std::move(arguments), json } } };
}

Invocation usage(std::string message)
{
    return { Invocation::UsageError { std::move(message) } };
}

Invocation help(std::optional<std::string> command = std::nullopt)
{
    return { Invocation::Help { std::move(command) } };
}

}

TEST(AgentCommands, TableOrderAndWhatNeedsTheApp)
{
    std::string names;
    std::string needingApp;
    for (const Command& command : table()) {
        names += command.name + " ";
        if (command.route == AgentCommands::Route::app)
            needingApp += command.name + " ";
    }
    EXPECT_EQ(names, "status disks changes history types alerts add-alert remove-alert metrics scan wait summary find show rescan skill ");
    EXPECT_EQ(needingApp, "scan wait summary find show rescan ");
    EXPECT_EQ(find("Summary"), nullptr);
    EXPECT_EQ(find("help"), nullptr);
}

TEST(AgentCommands, UsageLines)
{
    const std::pair<std::string_view, std::string_view> lines[] {
        { "status", "status" },
        { "changes", "changes [PATH] [--period PERIOD] [--limit N]" },
        { "history", "history PATH" },
        { "types", "types [PATH] [--by MODE] [--folders N] [--limit N] [--cursor N]" },
        { "add-alert", "add-alert PATH [--fuller-than PERCENT] [--larger-than SIZE] [--share PERCENT] [--grows-by SIZE] [--period PERIOD]" },
        { "remove-alert", "remove-alert PATH" },
        { "metrics", "metrics [--write DIR]" },
        { "wait", "wait [--timeout SECONDS]" },
        { "find", "find [PATH] [--kind KIND] [--min-size SIZE] [--older-than DAYS] [--name PATTERN] [--limit N] [--cursor CURSOR]" },
        { "show", "show PATH [--color MODE]" },
    };
    for (const auto& [name, line] : lines)
        EXPECT_EQ(usageLine(*find(name)), line);
}

TEST(AgentCommands, OptionKeys)
{
    std::string keys;
    for (const Command& command : table()) {
        for (const Option& option : command.options)
            keys += command.name + option.flag + "=" + option.key + " ";
    }
    EXPECT_EQ(keys,
        "changes--period=period changes--limit=limit types--by=color types--folders=folders_per_type types--limit=limit "
        "types--cursor=cursor add-alert--fuller-than=fuller_than_percent add-alert--larger-than=larger_than "
        "add-alert--share=share_percent add-alert--grows-by=grows_by add-alert--period=period metrics--write=write wait--timeout=timeout_s "
        "summary--limit=limit find--kind=kind find--min-size=min_size find--older-than=older_than_days find--name=name "
        "find--limit=limit find--cursor=cursor show--color=color ");
}

TEST(AgentCommands, PeriodDetailsListThePeriods)
{
    EXPECT_EQ(find("changes")->option("--period")->detail,
        "Since when: yesterday, day-before-yesterday, week, month, 3-months, 6-months, year, all. yesterday by default. "
        "A period longer than the history starts from its first snapshot.");
    EXPECT_EQ(find("add-alert")->option("--period")->detail,
        "With --grows-by: yesterday, day-before-yesterday, week, month, 3-months, 6-months, year, all. yesterday by default.");
}

TEST(AgentCommands, HelpVersionAndRun)
{
    const std::pair<std::string_view, Invocation> cases[] {
        { "", help() },
        { "--json", help() },
        { "-h", help() },
        { "help", help() },
        { "help changes", help("changes") },
        { "help nonsense", help("nonsense") },
        { "changes --help", help("changes") },
        { "changes -h --period week", help("changes") },
        { "summary -h", help("summary") },  // a path of exactly -h asks for help
        { "version", { Invocation::Version {} } },
        { "--version", { Invocation::Version {} } },
        { "version --json", { Invocation::Version {} } },
        { "status", run("status", {}) },
        { "status --json", run("status", {}, true) },
        { "summary ~/Projects --limit 30", run("summary", { { "path", "~/Projects" }, { "limit", "30" } }) },
        { "changes --limit --json 5", run("changes", { { "limit", "5" } }, true) },
        { "--json changes --period week", run("changes", { { "period", "week" } }, true) },
        { "changes --limit 5 --limit 7", run("changes", { { "limit", "7" } }) },
        { "types --folders 0", run("types", { { "folders_per_type", "0" } }) },
        { "types --cursor +12", run("types", { { "cursor", "12" } }) },
        { "find ~ --name *.dmg --cursor abc", run("find", { { "path", "~" }, { "name", "*.dmg" }, { "cursor", "abc" } }) },
        { "find -x", run("find", { { "path", "-x" } }) },
        { "find ~ --min-size 2GB", run("find", { { "path", "~" }, { "min_size", "2000000000" } }) },
        { "add-alert / --fuller-than 90", run("add-alert", { { "path", "/" }, { "fuller_than_percent", "90" } }) },
        { "add-alert ~/Library --grows-by 10G --period week",
            run("add-alert", { { "path", "~/Library" }, { "grows_by", "10000000000" }, { "period", "week" } }) },
        { "remove-alert 3f2a9c1e", run("remove-alert", { { "path", "3f2a9c1e" } }) },
        { "skill", run("skill", {}) },
    };
    for (const auto& [line, expected] : cases)
        EXPECT_EQ(parseLine(line), expected) << line;
}

TEST(AgentCommands, UsageErrors)
{
    const std::pair<std::string_view, std::string_view> cases[] {
        { "nonsense", "Tarnwick has no command nonsense. Run help for the list." },
        { "Summary", "Tarnwick has no command Summary. Run help for the list." },
        { "nonsense --help", "Tarnwick has no command nonsense. Run help for the list." },
        { "summary --verbose", "summary has no option --verbose. Run help summary." },
        { "summary --Limit 3", "summary has no option --Limit. Run help summary." },
        { "summary --/Volumes", "summary has no option --/Volumes. Run help summary." },
        { "changes --limit", "--limit needs N." },
        { "changes --limit --json", "--limit needs N." },
        { "changes --limit 0", "--limit doesn't take 0: How many changed items to list, 1 to 50; 15 by default." },
        { "changes --limit 51", "--limit doesn't take 51: How many changed items to list, 1 to 50; 15 by default." },
        { "changes --limit 80", "--limit doesn't take 80: How many changed items to list, 1 to 50; 15 by default." },
        { "changes --limit 5x", "--limit doesn't take 5x: How many changed items to list, 1 to 50; 15 by default." },
        { "changes --period Week", "--period doesn't take Week: Since when: yesterday, day-before-yesterday, week, month, "
                                   "3-months, 6-months, year, all. yesterday by default. A period longer than the history "
                                   "starts from its first snapshot." },
        { "find --min-size -1G", "--min-size doesn't take -1G: Smallest size on disk, such as 500M or 2G (1 GB = 1,000,000,000 bytes)." },
        { "find --min-size G", "--min-size doesn't take G: Smallest size on disk, such as 500M or 2G (1 GB = 1,000,000,000 bytes)." },
        { "find --kind files", "--kind doesn't take files: file, folder, package or any; file by default." },
        { "wait --timeout 601", "--timeout doesn't take 601: 1 to 600; 60 by default." },
        { "status /", "status takes no path." },
        { "changes / ~/Library", "changes takes one path; quote a path with spaces." },
        { "history", "history needs a path: history PATH." },
        { "show --color owner", "show needs a path: show PATH [--color MODE]." },
        { "add-alert /", "add-alert needs one limit: --fuller-than, --larger-than, --share or --grows-by." },
        { "add-alert / --fuller-than 90 --share 5", "add-alert needs one limit: --fuller-than, --larger-than, --share or --grows-by." },
        { "add-alert ~/x --larger-than 5G --period week", "--period goes with --grows-by." },
        { "add-alert ~/x --period week", "add-alert needs one limit: --fuller-than, --larger-than, --share or --grows-by." },
        { "add-alert / --fuller-than 100", "--fuller-than doesn't take 100: Disks: used space above this percentage of the "
                                           "capacity, as the file manager counts it." },
    };
    for (const auto& [line, message] : cases)
        EXPECT_EQ(parseLine(line), usage(std::string(message))) << line;
}

TEST(AgentCommands, IntegerValues)
{
    const std::pair<std::string_view, std::optional<std::int64_t>> cases[] {
        { "0", 0 }, { "+7", 7 }, { "-7", -7 }, { "007", 7 },
        { "9223372036854775807", INT64_MAX }, { "-9223372036854775808", INT64_MIN },
        { "9223372036854775808", std::nullopt }, { "-9223372036854775809", std::nullopt },
        { "", std::nullopt }, { "+", std::nullopt }, { "-", std::nullopt }, { " 5", std::nullopt }, { "5 ", std::nullopt },
        { "1,000", std::nullopt }, { "1_000", std::nullopt }, { "1e3", std::nullopt }, { "1.0", std::nullopt }, { "++1", std::nullopt },
    };
    for (const auto& [word, value] : cases)
        EXPECT_EQ(parseInteger(word), value) << '"' << word << '"';
}

TEST(AgentCommands, SizeValues)
{
    const std::pair<std::string_view, std::optional<std::int64_t>> cases[] {
        { "2GB", 2'000'000'000 }, { "2g", 2'000'000'000 }, { "2000M", 2'000'000'000 }, { "2gb", 2'000'000'000 },
        { "1.5K", 1'500 }, { "1.5T", 1'500'000'000'000 }, { "800KB", 800'000 }, { "500M", 500'000'000 },
        { "800", 800 }, { "800B", 800 }, { "0", 0 }, { " 30G\t", 30'000'000'000 }, { ".5K", 500 }, { "1.K", 1'000 },
        { "1.0005K", 1'001 },   // 1,000.5 bytes: half rounds up
        { "1.0004K", 1'000 },
        { "0.4", 0 }, { "0.5", 1 },
        { "0.1234567890123456789999T", 123'456'789'012 },
        { "8999999999999999999", 8'999'999'999'999'999'999 },
        { "8999999.999999999999T", 8'999'999'999'999'999'999 },
        { "9000000000000000000", std::nullopt }, { "9000000T", std::nullopt }, { "99999999999999999999999", std::nullopt },
        { "-1G", std::nullopt }, { "G", std::nullopt }, { "B", std::nullopt }, { "GB", std::nullopt }, { "", std::nullopt },
        { "  ", std::nullopt }, { ".", std::nullopt }, { "1..5G", std::nullopt }, { "1.5.5G", std::nullopt },
        { "2 G", std::nullopt }, { "2GiB", std::nullopt }, { "2BB", std::nullopt }, { "1e3", std::nullopt },
        { "+1G", std::nullopt }, { "0x10", std::nullopt }, { "2P", std::nullopt },
    };
    for (const auto& [word, value] : cases)
        EXPECT_EQ(parseSize(word), value) << '"' << word << '"';
}

TEST(AgentCommands, StartMode)
{
    const std::pair<std::string_view, StartMode> cases[] {
        { "", StartMode::app },
        { "status", StartMode::tool },
        { "summary ~/Projects", StartMode::tool },
        { "-h", StartMode::tool },
        { "--help", StartMode::tool },
        { "--version", StartMode::tool },
        { "--json status", StartMode::app },
        { "--background", StartMode::app },
        { "-psn_0_12345", StartMode::app },
        { "nonsense --json", StartMode::tool },
    };
    for (const auto& [line, mode] : cases)
        EXPECT_EQ(startMode(split(line)), mode) << line;
}

TEST(AgentCommands, RequestsFromTheSocketAreCheckedAndStoredAsTheParserWould)
{
    const std::pair<Request, std::map<std::string, std::string>> accepted[] {
        { { "summary", { { "limit", "007" } }, false }, { { "limit", "7" } } },
        { { "find", { { "min_size", "2G" }, { "kind", "any" } }, false }, { { "min_size", "2000000000" }, { "kind", "any" } } },
        { { "add-alert", { { "path", "/" }, { "grows_by", "1.5T" }, { "period", "week" } }, false },
            { { "path", "/" }, { "grows_by", "1500000000000" }, { "period", "week" } } },
        { { "history", { { "path", "" } }, false }, { { "path", "" } } },
    };
    for (const auto& [request, arguments] : accepted) {
        auto checked = validated(request);
        ASSERT_TRUE(checked.has_value()) << request.command << ": " << checked.error().message;
        EXPECT_EQ(checked->arguments, arguments) << request.command;
    }
    const std::pair<Request, std::string> refused[] {
        { { "types", { { "color", "Owner" } }, false }, "--by doesn't take Owner: " },
        { { "changes", { { "period", "week" }, { "path", "/" }, { "limit", "51" } }, false }, "--limit doesn't take 51: " },
        { { "add-alert", { { "path", "/" }, { "larger_than", "5G" }, { "period", "week" } }, false }, "--period goes with --grows-by." },
        { { "history", {}, false }, "history needs a path: history PATH." },
        { { "rescan", { { "path", "/" } }, false }, "rescan takes no path." },
        { { "find", { { "--min-size", "1G" } }, false }, "find has no option --min-size. Run help find." },
    };
    for (const auto& [request, message] : refused) {
        auto checked = validated(request);
        ASSERT_FALSE(checked.has_value()) << request.command;
        EXPECT_EQ(checked.error().kind, RequestError::Kind::invalidArguments);
        EXPECT_TRUE(checked.error().message.starts_with(message)) << checked.error().message;
    }
    EXPECT_EQ(validated({ "help", {}, false }).error().kind, RequestError::Kind::unknownCommand);
    // A value far longer than an answer may be is not repeated whole.
    auto huge = validated({ "summary", { { "limit", std::string(100'000, '9') } }, false });
    EXPECT_LT(huge.error().message.size(), 2'000u);
}
