#pragma once

#include "Ambrel/Graphics/Image.h"
#include "Ambrel/Platform/FolderLock.h"

#include <memory>
#include <string>
#include <vector>

namespace korvane::runner {

/// A folder of icons, closed to other users, in which panels find one picture that they draw in the
/// colour of their text. It lies where the session's files do, and goes with this object.
class SymbolicIconFolder {
public:
    /// `name` must end in "-symbolic", and of `sizes` the alpha alone counts. Null where the
    /// session has no folder, or nothing can be put there.
    static std::unique_ptr<SymbolicIconFolder> tryMake(const std::string& name,
                                                       const std::vector<ambrel::Image>& sizes);

    /// Removes the folders of programs that were killed.
    static void removeAbandoned() noexcept;

    SymbolicIconFolder(const SymbolicIconFolder&) = delete;
    SymbolicIconFolder& operator=(const SymbolicIconFolder&) = delete;
    ~SymbolicIconFolder();

    const ambrel::Path& path() const noexcept { return path_; }

private:
    SymbolicIconFolder(ambrel::Path path, ambrel::FolderLock lock)
        : path_(std::move(path)), lock_(std::move(lock)) {}

    static std::unique_ptr<SymbolicIconFolder> tryTake(const ambrel::Path& parent);
    void put(const std::string& name, const ambrel::Image& image) const;

    ambrel::Path path_;
    ambrel::FolderLock lock_; ///< tells others that it is in use
};

} // namespace korvane::runner
