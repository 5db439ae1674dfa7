#pragma once

#include "Agent/AgentCommands.hpp"
#include "Agent/AgentRequest.hpp"
#include "Agent/EchoedText.hpp"

#include <string>
#include <string_view>
#include <vector>

// What must hold for any bytes that reach the command line's parsers, by the typed words or
// by the socket: nothing throws or crashes, and the app's check of a request agrees with the
// tool's parser. Shared by the fuzz target and the test that replays its corpus.
namespace tarnwick::RequestInvariants {

// The bytes split at line feeds, as the words a shell would hand over.
inline std::vector<std::string> words(std::string_view data)
{
    std::vector<std::string> words;
    std::size_t start = 0;
    for (std::size_t end; (end = data.find('\n', start)) != std::string_view::npos; start = end + 1)
        words.emplace_back(data.substr(start, end - start));
    if (start < data.size())
        words.emplace_back(data.substr(start));
    return words;
}

// False when an invariant is broken; the fuzz target stops there.
inline bool hold(std::string_view data)
{
    // As a request line from the socket: whatever decodes is either refused or made
    // canonical, and checking the canonical form again changes nothing.
    if (auto request = AgentCommands::Request::decoded(data)) {
        auto checked = AgentCommands::validated(*request);
        if (checked) {
            auto again = AgentCommands::validated(*checked);
            if (!again || *again != *checked)
                return false;
            if (AgentCommands::Request::decoded(checked->encoded()) != *checked)
                return false;
        } else if (checked.error().message.size() > 4 * EchoedText::longestEchoBytes + 2'048) {
            return false;
        }
    }
    // As typed words: what the tool would send is exactly what the app accepts.
    std::vector<std::string> typed = words(data);
    AgentCommands::Invocation invocation = AgentCommands::parse(typed);
    if (const auto* run = std::get_if<AgentCommands::Invocation::Run>(&invocation.value)) {
        auto checked = AgentCommands::validated(run->request);
        if (!checked || *checked != run->request)
            return false;
    }
    // Text shown in answers never holds a control character and never grows past its bound.
    std::string shown = EchoedText::shown(data, 64);
    for (char c : shown) {
        if (static_cast<unsigned char>(c) < 0x20 || c == 0x7F)
            return false;
    }
    return EchoedText::shortened(data, 64).size() <= 64;
}

}
