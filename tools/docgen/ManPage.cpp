#include "ManPage.hpp"

#include "Agent/AgentCommands.hpp"
#include "RoffText.hpp"

namespace tarnwick::ManPage {

namespace {

using RoffText::escaped;

std::string tagged(std::string_view tag, std::string_view text)
{
    return ".TP\n" + std::string(tag) + "\n" + escaped(text) + "\n";
}

std::string optionTag(std::string_view flag, std::string_view placeholder)
{
    std::string tag = ".B " + escaped(flag);
    if (!placeholder.empty())
        tag = ".BI " + escaped(flag) + " \" " + escaped(placeholder) + "\"";
    return tag;
}

std::string header(std::string_view version)
{
    return ".TH TARNWICK 1 \"\" \"Tarnwick " + escaped(version) + "\" \"User Commands\"\n"
        ".SH NAME\n"
        "tarnwick \\- see what takes space on your disks, what grew and when\n"
        ".SH SYNOPSIS\n"
        ".B tarnwick\n"
        ".RB [ \\-\\-open\n"
        ".IR PATH ]\n"
        ".br\n"
        ".B tarnwick\n"
        ".I COMMAND\n"
        ".RI [ PATH ]\n"
        ".RI [ OPTIONS ]\n"
        ".RB [ \\-\\-json ]\n";
}

std::string description()
{
    return ".SH DESCRIPTION\n"
        + escaped("Tarnwick scans a folder or a whole disk reading only metadata (sizes on disk and logical sizes, "
                  "dates, kinds), shows where the space goes on a ring map, and keeps a compact snapshot of each "
                  "scanned place every day, so it can tell what grew and when. Sizes on disk are counted as du(1) "
                  "counts them. It only reads: it never deletes, moves or changes files.")
        + "\n.PP\n"
        + escaped("Started without a command, from the desktop's application menu or with --open PATH, tarnwick is "
                  "the app: it opens its window where there is a display and otherwise runs in the background. "
                  "Started with a command, it asks the running app over a local socket, starting it when the "
                  "command needs a scan, and prints the answer as text or, with --json, as JSON.")
        + "\n";
}

std::string options()
{
    std::string text = ".SH OPTIONS\n";
    text += tagged(optionTag("--open", "PATH"), "Starts the app, lets Tarnwick read PATH and scans it.");
    text += tagged(optionTag("--json", ""), "Prints the same facts as JSON: bytes as integers, dates in ISO 8601.");
    text += tagged(".BR \\-h \", \" \\-\\-help", "The general help, or after a command that command's help.");
    text += tagged(optionTag("--version", ""), "Prints the version.");
    return text;
}

std::string command(const AgentCommands::Command& command)
{
    using Kind = AgentCommands::PathArgument::Kind;
    std::string text = ".SS " + escaped(AgentCommands::usageLine(command)) + "\n";
    text += escaped(command.summary) + "\n.PP\n" + escaped(command.detail) + "\n";
    if (command.path.kind != Kind::none)
        text += tagged(".I PATH", command.path.text);
    for (const AgentCommands::Option& option : command.options)
        text += tagged(optionTag(option.flag, option.placeholder), option.detail);
    if (!command.examples.empty()) {
        text += ".PP\nExamples:\n.RS\n.nf\n";
        for (const std::string& example : command.examples)
            text += escaped("tarnwick " + example) + "\n";
        text += ".fi\n.RE\n";
    }
    if (command.name != "status" && command.name != "skill") {
        text += ".PP\n";
        text += command.route == AgentCommands::Route::app ? "Works in the running app; starts it when it isn't running.\n"
                                 : "Answers from the saved snapshots when the app isn't running.\n";
    }
    return text;
}

std::string commands()
{
    std::string text = ".SH COMMANDS\n";
    for (const AgentCommands::Command& entry : AgentCommands::table())
        text += command(entry);
    text += ".SS help [COMMAND]\nThe general help, or a command's.\n";
    text += ".SS version\nPrints the version.\n";
    return text;
}

std::string closing()
{
    return ".SH EXIT STATUS\n"
        + tagged(".B 0", "Done.")
        + tagged(".B 1", "An error; the message starts with its code, such as NOT_SCANNED, NO_ACCESS or INVALID_PATH.")
        + tagged(".B 2", "Wrong usage.")
        + tagged(".B 4", "Tarnwick couldn't start, or can't be reached (APP_NOT_RUNNING).")
        + ".SH FILES\n"
        + tagged(".I $XDG_DATA_HOME/tarnwick/History",
            "The daily snapshots (by default under ~/.local/share).")
        + tagged(".I $XDG_DATA_HOME/tarnwick/Tarnwick.sock", "The socket the running app answers on.")
        + tagged(".I $XDG_CONFIG_HOME/tarnwick/defaults.json",
            "Settings and alerts (by default under ~/.config).")
        + tagged(".I DIR/tarnwick.prom",
            "The metrics for node_exporter's textfile collector, once metrics --write DIR named the folder; the app "
            "replaces it whole after every snapshot it saves.")
        + tagged(".I /usr/lib/systemd/system/tarnwick.service",
            "Runs the app for root without a window, with the daily snapshot: systemctl enable --now tarnwick.service. "
            "The same unit for one user is in /usr/lib/systemd/user (systemctl --user).")
        + tagged(".I /usr/share/doc/tarnwick/examples/tarnwick.rules.yml",
            "Prometheus alerting rules to start from: a disk that fills up within a week, a place that grew.")
        + ".SH SEE ALSO\n.BR du (1),\n.BR df (1),\n.BR prometheus-node-exporter (1)\n";
}

}

std::string render(std::string_view version)
{
    return header(version) + description() + options() + commands() + closing();
}

}
