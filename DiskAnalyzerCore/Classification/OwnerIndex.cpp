#include "Classification/OwnerIndex.hpp"

#include "Classification/AgentPlaces.hpp"
#include "Platform/LocalFiles.hpp"

#include <algorithm>
#include <array>
#include <cerrno>

namespace tarnwick {

namespace {

// Names that hold the shared parts of a desktop rather than one application's data; no
// app may claim them, whatever its program or icon is called.
constexpr std::array<std::string_view, 27> sharedFolderNames { "applications", "icons", "fonts", "themes", "mime", "autostart",
    "trash", "keyrings", "menus", "sounds", "backgrounds", "desktopdirectories", "settings", "extensions", "systemd", "dconf",
    "config", "cache", "share", "local", "var", "data", "bin", "lib", "app", "snap", "flatpak" };

// Well-known folders whose names differ from any name of their app.
struct Alias {
    std::string_view appName;
    std::string_view folderName;
};
constexpr std::array<Alias, 6> aliases { {
    { "firefox", "mozilla" },
    { "firefoxesr", "mozilla" },
    { "thunderbird", "thunderbird" },
    { "code", "vscode" },
    { "codeoss", "vscodeoss" },
    { "codium", "vscodeoss" },
} };

// Snaps that provide the base system, the snap daemon or shared libraries for other snaps.
constexpr std::array<std::string_view, 5> platformSnaps { "core", "snapd", "bare", "gtk-common-themes", "gtk2-common-themes" };
// Followed by a version: "core22", "gnome-42-2204", "mesa-2404" (but "gnome-calculator" is an app).
constexpr std::array<std::string_view, 5> versionedPlatformSnaps { "core", "gnome-", "mesa-", "kf5-", "kf6-" };
constexpr std::array<std::string_view, 2> platformSnapPrefixes { "kde-frameworks-", "wine-platform-" };

constexpr std::size_t maximumFolderDepth = 4;

std::string_view lastComponent(std::string_view id, char separator)
{
    std::size_t at = id.rfind(separator);
    return at == std::string_view::npos ? std::string_view() : id.substr(at + 1);
}

std::string_view baseName(std::string_view path)
{
    std::size_t slash = path.rfind('/');
    return slash == std::string_view::npos ? path : path.substr(slash + 1);
}

// Older snaps name themselves only by launching "/snap/bin/NAME" (or "NAME.COMMAND").
std::string snapLaunched(std::string_view exec)
{
    constexpr std::string_view snapBin = "/snap/bin/";
    for (const std::string& argument : DesktopEntry::execArguments(exec)) {
        if (argument.starts_with(snapBin)) {
            std::string_view name = std::string_view(argument).substr(snapBin.size());
            return std::string(name.substr(0, name.find('.')));
        }
    }
    return {};
}

std::string agentID(std::string_view agent)
{
    std::string id = "agent:";
    for (char c : agent)
        id.push_back(c == ' ' ? '-' : (c >= 'A' && c <= 'Z') ? static_cast<char>(c - 'A' + 'a') : c);
    return id;
}

std::string unquote(std::string_view value)
{
    if (value.size() >= 2 && (value.front() == '"' || value.front() == '\'') && value.back() == value.front())
        value = value.substr(1, value.size() - 2);
    std::string result;
    for (std::size_t i = 0; i < value.size(); ++i) {
        if (value[i] == '\\' && i + 1 < value.size())
            ++i;
        result.push_back(value[i]);
    }
    return result;
}

std::vector<LocalFiles::Entry> sortedEntries(const std::string& folder)
{
    auto listed = LocalFiles::list(folder);
    if (!listed)
        return {};
    std::sort(listed->begin(), listed->end(), [](const auto& a, const auto& b) { return a.name < b.name; });
    return std::move(*listed);
}

std::vector<std::string> subfolders(const std::string& folder)
{
    std::vector<std::string> names;
    for (LocalFiles::Entry& entry : sortedEntries(folder)) {
        if (entry.isFolder && !entry.name.starts_with('.'))
            names.push_back(std::move(entry.name));
    }
    return names;
}

}

OwnerIndex::OwnerIndex(ApplicationRoots roots)
    : m_roots(std::move(roots))
{
    while (m_roots.homeFolder.size() > 1 && m_roots.homeFolder.back() == '/')
        m_roots.homeFolder.pop_back();
}

std::string OwnerIndex::fold(std::string_view name)
{
    std::string folded;
    folded.reserve(name.size());
    for (char c : name) {
        auto byte = static_cast<unsigned char>(c);
        if (c >= 'A' && c <= 'Z')
            folded.push_back(static_cast<char>(c - 'A' + 'a'));
        else if ((c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || byte >= 0x80)
            folded.push_back(c);
    }
    return folded;
}

bool OwnerIndex::isPlatformSnap(std::string_view name)
{
    if (std::find(platformSnaps.begin(), platformSnaps.end(), name) != platformSnaps.end())
        return true;
    for (std::string_view prefix : versionedPlatformSnaps) {
        if (name.size() > prefix.size() && name.starts_with(prefix) && name[prefix.size()] >= '0' && name[prefix.size()] <= '9')
            return true;
    }
    return std::any_of(platformSnapPrefixes.begin(), platformSnapPrefixes.end(), [&](std::string_view prefix) { return name.starts_with(prefix); });
}

std::optional<std::string> OwnerIndex::systemNameFromOSRelease(std::string_view text)
{
    std::optional<std::string> name;
    std::size_t start = 0;
    while (start < text.size()) {
        std::size_t end = text.find('\n', start);
        if (end == std::string_view::npos)
            end = text.size();
        std::string_view line = text.substr(start, end - start);
        start = end + 1;
        if (line.starts_with("PRETTY_NAME=")) {
            std::string pretty = unquote(line.substr(12));
            if (!pretty.empty())
                return pretty;
        } else if (line.starts_with("NAME=") && !name) {
            std::string plain = unquote(line.substr(5));
            if (!plain.empty())
                name = std::move(plain);
        }
    }
    return name;
}

std::int32_t OwnerIndex::addApp(std::string id, std::string displayName)
{
    auto number = static_cast<std::int32_t>(m_apps.size());
    m_ids.emplace(id, number);
    m_apps.push_back(App { std::move(id), std::move(displayName), {}, {}, {} });
    return number;
}

void OwnerIndex::addName(std::int32_t app, std::string_view name, Strength strength)
{
    std::string folded = fold(name);
    if (folded.size() < 2 || std::find(sharedFolderNames.begin(), sharedFolderNames.end(), folded) != sharedFolderNames.end())
        return;
    std::vector<std::string>& names = m_apps[static_cast<std::size_t>(app)].names;
    if (std::find(names.begin(), names.end(), folded) == names.end())
        names.push_back(folded);
    auto [claim, added] = m_names.try_emplace(std::move(folded), Claim { app, strength });
    if (!added && strength > claim->second.strength)
        claim->second = Claim { app, strength };
}

void OwnerIndex::addDesktopEntry(std::string_view id, const DesktopEntry& entry)
{
    if (entry.hidden || entry.type != "Application" || id.empty())
        return;
    // A Flatpak's or a snap's entry joins the app its installation already made, if any.
    const std::string snapName = entry.snapName.empty() ? snapLaunched(entry.exec) : entry.snapName;
    std::optional<std::int32_t> existing = findID(id);
    if (!existing && !entry.flatpakID.empty())
        existing = findID(entry.flatpakID);
    if (!existing && !snapName.empty()) {
        if (auto snap = m_snaps.find(snapName); snap != m_snaps.end())
            existing = snap->second;
    }
    std::int32_t app = existing ? *existing : addApp(std::string(id), entry.name.empty() ? std::string(id) : entry.name);
    // An installation names its app by id only; the first entry's name is the better one.
    App& named = m_apps[static_cast<std::size_t>(app)];
    if (existing && !entry.name.empty() && named.displayName == named.id)
        named.displayName = entry.name;
    m_ids.try_emplace(std::string(id), app);
    addName(app, id, Strength::identifier);
    addName(app, lastComponent(id, '.'), Strength::lastIDComponent);
    if (!entry.flatpakID.empty()) {
        m_ids.try_emplace(entry.flatpakID, app);
        addName(app, entry.flatpakID, Strength::identifier);
        addName(app, lastComponent(entry.flatpakID, '.'), Strength::lastIDComponent);
    }
    if (!snapName.empty()) {
        m_snaps.try_emplace(snapName, app);
        addName(app, snapName, Strength::identifier);
    }
    addName(app, entry.programName(), Strength::program);
    if (!entry.tryExec.empty())
        addName(app, baseName(entry.tryExec), Strength::program);
    addName(app, entry.startupWMClass, Strength::program);
    if (entry.icon.find('/') == std::string::npos)
        addName(app, entry.icon, Strength::icon);
    addName(app, entry.name, Strength::displayName);
    // A program started from /opt/NAME/... makes /opt/NAME its folder.
    for (const std::string& argument : DesktopEntry::execArguments(entry.exec)) {
        if (argument.starts_with("/opt/") && argument.find('/', 5) != std::string::npos) {
            addPlace(m_apps[static_cast<std::size_t>(app)].id, argument.substr(0, argument.find('/', 5)));
            break;
        }
    }
}

void OwnerIndex::addFlatpak(std::string_view appID)
{
    if (appID.empty() || findID(appID))
        return;
    std::int32_t app = addApp(std::string(appID), std::string(appID));
    addName(app, appID, Strength::identifier);
    addName(app, lastComponent(appID, '.'), Strength::lastIDComponent);
}

void OwnerIndex::addSnap(std::string_view name)
{
    if (name.empty() || isPlatformSnap(name) || m_snaps.contains(std::string(name)))
        return;
    std::optional<std::int32_t> existing = findID(name);
    std::int32_t app = existing ? *existing : addApp(std::string(name), std::string(name));
    m_snaps.emplace(std::string(name), app);
    addName(app, name, Strength::identifier);
}

void OwnerIndex::addPlace(std::string_view appID, std::string path)
{
    std::optional<std::int32_t> app = findID(appID);
    if (!app)
        return;
    std::vector<std::string>& paths = m_apps[static_cast<std::size_t>(*app)].paths;
    if (std::find(paths.begin(), paths.end(), path) == paths.end())
        paths.push_back(std::move(path));
}

void OwnerIndex::addAgentPlaces()
{
    constexpr std::string_view applicationSupport = "Library/Application Support/";
    for (const AgentPlaces::Place& place : AgentPlaces::all) {
        std::optional<std::int32_t> app = findID(agentID(place.agent));
        if (!app) {
            // An agent with a desktop entry of its own (an editor, say) keeps that entry's owner.
            auto claim = m_names.find(fold(place.agent));
            if (claim != m_names.end() && claim->second.strength >= Strength::program)
                app = claim->second.app;
            else
                app = addApp(agentID(place.agent), std::string(place.agent));
            m_ids.try_emplace(agentID(place.agent), *app);
        }
        std::vector<std::string>& homePaths = m_apps[static_cast<std::size_t>(*app)].homePaths;
        homePaths.emplace_back(place.path);
        if (place.path.starts_with(applicationSupport))
            homePaths.push_back(".config/" + std::string(place.path.substr(applicationSupport.size())));
    }
}

void OwnerIndex::addAliases()
{
    for (const Alias& alias : aliases) {
        auto claim = m_names.find(std::string(alias.appName));
        if (claim != m_names.end() && claim->second.strength >= Strength::program)
            addName(claim->second.app, alias.folderName, Strength::alias);
    }
}

std::optional<std::int32_t> OwnerIndex::find(std::string_view folderName) const
{
    auto claim = m_names.find(fold(folderName));
    if (claim == m_names.end())
        return std::nullopt;
    return claim->second.app;
}

std::optional<std::int32_t> OwnerIndex::findID(std::string_view id) const
{
    auto found = m_ids.find(std::string(id));
    if (found == m_ids.end())
        return std::nullopt;
    return found->second;
}

void OwnerIndex::readDesktopFile(const std::string& path, std::string_view id)
{
    auto text = LocalFiles::read(path, DesktopEntry::maximumSize);
    if (!text) {
        m_skipped.push_back({ path, text.error() == EFBIG ? DesktopEntry::Error::tooLarge : DesktopEntry::Error::unreadable });
        return;
    }
    auto entry = DesktopEntry::parse(*text);
    if (!entry) {
        m_skipped.push_back({ path, entry.error() });
        return;
    }
    addDesktopEntry(id, *entry);
}

// Desktop ids are paths below the folder with "/" turned into "-"; the first folder that
// has an id decides it, even when its entry is hidden or not an application.
void OwnerIndex::readApplicationFolder(const std::string& folder, std::unordered_map<std::string, bool>& seen)
{
    struct Pending {
        std::string path;
        std::string prefix;
        std::size_t depth;
    };
    std::vector<Pending> pending { { folder, "", 0 } };
    while (!pending.empty()) {
        Pending current = std::move(pending.back());
        pending.pop_back();
        for (const LocalFiles::Entry& entry : sortedEntries(current.path)) {
            std::string path = current.path + "/" + entry.name;
            if (entry.isFolder) {
                if (current.depth + 1 < maximumFolderDepth)
                    pending.push_back({ path, current.prefix + entry.name + "-", current.depth + 1 });
                continue;
            }
            if (!entry.name.ends_with(".desktop") || entry.name.size() == 8)
                continue;
            std::string id = current.prefix + entry.name.substr(0, entry.name.size() - 8);
            if (seen.try_emplace(id, true).second)
                readDesktopFile(path, id);
        }
    }
}

OwnerIndex OwnerIndex::build(const ApplicationRoots& roots)
{
    OwnerIndex index(roots);
    const std::string& home = index.m_roots.homeFolder;
    // Installations first, so that their desktop entries join them.
    for (const std::string& installation : roots.flatpakInstallations) {
        for (const std::string& appID : subfolders(installation + "/app"))
            index.addFlatpak(appID);
    }
    for (const std::string& folder : roots.snapFolders) {
        for (const std::string& name : subfolders(folder))
            index.addSnap(name);
    }
    std::unordered_map<std::string, bool> seen;
    for (const std::string& folder : roots.applicationFolders)
        index.readApplicationFolder(folder, seen);
    // Data of apps that may no longer be installed is still theirs.
    for (const std::string& appID : subfolders(home + "/.var/app"))
        index.addFlatpak(appID);
    for (const std::string& name : subfolders(home + "/snap"))
        index.addSnap(name);
    index.addAgentPlaces();
    index.addAliases();
    for (const std::string& file : roots.osReleaseFiles) {
        auto text = LocalFiles::read(file, 64 * 1024);
        if (!text)
            continue;
        if (auto name = systemNameFromOSRelease(*text)) {
            index.m_systemName = std::move(*name);
            break;
        }
    }
    return index;
}

}
