#pragma once

#include "Ambrel/Base/Path.h"
#include "Ambrel/Platform/FileSystem.h"
#include "Ambrel/Platform/OwnedFd.h"

#include <optional>
#include <string>
#include <string_view>

namespace ambrel {

/// A folder reached from a root without passing a symbolic link below that root, held open, so
/// that no name exchanged meanwhile leads work on its entries astray. A `relative` path is one
/// like "a/b/c", the empty one is the folder itself; ".." and "." are refused, and a `name` is one
/// component. Refused names throw FileError too, or count as absent where nothing is thrown.
class GuardedFolder {
public:
    /// The root. Links on the way to it and at its own place are followed. Throws FileError.
    static GuardedFolder open(const Path& root);

    /// The folder `relative` below this one. Missing ones are made with exactly `mode`; existing
    /// ones keep theirs. Throws FileError where a link or anything but a folder stands on the way;
    /// folders made until then remain.
    GuardedFolder folder(std::string_view relative, unsigned mode) const;

    /// The same without making any: absent when one is missing or folder() would throw.
    std::optional<GuardedFolder> findFolder(std::string_view relative) const;

    /// The kind of an entry, a link not followed; absent when it cannot be read.
    std::optional<fileSystem::ItemKind> kindOf(const std::string& name) const noexcept;

    /// Whether an entry is a folder (a link is none) that is certain to hold nothing.
    bool isEmptyFolder(const std::string& name) const;

    /// Removes an empty folder and nothing else. Throws FileError, with everything untouched.
    void removeEmptyFolder(const std::string& name) const;

    /// Makes a link holding `target` as its text. Throws FileError, also when something is there.
    void createSymbolicLink(const Path& target, const std::string& name) const;

    /// Puts a file with exactly `mode` in place: complete or not at all. False, with everything
    /// untouched, when something is there already, a dangling link included. Throws FileError; no
    /// other file remains then.
    bool putFile(const std::string& name, std::string_view bytes, unsigned mode) const;

    /// Where it was reached; for messages.
    const Path& path() const noexcept { return path_; }

private:
    GuardedFolder(OwnedFd fd, Path path) : fd_(std::move(fd)), path_(std::move(path)) {}

    GuardedFolder step(const std::string& name) const;
    GuardedFolder stepMaking(const std::string& name, unsigned mode) const;

    OwnedFd fd_;
    Path path_;
};

} // namespace ambrel
