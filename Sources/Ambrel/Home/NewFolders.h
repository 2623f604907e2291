#pragma once

#include "Ambrel/Base/Path.h"

#include <vector>

namespace ambrel {

/// Folders made for something that may still fail. Unless keep() is called, those that are empty
/// at the end are removed again.
class NewFolders {
public:
    NewFolders() = default;
    NewFolders(const NewFolders&) = delete;
    NewFolders& operator=(const NewFolders&) = delete;
    ~NewFolders();

    /// Makes `folder` and the missing ones above it by the usual rights. Throws FileError.
    void make(const Path& folder);
    /// Makes `folder` for this user alone; the missing ones above it by the usual rights. A folder
    /// that exists keeps its rights.
    void makePrivate(const Path& folder);
    void keep() noexcept { made_.clear(); }

private:
    std::vector<Path> made_;
};

} // namespace ambrel
