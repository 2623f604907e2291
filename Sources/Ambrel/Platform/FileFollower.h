#pragma once

#include "Ambrel/Platform/OwnedFd.h"

#include <functional>
#include <memory>
#include <string>

namespace ambrel {

/// Hands on what others append to one file, byte for byte and in order, on a thread of its own, so
/// that nobody who writes to the file waits for whoever reads. The file need not exist yet; one
/// that became shorter or was begun anew is handed on from its start. Nothing is handed on of what
/// is no regular file, nor into the file itself.
class FileFollower {
public:
    /// Follows the file called `name` in `folder`, which must exist, from where it ends now, to
    /// the descriptor `output` of this process. Throws FileError.
    FileFollower(const Path& folder, const std::string& name, int output);
    FileFollower(const FileFollower&) = delete;
    FileFollower& operator=(const FileFollower&) = delete;
    /// Does not wait for what is being written.
    ~FileFollower();

    /// Has what the file holds now handed on and the following end, and then, or when that has
    /// ended because nobody reads any more, `whenDone` called on the other thread. Returns at once.
    void finish(std::function<void()> whenDone);
    bool isDone() const;

private:
    struct State;
    std::shared_ptr<State> state_;
};

} // namespace ambrel
