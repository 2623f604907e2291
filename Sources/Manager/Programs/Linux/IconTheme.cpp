#include "Manager/Programs/Linux/IconTheme.h"

#include "Ambrel/Platform/FileError.h"
#include "Ambrel/Platform/FileSystem.h"
#include "Manager/Programs/Linux/ProgramFolders.h"

#include <algorithm>
#include <array>
#include <sstream>

namespace korvane {

using ambrel::Environment;
using ambrel::Path;
namespace fileSystem = ambrel::fileSystem;
namespace paths = ambrel::paths;

namespace {

constexpr const char* commonTheme = "hicolor";
constexpr const char* themeGroup = "[Icon Theme]";
/// Those that desktops and toolkits bring along.
constexpr std::array fallbackThemes{"Adwaita",    "breeze",  "gnome", "mate",
                                    "elementary", "Papirus", "Yaru",  "oxygen"};

bool isOneOf(const std::vector<std::string>& names, const std::string& name) {
    return std::ranges::find(names, name) != names.end();
}

void addNew(std::vector<std::string>& names, const std::string& name) {
    if (!isOneOf(names, name)) names.push_back(name);
}

std::string trimmed(const std::string& text) {
    constexpr const char* blanks = " \t\r";
    const auto first = text.find_first_not_of(blanks);
    if (first == std::string::npos) return {};
    return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

std::string tryReadText(const Path& file) {
    try {
        return fileSystem::exists(file) ? fileSystem::read(file) : std::string();
    } catch (const ambrel::FileError&) {
        return {}; // what cannot be read says nothing
    }
}

/// The value of `key` in `group` of a file of the usual form; empty without it.
std::string valueIn(const std::string& text, const std::string& group, const std::string& key) {
    std::istringstream lines(text);
    bool isInGroup = false;
    for (std::string raw; std::getline(lines, raw);) {
        const auto line = trimmed(raw);
        if (line.starts_with('[')) isInGroup = line == group;
        const auto equals = line.find('=');
        if (!isInGroup || equals == std::string::npos) continue;
        if (trimmed(line.substr(0, equals)) == key) return trimmed(line.substr(equals + 1));
    }
    return {};
}

/// The parts of a list, without those that would lead out of the folders for icons.
std::vector<std::string> partsOf(const std::string& list) {
    std::vector<std::string> parts;
    std::istringstream words(list);
    for (std::string word; std::getline(words, word, ',');) {
        const auto part = trimmed(word);
        if (!part.empty() && !part.starts_with('/') && part.find("..") == std::string::npos) {
            addNew(parts, part);
        }
    }
    return parts;
}

std::vector<Path> placesFor(const ambrel::UserPlaces& user, const Environment& environment) {
    std::vector<Path> places{paths::join(user.home, ".icons")};
    for (const auto& root : programDataFolders(user, environment)) {
        places.push_back(paths::join(root, "icons"));
    }
    return places;
}

/// "SIZE/CONTEXT" for what lies in a theme's folder.
void addFoldersIn(const Path& theme, std::vector<std::string>& folders) {
    for (const auto& size : sortedNamesIn(theme)) {
        const auto below = paths::join(theme, size);
        if (!fileSystem::isFolder(below)) continue;
        for (const auto& context : sortedNamesIn(below)) {
            addNew(folders, paths::join(size, context));
        }
    }
}

} // namespace

IconThemes::IconThemes(const ambrel::UserPlaces& user, const Environment& environment)
    : places_(placesFor(user, environment)) {
    const auto setting = [&](const char* file, const char* group, const char* key) {
        if (user.config.empty()) return;
        addChosen(valueIn(tryReadText(paths::join(user.config, file)), group, key));
    };
    setting("gtk-4.0/settings.ini", "[Settings]", "gtk-icon-theme-name");
    setting("gtk-3.0/settings.ini", "[Settings]", "gtk-icon-theme-name");
    setting("kdeglobals", "[Icons]", "Theme");
    addOthers();
}

std::string IconThemes::indexOf(const std::string& theme) const {
    for (const auto& place : places_) {
        auto text = tryReadText(paths::join(paths::join(place, theme), "index.theme"));
        if (!text.empty()) return text; // the first one counts
    }
    return {};
}

void IconThemes::addChosen(const std::string& theme) {
    const bool isName = !theme.empty() && theme.find('/') == std::string::npos && theme != "..";
    if (!isName || theme == commonTheme || isOneOf(chosen_, theme)) return;
    chosen_.push_back(theme);
    for (const auto& parent : partsOf(valueIn(indexOf(theme), themeGroup, "Inherits"))) {
        addChosen(parent);
    }
}

void IconThemes::addOthers() {
    std::vector<std::string> installed(fallbackThemes.begin(), fallbackThemes.end());
    for (const auto& place : places_) {
        for (const auto& name : sortedNamesIn(place)) {
            if (fileSystem::isFolder(paths::join(place, name))) addNew(installed, name);
        }
    }
    std::ranges::copy_if(installed, std::back_inserter(others_), [&](const auto& name) {
        return name != commonTheme && !isOneOf(chosen_, name);
    });
}

std::vector<Path> IconThemes::foldersOf(const std::string& theme) const {
    const auto index = indexOf(theme);
    auto folders = partsOf(valueIn(index, themeGroup, "Directories"));
    for (const auto& scaled : partsOf(valueIn(index, themeGroup, "ScaledDirectories"))) {
        addNew(folders, scaled);
    }
    const bool isOpen = index.empty() || theme == commonTheme;
    for (const auto& place : places_) {
        if (isOpen) addFoldersIn(paths::join(place, theme), folders);
    }
    std::vector<Path> found;
    for (const auto& place : places_) {
        for (const auto& folder : folders) {
            found.push_back(paths::join(paths::join(place, theme), folder));
        }
    }
    return found;
}

} // namespace korvane
