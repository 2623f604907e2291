#pragma once

#include "Ambrel/Home/NewFolders.h"
#include "Ambrel/Platform/FileError.h"
#include "Ambrel/Platform/FolderLock.h"
#include "Manager/Base/Notice.h"

#include <optional>

namespace korvane {

/// A hidden folder inside the one where a bundle is to stand. The bundle is built in it and put in
/// place in one step, so that a failure leaves what was there before, and no remains.
///
/// What a process that was killed leaves behind goes when the next one is made beside it. As long
/// as all that lies in the folder may go, a marker in it says so; whoever uses it has it locked.
class StagingFolder {
public:
    /// Makes `parent` too where it is missing, and removes what others left behind in it. Throws
    /// FileError.
    explicit StagingFolder(const ambrel::Path& parent);
    StagingFolder(const StagingFolder&) = delete;
    StagingFolder& operator=(const StagingFolder&) = delete;
    /// Removes what is left in the folder; failures are ignored.
    ~StagingFolder();

    /// Removes what killed processes left behind in `parent`, as far as that is possible.
    static void removeAbandonedIn(const ambrel::Path& parent) noexcept;

    const ambrel::Path& path() const { return path_; }

    /// The failure as it is told a person: what lies in this folder is named as it would be called
    /// in the one around, where the user has asked for it.
    ambrel::FileError outwards(const ambrel::FileError& error) const;

    /// Moves `built`, which lies in this folder, to `place`, where nothing may be.
    void putInPlace(const ambrel::Path& built, const ambrel::Path& place);
    /// Exchanges `built` with what is at `place`, which lies in this folder then. Nobody but this
    /// object removes that, until mayGo() is called.
    void exchange(const ambrel::Path& built, const ambrel::Path& place);
    /// Says that what lies in the folder may go, after a look at what exchange() brought.
    void mayGo() noexcept;
    /// Removes the folder with what is left in it. Throws FileError, with a part left, which goes
    /// with the next folder beside it if it can then.
    void remove();
    /// The same where what is to be done is done already: remainsLeft, a sentence that begins with
    /// `remains`, in place of a failure.
    std::optional<Notice> removeOrTell(const std::string& remains);
    /// Leaves the folder with all that is in it where it is, for good.
    void leave();

private:
    void make(const ambrel::Path& parent);
    void mark();

    ambrel::NewFolders above_;
    ambrel::Path parent_;
    ambrel::Path path_;
    std::optional<ambrel::FolderLock> lock_; ///< absent where there are none: nobody removes it
};

} // namespace korvane
