#pragma once

#include "Ambrel/Platform/FolderLock.h"

#include <optional>
#include <string>
#include <string_view>

namespace ambrel {

/// The one process that works with a folder of data, and its ear for others that were started for
/// the same: they call it instead of touching the folder.
///
/// The folder holds a named pipe, "calls", which stays there; it is of no meaning without its
/// reader. The claim ends with this object or with the process, however that ends.
class SoleProcess {
public:
    /// The longest message that arrives in one piece.
    static constexpr std::size_t longestMessage = 511;

    /// Claims `folder`, which has to be there, this user's and closed to others. Absent where
    /// another process has it, and where the file system knows no locks or pipes. Never waits.
    static std::optional<SoleProcess> claim(const Path& folder) noexcept;

    /// Leaves `message`, which must be one line and not too long, with the process that has claimed
    /// `folder`. False where none listens. Never waits.
    static bool call(const Path& folder, std::string_view message) noexcept;

    /// Readable when nextMessage() has something to give.
    int descriptor() const noexcept { return listening_.get(); }

    /// The message that came first; absent when there is none. Never blocks.
    std::optional<std::string> nextMessage();

    /// Stops listening; the folder remains claimed. For one that is about to end, so that who calls
    /// learns that nobody will answer.
    void stopListening() noexcept;

private:
    SoleProcess(FolderLock lock, OwnedFd listening, OwnedFd speaking);

    FolderLock lock_;
    OwnedFd listening_;
    OwnedFd speaking_; ///< our own, without which the pipe would end with each caller
    std::string received_;
};

} // namespace ambrel
