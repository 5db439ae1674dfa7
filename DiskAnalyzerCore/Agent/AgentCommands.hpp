#pragma once

#include "Agent/AgentRequest.hpp"

#include <array>
#include <cstdint>
#include <expected>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

// The command line `tarnwick COMMAND [PATH] [OPTIONS] [--json]`: one table of commands drives
// the help texts, the parsing of the typed words, the usage errors, and whether the tool asks
// the app or answers from the saved snapshots.
namespace tarnwick::AgentCommands {

struct PathArgument {
    enum class Kind { none, optional, required };

    Kind kind = Kind::none;
    std::string text; // what the path is, and what is used without it

    static PathArgument none() { return {}; }
    static PathArgument optional(std::string text) { return { Kind::optional, std::move(text) }; }
    static PathArgument required(std::string text) { return { Kind::required, std::move(text) }; }
};

// The kind of an option's value.
struct Value {
    // folder is text that names a folder: parsed as text, completed with folder names.
    enum class Kind { integer, choice, text, size, folder };

    struct Range {
        std::int64_t lowest = 0;
        std::int64_t highest = 0;
    };

    Kind kind = Kind::text;
    std::optional<Range> range;          // integer only; closed
    std::vector<std::string> choices;    // choice only

    static Value integer() { return { Kind::integer, std::nullopt, {} }; }
    static Value integer(std::int64_t lowest, std::int64_t highest) { return { Kind::integer, Range { lowest, highest }, {} }; }
    static Value choice(std::vector<std::string> words) { return { Kind::choice, std::nullopt, std::move(words) }; }
    static Value text() { return { Kind::text, std::nullopt, {} }; }
    static Value size() { return { Kind::size, std::nullopt, {} }; }
    static Value folder() { return { Kind::folder, std::nullopt, {} }; }
};

struct Option {
    std::string flag;        // "--limit"
    std::string key;         // the name of the value in Request::arguments
    Value value;
    std::string placeholder; // shown in usage lines
    std::string detail;      // shown in help, and in the error for a value it doesn't take
};

// Who answers a command, and so whether the app is started for it.
enum class Route : std::uint8_t {
    app,     // the running app's scan and window: the app is started when it isn't running
    history, // the saved snapshots: the app when it runs, else the tool itself from the files
    status,  // the app when it runs, else the tool says that it doesn't
    tool,    // the tool alone, without asking the app
};

// Where help lists a command, in this order.
enum class HelpGroup : std::uint8_t { snapshots, monitoring, withScan, other };

struct Command {
    std::string name;
    std::string summary;
    std::string detail;
    PathArgument path;
    std::vector<Option> options;
    Route route = Route::history;
    std::vector<std::string> examples; // command lines without the tool's name
    HelpGroup group = HelpGroup::other;

    [[nodiscard]] const Option* option(std::string_view flag) const;
};

struct Invocation {
    struct Help {
        std::optional<std::string> command;
        bool operator==(const Help&) const = default;
    };
    struct Run {
        Request request;
        bool operator==(const Run&) const = default;
    };
    struct UsageError {
        std::string message;
        bool operator==(const UsageError&) const = default;
    };
    struct Version {
        bool operator==(const Version&) const = default;
    };

    std::variant<Help, Run, UsageError, Version> value;

    bool operator==(const Invocation&) const = default;
};

inline constexpr std::array<std::string_view, 8> periods {
    "yesterday", "day-before-yesterday", "week", "month", "3-months", "6-months", "year", "all",
};
inline constexpr std::array<std::string_view, 7> mapModes {
    "type", "owner", "modified", "created", "caches", "hidden", "ratio",
};

// Every command in the order of the help listing, built once.
const std::vector<Command>& table();
// Exact, case-sensitive; null when there is no such command.
const Command* find(std::string_view name);
// "changes [PATH] [--period PERIOD] [--limit N]"
std::string usageLine(const Command& command);

// The words after the program name. Never fails: a wrong word gives a usage error.
Invocation parse(std::span<const std::string> words);

// Why a request that arrived whole, over the socket, cannot run.
struct RequestError {
    enum class Kind {
        unknownCommand,   // no command of the table has its name
        invalidArguments, // its arguments are not what the tool's parser would have sent
    };
    Kind kind = Kind::invalidArguments;
    std::string message; // in the words of the tool's usage errors

    bool operator==(const RequestError&) const = default;
};

// The request as the tool's parser would have made it from typed words: a known command,
// only its own keys, every value read by the option's kind and stored in its canonical form
// (a size as its bytes), a path only where the command takes one, and the rules that tie
// options together. The app checks every request this way before a handler sees it, so a
// handler can rely on what the parser guarantees.
std::expected<Request, RequestError> validated(const Request& request);

// A value as it is stored in the request (an integer or a size as its decimal number, a choice
// or a text as typed); absent when the word is not a value of this kind.
std::optional<std::string> parseValue(const Value& value, std::string_view word);
// Whole numbers with an optional sign, nothing else.
std::optional<std::int64_t> parseInteger(std::string_view word);
// Byte sizes in decimal units ("500M", "2GB", "1.5T", "800"); never powers of 1,024.
std::optional<std::int64_t> parseSize(std::string_view word);

enum class StartMode { app, tool };

// The executable is the app when started with no words, or with a first word that starts with
// "-" other than "-h", "--help" and "--version" (a launcher's own options, or "--background");
// otherwise it is the tool.
StartMode startMode(std::span<const std::string> words);

}
