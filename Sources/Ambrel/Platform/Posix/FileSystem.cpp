#include "Ambrel/Platform/FileSystem.h"

#include "Ambrel/Platform/OwnedFd.h"
#include "Ambrel/Platform/Posix/Descriptor.h"
#include "Ambrel/Platform/Posix/Folder.h"
#include "Ambrel/Platform/Posix/PathBytes.h"
#include "Ambrel/Platform/Posix/Retry.h"
#include "Ambrel/Platform/Posix/WholeFile.h"

#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <memory>
#include <sys/stat.h>
#include <unistd.h>

namespace ambrel::fileSystem {

namespace {

struct FreeMemory {
    void operator()(char* text) const noexcept { std::free(text); }
};
using OwnedText = std::unique_ptr<char, FreeMemory>;

std::optional<struct stat> statusOf(const Path& path, int flags) noexcept {
    struct stat status {};
    if (!isUsablePath(path)) {
        errno = ENOENT; // it names nothing
        return std::nullopt;
    }
    const bool found = ::fstatat(AT_FDCWD, path.c_str(), &status, flags) == 0;
    return found ? std::optional(status) : std::nullopt;
}

/// Whether the failure of statusOf() means that nothing is there; others leave it open.
bool meansMissing(int error) noexcept { return error == ENOENT || error == ENOTDIR; }

bool isSame(const struct stat& left, const struct stat& right) noexcept {
    return left.st_dev == right.st_dev && left.st_ino == right.st_ino;
}

ItemKind kindOfMode(mode_t mode) {
    if (S_ISREG(mode)) return ItemKind::file;
    if (S_ISDIR(mode)) return ItemKind::folder;
    return S_ISLNK(mode) ? ItemKind::symbolicLink : ItemKind::other;
}

} // namespace

bool exists(const Path& path) noexcept { return statusOf(path, 0).has_value(); }

bool isMissing(const Path& path) noexcept { return !statusOf(path, 0) && meansMissing(errno); }

std::optional<ItemKind> kindOf(const Path& path) noexcept {
    const auto status = statusOf(path, AT_SYMLINK_NOFOLLOW);
    return status ? std::optional(kindOfMode(status->st_mode)) : std::nullopt;
}

bool isFolder(const Path& path) noexcept {
    const auto status = statusOf(path, 0);
    return status && S_ISDIR(status->st_mode);
}

bool isExecutableFile(const Path& path) noexcept {
    const auto status = statusOf(path, 0);
    return status && S_ISREG(status->st_mode) &&
           ::faccessat(AT_FDCWD, path.c_str(), X_OK, AT_EACCESS) == 0;
}

bool isSameItem(const Path& left, const Path& right) noexcept {
    const auto one = statusOf(left, 0);
    const auto other = statusOf(right, 0);
    return one && other && isSame(*one, *other);
}

bool mayBeSameItem(const Path& left, const Path& right) noexcept {
    const auto one = statusOf(left, 0);
    if (!one) return !meansMissing(errno);
    const auto other = statusOf(right, 0);
    return other ? isSame(*one, *other) : !meansMissing(errno);
}

Path currentDirectory() {
    const OwnedText folder(::getcwd(nullptr, 0));
    if (!folder) throwFileError("find", "the working directory");
    return folder.get();
}

Path absolute(const Path& path) {
    return path.starts_with('/') ? path : paths::join(currentDirectory(), path);
}

std::optional<Path> resolved(const Path& path) {
    if (!isUsablePath(path)) return std::nullopt;
    const OwnedText real(::realpath(path.c_str(), nullptr));
    return real ? std::optional<Path>(real.get()) : std::nullopt;
}

std::vector<std::string> list(const Path& folder) {
    return Folder(OwnedFd::open("list", folder, O_RDONLY | O_DIRECTORY), folder).names("list");
}

OwnedFd openForAppending(const Path& file) {
    constexpr int flags = O_WRONLY | O_APPEND | O_CREAT;
    auto fd = OwnedFd::open("write", file, flags | O_NONBLOCK);
    // What shares the descriptor expects to wait when it writes.
    if (::fcntl(fd.get(), F_SETFL, flags) != 0) throwFileError("write", file);
    return fd;
}

std::string read(const Path& file) {
    // Not blocking: a pipe planted in a file's place would wait for its other side for ever.
    const auto fd = OwnedFd::open("read", file, O_RDONLY | O_NONBLOCK);
    return readAll(fd.get(), "read", file);
}

void append(const Path& file, std::string_view bytes) {
    const auto fd = OwnedFd::open("append to", file, O_WRONLY | O_APPEND | O_NOFOLLOW | O_NONBLOCK);
    const auto written =
        retryInterrupted([&] { return ::write(fd.get(), bytes.data(), bytes.size()); });
    if (written != static_cast<ssize_t>(bytes.size())) throwFileError("append to", file);
}

void appendOrMake(const Path& file, std::string_view bytes) {
    const auto fd = OwnedFd::open("append to", file, O_WRONLY | O_APPEND | O_CREAT | O_NONBLOCK);
    writeAll(fd.get(), bytes, "append to", file);
}

void write(const Path& file, std::string_view bytes) {
    const auto fd = OwnedFd::open("write", file, O_WRONLY | O_CREAT | O_TRUNC);
    writeAll(fd.get(), bytes, "write", file);
}

void replace(const Path& file, std::string_view bytes, std::optional<unsigned> mode) {
    const char* place = pathBytes("write", file);
    putWholeFile({AT_FDCWD, file, file}, bytes, mode, [place](const char* temporary) {
        return ::rename(temporary, place) == 0 ? 0 : errno;
    });
}

void copyFile(const Path& source, const Path& destination) {
    const auto from = OwnedFd::open("read", source, O_RDONLY | O_NONBLOCK);
    struct stat status {};
    if (::fstat(from.get(), &status) != 0) throwFileError("read", source);
    if (S_ISDIR(status.st_mode)) throw FileError("read", source, EISDIR);
    if (!S_ISREG(status.st_mode)) throw FileError("read", source, EINVAL); // may never end
    const auto to =
        OwnedFd::open("write", destination, O_WRONLY | O_CREAT | O_EXCL, status.st_mode & 0777);
    try {
        copyBytes(from.get(), source, to.get(), destination);
    } catch (const FileError&) {
        ::unlink(destination.c_str());
        throw;
    }
}

void setPermissions(const Path& path, unsigned mode) {
    const std::string action = "set the permissions of";
    if (::chmod(pathBytes(action, path), mode) != 0) throwFileError(action, path);
}

namespace {

void ensureFolder(const Path& folder) {
    const std::string action = "create the folder";
    if (isFolder(folder)) return; // also a link to one
    if (::mkdir(pathBytes(action, folder), 0777) == 0) return;
    const int reason = errno;
    if (!isFolder(folder)) throw FileError(action, folder, reason);
}

} // namespace

void createFolders(const Path& folder) {
    if (isFolder(folder)) return;
    for (auto slash = folder.find('/', 1); slash != Path::npos;
         slash = folder.find('/', slash + 1)) {
        ensureFolder(folder.substr(0, slash));
    }
    ensureFolder(folder);
}

void createFolder(const Path& folder, unsigned mode) {
    const std::string action = "create the folder";
    if (::mkdir(pathBytes(action, folder), mode) != 0) throwFileError(action, folder);
    if (::chmod(folder.c_str(), mode) != 0) throwFileError("set the permissions of", folder);
}

void createSymbolicLink(const Path& target, const Path& link) {
    const std::string action = "create the link";
    if (::symlink(pathBytes(action, target), pathBytes(action, link)) != 0) {
        throwFileError(action, link);
    }
}

void removeItem(const Path& path) {
    const Path item(paths::withoutTrailingSlashes(path));
    const char* bytes = pathBytes("remove", item);
    const int result = kindOf(item) == ItemKind::folder ? ::rmdir(bytes) : ::unlink(bytes);
    if (result != 0) throwFileError("remove", path);
}

} // namespace ambrel::fileSystem
