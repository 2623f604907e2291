#pragma once

#include "Ambrel/Platform/OwnedFd.h"

#include <optional>

namespace ambrel {

/// The exclusive use of a folder among those who ask for it in this way, until the end of this
/// object or of the process, however that ends.
class FolderLock {
public:
    /// Absent where somebody else has it, where `folder` is no folder of this user's closed to
    /// others, or only a link to one, and where the file system knows no locks. Never waits.
    static std::optional<FolderLock> tryTake(const Path& folder) noexcept;

private:
    explicit FolderLock(OwnedFd folder) : folder_(std::move(folder)) {}

    OwnedFd folder_;
};

} // namespace ambrel
