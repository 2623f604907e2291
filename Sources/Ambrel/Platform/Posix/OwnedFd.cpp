#include "Ambrel/Platform/OwnedFd.h"

#include "Ambrel/Platform/FileError.h"
#include "Ambrel/Platform/Posix/PathBytes.h"
#include "Ambrel/Platform/Posix/Retry.h"

#include <fcntl.h>
#include <unistd.h>

namespace ambrel {

OwnedFd& OwnedFd::operator=(OwnedFd&& other) noexcept {
    OwnedFd old(std::exchange(fd_, other.release()));
    return *this;
}

OwnedFd::~OwnedFd() {
    // Not repeated when interrupted: the descriptor is free either way.
    if (fd_ >= 0) ::close(fd_);
}

OwnedFd OwnedFd::open(const std::string& action, const Path& path, int flags, unsigned mode) {
    const char* bytes = pathBytes(action, path);
    OwnedFd fd(retryInterrupted([&] { return ::open(bytes, flags | O_CLOEXEC, mode); }));
    if (!fd) throwFileError(action, path);
    return fd;
}

} // namespace ambrel
