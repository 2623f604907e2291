#pragma once

#include "Ambrel/Platform/HostedProgram.h"
#include "Ambrel/Platform/OwnedFd.h"

#include <chrono>

namespace ambrel {

/// The end of a child for an event loop: a descriptor that can be read, or has come to its end,
/// from the moment on when the child has ended, also when that was before. Reaps nothing but the
/// child, and asks for no signal.
class ChildEnd {
public:
    /// `child` was launched. Throws FileError when its end cannot be watched; it runs on then.
    explicit ChildEnd(const HostedProgram& child);

    /// For waiting only; what became of the child is asked of the child.
    int descriptor() const noexcept { return fd_.get(); }

    /// Blocks until the child has ended, at most for `limit`. Returns whether it has.
    bool wait(std::chrono::milliseconds limit) const;

private:
    OwnedFd fd_;
};

} // namespace ambrel
