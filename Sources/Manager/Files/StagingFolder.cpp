#include "Manager/Files/StagingFolder.h"

#include "Ambrel/Base/RandomName.h"
#include "Ambrel/Base/Utf8.h"
#include "Ambrel/Platform/FileSystem.h"

#include <cerrno>
#include <utility>

namespace korvane {

using ambrel::FileError;
using ambrel::FolderLock;
using ambrel::Path;
namespace fileSystem = ambrel::fileSystem;
namespace paths = ambrel::paths;

namespace {

constexpr std::string_view suffix = "-unfinished";
/// An empty file: one that is made in a single step is whole wherever a process is killed.
constexpr std::string_view markerName = "this-folder-may-be-removed";

std::string stagingName() { return ambrel::randomName().append(suffix); }

bool isStagingName(std::string_view name) {
    return name.starts_with(".korvane-") && name.ends_with(suffix) &&
           name.size() == stagingName().size();
}

Path markerIn(const Path& folder) { return paths::join(folder, markerName); }

bool hasMarker(const Path& folder) {
    const auto marker = markerIn(folder);
    return fileSystem::kindOf(marker) == fileSystem::ItemKind::file &&
           fileSystem::read(marker).empty();
}

/// An empty folder that the next command removes as well.
void removeIfThere(const Path& folder) noexcept {
    try {
        fileSystem::removeItem(folder);
    } catch (const FileError&) {
        return;
    }
}

/// The marker goes last, so that what is left of the folder after a failure may still go.
void removeWhole(const Path& folder) {
    for (const auto& name : fileSystem::list(folder)) {
        if (name != markerName) fileSystem::removeTree(paths::join(folder, name));
    }
    fileSystem::removeTree(folder);
}

/// Removes a folder that nobody uses, unless it holds something that is not ours to remove. One
/// without anything in it was left before it was marked.
void removeIfAbandoned(const Path& folder) {
    const auto lock = FolderLock::tryTake(folder);
    if (!lock) return;
    if (hasMarker(folder)) {
        removeWhole(folder);
    } else if (fileSystem::list(folder).empty()) {
        fileSystem::removeItem(folder);
    }
}

} // namespace

StagingFolder::StagingFolder(const Path& parent) : parent_(parent) {
    above_.make(parent);
    removeAbandonedIn(parent);
    make(parent);
    try {
        mark();
    } catch (const FileError& error) {
        removeIfThere(path_);
        throw FileError("write into", parent, error.code);
    }
}

/// What stays is tried again by the next command, and hinders nobody meanwhile.
void StagingFolder::removeAbandonedIn(const Path& parent) noexcept {
    try {
        for (const auto& name : fileSystem::list(parent)) {
            if (!isStagingName(name)) continue;
            try {
                removeIfAbandoned(paths::join(parent, name));
            } catch (const std::exception&) {
                continue;
            }
        }
    } catch (const std::exception&) {
        return;
    }
}

/// Until it is locked, another process may take the new folder for an abandoned one: it has the
/// lock then, or has removed the folder already. A folder that cannot be locked is given up for
/// another one as long as it may have come to that; at last there are no locks here.
void StagingFolder::make(const Path& parent) {
    constexpr int attempts = 10;
    constexpr unsigned ownerOnly = 0700;
    for (int attempt = 1; attempt <= attempts && !lock_; ++attempt) {
        path_ = paths::join(parent, stagingName());
        try {
            fileSystem::createFolder(path_, ownerOnly);
        } catch (const FileError& error) {
            const bool isRemoved = error.code == ENOENT && fileSystem::isFolder(parent);
            if (isRemoved && attempt < attempts) continue;
            throw FileError("write into", parent, error.code);
        }
        lock_ = FolderLock::tryTake(path_);
        if (!lock_ && attempt < attempts) removeIfThere(path_);
    }
}

StagingFolder::~StagingFolder() {
    if (path_.empty()) return;
    try {
        removeWhole(path_);
    } catch (const std::exception&) {
        // A hidden folder that stays behind harms nobody, and the first failure is the one to tell.
    }
}

FileError StagingFolder::outwards(const FileError& error) const {
    const bool isInside = !path_.empty() && error.path.starts_with(path_ + "/");
    if (isInside)
        return error.at(ambrel::paths::join(parent_, error.path.substr(path_.size() + 1)));
    return error.path == path_ ? error.at(parent_) : error;
}

void StagingFolder::putInPlace(const Path& built, const Path& place) {
    fileSystem::move(built, place);
    above_.keep();
}

void StagingFolder::exchange(const Path& built, const Path& place) {
    const auto marker = markerIn(path_);
    if (fileSystem::kindOf(marker)) fileSystem::removeItem(marker);
    fileSystem::exchange(built, place);
    above_.keep();
}

void StagingFolder::mayGo() noexcept {
    try {
        mark();
    } catch (const std::exception&) {
        // On a full disk, say: it goes with this object, and stays only after a kill before that.
    }
}

void StagingFolder::remove() { removeWhole(std::exchange(path_, {})); }

std::optional<Notice> StagingFolder::removeOrTell(const std::string& remains) {
    const auto folder = path_;
    try {
        remove();
        return std::nullopt;
    } catch (const FileError& error) {
        return Notice{.kind = Notice::Kind::remainsLeft,
                      .subject = folder,
                      .sentence = remains + " lie in " + ambrel::utf8::oneLine(folder) + ". " +
                                  error.description()};
    }
}

void StagingFolder::mark() {
    if (lock_) fileSystem::write(markerIn(path_), "");
}

void StagingFolder::leave() {
    const auto folder = std::exchange(path_, {});
    try {
        if (fileSystem::kindOf(markerIn(folder))) fileSystem::removeItem(markerIn(folder));
    } catch (const ambrel::FileError&) {
        // Only exchange() comes before this, and has removed it already.
    }
}

} // namespace korvane
