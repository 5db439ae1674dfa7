#pragma once

#include <string>

// The fish completions for tarnwick: one `complete` line per command and option.
namespace tarnwick::FishCompletion {

std::string render();

}
