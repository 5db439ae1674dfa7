#pragma once

#include <array>
#include <optional>
#include <string_view>

namespace tarnwick {

// Folders in the home folder where coding agents and AI assistants keep their data.
// Feeds the folder-name rules of the classifier and the agent places of owner attribution.
namespace AgentPlaces {

struct Place {
    std::string_view agent;
    // Relative to the home folder, components separated by "/".
    std::string_view path;

    // The folder's own name: the last component of the path.
    [[nodiscard]] constexpr std::string_view folderName() const
    {
        std::size_t slash = path.rfind('/');
        return slash == std::string_view::npos ? path : path.substr(slash + 1);
    }
    // The component before the last one; absent for a folder directly in the home folder.
    [[nodiscard]] constexpr std::optional<std::string_view> parentName() const
    {
        std::size_t slash = path.rfind('/');
        if (slash == std::string_view::npos)
            return std::nullopt;
        std::string_view before = path.substr(0, slash);
        std::size_t previous = before.rfind('/');
        return previous == std::string_view::npos ? before : before.substr(previous + 1);
    }
};

// Editor extensions keep their data in a global-storage folder named after the extension.
inline constexpr std::string_view clineExtensionIdentifier = "saoudrizwan.claude-dev";
inline constexpr std::string_view rooCodeExtensionIdentifier = "rooveterinaryinc.roo-cline";

inline constexpr std::array<Place, 47> all { {
    { "Claude Code", ".claude" },
    { "Claude Code", ".local/share/claude" },
    { "Claude Desktop", "Library/Application Support/Claude" },
    { "Codex", ".codex" },
    { "Codex", "Library/Application Support/Codex" },
    { "Codex", "Library/Application Support/com.openai.codex" },
    { "Codex", "Documents/Codex" },
    { "ChatGPT", "Library/Application Support/com.openai.chat" },
    { "Gemini", ".gemini" },
    { "Pi", ".pi" },
    { "Antigravity", ".gemini/antigravity" },
    { "Antigravity", ".gemini/antigravity-cli" },
    { "Antigravity", ".gemini/antigravity-ide" },
    { "Antigravity", ".antigravity" },
    { "Antigravity", ".antigravity-ide" },
    { "Antigravity", "Library/Application Support/Antigravity" },
    { "Antigravity", "Library/Application Support/Antigravity IDE" },
    { "Cursor", ".cursor" },
    { "Cursor", "Library/Application Support/Cursor" },
    { "Windsurf", ".windsurf" },
    { "Windsurf", ".codeium" },
    { "Windsurf", "Library/Application Support/Windsurf" },
    { "Kiro", ".kiro" },
    { "Kiro", "Library/Application Support/Kiro" },
    { "Trae", ".trae" },
    { "Trae", "Library/Application Support/Trae" },
    { "GitHub Copilot", ".copilot" },
    { "Junie", ".junie" },
    { "Qwen Code", ".qwen" },
    { "Factory", ".factory" },
    { "Augment", ".augment" },
    { "Aider", ".aider" },
    { "Continue", ".continue" },
    { "Cline", "Documents/Cline" },
    { "Cline", "Library/Application Support/Code/User/globalStorage/saoudrizwan.claude-dev" },
    { "Roo Code", "Library/Application Support/Code/User/globalStorage/rooveterinaryinc.roo-cline" },
    { "Hermes Agent", ".hermes" },
    { "Agent skills", ".agents" },
    { "agent-browser", ".agent-browser" },
    { "opencode", ".opencode" },
    { "opencode", ".config/opencode" },
    { "opencode", ".local/share/opencode" },
    { "Amp", ".config/amp" },
    { "Amp", ".local/share/amp" },
    { "Goose", ".config/goose" },
    { "Goose", ".local/share/goose" },
    { "Crush", ".local/share/crush" },
} };

}

}
