#pragma once

#include <string_view>

// The upper-case codes that begin a failed command's text ("NO_ACCESS: ..."), and the
// messages that the transport itself gives with them.
namespace tarnwick::AgentErrorCode {

inline constexpr std::string_view appNotRunning = "APP_NOT_RUNNING";
inline constexpr std::string_view invalidRequest = "INVALID_REQUEST";
inline constexpr std::string_view unknownCommand = "UNKNOWN_COMMAND";
inline constexpr std::string_view invalidPath = "INVALID_PATH";
inline constexpr std::string_view invalidArgument = "INVALID_ARGUMENT";
inline constexpr std::string_view notScanned = "NOT_SCANNED";
inline constexpr std::string_view notFound = "NOT_FOUND";
inline constexpr std::string_view noAccess = "NO_ACCESS";
inline constexpr std::string_view noHistory = "NO_HISTORY";
inline constexpr std::string_view scanInProgress = "SCAN_IN_PROGRESS";
inline constexpr std::string_view scanChanged = "SCAN_CHANGED";
inline constexpr std::string_view colorUnavailable = "COLOR_UNAVAILABLE";
inline constexpr std::string_view outputTooLarge = "OUTPUT_TOO_LARGE";
// A failure whose structured value names no code.
inline constexpr std::string_view generic = "ERROR";

namespace Messages {
inline constexpr std::string_view appNotRunning = "Tarnwick didn't start. Ask the user to open it, then try again.";
inline constexpr std::string_view invalidRequest = "Tarnwick couldn't read the request.";
inline constexpr std::string_view notFound = "No alert has that ID or place. Run alerts for the list.";
inline constexpr std::string_view noHistory = "Tarnwick keeps no history here.";
inline constexpr std::string_view scanChanged = "The result changed; run show again.";
}

}
