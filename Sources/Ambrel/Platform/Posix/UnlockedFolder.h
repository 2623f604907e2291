#pragma once

#include "Ambrel/Platform/Posix/Folder.h"

#include <optional>
#include <sys/types.h>

namespace ambrel {

/// An open folder that is to be emptied or to go elsewhere. A write-protected folder, as caches of
/// read-only sources are full of, withholds that even from its owner: the owner is then given the
/// rights, and the folder gets its mode back at the end, wherever it is by then. A folder of
/// somebody else is left as it is, and the system refuses what it will.
class UnlockedFolder {
public:
    /// The folder `name` inside the folder `parent` (AT_FDCWD: the working directory), never
    /// through a symbolic link at its end. Throws FileError naming `action` and `path`; the mode is
    /// then what it was.
    static UnlockedFolder openAt(int parent, const std::string& name, const Path& path,
                                 const std::string& action);
    UnlockedFolder(const UnlockedFolder&) = delete;
    UnlockedFolder& operator=(const UnlockedFolder&) = delete;
    /// Gives the mode back; that this fails is no further harm.
    ~UnlockedFolder();

    const Folder& folder() const noexcept { return folder_; }
    /// Whether rights were missing and have been given.
    bool wasLocked() const noexcept { return mode_.has_value(); }

private:
    UnlockedFolder(Folder folder, std::optional<mode_t> mode);

    Folder folder_;
    std::optional<mode_t> mode_; ///< what a folder had that was locked
};

} // namespace ambrel
