#include "Ambrel/Platform/Posix/CopyTree.h"

#include "Ambrel/Platform/FileError.h"
#include "Ambrel/Platform/Posix/Descriptor.h"
#include "Ambrel/Platform/Posix/ExtendedAttributes.h"
#include "Ambrel/Platform/Posix/Folder.h"
#include "Ambrel/Platform/Posix/ItemTimes.h"
#include "Ambrel/Platform/Posix/Retry.h"
#include "Ambrel/Platform/Posix/UnlockedFolder.h"

#include <array>
#include <fcntl.h>
#include <optional>
#include <unistd.h>

namespace ambrel {

namespace {

constexpr mode_t permissionBits = 07777;
constexpr mode_t plainPermissionBits = 01777; // without set-user-id and set-group-id

/// One entry of an open folder (AT_FDCWD: of the working directory).
struct Place {
    int folder;
    std::string name;
    Path path; ///< for messages

    const char* bytes() const { return name.c_str(); }
    [[noreturn]] void fail(const std::string& action) const { throwFileError(action, path); }
};

struct stat statusOf(const Place& place) {
    struct stat status {};
    if (::fstatat(place.folder, place.bytes(), &status, AT_SYMLINK_NOFOLLOW) != 0) {
        place.fail("read");
    }
    return status;
}

std::array<struct timespec, 2> timesOf(const struct stat& status) {
    const auto times = ItemTimes::of(status);
    return {times.access, times.modification};
}

/// Gives an open copy what its original has besides its contents, and makes it durable. The mode
/// comes after the owner, whose change clears some of its bits.
void finishOpen(int original, int copy, const struct stat& status, const Place& to) {
    copyExtendedAttributes(original, copy, to.path);
    // Only root may give files away; the copy then belongs to whoever makes it, and must not lend
    // out that user's rights.
    const bool owned = ::fchown(copy, status.st_uid, status.st_gid) == 0;
    const mode_t mode = status.st_mode & (owned ? permissionBits : plainPermissionBits);
    if (::fchmod(copy, mode) != 0) to.fail("set the permissions of");
    if (::futimens(copy, timesOf(status).data()) != 0) to.fail("set the times of");
    if (retryInterrupted([&] { return ::fsync(copy); }) != 0) to.fail("save");
}

void finishUnopened(const struct stat& status, const Place& to) {
    [[maybe_unused]] const int owned =
        ::fchownat(to.folder, to.bytes(), status.st_uid, status.st_gid, AT_SYMLINK_NOFOLLOW);
    if (::utimensat(to.folder, to.bytes(), timesOf(status).data(), AT_SYMLINK_NOFOLLOW) != 0) {
        to.fail("set the times of");
    }
}

CopiedItem copyFile(const Place& from, const Place& to) {
    const OwnedFd original(retryInterrupted([&] {
        // Not blocking: a pipe put in the file's place would wait for its other side.
        return ::openat(from.folder, from.bytes(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
    }));
    if (!original) from.fail("read");
    CopiedItem item{from.name, {}, {}};
    if (::fstat(original.get(), &item.status) != 0) from.fail("read");
    if (!S_ISREG(item.status.st_mode)) throw FileError("read", from.path, EAGAIN);
    const OwnedFd copy(retryInterrupted([&] {
        return ::openat(to.folder, to.bytes(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
    }));
    if (!copy) to.fail("write");
    copyBytes(original.get(), from.path, copy.get(), to.path);
    finishOpen(original.get(), copy.get(), item.status, to);
    return item;
}

/// The text of a link; its size in the status is not to be trusted on every file system.
std::string linkText(const Place& link) {
    for (std::size_t size = 256; size <= 1024 * 1024; size *= 2) {
        std::string text(size, '\0');
        const auto length = ::readlinkat(link.folder, link.bytes(), text.data(), text.size());
        if (length < 0) link.fail("read");
        if (static_cast<std::size_t>(length) == size) continue; // perhaps cut short
        text.resize(static_cast<std::size_t>(length));
        return text;
    }
    throw FileError("read", link.path, ENAMETOOLONG);
}

CopiedItem copyLink(const Place& from, const Place& to, const struct stat& status) {
    const auto target = linkText(from);
    if (::symlinkat(target.c_str(), to.folder, to.bytes()) != 0) to.fail("create the link");
    finishUnopened(status, to);
    return {from.name, status, {}};
}

/// A pipe, socket or device: only its kind can be copied.
CopiedItem copySpecial(const Place& from, const Place& to, const struct stat& status) {
    if (::mknodat(to.folder, to.bytes(), status.st_mode, status.st_rdev) != 0) to.fail("create");
    finishUnopened(status, to);
    return {from.name, status, {}};
}

/// Two folders are open and some frames stand on the stack for each level; what is deeper than
/// anybody's files is not copied, and so stays where it is.
constexpr int mostLevels = 200;

CopiedItem copyItem(const Place& from, const Place& to, int level);

CopiedItem copyFolder(const Place& from, const Place& to, int level) {
    if (level > mostLevels) throw FileError("copy", from.path, ENAMETOOLONG);
    const auto original = Folder::openAt(from.folder, from.name, from.path, "read");
    CopiedItem item{from.name, {}, {}};
    if (::fstat(original.fd(), &item.status) != 0) from.fail("read");
    if (::mkdirat(to.folder, to.bytes(), 0700) != 0) to.fail("create the folder");
    const auto copy = Folder::openAt(to.folder, to.name, to.path, "create the folder");
    for (const auto& name : original.names("read")) {
        item.entries.push_back(copyItem({original.fd(), name, original.pathOf(name)},
                                        {copy.fd(), name, copy.pathOf(name)}, level + 1));
    }
    finishOpen(original.fd(), copy.fd(), item.status, to);
    return item;
}

CopiedItem copyItem(const Place& from, const Place& to, int level) {
    const auto status = statusOf(from);
    if (S_ISREG(status.st_mode)) return copyFile(from, to);
    if (S_ISDIR(status.st_mode)) return copyFolder(from, to, level);
    return S_ISLNK(status.st_mode) ? copyLink(from, to, status) : copySpecial(from, to, status);
}

bool isSameTime(const struct timespec& left, const struct timespec& right) {
    return left.tv_sec == right.tv_sec && left.tv_nsec == right.tv_nsec;
}

bool isUnchanged(const struct stat& then, const struct stat& now) {
    const bool sameItem = then.st_dev == now.st_dev && then.st_ino == now.st_ino;
    const auto before = ItemTimes::of(then);
    const auto after = ItemTimes::of(now);
    return sameItem && then.st_size == now.st_size &&
           isSameTime(before.modification, after.modification) &&
           isSameTime(before.change, after.change);
}

std::size_t removeCopiedAt(const Place& place, const CopiedItem& item, bool& complete);

/// A folder that cannot be opened keeps its entries, and then cannot be removed itself.
std::size_t removeCopiedEntries(const Place& place, const CopiedItem& item, bool& complete) {
    try {
        const auto unlocked =
            UnlockedFolder::openAt(place.folder, place.name, place.path, "remove");
        const auto& folder = unlocked.folder();
        std::size_t removed = 0;
        for (const auto& entry : item.entries) {
            removed += removeCopiedAt({folder.fd(), entry.name, folder.pathOf(entry.name)}, entry,
                                      complete);
        }
        return removed;
    } catch (const FileError&) {
        complete = false;
        return 0;
    }
}

std::size_t removeCopiedAt(const Place& place, const CopiedItem& item, bool& complete) {
    const bool isFolder = S_ISDIR(item.status.st_mode);
    std::size_t removed = isFolder ? removeCopiedEntries(place, item, complete) : 0;
    struct stat now {};
    const bool found = ::fstatat(place.folder, place.bytes(), &now, AT_SYMLINK_NOFOLLOW) == 0;
    // A folder's times change as it empties; one that was added to is not empty and stays.
    const bool ours = found && (isFolder || isUnchanged(item.status, now));
    if (ours && ::unlinkat(place.folder, place.bytes(), isFolder ? AT_REMOVEDIR : 0) == 0) {
        return removed + 1;
    }
    complete = false;
    return removed;
}

} // namespace

CopiedItem copyTree(const Path& source, const Path& destination) {
    return copyItem({AT_FDCWD, source, source}, {AT_FDCWD, destination, destination}, 1);
}

std::size_t removeCopied(const Path& source, const CopiedItem& item, bool& complete) {
    complete = true;
    return removeCopiedAt({AT_FDCWD, source, source}, item, complete);
}

} // namespace ambrel
