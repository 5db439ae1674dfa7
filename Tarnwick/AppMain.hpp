#pragma once

#include <string>
#include <vector>

namespace tarnwick::AppMain {

// Runs the app: the model on the main executor and the command line's socket, until the
// process is asked to end. "--open PATH" among the words starts a scan of PATH.
int run(const std::vector<std::string>& words);

}
