#include "Ambrel/Platform/Posix/UnlockedFolder.h"

#include "Ambrel/Platform/FileError.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace ambrel {

namespace {

mode_t permissionsOf(const struct stat& status) { return status.st_mode & 07777; }

/// For an open folder; its mode until then, or absent when nothing was to be done or can be done.
std::optional<mode_t> unlock(int folder) {
    if (::faccessat(folder, ".", W_OK | X_OK, AT_EACCESS) == 0) return std::nullopt;
    struct stat status {};
    if (errno != EACCES || ::fstat(folder, &status) != 0) return std::nullopt;
    const auto mode = permissionsOf(status);
    if (::fchmod(folder, mode | S_IRWXU) != 0) return std::nullopt;
    return mode;
}

/// The same for a folder that cannot be opened, and so has no descriptor yet.
std::optional<mode_t> unlockClosed(int parent, const std::string& name) {
    struct stat status {};
    const bool found = ::fstatat(parent, name.c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0;
    if (!found || !S_ISDIR(status.st_mode)) return std::nullopt;
    const auto mode = permissionsOf(status);
    // A link that has been put in its place meanwhile is refused, not followed.
    if (::fchmodat(parent, name.c_str(), mode | S_IRWXU, AT_SYMLINK_NOFOLLOW) != 0) {
        return std::nullopt;
    }
    return mode;
}

/// Absent when the folder is closed to this user. Throws FileError when it fails otherwise.
std::optional<Folder> openUnlessClosed(int parent, const std::string& name, const Path& path,
                                       const std::string& action) {
    try {
        return Folder::openAt(parent, name, path, action);
    } catch (const FileError& error) {
        if (error.code != EACCES) throw;
        return std::nullopt;
    }
}

} // namespace

UnlockedFolder::UnlockedFolder(Folder folder, std::optional<mode_t> mode)
    : folder_(std::move(folder)), mode_(mode) {}

UnlockedFolder UnlockedFolder::openAt(int parent, const std::string& name, const Path& path,
                                      const std::string& action) {
    if (auto folder = openUnlessClosed(parent, name, path, action)) {
        const auto mode = unlock(folder->fd());
        return {std::move(*folder), mode};
    }
    const auto mode = unlockClosed(parent, name);
    if (!mode) throw FileError(action, path, EACCES);
    try {
        return {Folder::openAt(parent, name, path, action), mode};
    } catch (const FileError&) {
        ::fchmodat(parent, name.c_str(), *mode, AT_SYMLINK_NOFOLLOW);
        throw;
    }
}

UnlockedFolder::~UnlockedFolder() {
    if (mode_) ::fchmod(folder_.fd(), *mode_);
}

} // namespace ambrel
