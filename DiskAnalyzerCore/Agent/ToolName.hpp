#pragma once

#include <string>
#include <string_view>

// How the help and the messages that name a command to run call the tool: "tarnwick" when the
// user started it by that bare name and typing it again runs this very executable; otherwise
// the executable's full path, so that a copied command line works as it stands.
namespace tarnwick::ToolName {

inline constexpr std::string_view bareName = "tarnwick";

// programPath is argv[0]; ownExecutable the executable's path with links resolved; searchPath
// the value of $PATH.
std::string choose(std::string_view programPath, const std::string& ownExecutable, std::string_view searchPath);
// The same for this process.
std::string current(std::string_view programPath);

// The text as one word for a POSIX shell: as it is when it holds only safe characters,
// otherwise in single quotes.
std::string shellQuoted(std::string_view text);

}
