#pragma once

#include "Agent/AgentResult.hpp"
#include "AppModel.hpp"
#include "ScanView.hpp"

#include <expected>
#include <optional>
#include <string>

namespace tarnwick::AgentPlaces {

// "~" and "~/..." become the home folder; anything else must be absolute.
std::expected<std::string, AgentResult> expand(const std::string& argument);
// What the commands answer from: the result, else the running first scan's latest preview;
// NOT_SCANNED when there is neither.
std::expected<ScanView, AgentResult> scanView(const AppModel& model);
// The scanned node at a path argument; without one, the folder open in the app.
std::expected<NodeID, AgentResult> scannedNode(const ScanView& view, const std::optional<std::string>& argument);
std::expected<NodeID, AgentResult> scannedNode(const AppModel& model, const std::optional<std::string>& argument);
std::optional<std::string> argument(const std::map<std::string, std::string>& arguments, const std::string& key);
// An integer option the parser already checked, or its default.
long long integer(const std::map<std::string, std::string>& arguments, const std::string& key, long long fallback);

}
