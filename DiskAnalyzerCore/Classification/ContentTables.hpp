#pragma once

#include "Classification/ConstantHashTable.hpp"
#include "Classification/ContentCategory.hpp"
#include "Classification/ContentRule.hpp"
#include "Classification/ExtensionKey.hpp"
#include "Classification/FolderNameRule.hpp"

#include <deque>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace tarnwick {

// The classifier's five lookup tables: extensions, package extensions, folder names,
// special file names and the developer-ambiguous extensions. The built-in set is made
// once per process on first use and only read afterwards.
class ContentTables {
public:
    struct FileEntry {
        ContentCategory category = ContentCategory::other;
        std::optional<std::string_view> format;
    };

    enum class Table : std::uint8_t { extensions, packages, folderNames, specialNames };

    // A key registered again with a different category. For the extension-keyed tables
    // the later registration wins; in the folder-name table the later rule can never
    // apply, because an earlier one for the same place is found first.
    struct Conflict {
        Table table;
        std::string key;
        ContentCategory earlier;
        ContentCategory later;
        bool operator==(const Conflict&) const = default;
    };

    // Collects registrations in order, noting conflicts on the way.
    class Builder {
    public:
        // Space-separated, lower-case extensions; an empty format registers none.
        void addExtensions(std::string_view extensions, ContentCategory category, std::string_view format = {});
        void addPackages(std::string_view extensions, ContentCategory category, std::string_view format);
        void addFolderRule(std::string_view name, FolderNameRule rule);
        void addSpecialName(std::string_view name, ContentCategory category, std::string_view format = {});
        void addDeveloperAmbiguous(std::string_view extension);
        // Keeps a text made at build time (a derived format) for the tables' lifetime.
        std::string_view keep(std::string text);

    private:
        friend class ContentTables;
        std::deque<std::string> m_texts;
        ConstantHashTable<ExtensionKey, FileEntry, ExtensionKey::Hash> m_extensions;
        // Keyed by the whole extension: the scanner's package test has no length limit.
        ConstantHashTable<std::string_view, ContentRule> m_packages;
        std::vector<std::string_view> m_packageOrder;
        std::vector<std::pair<std::string_view, FolderNameRule>> m_folderRules;
        ConstantHashTable<std::string_view, FileEntry> m_specialNames;
        ConstantHashTable<ExtensionKey, bool, ExtensionKey::Hash> m_developerAmbiguous;
        std::vector<Conflict> m_conflicts;
    };

    explicit ContentTables(Builder builder);
    ContentTables(const ContentTables&) = delete;
    ContentTables& operator=(const ContentTables&) = delete;

    // The built-in tables, made on first use.
    static const ContentTables& builtIn();

    [[nodiscard]] const FileEntry* extension(const ExtensionKey& key) const { return m_extensions.find(key); }
    [[nodiscard]] const ContentRule* package(const ExtensionKey& key) const { return m_packages.find(key); }
    // The rules for a folder name, in the order they were added; empty when none.
    [[nodiscard]] std::span<const FolderNameRule> folderRules(std::string_view name) const;
    [[nodiscard]] const FileEntry* specialName(std::string_view name) const;
    [[nodiscard]] bool isDeveloperAmbiguous(const ExtensionKey& key) const { return m_developerAmbiguous.find(key) != nullptr; }

    [[nodiscard]] std::size_t extensionCount() const { return m_extensions.size(); }
    // Includes extensions too long for any name to reach.
    [[nodiscard]] std::size_t packageCount() const { return m_packageOrder.size(); }
    [[nodiscard]] std::size_t folderNameCount() const { return m_folderRanges.size(); }
    [[nodiscard]] std::size_t specialNameCount() const { return m_specialNames.size(); }
    // Package extensions in the order of registration, each once.
    [[nodiscard]] std::span<const std::string_view> packageExtensions() const { return m_packageOrder; }
    [[nodiscard]] const std::vector<Conflict>& conflicts() const { return m_conflicts; }

private:
    struct Range {
        std::uint32_t start = 0;
        std::uint32_t count = 0;
    };

    std::deque<std::string> m_texts;
    ConstantHashTable<ExtensionKey, FileEntry, ExtensionKey::Hash> m_extensions;
    ConstantHashTable<ExtensionKey, ContentRule, ExtensionKey::Hash> m_packages;
    std::vector<std::string_view> m_packageOrder;
    std::vector<FolderNameRule> m_folderRules;
    ConstantHashTable<std::string_view, Range> m_folderRanges;
    std::size_t m_shortestFolderName = 0;
    std::size_t m_longestFolderName = 0;
    ConstantHashTable<std::string_view, FileEntry> m_specialNames;
    std::size_t m_longestSpecialName = 0;
    ConstantHashTable<ExtensionKey, bool, ExtensionKey::Hash> m_developerAmbiguous;
    std::vector<Conflict> m_conflicts;
};

}
