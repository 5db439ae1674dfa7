#include "Classification/OwnerPlaces.hpp"

#include <array>
#include <cassert>

namespace tarnwick {

namespace {

// The operating system's own places at the top of the file system: programs and libraries,
// the kernel and boot files, configuration, swap, and the kernel's virtual folders.
constexpr std::array<std::string_view, 21> systemTopLevel { "usr", "boot", "efi", "etc", "bin", "sbin", "lib", "lib32", "lib64",
    "libx32", "proc", "sys", "dev", "run", "lost+found", "vmlinuz", "vmlinuz.old", "initrd.img", "initrd.img.old", "swapfile",
    "swap.img" };
// In /var: package and service state, the system's caches, logs, backups and queues. Not
// "tmp" or "mail", which hold what users put there.
constexpr std::array<std::string_view, 6> systemInVar { "lib", "cache", "log", "backups", "spool", "db" };

template <typename Visit>
void forEachComponent(std::string_view path, Visit visit)
{
    std::size_t start = 0;
    while (start < path.size()) {
        std::size_t end = path.find('/', start);
        if (end == std::string_view::npos)
            end = path.size();
        std::string_view component = path.substr(start, end - start);
        if (!component.empty() && component != ".")
            visit(component);
        start = end + 1;
    }
}

}

OwnerPlaces::OwnerPlaces(const OwnerIndex& index)
    : m_index(index)
{
    m_states.emplace_back(); // settled
    m_fileSystemRoot = addState();
    m_home = addState();
    buildHome();
    buildSystem();
    buildInstallations();
    settleEmptyStates();
}

OwnerPlaces::State OwnerPlaces::addState()
{
    assert(m_states.size() < 65535 && "owner places need more states than a State can number");
    m_states.emplace_back();
    return static_cast<State>(m_states.size() - 1);
}

OwnerPlaces::State OwnerPlaces::reach(State from, std::string_view path)
{
    State current = from;
    forEachComponent(path, [&](std::string_view component) {
        for (const Transition& transition : m_states[current].exact) {
            if (transition.name == component) {
                current = transition.next;
                return;
            }
        }
        State next = addState();
        m_states[current].exact.push_back({ std::string(component), next, inherit });
        current = next;
    });
    return current;
}

void OwnerPlaces::link(State from, std::string_view path, Owner owner, State target)
{
    std::size_t slash = path.rfind('/');
    State parent = slash == std::string_view::npos ? from : reach(from, path.substr(0, slash));
    std::string_view name = slash == std::string_view::npos ? path : path.substr(slash + 1);
    if (name.empty())
        return;
    for (Transition& transition : m_states[parent].exact) {
        if (transition.name == name) {
            if (owner != inherit)
                transition.owner = owner;
            if (target != settled)
                transition.next = target;
            return;
        }
    }
    // Made before indexing: a new state may move the states.
    State next = target != settled ? target : addState();
    m_states[parent].exact.push_back({ std::string(name), next, owner });
}

void OwnerPlaces::buildHome()
{
    m_states[m_home].match = Match::dotApp;
    for (std::string_view folder : { ".config", ".local/share", ".cache", ".var/app", "snap" })
        m_states[reach(m_home, folder)].match = Match::app;
    m_states[reach(m_home, ".local/share/flatpak/app")].match = Match::app;
    link(m_home, ".local/share/flatpak/runtime", system);
    const std::vector<OwnerIndex::App>& apps = m_index.apps();
    for (std::size_t app = 0; app < apps.size(); ++app) {
        for (const std::string& place : apps[app].homePaths)
            link(m_home, place, static_cast<Owner>(app));
    }
    // Every folder in /home is a home, and so is root's; the user's own may be elsewhere.
    State homes = reach(m_fileSystemRoot, "home");
    m_states[homes].anyChild = m_home;
    m_states[homes].anyOwner = noOwner;
    link(m_fileSystemRoot, "root", noOwner, m_home);
    const std::string& home = m_index.roots().homeFolder;
    if (home.size() > 1 && home.front() == '/')
        link(m_fileSystemRoot, home, noOwner, m_home);
}

void OwnerPlaces::buildSystem()
{
    for (std::string_view name : systemTopLevel)
        link(m_fileSystemRoot, name, system);
    State var = reach(m_fileSystemRoot, "var");
    for (std::string_view name : systemInVar)
        link(var, name, system);
    m_states[reach(m_fileSystemRoot, "opt")].match = Match::app;
    const std::vector<OwnerIndex::App>& apps = m_index.apps();
    for (std::size_t app = 0; app < apps.size(); ++app) {
        for (const std::string& place : apps[app].paths)
            link(m_fileSystemRoot, place, static_cast<Owner>(app));
    }
}

void OwnerPlaces::buildInstallations()
{
    const ApplicationRoots& roots = m_index.roots();
    for (const std::string& installation : roots.flatpakInstallations) {
        m_states[reach(m_fileSystemRoot, installation + "/app")].match = Match::app;
        // Runtimes are the platform every Flatpak app runs on, shared like the system's libraries.
        link(m_fileSystemRoot, installation + "/runtime", system);
    }
    for (const std::string& folder : roots.snapFolders) {
        Node& snaps = m_states[reach(m_fileSystemRoot, folder)];
        snaps.match = Match::app;
        // Base and platform snaps, which make no app.
        snaps.unmatched = system;
    }
    for (const std::string& folder : roots.snapPackageFolders)
        m_states[reach(m_fileSystemRoot, folder)].match = Match::snapPackage;
}

void OwnerPlaces::settleEmptyStates()
{
    for (Node& node : m_states) {
        for (Transition& transition : node.exact) {
            const Node& next = m_states[transition.next];
            if (next.exact.empty() && next.anyChild == settled && next.match == Match::none)
                transition.next = settled;
        }
    }
}

OwnerPlaces::Owner OwnerPlaces::matched(const Node& node, std::string_view name, Owner parentOwner) const
{
    std::optional<std::int32_t> app;
    switch (node.match) {
    case Match::none:
        break;
    case Match::app:
        app = m_index.find(name);
        break;
    case Match::dotApp:
        if (name.size() > 1 && name.front() == '.')
            app = m_index.find(name.substr(1));
        break;
    case Match::snapPackage:
        // "NAME_REVISION.snap"
        if (std::size_t underscore = name.rfind('_'); name.ends_with(".snap") && underscore != std::string_view::npos)
            app = m_index.find(name.substr(0, underscore));
        break;
    }
    if (app)
        return *app;
    return node.unmatched != inherit ? node.unmatched : parentOwner;
}

OwnerPlaces::Step OwnerPlaces::stepFrom(Step parent, std::string_view name) const
{
    const Node& node = m_states[parent.state];
    for (const Transition& transition : node.exact) {
        if (transition.name == name)
            return { transition.next, transition.owner != inherit ? transition.owner : matched(node, name, parent.owner) };
    }
    if (node.anyChild != settled)
        return { node.anyChild, node.anyOwner != inherit ? node.anyOwner : parent.owner };
    return { settled, matched(node, name, parent.owner) };
}

OwnerPlaces::Step OwnerPlaces::start(std::string_view rootPath) const
{
    if (rootPath.empty() || rootPath.front() != '/')
        return { settled, noOwner };
    Step current { m_fileSystemRoot, noOwner };
    forEachComponent(rootPath, [&](std::string_view component) { current = step(current, component); });
    return current;
}

}
