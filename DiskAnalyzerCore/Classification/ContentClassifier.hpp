#pragma once

#include "Classification/ContentCategory.hpp"
#include "Classification/ContentRule.hpp"
#include "Classification/ExtensionKey.hpp"

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

namespace tarnwick {

class ScanTree;

// Decides from names alone what kind of content every item of a scan is. A file is judged
// by its own name and by the rules of the folders above it; a folder by its name, its
// extension, its parent's name and whether it stands directly under the scan root.
namespace ContentClassifier {

// What the user is told about the limits of the method.
inline constexpr std::string_view limitsText
    = "The map shows where it is. The category is guessed from names, so a file without a telling name counts as Other.";

// The text after the last "." of a name, lower-cased; absent when the dot is the first
// character or the text after it is empty or longer than 16 bytes.
std::optional<ExtensionKey> extension(std::string_view name);

// The category that a file's own name tells, or absent.
std::optional<ContentCategory> classifyFile(std::string_view name);

// The rule that a folder or package's name tells. parentName is absent for the scan root;
// isTopLevel holds when the folder's parent is the scan root.
std::optional<ContentRule> folderRule(std::string_view name, std::optional<std::string_view> parentName, bool isTopLevel);

enum class ItemKind : bool { file, folder };
// The label naming what an item is, for display.
std::optional<std::string_view> formatName(std::string_view name, ItemKind kind, std::optional<std::string_view> parentName, bool isTopLevel);

// Per node of a tree: the category of every item that is not a folder (255 for folders,
// which take their colour from their bytes), and for every node the category that takes
// bytes not covered by its children: the rule in force inside it, or other.
struct Classification {
    std::vector<std::uint8_t> categories;
    std::vector<std::uint8_t> fallbacks;
};

// One pass in node order; parents are always settled before their children.
Classification classifyTree(const ScanTree& tree);

}

}
