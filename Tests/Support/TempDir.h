#pragma once

#include "Ambrel/Base/Path.h"

#include <string>
#include <string_view>

namespace korvane::test {

/// A folder of its own for one test, removed at the end. The test fails when something was left
/// beside the folder, or when the folder cannot be removed.
class TempDir {
public:
    TempDir();
    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;
    ~TempDir();

    /// On another file system than `first`. Throws, and so fails the test, on a machine that has
    /// no second one to write to.
    static TempDir onAnotherFileSystemThan(const TempDir& first);

    /// Absolute, without symbolic links in it.
    const ambrel::Path& path() const { return path_; }
    ambrel::Path operator/(std::string_view name) const { return path_ + "/" + std::string(name); }

private:
    explicit TempDir(const std::string& base);

    ambrel::Path owned_; ///< made by this object; holds nothing but path_
    ambrel::Path path_;
};

} // namespace korvane::test
