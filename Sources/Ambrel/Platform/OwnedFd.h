#pragma once

#include "Ambrel/Base/Path.h"

#include <utility>

namespace ambrel {

/// A file descriptor, closed when its owner goes. Always opened so that children do not get it.
class OwnedFd {
public:
    OwnedFd() = default;
    explicit OwnedFd(int fd) noexcept : fd_(fd) {}
    OwnedFd(OwnedFd&& other) noexcept : fd_(std::exchange(other.fd_, -1)) {}
    OwnedFd& operator=(OwnedFd&& other) noexcept;
    ~OwnedFd();

    /// Opens `path` with the flags of open(2) and close-on-exec; retries when interrupted. Throws
    /// FileError naming `action` when that fails or `path` holds a NUL byte.
    static OwnedFd open(const std::string& action, const Path& path, int flags,
                        unsigned mode = 0666);

    int get() const noexcept { return fd_; }
    explicit operator bool() const noexcept { return fd_ >= 0; }
    /// Gives the descriptor up without closing it.
    int release() noexcept { return std::exchange(fd_, -1); }

private:
    int fd_ = -1;
};

} // namespace ambrel
