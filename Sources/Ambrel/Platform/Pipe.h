#pragma once

#include "Ambrel/Platform/OwnedFd.h"

#include <memory>
#include <string>

namespace ambrel {

/// A pipe to catch a child's output.
struct Pipe {
    OwnedFd readEnd;
    std::shared_ptr<OwnedFd> writeEnd; ///< shared with the child's setup

    /// Throws FileError when the system has no descriptors left.
    static Pipe make();

    /// Closes this process's write end and reads to the end of the data.
    std::string readToEnd();
};

} // namespace ambrel
