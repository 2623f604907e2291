#include "Ambrel/Base/RandomName.h"
#include "Ambrel/Platform/FileSystem.h"
#include "Ambrel/Platform/OwnedFd.h"
#include "Ambrel/Platform/Posix/CopyTree.h"
#include "Ambrel/Platform/Posix/Descriptor.h"
#include "Ambrel/Platform/Posix/ExclusiveRename.h"
#include "Ambrel/Platform/Posix/PathBytes.h"
#include "Ambrel/Platform/Posix/Retry.h"
#include "Ambrel/Platform/Posix/UnlockedFolder.h"

#include <cstdio>
#include <fcntl.h>
#include <unistd.h>

namespace ambrel::fileSystem {

namespace {

/// A name beside `path` that nobody else uses.
Path temporaryBeside(const Path& path) {
    return paths::join(Path(paths::deletingLastComponent(path)), randomName());
}

/// After a failure what was made is in the way; that it cannot be removed is no further harm.
void removeRemains(const Path& path) noexcept {
    try {
        removeTree(path);
    } catch (const FileError&) {
    }
}

void saveFolderOf(const Path& path) {
    Path folder(paths::deletingLastComponent(path));
    if (folder.empty()) folder = ".";
    const auto fd = OwnedFd::open("save", folder, O_RDONLY | O_DIRECTORY);
    if (retryInterrupted([&] { return ::fsync(fd.get()); }) != 0) throwFileError("save", folder);
}

/// Puts a complete copy of `source` at `destination`, or leaves nothing there.
CopiedItem copyIntoPlace(const Path& source, const Path& destination) {
    const auto temporary = temporaryBeside(destination);
    try {
        auto copied = copyTree(source, temporary);
        const int error = renameExclusively(temporary.c_str(), destination.c_str());
        if (error != 0) throw FileError("move", source, error);
        return copied;
    } catch (...) {
        removeRemains(temporary);
        throw;
    }
}

void moveAcrossFileSystems(const Path& source, const Path& destination) {
    const auto copied = copyIntoPlace(source, destination);
    try {
        saveFolderOf(destination);
    } catch (const FileError&) {
        removeRemains(destination);
        throw;
    }
    bool complete = false;
    const auto removed = removeCopied(source, copied, complete);
    if (complete) return;
    // The source is still whole, so the copy is one too many.
    if (removed == 0) removeRemains(destination);
    throw FileError("remove all of", source, EBUSY);
}

/// Going into another folder changes what ".." is in a folder, which a write-protected one refuses
/// even its owner.
int renameUnlocked(const Path& from, const Path& to) {
    if (kindOf(from) != ItemKind::folder) return EACCES;
    const auto folder = UnlockedFolder::openAt(AT_FDCWD, from, from, "move");
    return folder.wasLocked() ? renameExclusively(from.c_str(), to.c_str()) : EACCES;
}

} // namespace

void move(const Path& source, const Path& destination) {
    const Path from(paths::withoutTrailingSlashes(source));
    const Path to(paths::withoutTrailingSlashes(destination));
    int error = renameExclusively(pathBytes("move", from), pathBytes("move", to));
    if (error == EACCES) error = renameUnlocked(from, to);
    if (error == EXDEV) return moveAcrossFileSystems(from, to);
    if (error != 0) throw FileError("move", source, error);
}

void exchange(const Path& left, const Path& right) {
    const int error = exchangeNames(pathBytes("exchange", left), pathBytes("exchange", right));
    if (error != 0) throw FileError("exchange", left, error);
}

} // namespace ambrel::fileSystem
