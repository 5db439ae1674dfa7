#pragma once

#include <cstdint>
#include <map>
#include <string>

// What du says, the reference for sizes on disk.
namespace tarnwick::fixtures {

// du's size on disk of every folder below and including root ("du -B1"), by absolute path.
std::map<std::string, std::int64_t> duFolders(const std::string& root);
// "du -sB1" of one folder.
std::int64_t duTotal(const std::string& folder);
// "du -sB1 --apparent-size": files' contents, each file once, plus folders' own sizes.
std::int64_t duApparentTotal(const std::string& folder);
// The sum of the size that each folder from folder down reports of itself, so that the
// contents alone are duApparentTotal minus this.
std::int64_t folderSizes(const std::string& folder);

}
