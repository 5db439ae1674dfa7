#include "Classification/ContentTables.hpp"

#include "Classification/AgentPlaces.hpp"
#include "Classification/ContentTableData.hpp"

#include <algorithm>
#include <cassert>
#include <unordered_map>

namespace tarnwick {

namespace {

std::optional<std::string_view> formatOrNone(std::string_view format)
{
    if (format.empty())
        return std::nullopt;
    return format;
}

// Calls visit for every piece of text between separators, skipping empty pieces.
template <typename Visit>
void forEachPiece(std::string_view text, char separator, Visit visit)
{
    while (!text.empty()) {
        std::size_t end = text.find(separator);
        std::string_view piece = text.substr(0, end);
        if (!piece.empty())
            visit(piece);
        if (end == std::string_view::npos)
            break;
        text.remove_prefix(end + 1);
    }
}

std::optional<ExtensionKey> keyFor(std::string_view extension)
{
    std::optional<ExtensionKey> key = ExtensionKey::make(extension);
    assert(key && "file extensions in the tables are 1 to 16 bytes long");
    return key;
}

}

void ContentTables::Builder::addExtensions(std::string_view extensions, ContentCategory category, std::string_view format)
{
    forEachPiece(extensions, ' ', [&](std::string_view extension) {
        std::optional<ExtensionKey> key = keyFor(extension);
        if (!key)
            return;
        if (const FileEntry* existing = m_extensions.find(*key); existing && existing->category != category)
            m_conflicts.push_back({ Table::extensions, std::string(extension), existing->category, category });
        m_extensions.insertOrAssign(*key, FileEntry { category, formatOrNone(format) });
    });
}

void ContentTables::Builder::addPackages(std::string_view extensions, ContentCategory category, std::string_view format)
{
    forEachPiece(extensions, ' ', [&](std::string_view extension) {
        const ContentRule* existing = m_packages.find(extension);
        if (existing && existing->category != category)
            m_conflicts.push_back({ Table::packages, std::string(extension), existing->category, category });
        if (!existing)
            m_packageOrder.push_back(extension);
        m_packages.insertOrAssign(extension, ContentRule { category, true, formatOrNone(format) });
    });
}

void ContentTables::Builder::addFolderRule(std::string_view name, FolderNameRule rule)
{
    for (const auto& [earlierName, earlier] : m_folderRules) {
        bool samePlace = earlierName == name && earlier.parent == rule.parent && earlier.topLevelOnly == rule.topLevelOnly;
        if (samePlace && earlier.rule.category != rule.rule.category)
            m_conflicts.push_back({ Table::folderNames, std::string(name), earlier.rule.category, rule.rule.category });
    }
    m_folderRules.emplace_back(name, rule);
}

void ContentTables::Builder::addSpecialName(std::string_view name, ContentCategory category, std::string_view format)
{
    if (const FileEntry* existing = m_specialNames.find(name); existing && existing->category != category)
        m_conflicts.push_back({ Table::specialNames, std::string(name), existing->category, category });
    m_specialNames.insertOrAssign(name, FileEntry { category, formatOrNone(format) });
}

void ContentTables::Builder::addDeveloperAmbiguous(std::string_view extension)
{
    if (std::optional<ExtensionKey> key = keyFor(extension))
        m_developerAmbiguous.insertOrAssign(*key, true);
}

std::string_view ContentTables::Builder::keep(std::string text)
{
    return m_texts.emplace_back(std::move(text));
}

ContentTables::ContentTables(Builder builder)
    : m_texts(std::move(builder.m_texts))
    , m_extensions(std::move(builder.m_extensions))
    , m_packageOrder(std::move(builder.m_packageOrder))
    , m_specialNames(std::move(builder.m_specialNames))
    , m_developerAmbiguous(std::move(builder.m_developerAmbiguous))
    , m_conflicts(std::move(builder.m_conflicts))
{
    // A package extension longer than any name's extension can be is kept in the list
    // (the scanner still knows it as a package type) but needs no lookup entry.
    for (std::string_view extension : m_packageOrder) {
        if (std::optional<ExtensionKey> key = ExtensionKey::make(extension))
            m_packages.insertOrAssign(*key, *builder.m_packages.find(extension));
    }
    // Group each name's rules together, keeping their order of adding.
    std::vector<std::string_view> order;
    std::unordered_map<std::string_view, std::vector<FolderNameRule>> byName;
    for (const auto& [name, rule] : builder.m_folderRules) {
        auto [entry, inserted] = byName.try_emplace(name);
        if (inserted)
            order.push_back(name);
        entry->second.push_back(rule);
    }
    m_shortestFolderName = order.empty() ? 0 : order.front().size();
    for (std::string_view name : order) {
        const std::vector<FolderNameRule>& rules = byName[name];
        m_folderRanges.insertOrAssign(name, Range { static_cast<std::uint32_t>(m_folderRules.size()), static_cast<std::uint32_t>(rules.size()) });
        m_folderRules.insert(m_folderRules.end(), rules.begin(), rules.end());
        m_shortestFolderName = std::min(m_shortestFolderName, name.size());
        m_longestFolderName = std::max(m_longestFolderName, name.size());
    }
    m_specialNames.forEach([&](std::string_view name, const FileEntry&) { m_longestSpecialName = std::max(m_longestSpecialName, name.size()); });
}

std::span<const FolderNameRule> ContentTables::folderRules(std::string_view name) const
{
    if (name.size() < m_shortestFolderName || name.size() > m_longestFolderName)
        return {};
    const Range* range = m_folderRanges.find(name);
    if (!range)
        return {};
    return std::span<const FolderNameRule>(m_folderRules.data() + range->start, range->count);
}

const ContentTables::FileEntry* ContentTables::specialName(std::string_view name) const
{
    if (name.size() > m_longestSpecialName)
        return nullptr;
    return m_specialNames.find(name);
}

namespace {

ContentTables::Builder builtInBuilder()
{
    using namespace ContentTableData;
    ContentTables::Builder builder;
    for (const ExtensionRow& row : extensionRows)
        builder.addExtensions(row.extensions, row.category, row.format);
    for (const PackageRow& row : packageRows)
        builder.addPackages(row.extensions, row.category, row.format);
    for (const FolderRow& row : folderRows) {
        ContentRule rule { row.category, row.strength == RuleStrength::strong, formatOrNone(row.format) };
        if (row.source == FolderRow::agentPlaces) {
            for (const AgentPlaces::Place& place : AgentPlaces::all) {
                ContentRule agentRule = rule;
                agentRule.format = builder.keep(std::string(place.agent) + " data");
                builder.addFolderRule(place.folderName(), FolderNameRule { agentRule, place.parentName(), row.topLevelOnly });
            }
            continue;
        }
        forEachPiece(row.names, '|', [&](std::string_view name) {
            builder.addFolderRule(name, FolderNameRule { rule, formatOrNone(row.parent), row.topLevelOnly });
        });
    }
    for (const SpecialNameRow& row : specialNameRows)
        builder.addSpecialName(row.name, row.category, row.format);
    for (std::string_view extension : developerAmbiguousExtensions)
        builder.addDeveloperAmbiguous(extension);
    return builder;
}

}

const ContentTables& ContentTables::builtIn()
{
    // Never destroyed: classification may run on threads that outlive static destruction.
    static const ContentTables* tables = new ContentTables(builtInBuilder());
    return *tables;
}

}
