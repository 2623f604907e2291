#pragma once

#include "Ambrel/Platform/OwnedFd.h"

#include <string>

namespace ambrel {

/// Waits for changes of one file, which need not exist yet, without polling.
class FileWatch {
public:
    /// Watches the file called `name` in `folder`, which must exist. Throws FileError.
    FileWatch(const Path& folder, std::string name);

    enum class Event {
        changed,      ///< written, made, replaced or removed since the last call
        folderGone,   ///< the folder was removed or moved
        outputClosed, ///< nobody reads what this process writes to `output` any more
        stopped,      ///< `stop` can be read, or has come to its end
    };

    /// Blocks until something happens. A change that came since construction or since the last
    /// call is never missed. `output` is a descriptor of this process, and so is `stop`, where
    /// there is one; it goes before a change.
    Event wait(int output, int stop = -1);

private:
    OwnedFd notifications_;
    std::string name_;
};

} // namespace ambrel
