#pragma once

#include "Agent/AgentResult.hpp"

#include <optional>
#include <string>

// Whether a place can be scanned, asked before a scan starts so that the refusal names the
// cause: it doesn't exist, it is a file (a scan starts at a folder or a disk), or this user
// lacks a permission to list it, which only its owner can grant.
namespace tarnwick::PlaceAccess {

// The answer to give for path (absolute), or none when it can be scanned.
std::optional<AgentResult> refusal(const std::string& path);

}
