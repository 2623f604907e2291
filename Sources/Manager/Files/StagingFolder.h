#pragma once

#include "Ambrel/Home/NewFolders.h"

namespace korvane {

/// A hidden folder inside the one where a bundle is to stand. The bundle is built in it and put in
/// place in one step, so that a failure leaves what was there before, and no remains.
class StagingFolder {
public:
    /// Makes `parent` too where it is missing. Throws FileError.
    explicit StagingFolder(const ambrel::Path& parent);
    StagingFolder(const StagingFolder&) = delete;
    StagingFolder& operator=(const StagingFolder&) = delete;
    /// Removes what is left in the folder; failures are ignored.
    ~StagingFolder();

    const ambrel::Path& path() const { return path_; }

    /// Moves `built`, which lies in this folder, to `place`, where nothing may be.
    void putInPlace(const ambrel::Path& built, const ambrel::Path& place);
    /// Exchanges `built` with what is at `place`, which lies in this folder then.
    void exchange(const ambrel::Path& built, const ambrel::Path& place);
    /// Removes the folder with what is left in it. Throws FileError, with a part left.
    void remove();
    /// Leaves the folder with all that is in it where it is.
    void leave() { path_.clear(); }

private:
    ambrel::NewFolders above_;
    ambrel::Path path_;
};

} // namespace korvane
