#include "Ambrel/Platform/UserFolderSettings.h"

#include "Ambrel/Base/TextParts.h"
#include "Ambrel/Platform/FileSystem.h"

#include <array>
#include <cerrno>
#include <optional>
#include <string_view>
#include <utility>

namespace ambrel {

namespace {

constexpr std::array<std::pair<std::string_view, const char*>, 3> variables{{
    {"XDG_DOWNLOAD_DIR", "Downloads"},
    {"XDG_DOCUMENTS_DIR", "Documents"},
    {"XDG_DESKTOP_DIR", "Desktop"},
}};

std::string_view withoutBlanks(std::string_view text) {
    const auto start = text.find_first_not_of(" \t");
    return start == std::string_view::npos ? std::string_view() : text.substr(start);
}

/// What `line` assigns to `variable`; absent when it does not.
std::optional<std::string_view> assigned(std::string_view line, std::string_view variable) {
    line = withoutBlanks(line);
    if (!line.starts_with(variable)) return std::nullopt;
    line = withoutBlanks(line.substr(variable.size()));
    if (!line.starts_with('=')) return std::nullopt;
    return withoutBlanks(line.substr(1));
}

/// `text` up to its closing quote, without the backslashes of a shell's double quotes; absent
/// without such a quote.
std::optional<std::string> unquoted(std::string_view text) {
    constexpr std::string_view escapable = "\"\\$`";
    std::string result;
    for (std::size_t index = 0; index < text.size(); ++index) {
        if (text[index] == '"') return result;
        const bool escapes = text[index] == '\\' && index + 1 < text.size() &&
                             escapable.find(text[index + 1]) != std::string_view::npos;
        if (escapes) ++index;
        result.push_back(text[index]);
    }
    return std::nullopt;
}

/// The place that a value names, or nothing: it must be quoted, and absolute or below $HOME.
Path placeOf(std::string_view value, const Path& home) {
    constexpr std::string_view belowHome = "\"$HOME";
    const bool isBelowHome = value.starts_with(belowHome);
    if (!isBelowHome && !value.starts_with('"')) return {};
    const auto rest = unquoted(value.substr(isBelowHome ? belowHome.size() : 1));
    if (!rest || rest->find('\0') != std::string::npos) return {};
    const bool isRooted = rest->starts_with('/') || (isBelowHome && rest->empty());
    if (!isRooted || (isBelowHome && home.empty())) return {};
    return Path(paths::withoutTrailingSlashes(isBelowHome ? paths::join(home, *rest) : *rest));
}

/// A user without the file has the usual folders. Absent when there is one that cannot be read.
std::optional<std::string> settingsFile(const Path& folder) {
    if (folder.empty()) return std::string();
    try {
        return fileSystem::read(paths::join(folder, "user-dirs.dirs"));
    } catch (const FileError& error) {
        const bool isMissing = error.code == ENOENT || error.code == ENOTDIR;
        return isMissing ? std::optional(std::string()) : std::nullopt;
    }
}

/// What a file says that nobody can read: every folder may lie anywhere.
UserFolderSettings unknownSettings() {
    UserFolderSettings settings;
    for (const auto& [variable, name] : variables) settings[name] = Path();
    return settings;
}

} // namespace

UserFolderSettings userFolderSettings(const UserPlaces& user) {
    const auto file = settingsFile(user.config);
    if (!file) return unknownSettings();
    UserFolderSettings settings;
    for (std::string_view rest = *file; !rest.empty();) {
        const auto line = takeUntil(rest, '\n');
        for (const auto& [variable, name] : variables) {
            if (const auto value = assigned(line, variable))
                settings[name] = placeOf(*value, user.home);
        }
    }
    return settings;
}

std::optional<UserFolderFile> userFolderFile(const std::map<std::string, bool>& folders) {
    std::string text;
    for (const auto& [variable, name] : variables) {
        const auto entry = folders.find(name);
        if (entry == folders.end()) continue;
        // The home itself is how xdg-user-dirs writes that a folder is switched off.
        text.append(variable).append("=\"$HOME/").append(entry->second ? name : "").append("\"\n");
    }
    return UserFolderFile{".config", "user-dirs.dirs", text};
}

} // namespace ambrel
