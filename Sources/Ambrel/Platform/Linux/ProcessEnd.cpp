#include "Ambrel/Platform/Posix/ProcessEnd.h"

#include <cerrno>
#include <sys/eventfd.h>

// The header of glibc 2.36 does not say that its functions are C.
extern "C" {
#include <sys/pidfd.h>
}

namespace ambrel {

OwnedFd openProcessEnd(pid_t child) {
    OwnedFd fd(::pidfd_open(child, 0));
    return fd || errno != ESRCH ? std::move(fd) : openPastEnd();
}

OwnedFd openPastEnd() { return OwnedFd(::eventfd(1, EFD_CLOEXEC)); }

} // namespace ambrel
