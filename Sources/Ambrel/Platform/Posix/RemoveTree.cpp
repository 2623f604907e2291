#include "Ambrel/Platform/FileSystem.h"
#include "Ambrel/Platform/Posix/PathBytes.h"
#include "Ambrel/Platform/Posix/UnlockedFolder.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace ambrel::fileSystem {

namespace {

/// Folders held open at once, and levels of recursion. What lies deeper is lifted up first.
constexpr int mostLevels = 100;

bool isFolderEntry(int parent, const std::string& name, const Path& path) {
    struct stat status {};
    if (::fstatat(parent, name.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0) {
        throwFileError("remove", path);
    }
    return S_ISDIR(status.st_mode);
}

/// Removes what a folder holds. Goes down by descriptors: whoever exchanges a folder for a link
/// meanwhile makes the removal fail, not go astray.
class TreeRemoval {
public:
    explicit TreeRemoval(const Folder& top) : top_(top) {}

    void run() {
        // Lifted folders appear here after the listing.
        for (auto names = top_.names("remove"); !names.empty(); names = top_.names("remove")) {
            for (const auto& name : names) removeEntry(top_, name, 1);
        }
    }

private:
    void removeEntry(const Folder& parent, const std::string& name, int level) {
        const auto path = parent.pathOf(name);
        const bool isFolder = isFolderEntry(parent.fd(), name, path);
        if (isFolder && level == mostLevels) return lift(parent, name);
        if (isFolder) {
            const auto unlocked = UnlockedFolder::openAt(parent.fd(), name, path, "remove");
            const auto& folder = unlocked.folder();
            for (const auto& entry : folder.names("remove")) removeEntry(folder, entry, level + 1);
        }
        if (::unlinkat(parent.fd(), name.c_str(), isFolder ? AT_REMOVEDIR : 0) != 0) {
            throwFileError("remove", path);
        }
    }

    void lift(const Folder& parent, const std::string& name) {
        // Going elsewhere changes what ".." is in the folder, which must allow it.
        const auto unlocked =
            UnlockedFolder::openAt(parent.fd(), name, parent.pathOf(name), "remove");
        std::string lifted = ".korvane-remove-";
        lifted.append(std::to_string(lifted_++));
        // Over a folder of the same name it fails, unless that is empty: no harm either way.
        if (::renameat(parent.fd(), name.c_str(), top_.fd(), lifted.c_str()) != 0) {
            throwFileError("remove", parent.pathOf(name));
        }
    }

    const Folder& top_;
    std::size_t lifted_ = 0;
};

} // namespace

void removeTree(const Path& path) {
    // A slash at the end would make the system follow a link.
    const Path item(paths::withoutTrailingSlashes(path));
    const char* bytes = pathBytes("remove", item);
    const auto name = paths::lastComponent(item);
    if (name == "." || name == ".." || name == "/") throw FileError("remove", path, EINVAL);
    const bool isFolder = isFolderEntry(AT_FDCWD, item, item);
    if (isFolder) {
        const auto unlocked = UnlockedFolder::openAt(AT_FDCWD, item, item, "remove");
        TreeRemoval(unlocked.folder()).run();
    }
    if (::unlinkat(AT_FDCWD, bytes, isFolder ? AT_REMOVEDIR : 0) != 0) {
        throwFileError("remove", item);
    }
}

} // namespace ambrel::fileSystem
