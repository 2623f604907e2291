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
int renameByLink(const char* from, const char* to) noexcept {
    if (::linkat(AT_FDCWD, from, AT_FDCWD, to, 0) != 0) return errno;
    if (::unlink(from) == 0) return 0;
    const int reason = errno;
    ::unlink(to);
    return reason;
}

/// For file systems that do not know the flag. Renaming a folder replaces at most an empty folder.
int renameWithoutFlag(const char* from, const char* to) noexcept {
    struct stat status {};
    if (::fstatat(AT_FDCWD, to, &status, AT_SYMLINK_NOFOLLOW) == 0) return EEXIST;
    if (::fstatat(AT_FDCWD, from, &status, AT_SYMLINK_NOFOLLOW) != 0) return errno;
    return S_ISDIR(status.st_mode) ? errorOf(::rename(from, to)) : renameByLink(from, to);
}

} // namespace

int renameExclusively(const char* from, const char* to) noexcept {
    const int error = errorOf(::renameat2(AT_FDCWD, from, AT_FDCWD, to, RENAME_NOREPLACE));
    const bool unknownFlag = error == EINVAL || error == ENOSYS;
    return unknownFlag ? renameWithoutFlag(from, to) : error;
}

int exchangeNames(const char* left, const char* right) noexcept {
    return errorOf(::renameat2(AT_FDCWD, left, AT_FDCWD, right, RENAME_EXCHANGE));
}

} // namespace ambrel
