#pragma once

#include "Ambrel/Platform/OwnedFd.h"

#include <dirent.h>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace ambrel {

/// An open folder, for work on its entries that no exchanged path can lead astray.
class Folder {
public:
    /// Takes the descriptor of the folder at `path`; the path serves for messages only. Throws
    /// FileError.
    Folder(OwnedFd fd, Path path);

    /// The folder `name` inside the folder `parent` (AT_FDCWD: the working directory), never
    /// through a symbolic link at its end. Throws FileError naming `action` and `path`.
    static Folder openAt(int parent, const std::string& name, const Path& path,
                         const std::string& action);

    /// All names but "." and "..", in the system's order, read from the start. Throws FileError
    /// naming `action`.
    std::vector<std::string> names(const std::string& action) const;

    /// Whether there are none, found out without reading more than one. Throws FileError naming
    /// `action`.
    bool isEmpty(const std::string& action) const;

    int fd() const noexcept { return ::dirfd(stream_.get()); }
    Path pathOf(const std::string& name) const { return paths::join(path_, name); }

private:
    struct CloseFolder {
        void operator()(DIR* stream) const noexcept { ::closedir(stream); }
    };

    std::optional<std::string> nextName(const std::string& action) const;

    Path path_;
    std::unique_ptr<DIR, CloseFolder> stream_;
};

} // namespace ambrel
