#pragma once

#include <string_view>

// The system log, where services report what users don't see: syslog under the ident
// "tarnwick", each message prefixed by its category ("agents: listening"); also on standard
// error when that is a terminal.
namespace tarnwick::SystemLog {

enum class Level { info, error };

void write(Level level, std::string_view category, std::string_view message);

}
