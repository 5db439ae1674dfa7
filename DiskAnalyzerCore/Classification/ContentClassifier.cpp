#include "Classification/ContentClassifier.hpp"

#include "Classification/ContentTables.hpp"
#include "Scanning/ScanTree.hpp"

#include <algorithm>
#include <cstring>

namespace tarnwick::ContentClassifier {

namespace {

constexpr std::uint8_t notSet = ContentCategories::notSet;
constexpr std::uint8_t strongBit = 0x80;

bool isRotationSuffix(const ExtensionKey& key)
{
    std::string_view text = key.view();
    if (std::all_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; }))
        return true;
    return text == "gz" || text == "bz2" || text == "xz" || text == "zst";
}

bool containsBackup(std::string_view name)
{
    constexpr std::string_view word = "backup";
    if (name.size() < word.size())
        return false;
    for (std::size_t i = 0; i + word.size() <= name.size(); ++i) {
        std::size_t matched = 0;
        while (matched < word.size()) {
            char c = name[i + matched];
            if (c >= 'A' && c <= 'Z')
                c = static_cast<char>(c + ('a' - 'A'));
            if (c != word[matched])
                break;
            ++matched;
        }
        if (matched == word.size())
            return true;
    }
    return false;
}

std::optional<ContentCategory> classifyFile(const ContentTables& tables, std::string_view name, const std::optional<ExtensionKey>& key)
{
    if (const ContentTables::FileEntry* special = tables.specialName(name))
        return special->category;
    if (name.starts_with("swapfile"))
        return ContentCategory::system;
    if (!key)
        return std::nullopt;
    if (isRotationSuffix(*key) && name.find(".log.") != std::string_view::npos)
        return ContentCategory::logs;
    if (const ContentTables::FileEntry* entry = tables.extension(*key))
        return entry->category;
    return std::nullopt;
}

std::optional<ContentRule> folderRule(const ContentTables& tables, std::string_view name, std::optional<std::string_view> parentName, bool isTopLevel)
{
    if (std::optional<ExtensionKey> key = extension(name)) {
        if (const ContentRule* package = tables.package(*key))
            return *package;
    }
    std::span<const FolderNameRule> rules = tables.folderRules(name);
    if (parentName) {
        for (const FolderNameRule& rule : rules) {
            if (rule.parent && *rule.parent == *parentName)
                return rule.rule;
        }
    }
    for (const FolderNameRule& rule : rules) {
        if (!rule.parent && (!rule.topLevelOnly || isTopLevel))
            return rule.rule;
    }
    if (containsBackup(name))
        return ContentRule { ContentCategory::archives, true, "Backup" };
    return std::nullopt;
}

// The rule in force inside a folder, given its own rule and the one inherited from above.
std::uint8_t folderContext(std::uint8_t inherited, const std::optional<ContentRule>& own)
{
    if (!own)
        return inherited;
    std::uint8_t ownByte = own->contextByte();
    bool inheritedIsRule = inherited != notSet && (inherited & ~strongBit) < ContentCategories::count;
    if (!inheritedIsRule || !(inherited & strongBit))
        return ownByte;
    if (!own->isStrong)
        return inherited;
    // Agents keep tools, models, archives, caches and logs of their own, but media or
    // documents inside their folders are still the agent's data.
    if ((inherited & ~strongBit) == ContentCategories::raw(ContentCategory::ai)) {
        switch (own->category) {
        case ContentCategory::developer:
        case ContentCategory::ai:
        case ContentCategory::archives:
        case ContentCategory::caches:
        case ContentCategory::logs:
            return ownByte;
        default:
            return inherited;
        }
    }
    return ownByte;
}

std::uint8_t itemCategory(const ContentTables& tables, std::uint8_t context, std::string_view name)
{
    if (context == notSet || (context & ~strongBit) >= ContentCategories::count) {
        std::optional<ContentCategory> own = classifyFile(tables, name, extension(name));
        return ContentCategories::raw(own.value_or(ContentCategory::other));
    }
    auto contextCategory = static_cast<std::uint8_t>(context & ~strongBit);
    if (context & strongBit)
        return contextCategory;
    std::optional<ExtensionKey> key = extension(name);
    if (contextCategory == ContentCategories::raw(ContentCategory::developer) && key && tables.isDeveloperAmbiguous(*key))
        return contextCategory;
    std::optional<ContentCategory> own = classifyFile(tables, name, key);
    return own ? ContentCategories::raw(*own) : contextCategory;
}

}

std::optional<ExtensionKey> extension(std::string_view name)
{
    std::size_t dot = name.rfind('.');
    if (dot == std::string_view::npos || dot == 0)
        return std::nullopt;
    return ExtensionKey::make(name.substr(dot + 1));
}

std::optional<ContentCategory> classifyFile(std::string_view name)
{
    return classifyFile(ContentTables::builtIn(), name, extension(name));
}

std::optional<ContentRule> folderRule(std::string_view name, std::optional<std::string_view> parentName, bool isTopLevel)
{
    return folderRule(ContentTables::builtIn(), name, parentName, isTopLevel);
}

std::optional<std::string_view> formatName(std::string_view name, ItemKind kind, std::optional<std::string_view> parentName, bool isTopLevel)
{
    const ContentTables& tables = ContentTables::builtIn();
    if (kind == ItemKind::folder) {
        std::optional<ContentRule> rule = folderRule(tables, name, parentName, isTopLevel);
        return rule ? rule->format : std::nullopt;
    }
    if (const ContentTables::FileEntry* special = tables.specialName(name); special && special->format)
        return special->format;
    if (std::optional<ExtensionKey> key = extension(name)) {
        if (const ContentTables::FileEntry* entry = tables.extension(*key))
            return entry->format;
    }
    return std::nullopt;
}

Classification classifyTree(const ScanTree& tree)
{
    const ContentTables& tables = ContentTables::builtIn();
    const auto count = static_cast<std::size_t>(std::max(tree.count(), 0));
    std::span<const NodeKind> kinds = tree.kinds();
    std::span<const std::int32_t> parents = tree.parents();
    Classification result;
    result.categories.assign(count, notSet);
    std::vector<std::uint8_t> contexts(count, notSet);

    for (std::size_t i = 0; i < count; ++i) {
        std::int32_t parent = parents[i];
        std::uint8_t inherited = parent >= 0 ? contexts[static_cast<std::size_t>(parent)] : notSet;
        std::string_view name = tree.name(NodeID { static_cast<std::int32_t>(i) });
        if (isContainer(kinds[i])) {
            std::optional<std::string_view> parentName;
            if (parent >= 0)
                parentName = tree.name(NodeID { parent });
            contexts[i] = folderContext(inherited, folderRule(tables, name, parentName, parent == 0));
        } else {
            result.categories[i] = itemCategory(tables, inherited, name);
        }
    }

    // What a node's uncovered bytes count as: the rule's category, other where none is in force.
    for (std::uint8_t& context : contexts)
        context = std::min<std::uint8_t>(context & ~strongBit, ContentCategories::raw(ContentCategory::other));
    result.fallbacks = std::move(contexts);
    return result;
}

}
