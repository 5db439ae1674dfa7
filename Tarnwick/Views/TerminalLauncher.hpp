#pragma once

#include <QString>

namespace tarnwick::TerminalLauncher {

// Opens a terminal in the folder: the one the user named in $TERMINAL, else the system's
// default terminal (x-terminal-emulator), else the first of the common ones installed.
// False when none could be started.
bool open(const QString& folder);

}
