#include "Manager/Programs/Linux/EntryCatalog.h"

#include "Ambrel/Platform/FileError.h"
#include "Ambrel/Platform/FileSystem.h"

#include <algorithm>
#include <array>
#include <fstream>
#include <set>
#include <sstream>

namespace korvane {

using ambrel::Environment;
using ambrel::Path;
namespace fileSystem = ambrel::fileSystem;
namespace paths = ambrel::paths;

namespace {

std::string valueOf(const Environment& environment, const std::string& name) {
    const auto found = environment.find(name);
    return found == environment.end() ? "" : found->second;
}

/// An id may name a file in a sub-folder with "-" in place of "/".
void addEntriesIn(const Path& folder, const std::string& id, std::vector<Path>& found) {
    const auto direct = paths::join(folder, id);
    if (fileSystem::exists(direct) && !fileSystem::isFolder(direct)) found.push_back(direct);
    for (auto dash = id.find('-'); dash != std::string::npos; dash = id.find('-', dash + 1)) {
        const auto below = paths::join(folder, id.substr(0, dash));
        if (dash == 0 || !fileSystem::isFolder(below)) continue;
        addEntriesIn(below, id.substr(dash + 1), found);
    }
}

std::vector<std::string> entriesOf(const Path& folder) {
    try {
        auto names = fileSystem::list(folder);
        std::sort(names.begin(), names.end());
        return names;
    } catch (const ambrel::FileError&) {
        // What is not installed has no entries and no icons.
        return {};
    }
}

std::vector<Path> iconCandidates(const std::string& name, const ambrel::UserPlaces& user,
                                 const Environment& environment) {
    auto roots = programDataFolders(user, environment);
    std::vector<Path> files;
    const auto addTheme = [&](const Path& icons) {
        const auto theme = paths::join(icons, "hicolor");
        for (const auto& size : entriesOf(theme)) {
            files.push_back(paths::join(paths::join(paths::join(theme, size), "apps"), name));
        }
    };
    addTheme(paths::join(user.home, ".icons"));
    for (const auto& root : roots) addTheme(paths::join(root, "icons"));
    for (const auto& root : roots) files.push_back(paths::join(paths::join(root, "pixmaps"), name));
    return files;
}

bool isFile(const Path& path) { return fileSystem::exists(path) && !fileSystem::isFolder(path); }

std::optional<Path> firstFile(const std::vector<Path>& files) {
    const auto found = std::ranges::find_if(files, isFile);
    return found == files.end() ? std::nullopt : std::optional(*found);
}

struct SizedPng {
    Path file;
    std::uint32_t width;
};

/// The first of the widest.
std::optional<SizedPng> widestPng(const std::vector<Path>& files) {
    std::optional<SizedPng> best;
    for (const auto& file : files) {
        const auto width = pngWidth(file);
        if (width && *width > (best ? best->width : 0)) best = {file, *width};
    }
    return best;
}

/// Entries give the name of an icon, and some of a file.
std::string withoutPictureEnding(const std::string& icon) {
    for (const std::string_view ending : {".png", ".svg", ".xpm"}) {
        if (icon.ends_with(ending)) return icon.substr(0, icon.size() - ending.size());
    }
    return icon;
}

struct KnownBrowser {
    std::string_view name;
    std::string_view identifier;
};

constexpr KnownBrowser knownBrowsers[] = {
    {"google-chrome", "com.google.chrome"},
    {"brave-browser", "com.brave.browser"},
    {"brave", "com.brave.browser"},
    {"microsoft-edge", "com.microsoft.edgemac"},
    {"vivaldi", "com.vivaldi.vivaldi"},
    {"opera", "com.operasoftware.opera"},
    {"chromium-browser", "org.chromium.chromium"},
    {"chromium", "org.chromium.chromium"},
    {"yandex-browser", "ru.yandex.desktop.yandex-browser"},
    {"firefox", "org.mozilla.firefox"},
    {"thunderbird", "org.mozilla.thunderbird"},
    {"torbrowser", "org.torproject.torbrowser"},
    {"tor-browser", "org.torproject.torbrowser"},
    {"librewolf", "net.librewolf.librewolf"},
    {"waterfox", "net.waterfox.waterfox"},
};

/// Endings of the names above that mean the same browser; others belong to other programs.
constexpr std::string_view knownVariants[] = {
    "-beta",
    "-dev",
    "-unstable",
    "-canary",
    "-snapshot",
    "-developer",
    "-developer-edition",
    "-devedition",
    "-nightly",
    "-aurora",
    "-esr",
    "-corporate",
};

} // namespace

std::vector<Path> programDataFolders(const ambrel::UserPlaces& user,
                                     const Environment& environment) {
    std::vector<Path> folders;
    if (!user.data.empty()) folders.push_back(user.data);
    const auto shared = valueOf(environment, "XDG_DATA_DIRS");
    std::istringstream list(shared.empty() ? "/usr/local/share:/usr/share" : shared);
    for (std::string folder; std::getline(list, folder, ':');) {
        // Relative entries are to be ignored.
        if (folder.starts_with('/')) folders.push_back(folder);
    }
    return folders;
}

std::vector<Path> findDesktopEntries(const std::string& id, const ambrel::UserPlaces& user,
                                     const Environment& environment) {
    std::vector<Path> found;
    if (id.empty() || id.find('/') != std::string::npos) return found;
    const auto file = id.ends_with(".desktop") ? id : id + ".desktop";
    for (const auto& folder : programDataFolders(user, environment)) {
        addEntriesIn(paths::join(folder, "applications"), file, found);
    }
    return found;
}

std::optional<Path> findDesktopEntry(const std::string& id, const ambrel::UserPlaces& user,
                                     const Environment& environment) {
    // An id may end like a file name itself, as org.telegram.desktop does.
    auto found = findDesktopEntries(id + ".desktop", user, environment);
    if (found.empty()) found = findDesktopEntries(id, user, environment);
    return found.empty() ? std::nullopt : std::optional(std::move(found.front()));
}

std::vector<Path> listDesktopEntries(const ambrel::UserPlaces& user,
                                     const Environment& environment) {
    std::vector<Path> files;
    std::set<std::string> seen;
    for (const auto& root : programDataFolders(user, environment)) {
        const auto folder = paths::join(root, "applications");
        for (const auto& name : entriesOf(folder)) {
            if (!name.ends_with(".desktop") || !seen.insert(name).second) continue;
            files.push_back(paths::join(folder, name));
        }
    }
    return files;
}

std::optional<Path> findIcon(const std::string& icon, const ambrel::UserPlaces& user,
                             const Environment& environment) {
    if (icon.starts_with('/')) return isFile(icon) ? std::optional(icon) : std::nullopt;
    if (icon.empty() || icon.find('/') != std::string::npos) return std::nullopt;
    const auto name = withoutPictureEnding(icon);
    const auto png = widestPng(iconCandidates(name + ".png", user, environment));
    constexpr std::uint32_t largeEnough = 256; // below that, a drawing is sharper
    if (png && png->width >= largeEnough) return png->file;
    if (auto drawing = firstFile(iconCandidates(name + ".svg", user, environment))) return drawing;
    if (png) return png->file;
    return firstFile(iconCandidates(name + ".xpm", user, environment));
}

std::optional<std::uint32_t> pngWidth(const Path& file) {
    // Signature, length and type of the first chunk, then the width (PNG Specification, 5.2 and
    // 11.2.2).
    constexpr std::string_view start("\x89PNG\r\n\x1A\n\0\0\0\rIHDR", 16);
    std::array<char, 20> head{};
    if (fileSystem::isFolder(file)) return std::nullopt;
    std::ifstream stream(file, std::ios::binary);
    if (!stream.read(head.data(), head.size())) return std::nullopt;
    if (std::string_view(head.data(), start.size()) != start) return std::nullopt;
    std::uint32_t width = 0;
    for (std::size_t i = start.size(); i < head.size(); ++i) {
        width = width << 8 | static_cast<unsigned char>(head[i]);
    }
    return width;
}

std::optional<std::string> wellKnownIdentifier(const std::string& name) {
    for (const auto& known : knownBrowsers) {
        if (!name.starts_with(known.name)) continue;
        const auto variant = name.substr(known.name.size());
        if (variant.empty() || variant == "-stable") return std::string(known.identifier);
        // Two variants of a browser are two applications, with an identifier each.
        const auto* const last = std::end(knownVariants);
        if (std::find(std::begin(knownVariants), last, variant) == last) continue;
        return std::string(known.identifier) + variant;
    }
    return std::nullopt;
}

} // namespace korvane
