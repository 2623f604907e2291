#include "Ambrel/Platform/FolderLock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace ambrel {

namespace {

bool isPrivate(const struct stat& status) {
    constexpr mode_t others = S_IRWXG | S_IRWXO;
    return status.st_uid == ::geteuid() && (status.st_mode & others) == 0;
}

/// Whether the name still leads to the open folder: its last holder may have removed it.
bool isAt(const Path& path, const struct stat& open) {
    struct stat there {};
    return ::lstat(path.c_str(), &there) == 0 && there.st_dev == open.st_dev &&
           there.st_ino == open.st_ino;
}

} // namespace

std::optional<FolderLock> FolderLock::tryTake(const Path& folder) noexcept {
    try {
        auto fd = OwnedFd::open("lock", folder, O_RDONLY | O_DIRECTORY | O_NOFOLLOW);
        struct stat status {};
        if (::fstat(fd.get(), &status) != 0 || !isPrivate(status)) return std::nullopt;
        if (::flock(fd.get(), LOCK_EX | LOCK_NB) != 0 || !isAt(folder, status)) return std::nullopt;
        return FolderLock(std::move(fd));
    } catch (const std::exception&) {
        return std::nullopt;
    }
}

} // namespace ambrel
