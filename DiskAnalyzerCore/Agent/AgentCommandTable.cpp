#include "Agent/AgentCommands.hpp"
#include "Support/PlatformPhrases.hpp"

namespace tarnwick::AgentCommands {

namespace {

std::string joined(std::span<const std::string_view> words)
{
    std::string text;
    for (std::string_view word : words) {
        if (!text.empty())
            text += ", ";
        text += word;
    }
    return text;
}

std::vector<std::string> words(std::span<const std::string_view> list)
{
    return { list.begin(), list.end() };
}

Command status()
{
    return { "status", "What Tarnwick shows now and whether it is running.",
        "The scanned location, whether a scan is running, the open folder and the selection, and whether Tarnwick is "
        "waiting for the user.",
        PathArgument::none(), {}, Route::status, {} };
}

Command disks()
{
    return { "disks",
        "The disks: capacity, free space, days with snapshots, change since yesterday and over a month, forecast.",
        "Every disk Tarnwick lists, with its capacity and available space, whether Tarnwick may read it (whole disk, "
        "some folders or none), the days with snapshots, the change since yesterday and over the past month, and when "
        "the space runs out at the current pace. Needs no scan.",
        PathArgument::none(), {}, Route::history, {} };
}

Command changes()
{
    return { "changes", "How a folder or disk changed over a period, from the daily snapshots.",
        "The place's change and its size at both ends; the items directly inside that changed, largest first, and what "
        "they don't add up to (\"other items\": files and folders under 10 MB, and rounding); where the space went deep "
        "down; and which content types grew or shrank. The same numbers as the Changes view in Tarnwick. Needs no scan. "
        "Follow the largest growth down by asking again about that folder.",
        PathArgument::optional("Folder or disk. Without it: the folder open in Tarnwick, or every disk when nothing is open."),
        {
            { "--period", "period", Value::choice(words(periods)), "PERIOD",
                "Since when: " + joined(periods)
                    + ". yesterday by default. A period longer than the history starts from its first snapshot." },
            { "--limit", "limit", Value::integer(1, 50), "N", "How many changed items to list, 1 to 50; 15 by default." },
        },
        Route::history, { "changes --period week", "changes ~/.cache --period month --limit 30" } };
}

Command history()
{
    return { "history", "A folder's or disk's size at each snapshot, oldest first.",
        "Sizes comparable with today's: a snapshot that read less of the place doesn't count as growth. For a disk, also "
        "its available space at the latest scan of each of the past 30 days. Needs no scan.",
        PathArgument::required("Folder or disk."), {}, Route::history, { "history ~/.local/share" } };
}

Command types()
{
    return { "types", "Space by map color mode, with each group\u2019s share and largest places.",
        "Uses the window\u2019s color totals, from the result on screen or the latest snapshot. Owner combines an app\u2019s "
        "places. Ratio reports on-disk bytes / logical size and the lowest and highest ratios; unknown ratios stay "
        "unknown. Snapshot places include retained folders only. Groups page with --cursor; next_cursor names the next "
        "page.",
        PathArgument::optional("Folder or disk; the folder open in Tarnwick by default."),
        {
            { "--by", "color", Value::choice(words(mapModes)), "MODE",
                "type (default), owner, modified, created, caches, hidden or ratio." },
            { "--folders", "folders_per_type", Value::integer(0, 10), "N",
                "Places per group or ratio extreme, 0 to 10; 5 by default." },
            { "--limit", "limit", Value::integer(1, 100), "N",
                "Groups per page, 1 to 100; 20 by default; may shrink to fit 8 KB." },
            { "--cursor", "cursor", Value::integer(0, 1'000'000), "N", "Next cursor from the previous page." },
        },
        Route::history, { "types ~/.local/share --by owner --folders 3", "types ~/Projects --by ratio", "types ~ --by hidden" } };
}

Command alerts()
{
    return { "alerts", "The alerts set for disks and folders, what each measured, and which are exceeded.",
        "Tarnwick notifies the user when a disk gets fuller than a percentage, or when a folder gets larger than a size "
        "or a share of its disk, or grows by more than a size over a period. A disk is checked every few minutes while "
        "Tarnwick runs; a folder with every snapshot of its disk. Needs no scan.",
        PathArgument::none(), {}, Route::history, {} };
}

Command addAlert()
{
    return { "add-alert",
        "Sets an alert: a disk fuller than a percentage, or a folder larger, a larger share of its disk, or growing "
        "faster than a limit.",
        "Give exactly one limit. A disk takes --fuller-than; a folder takes --larger-than, --share or --grows-by with "
        "--period. A place has one alert of each kind, and one growth alert per period: setting it again changes the "
        "limit. The user gets " + std::string(PlatformPhrases::notification)
            + " when the limit is passed, and again only after it was below. Set alerts the user asked for; suggest "
              "others rather than setting them.",
        PathArgument::required("Folder or disk; a disk by its mount point, such as / or /media/backup."),
        {
            { "--fuller-than", "fuller_than_percent", Value::integer(1, 99), "PERCENT",
                "Disks: used space above this percentage of the capacity, as " + std::string(PlatformPhrases::fileManager)
                    + " counts it." },
            { "--larger-than", "larger_than", Value::size(), "SIZE", "Folders: size on disk above this, such as 30G." },
            { "--share", "share_percent", Value::integer(1, 99), "PERCENT",
                "Folders: size above this percentage of the disk's capacity." },
            { "--grows-by", "grows_by", Value::size(), "SIZE",
                "Folders: growth above this since the start of --period, as changes counts it." },
            { "--period", "period", Value::choice(words(periods)), "PERIOD",
                "With --grows-by: " + joined(periods) + ". yesterday by default." },
        },
        Route::history,
        { "add-alert / --fuller-than 90", "add-alert ~/.cache --larger-than 30G",
            "add-alert ~/.local/share --grows-by 10G --period week" } };
}

Command removeAlert()
{
    return { "remove-alert", "Removes an alert by its ID, or every alert of a folder or disk.",
        "The ID is the one alerts prints.", PathArgument::required("The alert's ID, or a folder or disk."), {}, Route::history,
        { "remove-alert 3f2a9c1e", "remove-alert ~/.cache" } };
}

Command metrics()
{
    return { "metrics", "The history's figures for Prometheus, in its text format: disks, scanned places, alerts.",
        "Per disk that holds a scanned place: capacity, available and reserved bytes, seconds until full at the "
        "current pace and how far back its history reaches; per scanned place (the roots of scans, not the folders inside, so "
        "the series stay few): its size on disk and its change since yesterday, over a week and over a month; per "
        "alert: whether it is exceeded. Names start with tarnwick_, in bytes and seconds. Always answered here, from "
        "the saved snapshots, without the app and without the 8 KB limit. With --write, also written as tarnwick.prom "
        "for node_exporter's textfile collector, and rewritten by Tarnwick after every snapshot it saves.",
        PathArgument::none(),
        { { "--write", "write", Value::folder(), "DIR",
            "Write DIR/tarnwick.prom now (replaced whole, never half-written) and keep it current after every "
            "snapshot; an empty DIR ('') stops that." } },
        Route::tool, { "metrics", "metrics --write /var/lib/prometheus/node-exporter" } };
}

Command scan()
{
    return { "scan", "Scans a folder or disk Tarnwick may read, or opens it if it is in the scan already.",
        "The map fills in as the scan goes; run wait, then summary. A place the user's permissions don't let Tarnwick "
        "read fails with NO_ACCESS, naming the missing permission and the owner: the user may change it, or scan as a "
        "user who may read it (sudo). Folders inside that can't be read are listed as unreadable, not fatal.",
        PathArgument::required("Folder or disk."), {}, Route::app, {} };
}

Command wait()
{
    return { "wait", "Waits for the running scan to finish, then prints the status.",
        "Returns when the scan is done, when Tarnwick waits for the user, or at the timeout; run it again if the scan is "
        "still going. summary works on what has been found so far.",
        PathArgument::none(), { { "--timeout", "timeout_s", Value::integer(1, 600), "SECONDS", "1 to 600; 60 by default." } },
        Route::app, { "wait --timeout 300" } };
}

Command summary()
{
    return { "summary", "A scanned folder's size and its largest items with their shares.",
        "Text includes owners, cache and hidden shares, and notable on-disk / size ratios. JSON includes these fully, "
        "with unknowns as null. Each item includes last_change_inside and oldest_item as ISO 8601 dates when known. "
        "Folder dates are the latest change in the subtree and earliest file creation. For the root of a disk, also its "
        "capacity, available space and the used space the scan doesn't account for (snapshots, other volumes, places "
        "Tarnwick couldn't read); after a rescan, the size before it.",
        PathArgument::optional("Folder in the scan; the folder open in Tarnwick by default."),
        { { "--limit", "limit", Value::integer(1, 100), "N", "How many items to list, 1 to 100; 20 by default." } }, Route::app,
        { "summary ~/Projects --limit 30" } };
}

Command findCommand()
{
    return { "find", "Items anywhere below a scanned folder, largest first, filtered by kind, size, name and age.",
        "Pages with --cursor: the output names the next cursor while there is more.",
        PathArgument::optional("Folder in the scan; the folder open in Tarnwick by default."),
        {
            { "--kind", "kind", Value::choice({ "file", "folder", "package", "any" }), "KIND",
                "file, folder, package or any; file by default." },
            { "--min-size", "min_size", Value::size(), "SIZE",
                "Smallest size on disk, such as 500M or 2G (1 GB = 1,000,000,000 bytes)." },
            { "--older-than", "older_than_days", Value::integer(0, 100'000), "DAYS",
                "Only items whose scan date is older than this many days; folders use Last change inside across the "
                "subtree. Unknown dates are excluded." },
            { "--name", "name", Value::text(), "PATTERN",
                "Shell pattern for the item's name, such as '*.iso'; case doesn't matter. Quote it." },
            { "--limit", "limit", Value::integer(1, 100), "N", "1 to 100; 20 by default." },
            { "--cursor", "cursor", Value::text(), "CURSOR", "The next cursor from the previous page." },
        },
        Route::app, { "find ~ --min-size 1G", "find ~/Downloads --name '*.iso' --older-than 90" } };
}

Command show()
{
    return { "show", "Opens a scanned folder on the map, or selects a scanned file, so the user sees what you mean.",
        "Use it for what you are talking about, so the user can look at it in Tarnwick.",
        PathArgument::required("Folder or file in the scan."),
        { { "--color", "color", Value::choice(words(mapModes)), "MODE",
            "Map mode: type, owner, modified, created, caches, hidden or ratio." } },
        Route::app, { "show ~/.cache", "show ~/.local/share --color owner" } };
}

Command rescan()
{
    return { "rescan", "Scans the current location again, for example after the user cleaned something up.",
        "Run wait, then summary of the location: it reports the size before the rescan.", PathArgument::none(), {}, Route::app,
        {} };
}

Command skill()
{
    return { "skill", "Prints an Agent Skill (SKILL.md) that tells coding agents about this command line.",
        "Save it once as ~/.agents/skills/tarnwick/SKILL.md, which Codex, Gemini CLI and other agents read, and link "
        "~/.claude/skills/tarnwick to that folder for Claude Code. If ~/.agents/skills/quillmere remains from the app's "
        "former name, remove it and that link.",
        PathArgument::none(), {}, Route::tool, {} };
}

Command in(HelpGroup group, Command command)
{
    command.group = group;
    return command;
}

}

const std::vector<Command>& table()
{
    using enum HelpGroup;
    static const std::vector<Command> commands {
        in(other, status()),
        in(snapshots, disks()), in(snapshots, changes()), in(snapshots, history()), in(snapshots, types()),
        in(monitoring, alerts()), in(monitoring, addAlert()), in(monitoring, removeAlert()), in(monitoring, metrics()),
        in(withScan, scan()), in(withScan, wait()), in(withScan, summary()), in(withScan, findCommand()), in(withScan, show()),
        in(withScan, rescan()),
        in(other, skill()),
    };
    return commands;
}

const Command* find(std::string_view name)
{
    for (const Command& command : table()) {
        if (command.name == name)
            return &command;
    }
    return nullptr;
}

const Option* Command::option(std::string_view flag) const
{
    for (const Option& candidate : options) {
        if (candidate.flag == flag)
            return &candidate;
    }
    return nullptr;
}

std::string usageLine(const Command& command)
{
    std::string line = command.name;
    if (command.path.kind == PathArgument::Kind::optional)
        line += " [PATH]";
    else if (command.path.kind == PathArgument::Kind::required)
        line += " PATH";
    for (const Option& option : command.options)
        line += " [" + option.flag + " " + option.placeholder + "]";
    return line;
}

}
