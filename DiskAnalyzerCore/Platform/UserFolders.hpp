#pragma once

#include <string>

// Where Tarnwick keeps its files for this user.
namespace tarnwick::UserFolders {

// $XDG_DATA_HOME/tarnwick, or ~/.local/share/tarnwick when that is unset or not an absolute
// path. The history and the app's socket live here.
std::string dataFolder();

// $XDG_CONFIG_HOME/tarnwick, or ~/.config/tarnwick by the same rule. The settings live here.
std::string configFolder();

// $XDG_CACHE_HOME/tarnwick, or ~/.cache/tarnwick by the same rule. What can be made again
// from the history lives here.
std::string cacheFolder();

// Creates the folder and the missing folders above it, each new one readable by this user
// only. True when it exists afterwards.
bool ensureFolder(const std::string& path);

}
