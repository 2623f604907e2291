#include "Ambrel/Platform/GuardedFolder.h"

#include "Ambrel/Platform/Posix/Descriptor.h"
#include "Ambrel/Platform/Posix/ExclusiveRename.h"
#include "Ambrel/Platform/Posix/Folder.h"
#include "Ambrel/Platform/Posix/PathBytes.h"
#include "Ambrel/Platform/Posix/Retry.h"
#include "Ambrel/Platform/Posix/WholeFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace ambrel {

using fileSystem::ItemKind;

namespace {

constexpr const char* openAction = "open the folder";

/// Whether `name` is one entry of a folder, and not a way out of it.
bool isEntryName(const std::string& name) {
    return !name.empty() && name != "." && name != ".." && name.find('/') == std::string::npos &&
           isUsablePath(name);
}

const char* entryName(const std::string& action, const std::string& name, const Path& path) {
    if (!isEntryName(name)) throw FileError(action, path, EINVAL);
    return name.c_str();
}

/// Takes the first component off `relative`.
std::string takeComponent(std::string_view& relative) {
    const auto slash = relative.find('/');
    std::string name(relative.substr(0, slash));
    relative = slash == std::string_view::npos ? std::string_view() : relative.substr(slash + 1);
    return name;
}

OwnedFd openFolder(int parent, const char* name, const Path& path) {
    constexpr int flags = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;
    OwnedFd fd(retryInterrupted([&] { return ::openat(parent, name, flags); }));
    if (!fd) throwFileError(openAction, path);
    return fd;
}

} // namespace

GuardedFolder GuardedFolder::open(const Path& root) {
    return {OwnedFd::open(openAction, root, O_RDONLY | O_DIRECTORY), root};
}

GuardedFolder GuardedFolder::step(const std::string& name) const {
    const auto path = paths::join(path_, name);
    return {openFolder(fd_.get(), entryName(openAction, name, path), path), path};
}

GuardedFolder GuardedFolder::stepMaking(const std::string& name, unsigned mode) const {
    const auto path = paths::join(path_, name);
    const char* bytes = entryName("create the folder", name, path);
    const bool isNew = ::mkdirat(fd_.get(), bytes, mode) == 0;
    if (!isNew && errno != EEXIST) throwFileError("create the folder", path);
    auto made = step(name);
    if (isNew) ensureMode(made.fd_.get(), mode, path);
    return made;
}

GuardedFolder GuardedFolder::folder(std::string_view relative, unsigned mode) const {
    GuardedFolder reached{openFolder(fd_.get(), ".", path_), path_};
    while (!relative.empty()) {
        const auto name = takeComponent(relative);
        const bool isMissing = isEntryName(name) && !reached.kindOf(name);
        reached = isMissing ? reached.stepMaking(name, mode) : reached.step(name);
    }
    return reached;
}

std::optional<GuardedFolder> GuardedFolder::findFolder(std::string_view relative) const {
    try {
        GuardedFolder reached{openFolder(fd_.get(), ".", path_), path_};
        while (!relative.empty()) reached = reached.step(takeComponent(relative));
        return reached;
    } catch (const FileError&) {
        return std::nullopt;
    }
}

std::optional<ItemKind> GuardedFolder::kindOf(const std::string& name) const noexcept {
    struct stat status {};
    if (!isEntryName(name)) return std::nullopt;
    if (::fstatat(fd_.get(), name.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0) return std::nullopt;
    if (S_ISREG(status.st_mode)) return ItemKind::file;
    if (S_ISDIR(status.st_mode)) return ItemKind::folder;
    return S_ISLNK(status.st_mode) ? ItemKind::symbolicLink : ItemKind::other;
}

bool GuardedFolder::isEmptyFolder(const std::string& name) const {
    const std::string action = "list";
    try {
        const auto path = paths::join(path_, name);
        entryName(action, name, path);
        return Folder::openAt(fd_.get(), name, path, action).isEmpty(action);
    } catch (const FileError&) {
        return false; // no folder, or one that may hold something
    }
}

void GuardedFolder::removeEmptyFolder(const std::string& name) const {
    const auto path = paths::join(path_, name);
    const char* bytes = entryName("remove", name, path);
    if (::unlinkat(fd_.get(), bytes, AT_REMOVEDIR) != 0) throwFileError("remove", path);
}

void GuardedFolder::createSymbolicLink(const Path& target, const std::string& name) const {
    const std::string action = "create the link";
    const auto path = paths::join(path_, name);
    const char* bytes = entryName(action, name, path);
    if (::symlinkat(pathBytes(action, target), fd_.get(), bytes) != 0) {
        throwFileError(action, path);
    }
}

bool GuardedFolder::putFile(const std::string& name, std::string_view bytes, unsigned mode) const {
    const auto path = paths::join(path_, name);
    const char* place = entryName("write", name, path);
    if (kindOf(name)) return false;
    try {
        putWholeFile({fd_.get(), name, path}, bytes, mode, [&](const char* temporary) {
            return renameExclusivelyIn(fd_.get(), temporary, place);
        });
        return true;
    } catch (const FileError& error) {
        if (error.code != EEXIST) throw;
        return false; // somebody else was faster
    }
}

} // namespace ambrel
