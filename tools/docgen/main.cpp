#include "BashCompletion.hpp"
#include "FishCompletion.hpp"
#include "ManPage.hpp"
#include "ZshCompletion.hpp"

#include <cstdio>
#include <fstream>
#include <string>
#include <string_view>

// Writes the manual page or a shell's completion, generated from the command table at build
// time: `tarnwick_docgen man|bash|zsh|fish OUTPUT`.
int main(int argc, char** argv)
{
    if (argc != 3) {
        std::fprintf(stderr, "usage: %s man|bash|zsh|fish OUTPUT\n", argv[0]);
        return 2;
    }
    std::string_view kind = argv[1];
    std::string text;
    if (kind == "man")
        text = tarnwick::ManPage::render(TARNWICK_VERSION);
    else if (kind == "bash")
        text = tarnwick::BashCompletion::render();
    else if (kind == "zsh")
        text = tarnwick::ZshCompletion::render();
    else if (kind == "fish")
        text = tarnwick::FishCompletion::render();
    else {
        std::fprintf(stderr, "%s: no such output: %s\n", argv[0], argv[1]);
        return 2;
    }
    std::ofstream out(argv[2], std::ios::binary | std::ios::trunc);
    out << text;
    out.close();
    if (!out) {
        std::fprintf(stderr, "%s: cannot write %s\n", argv[0], argv[2]);
        return 1;
    }
    return 0;
}
