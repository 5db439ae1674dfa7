#include "Support/DiskUsage.hpp"

#include <array>
#include <cstdio>
#include <stdexcept>

namespace tarnwick::fixtures {

namespace {

std::string run(const std::string& command)
{
    FILE* pipe = popen(command.c_str(), "r");
    if (!pipe)
        throw std::runtime_error("popen " + command);
    std::string out;
    std::array<char, 65536> buffer;
    while (std::size_t n = fread(buffer.data(), 1, buffer.size(), pipe))
        out.append(buffer.data(), n);
    pclose(pipe);
    return out;
}

}

std::map<std::string, std::int64_t> duFolders(const std::string& root)
{
    std::string out = run("du -B1 --null '" + root + "'");
    std::map<std::string, std::int64_t> sizes;
    std::size_t position = 0;
    while (position < out.size()) {
        std::size_t end = out.find('\0', position);
        if (end == std::string::npos)
            end = out.size();
        std::string line = out.substr(position, end - position);
        std::size_t tab = line.find('\t');
        if (tab != std::string::npos)
            sizes[line.substr(tab + 1)] = std::stoll(line.substr(0, tab));
        position = end + 1;
    }
    return sizes;
}

std::int64_t duTotal(const std::string& folder)
{
    std::string out = run("du -sB1 '" + folder + "'");
    return std::stoll(out.substr(0, out.find('\t')));
}

std::int64_t duApparentTotal(const std::string& folder)
{
    std::string out = run("du -sB1 --apparent-size '" + folder + "'");
    return std::stoll(out.substr(0, out.find('\t')));
}

std::int64_t folderSizes(const std::string& folder)
{
    std::string out = run("find '" + folder + "' -type d -printf '%s\\n'");
    std::int64_t sum = 0;
    std::size_t position = 0;
    while (position < out.size()) {
        std::size_t end = out.find('\n', position);
        sum += std::stoll(out.substr(position, end - position));
        position = end + 1;
    }
    return sum;
}

}
