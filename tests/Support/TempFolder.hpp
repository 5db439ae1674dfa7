#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace tarnwick::fixtures {

// A folder under the system's temporary folder, removed with everything inside when
// the test ends (even trees too deep for path-based removal).
class TempFolder {
public:
    TempFolder();
    ~TempFolder();
    TempFolder(const TempFolder&) = delete;
    TempFolder& operator=(const TempFolder&) = delete;

    [[nodiscard]] const std::string& path() const { return m_path; }
    [[nodiscard]] std::string operator/(std::string_view relative) const { return m_path + "/" + std::string(relative); }

    // Creates the folders on the way as needed.
    void makeFolder(std::string_view relative) const;
    // Writes bytes of content.
    void makeFile(std::string_view relative, std::size_t bytes) const;
    // A file of the given logical size with no data written.
    void makeSparseFile(std::string_view relative, std::int64_t size) const;
    void makeLink(std::string_view relative, std::string_view target) const;

private:
    std::string m_path;
};

// Runs a shell command and returns its exit status.
int runShell(const std::string& command);

// A file's bytes, "" when it cannot be read.
std::string readFile(const std::string& path);

}
