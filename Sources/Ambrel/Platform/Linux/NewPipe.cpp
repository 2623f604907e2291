#include "Ambrel/Platform/Posix/NewPipe.h"

#include <cerrno>
#include <fcntl.h>
#include <unistd.h>

namespace ambrel {

int openPipe(std::array<int, 2>& ends) noexcept {
    // In one step: a child that another thread starts meanwhile gets neither end.
    return ::pipe2(ends.data(), O_CLOEXEC) == 0 ? 0 : errno;
}

} // namespace ambrel
