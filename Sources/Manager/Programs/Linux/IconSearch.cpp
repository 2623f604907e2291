#include "Manager/Programs/Linux/IconSearch.h"

#include "Ambrel/Platform/FileSystem.h"
#include "Manager/Programs/Linux/IconTheme.h"
#include "Manager/Programs/Linux/ProgramFolders.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <fstream>
#include <vector>

namespace korvane {

using ambrel::Environment;
using ambrel::Path;
namespace fileSystem = ambrel::fileSystem;
namespace paths = ambrel::paths;

namespace {

bool isFile(const Path& path) { return fileSystem::exists(path) && !fileSystem::isFolder(path); }

std::optional<Path> firstFile(const std::vector<Path>& files) {
    const auto found = std::ranges::find_if(files, isFile);
    return found == files.end() ? std::nullopt : std::optional(*found);
}

/// The width of the PNG picture in `file` in pixels; absent for anything else.
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

std::vector<Path> filesIn(const std::vector<Path>& folders, const std::string& name) {
    std::vector<Path> files;
    for (const auto& folder : folders) files.push_back(paths::join(folder, name));
    return files;
}

/// The best picture called `name` in these folders: a large PNG, else an SVG, else the largest PNG,
/// else an XPM.
std::optional<Path> bestIn(const std::vector<Path>& folders, const std::string& name) {
    const auto png = widestPng(filesIn(folders, name + ".png"));
    constexpr std::uint32_t largeEnough = 256; // below that, a drawing is sharper
    if (png && png->width >= largeEnough) return png->file;
    if (auto drawing = firstFile(filesIn(folders, name + ".svg"))) return drawing;
    if (png) return png->file;
    return firstFile(filesIn(folders, name + ".xpm"));
}

/// Where programs put their own pictures: the theme that all others inherit, and what belongs to no
/// theme.
std::vector<Path> commonFolders(const IconThemes& themes, const ambrel::UserPlaces& user,
                                const Environment& environment) {
    auto folders = themes.foldersOf("hicolor");
    for (const auto& root : programDataFolders(user, environment)) {
        folders.push_back(paths::join(root, "pixmaps"));
    }
    folders.insert(folders.end(), themes.places().begin(), themes.places().end());
    return folders;
}

/// Entries give the name of an icon, and some of a file.
std::string withoutPictureEnding(const std::string& icon) {
    for (const std::string_view ending : {".png", ".svg", ".xpm"}) {
        if (icon.ends_with(ending)) return icon.substr(0, icon.size() - ending.size());
    }
    return icon;
}

} // namespace

std::optional<Path> findIcon(const std::string& icon, const ambrel::UserPlaces& user,
                             const Environment& environment) {
    if (icon.starts_with('/')) return isFile(icon) ? std::optional(icon) : std::nullopt;
    if (icon.empty() || icon.find('/') != std::string::npos) return std::nullopt;
    const auto name = withoutPictureEnding(icon);
    const IconThemes themes(user, environment);
    std::vector<std::vector<Path>> inOrder;
    for (const auto& theme : themes.chosen()) inOrder.push_back(themes.foldersOf(theme));
    inOrder.push_back(commonFolders(themes, user, environment));
    for (const auto& theme : themes.others()) inOrder.push_back(themes.foldersOf(theme));
    // One in a single colour, to be drawn over by the desktop, is better than none.
    for (const auto& called : {name, name + "-symbolic"}) {
        for (const auto& folders : inOrder) {
            if (auto found = bestIn(folders, called)) return found;
        }
    }
    return std::nullopt;
}

} // namespace korvane
