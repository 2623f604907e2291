#include "Ambrel/Platform/Posix/ExclusiveRename.h"

#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace ambrel {

namespace {

int errorOf(int result) { return result == 0 ? 0 : errno; }

/// A hard link is made only where nothing is; the old name goes afterwards.
int renameByLink(int folder, const char* from, const char* to) noexcept {
    if (::linkat(folder, from, folder, to, 0) != 0) return errno;
    if (::unlinkat(folder, from, 0) == 0) return 0;
    const int reason = errno;
    ::unlinkat(folder, to, 0);
    return reason;
}

/// For file systems that do not know the flag. Renaming a folder replaces at most an empty folder.
int renameWithoutFlag(int folder, const char* from, const char* to) noexcept {
    struct stat status {};
    if (::fstatat(folder, to, &status, AT_SYMLINK_NOFOLLOW) == 0) return EEXIST;
    if (::fstatat(folder, from, &status, AT_SYMLINK_NOFOLLOW) != 0) return errno;
    if (!S_ISDIR(status.st_mode)) return renameByLink(folder, from, to);
    return errorOf(::renameat(folder, from, folder, to));
}

} // namespace

int renameExclusivelyIn(int folder, const char* from, const char* to) noexcept {
    const int error = errorOf(::renameat2(folder, from, folder, to, RENAME_NOREPLACE));
    const bool unknownFlag = error == EINVAL || error == ENOSYS;
    return unknownFlag ? renameWithoutFlag(folder, from, to) : error;
}

int renameExclusively(const char* from, const char* to) noexcept {
    return renameExclusivelyIn(AT_FDCWD, from, to);
}

int exchangeNames(const char* left, const char* right) noexcept {
    return errorOf(::renameat2(AT_FDCWD, left, AT_FDCWD, right, RENAME_EXCHANGE));
}

} // namespace ambrel
