#include "Classification/DesktopEntry.hpp"

#include <algorithm>
#include <array>

namespace tarnwick {

namespace {

// Programs that start another program named by a later argument.
constexpr std::array<std::string_view, 8> wrappers { "env", "nice", "ionice", "sudo", "pkexec", "gksu", "gksudo", "kdesu" };
// Programs that run a script: the script names the application.
constexpr std::array<std::string_view, 9> interpreters { "python", "python2", "python3", "perl", "ruby", "node", "nodejs", "java",
    "mono" };
// Programs whose arguments do not name an application folder.
constexpr std::array<std::string_view, 10> openers { "sh", "bash", "dash", "zsh", "ksh", "xdg-open", "gio", "exo-open", "kde-open",
    "gtk-launch" };

template <std::size_t count>
bool contains(const std::array<std::string_view, count>& list, std::string_view name)
{
    return std::find(list.begin(), list.end(), name) != list.end();
}

bool isInterpreter(std::string_view name)
{
    // Versioned names such as "python3.11" count as well.
    std::size_t end = name.find_first_of("0123456789.");
    return contains(interpreters, name) || (end != std::string_view::npos && end > 0 && contains(interpreters, name.substr(0, end))
                                               && name.find_first_not_of("0123456789.", end) == std::string_view::npos);
}

std::string_view trim(std::string_view text)
{
    std::size_t start = text.find_first_not_of(" \t\r");
    if (start == std::string_view::npos)
        return {};
    std::size_t end = text.find_last_not_of(" \t\r");
    return text.substr(start, end - start + 1);
}

// The general escapes of string values: \s \n \t \r \\.
std::string unescapeValue(std::string_view value)
{
    std::string result;
    result.reserve(value.size());
    for (std::size_t i = 0; i < value.size(); ++i) {
        if (value[i] != '\\' || i + 1 == value.size()) {
            result.push_back(value[i]);
            continue;
        }
        char next = value[++i];
        switch (next) {
        case 's': result.push_back(' '); break;
        case 'n': result.push_back('\n'); break;
        case 't': result.push_back('\t'); break;
        case 'r': result.push_back('\r'); break;
        case '\\': result.push_back('\\'); break;
        default:
            // Left for the Exec quoting, which has escapes of its own.
            result.push_back('\\');
            result.push_back(next);
        }
    }
    return result;
}

std::string_view baseName(std::string_view path)
{
    std::size_t slash = path.rfind('/');
    return slash == std::string_view::npos ? path : path.substr(slash + 1);
}

std::string_view withoutExtension(std::string_view name)
{
    std::size_t dot = name.rfind('.');
    return dot == std::string_view::npos || dot == 0 ? name : name.substr(0, dot);
}

bool isFieldCode(std::string_view argument) { return argument.size() == 2 && argument[0] == '%'; }

void assign(DesktopEntry& entry, std::string_view key, std::string value)
{
    if (key == "Type")
        entry.type = std::move(value);
    else if (key == "Name")
        entry.name = std::move(value);
    else if (key == "Exec")
        entry.exec = std::move(value);
    else if (key == "TryExec")
        entry.tryExec = std::move(value);
    else if (key == "StartupWMClass")
        entry.startupWMClass = std::move(value);
    else if (key == "Icon")
        entry.icon = std::move(value);
    else if (key == "X-Flatpak")
        entry.flatpakID = std::move(value);
    else if (key == "X-SnapInstanceName")
        entry.snapName = std::move(value);
    else if (key == "Hidden")
        entry.hidden = value == "true";
}

// Options of the wrappers that take a value as the next argument ("env -u NAME",
// "sudo -u USER", "nice -n 10", "ionice -c 3").
constexpr std::array<std::string_view, 6> optionsWithValue { "-u", "-C", "-g", "-n", "-c", "-p" };

// The program after a wrapper's options and variable assignments; npos when none follows.
std::size_t skipWrapper(const std::vector<std::string>& arguments, std::size_t index)
{
    for (++index; index < arguments.size(); ++index) {
        const std::string& argument = arguments[index];
        if (contains(optionsWithValue, argument))
            ++index;
        else if (!argument.starts_with('-') && argument.find('=') == std::string::npos)
            return index;
    }
    return std::string::npos;
}

std::string flatpakCommand(const std::vector<std::string>& arguments)
{
    for (const std::string& argument : arguments) {
        if (argument.starts_with("--command="))
            return std::string(baseName(std::string_view(argument).substr(10)));
    }
    return {};
}

}

std::string_view DesktopEntry::text(Error error)
{
    switch (error) {
    case Error::unreadable:
        return "The file can't be read.";
    case Error::tooLarge:
        return "The file is too large to be a desktop entry.";
    case Error::noDesktopEntryGroup:
        return "The file has no [Desktop Entry] group.";
    }
    return {};
}

std::expected<DesktopEntry, DesktopEntry::Error> DesktopEntry::parse(std::string_view text)
{
    if (text.size() > maximumSize)
        return std::unexpected(Error::tooLarge);
    DesktopEntry entry;
    bool inGroup = false;
    bool sawGroup = false;
    std::size_t start = 0;
    while (start < text.size()) {
        std::size_t end = text.find('\n', start);
        if (end == std::string_view::npos)
            end = text.size();
        std::string_view line = trim(text.substr(start, end - start));
        start = end + 1;
        if (line.empty() || line.front() == '#')
            continue;
        if (line.front() == '[') {
            inGroup = line == "[Desktop Entry]";
            sawGroup = sawGroup || inGroup;
            continue;
        }
        std::size_t equals = line.find('=');
        if (!inGroup || equals == std::string_view::npos)
            continue;
        assign(entry, trim(line.substr(0, equals)), unescapeValue(trim(line.substr(equals + 1))));
    }
    if (!sawGroup)
        return std::unexpected(Error::noDesktopEntryGroup);
    return entry;
}

std::vector<std::string> DesktopEntry::execArguments(std::string_view exec)
{
    std::vector<std::string> arguments;
    std::string current;
    bool inArgument = false;
    bool quoted = false;
    for (std::size_t i = 0; i < exec.size(); ++i) {
        char c = exec[i];
        if (quoted) {
            if (c == '\\' && i + 1 < exec.size())
                current.push_back(exec[++i]);
            else if (c == '"')
                quoted = false;
            else
                current.push_back(c);
        } else if (c == ' ' || c == '\t') {
            if (inArgument)
                arguments.push_back(std::move(current));
            current.clear();
            inArgument = false;
        } else {
            inArgument = true;
            if (c == '"')
                quoted = true;
            else
                current.push_back(c);
        }
    }
    if (inArgument)
        arguments.push_back(std::move(current));
    return arguments;
}

std::string DesktopEntry::programName() const
{
    std::vector<std::string> arguments = execArguments(exec.empty() ? tryExec : exec);
    std::size_t index = 0;
    while (index < arguments.size() && contains(wrappers, baseName(arguments[index])))
        index = skipWrapper(arguments, index);
    if (index >= arguments.size())
        return {};
    std::string_view program = baseName(arguments[index]);
    if (program == "flatpak")
        return flatpakCommand(arguments);
    if (program == "snap") {
        // "snap run NAME"
        std::size_t run = skipWrapper(arguments, index);
        std::size_t name = run == std::string::npos ? run : skipWrapper(arguments, run);
        return name == std::string::npos ? std::string() : std::string(baseName(arguments[name]));
    }
    if (contains(openers, program))
        return {};
    if (isInterpreter(program)) {
        std::size_t script = skipWrapper(arguments, index);
        if (script != std::string::npos && !isFieldCode(arguments[script]))
            return std::string(withoutExtension(baseName(arguments[script])));
    }
    return std::string(program);
}

}
