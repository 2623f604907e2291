#include "Ambrel/Platform/ChildEnd.h"

#include "Ambrel/Platform/FileError.h"
#include "Ambrel/Platform/Posix/PollUntil.h"

#include <cerrno>
#include <sys/eventfd.h>

// The header of glibc 2.36 does not say that its functions are C.
extern "C" {
#include <sys/pidfd.h>
}

namespace ambrel {

namespace {

/// A process that was reaped cannot be asked for any more, and its id may be another's.
OwnedFd alreadyReadable() { return OwnedFd(::eventfd(1, EFD_CLOEXEC)); }

OwnedFd open(const ChildProcess& child) {
    if (!child.isRunning()) return alreadyReadable();
    OwnedFd fd(::pidfd_open(child.processIdentifier(), 0));
    return fd || errno != ESRCH ? std::move(fd) : alreadyReadable();
}

} // namespace

ChildEnd::ChildEnd(const ChildProcess& child) : fd_(open(child)) {
    if (!fd_) throwFileError("watch", "process " + std::to_string(child.processIdentifier()));
}

bool ChildEnd::wait(std::chrono::milliseconds limit) const {
    pollfd source{fd_.get(), POLLIN, 0};
    return pollUntil(&source, 1, std::chrono::steady_clock::now() + limit) > 0;
}

} // namespace ambrel
