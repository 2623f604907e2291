#include "Ambrel/Platform/Posix/Descriptor.h"

#include "Ambrel/Platform/FileError.h"
#include "Ambrel/Platform/Posix/Retry.h"

#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace ambrel {

namespace {

constexpr std::size_t smallestBuffer = 4096;
constexpr std::size_t mostBytes = 256 * 1024 * 1024;
constexpr std::size_t copyBuffer = 256 * 1024;

/// Room for a whole file and one byte more, so that its end is seen without another allocation.
std::size_t expectedSize(int fd) {
    struct stat status {};
    const bool known = ::fstat(fd, &status) == 0 && S_ISREG(status.st_mode) && status.st_size > 0;
    constexpr off_t trusted = 64 * 1024 * 1024; // beyond that, grow with what really arrives
    if (!known || status.st_size > trusted) return smallestBuffer;
    return static_cast<std::size_t>(status.st_size) + 1;
}

} // namespace

std::string readAll(int fd, const std::string& action, const Path& path) {
    std::string bytes(expectedSize(fd), '\0');
    std::size_t size = 0;
    while (true) {
        if (size > mostBytes) throw FileError(action, path, EFBIG);
        if (size == bytes.size()) bytes.resize(2 * size);
        const auto count =
            retryInterrupted([&] { return ::read(fd, bytes.data() + size, bytes.size() - size); });
        if (count < 0) throwFileError(action, path);
        if (count == 0) break;
        size += static_cast<std::size_t>(count);
    }
    bytes.resize(size);
    return bytes;
}

void writeAll(int fd, std::string_view bytes, const std::string& action, const Path& path) {
    while (!bytes.empty()) {
        const auto count =
            retryInterrupted([&] { return ::write(fd, bytes.data(), bytes.size()); });
        if (count < 0) throwFileError(action, path);
        bytes.remove_prefix(static_cast<std::size_t>(count));
    }
}

void copyBytes(int from, const Path& source, int to, const Path& destination) {
    std::vector<char> buffer(copyBuffer);
    while (true) {
        const auto count =
            retryInterrupted([&] { return ::read(from, buffer.data(), buffer.size()); });
        if (count < 0) throwFileError("read", source);
        if (count == 0) return;
        writeAll(to, {buffer.data(), static_cast<std::size_t>(count)}, "write", destination);
    }
}

void ensureMode(int fd, unsigned mode, const Path& path) {
    constexpr mode_t permissionBits = 07777;
    const std::string action = "set the permissions of";
    struct stat status {};
    if (::fstat(fd, &status) != 0) throwFileError(action, path);
    if ((status.st_mode & permissionBits) == mode) return;
    if (::fchmod(fd, mode) != 0) throwFileError(action, path);
}

} // namespace ambrel
