#pragma once

#include "Agent/AgentCommands.hpp"

#include <expected>
#include <optional>
#include <string>
#include <string_view>

// The texts the tool prints by itself: help and the Agent Skill. tool is the name the tool is
// shown by (ToolName); each text is without a final line feed.
namespace tarnwick::AgentHelp {

std::string general(std::string_view tool);
std::string forCommand(const AgentCommands::Command& command, std::string_view tool);
// The general help without a name, a command's help for a known one, and for an unknown name
// the message that says so.
std::expected<std::string, std::string> forName(const std::optional<std::string>& name, std::string_view tool);
// A SKILL.md with its front matter, to be saved as ~/.agents/skills/tarnwick/SKILL.md.
std::string skill(std::string_view tool);

}
