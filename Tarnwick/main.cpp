#include "HomeSummary.hpp"

#include <cstdlib>
#include <string>

int main(int argc, char** argv)
{
    std::string path;
    if (argc > 1) {
        path = argv[1];
    } else {
        const char* home = std::getenv("HOME");
        path = home != nullptr && *home != '\0' ? home : "/";
    }
    return tarnwick::HomeSummary::run(path);
}
