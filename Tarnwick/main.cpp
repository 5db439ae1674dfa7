#include "Agent/AgentCommands.hpp"
#include "AppMain.hpp"
#include "CommandLineMode.hpp"

#include <string>
#include <vector>

// One executable, two roles: started with no words (or a launcher's options) it is the
// app; with a command first it is the tool that talks to the app.
int main(int argc, char** argv)
{
    std::vector<std::string> words(argv + 1, argv + argc);
    if (tarnwick::AgentCommands::startMode(words) == tarnwick::AgentCommands::StartMode::app)
        return tarnwick::AppMain::run(words);
    return tarnwick::CommandLineMode::run(argv[0], words);
}
