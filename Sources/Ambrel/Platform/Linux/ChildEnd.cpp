#include "Ambrel/Platform/ChildEnd.h"

#include "Ambrel/Platform/FileError.h"

#include <cerrno>
#include <sys/eventfd.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace ambrel {

namespace {

/// A process that was reaped cannot be asked for any more, and its id may be another's.
OwnedFd alreadyReadable() { return OwnedFd(::eventfd(1, EFD_CLOEXEC)); }

OwnedFd open(const ChildProcess& child) {
    if (!child.isRunning()) return alreadyReadable();
    // By number: the C library's own function came with glibc 2.36.
    OwnedFd fd(static_cast<int>(::syscall(SYS_pidfd_open, child.processIdentifier(), 0)));
    return fd || errno != ESRCH ? std::move(fd) : alreadyReadable();
}

} // namespace

ChildEnd::ChildEnd(const ChildProcess& child) : fd_(open(child)) {
    if (!fd_) throwFileError("watch", "process " + std::to_string(child.processIdentifier()));
}

} // namespace ambrel
