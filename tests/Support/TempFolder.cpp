#include "Support/TempFolder.hpp"

#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace tarnwick::fixtures {

TempFolder::TempFolder()
{
    std::string pattern = (std::filesystem::temp_directory_path() / "tarnwick-test-XXXXXX").string();
    std::vector<char> buffer(pattern.begin(), pattern.end());
    buffer.push_back('\0');
    if (mkdtemp(buffer.data()) == nullptr)
        throw std::runtime_error("mkdtemp failed");
    m_path = buffer.data();
    chmod(m_path.c_str(), 0755);
}

TempFolder::~TempFolder()
{
    runShell("chmod -R u+rwx '" + m_path + "' 2>/dev/null; rm -rf '" + m_path + "'");
}

void TempFolder::makeFolder(std::string_view relative) const
{
    std::filesystem::create_directories(*this / relative);
}

void TempFolder::makeFile(std::string_view relative, std::size_t bytes) const
{
    std::filesystem::path path = *this / relative;
    std::filesystem::create_directories(path.parent_path());
    int fd = ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
    if (fd < 0)
        throw std::runtime_error("cannot create " + path.string());
    std::string block(4096, 'x');
    while (bytes > 0) {
        std::size_t chunk = bytes < block.size() ? bytes : block.size();
        if (write(fd, block.data(), chunk) != static_cast<ssize_t>(chunk))
            break;
        bytes -= chunk;
    }
    close(fd);
}

void TempFolder::makeSparseFile(std::string_view relative, std::int64_t size) const
{
    std::filesystem::path path = *this / relative;
    std::filesystem::create_directories(path.parent_path());
    int fd = ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
    if (fd < 0 || ftruncate(fd, size) != 0)
        throw std::runtime_error("cannot create sparse " + path.string());
    close(fd);
}

void TempFolder::makeLink(std::string_view relative, std::string_view target) const
{
    std::filesystem::path path = *this / relative;
    std::filesystem::create_directories(path.parent_path());
    std::filesystem::create_symlink(std::string(target), path);
}

std::string readFile(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    return { std::istreambuf_iterator<char>(file), {} };
}

int runShell(const std::string& command)
{
    int status = std::system(command.c_str());
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

}
