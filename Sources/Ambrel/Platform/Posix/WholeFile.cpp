#include "Ambrel/Platform/Posix/WholeFile.h"

#include "Ambrel/Base/RandomName.h"
#include "Ambrel/Platform/FileError.h"
#include "Ambrel/Platform/OwnedFd.h"
#include "Ambrel/Platform/Posix/Descriptor.h"
#include "Ambrel/Platform/Posix/Retry.h"

#include <fcntl.h>
#include <unistd.h>

namespace ambrel {

namespace {

OwnedFd newFile(const FilePlace& place, const Path& temporary, bool hasMode) {
    constexpr int flags = O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC;
    // Until it is complete nobody else reads it, whatever its mode will be.
    const mode_t mode = hasMode ? 0600 : 0666;
    OwnedFd fd(
        retryInterrupted([&] { return ::openat(place.folder, temporary.c_str(), flags, mode); }));
    if (!fd) throwFileError("write", place.path);
    return fd;
}

} // namespace

void putWholeFile(const FilePlace& place, std::string_view bytes, std::optional<unsigned> mode,
                  const std::function<int(const char* temporary)>& put) {
    const auto folder = paths::deletingLastComponent(place.name);
    const Path temporary = folder.empty() ? Path(randomName()) : paths::join(folder, randomName());
    const auto fd = newFile(place, temporary, mode.has_value());
    try {
        writeAll(fd.get(), bytes, "write", place.path);
        if (mode) ensureMode(fd.get(), *mode, place.path);
        if (const int error = put(temporary.c_str())) throw FileError("write", place.path, error);
    } catch (...) {
        ::unlinkat(place.folder, temporary.c_str(), 0);
        throw;
    }
}

} // namespace ambrel
