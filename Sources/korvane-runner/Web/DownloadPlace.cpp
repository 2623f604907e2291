#include "korvane-runner/Web/DownloadPlace.h"

#include "Ambrel/Base/Utf8.h"
#include "Ambrel/Home/UserFolders.h"
#include "Ambrel/Platform/FileSystem.h"
#include "korvane-runner/Web/PlainText.h"

#include <utility>
#include <vector>

namespace korvane::runner {

namespace {

using namespace ambrel;

constexpr std::string_view folderName = "Downloads";
/// The names of file systems end at 255 bytes; the engine adds an ending of its own meanwhile.
constexpr std::size_t longestName = 200;
constexpr std::size_t longestExtension = 20;
constexpr unsigned ownerOnly = 0700;
constexpr int mostTries = 10'000;

/// A name must not show another ending than it has.
std::string withoutTurning(std::string_view text) {
    std::string result;
    while (!text.empty()) {
        const auto rest = text;
        const auto character = utf8::takeFirst(text);
        const auto size = rest.size() - text.size();
        if (!character || !utf8::isBidirectionalFormat(*character)) result += rest.substr(0, size);
    }
    return result;
}

std::string_view trimmed(std::string_view name) {
    const auto first = name.find_first_not_of(" .");
    if (first == std::string_view::npos) return {};
    return name.substr(first, name.find_last_not_of(" .") - first + 1);
}

struct Name {
    std::string stem;
    std::string extension; ///< with its dot, or empty
};

/// An ending of two parts, as of a packed archive, stays together.
Name parted(const std::string& name) {
    auto stem = std::string(paths::stem(name));
    auto extension = name.substr(stem.size());
    if (stem.ends_with(".tar")) {
        stem.resize(stem.size() - 4);
        extension = ".tar" + extension;
    }
    const bool isExtension = extension.size() <= longestExtension && !stem.empty();
    return isExtension ? Name{stem, extension} : Name{name, {}};
}

/// Whether the folder is there now. Only the folder itself is made: where its place is missing, a
/// disk may be.
bool tryMakeFolder(const Path& folder) noexcept {
    try {
        if (fileSystem::isFolder(folder)) return true;
        if (!fileSystem::isFolder(Path(paths::deletingLastComponent(folder)))) return false;
        fileSystem::createFolder(folder, ownerOnly);
        return true;
    } catch (const FileError&) {
        return false; // the file shall lie somewhere else then, rather than nowhere
    }
}

} // namespace

DownloadPlace::DownloadPlace(const ResolvedInstance& instance, UserPlaces user)
    : home_(instance.home), isShared_(instance.config.shareUserFolders), user_(std::move(user)) {}

std::string DownloadPlace::safeName(std::string_view suggested) {
    const auto last = suggested.substr(suggested.rfind('/') + 1); // all of it without one
    const auto plain = withoutTurning(plainText::oneLine(last));
    const auto name = std::string(trimmed(plain));
    if (name.empty()) return "download";
    const auto [stem, extension] = parted(name);
    const auto start = trimmed(plainText::cut(stem, longestName - extension.size()));
    return std::string(start) + extension;
}

Path DownloadPlace::existingFolder() const {
    std::vector<Path> candidates;
    if (isShared_) {
        if (const auto own = UserFolders(user_, home_).find(folderName)) candidates.push_back(*own);
    }
    candidates.push_back(paths::join(home_, folderName));
    for (const auto& folder : candidates) {
        if (folder.starts_with('/') && tryMakeFolder(folder)) return folder;
    }
    return {};
}

bool DownloadPlace::isFree(const Path& place) const {
    return !fileSystem::kindOf(place) && fileSystem::isMissing(place) && !onTheWay_.contains(place);
}

Path DownloadPlace::choose(const std::string& suggested) noexcept {
    try {
        const auto folder = existingFolder();
        if (folder.empty()) return {};
        const auto name = safeName(suggested);
        auto place = paths::join(folder, name);
        const auto [stem, extension] = parted(name);
        for (int number = 2; !isFree(place); ++number) {
            if (number > mostTries) return {};
            place = paths::join(folder, stem + " " + std::to_string(number) + extension);
        }
        onTheWay_.insert(place);
        return place;
    } catch (const std::exception&) {
        return {}; // the download is refused then, and the page stays
    }
}

} // namespace korvane::runner
