#include "Ambrel/Platform/Pipe.h"

#include "Ambrel/Platform/FileError.h"
#include "Ambrel/Platform/Posix/Descriptor.h"

#include <array>
#include <fcntl.h>
#include <unistd.h>

namespace ambrel {

Pipe Pipe::make() {
    std::array<int, 2> ends{};
    if (::pipe2(ends.data(), O_CLOEXEC) != 0) throwFileError("make", "a pipe");
    return {OwnedFd(ends[0]), std::make_shared<OwnedFd>(ends[1])};
}

std::string Pipe::readToEnd() {
    if (writeEnd) *writeEnd = OwnedFd();
    return readAll(readEnd.get(), "read", "a pipe");
}

} // namespace ambrel
