#include "Ambrel/Platform/Pipe.h"

#include "Ambrel/Platform/FileError.h"
#include "Ambrel/Platform/Posix/Descriptor.h"
#include "Ambrel/Platform/Posix/NewPipe.h"

#include <array>

namespace ambrel {

Pipe Pipe::make() {
    std::array<int, 2> ends{};
    if (const int error = openPipe(ends)) throw FileError("make", "a pipe", error);
    return {OwnedFd(ends[0]), std::make_shared<OwnedFd>(ends[1])};
}

std::string Pipe::readToEnd() {
    if (writeEnd) *writeEnd = OwnedFd();
    return readAll(readEnd.get(), "read", "a pipe");
}

} // namespace ambrel
