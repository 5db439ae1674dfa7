#pragma once

#include "Classification/OwnerIndex.hpp"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace tarnwick {

// Which owner a place on disk belongs to, decided name by name on the way down from "/":
// a small automaton of the places that matter (the system's folders, home folders with
// their ".config", ".local/share", ".cache", ".var/app" and "snap", Flatpak and snap
// installations, /opt, the agents' places). A child takes the owner its name gives it in
// its parent's state, else its parent's owner. Most of a tree lies where nothing below can
// change the owner any more (the settled state), so a pass over millions of nodes looks at
// names only near the top.
class OwnerPlaces {
public:
    // An app of the index (0 and up), or one of these.
    using Owner = std::int32_t;
    static constexpr Owner system = -1;
    static constexpr Owner noOwner = -2;

    using State = std::uint16_t;
    static constexpr State settled = 0;

    struct Step {
        State state = settled;
        Owner owner = noOwner;
    };

    // Keeps a reference to the index, which must outlive it.
    explicit OwnerPlaces(const OwnerIndex& index);

    // Where a scan's root stands, from its absolute path. A relative path stands nowhere
    // known: settled, without owner.
    [[nodiscard]] Step start(std::string_view rootPath) const;
    // A child named name of a node that stands at parent.
    [[nodiscard]] Step step(Step parent, std::string_view name) const
    {
        return parent.state == settled ? parent : stepFrom(parent, name);
    }
    [[nodiscard]] Owner ownerOf(std::string_view path) const { return start(path).owner; }
    [[nodiscard]] const OwnerIndex& index() const { return m_index; }
    [[nodiscard]] std::size_t stateCount() const { return m_states.size(); }

private:
    // How children without a transition of their own find an owner by name.
    enum class Match : std::uint8_t { none, app, dotApp, snapPackage };
    static constexpr Owner inherit = -3;

    struct Transition {
        std::string name;
        State next;
        Owner owner;
    };
    struct Node {
        std::vector<Transition> exact;
        // Any child without a transition ("/home/*").
        State anyChild = settled;
        Owner anyOwner = inherit;
        Match match = Match::none;
        Owner unmatched = inherit;
    };

    [[nodiscard]] Step stepFrom(Step parent, std::string_view name) const;
    [[nodiscard]] Owner matched(const Node& node, std::string_view name, Owner parentOwner) const;
    State addState();
    // The state at path below from (components separated by "/"), made where missing.
    State reach(State from, std::string_view path);
    // Makes the last component of path lead to target (made as needed) with owner.
    void link(State from, std::string_view path, Owner owner, State target = settled);
    void buildHome();
    void buildSystem();
    void buildInstallations();
    // States that lead nowhere and match nothing are the settled state.
    void settleEmptyStates();

    const OwnerIndex& m_index;
    std::vector<Node> m_states;
    State m_fileSystemRoot = settled;
    State m_home = settled;
};

}
