#include "Ambrel/Platform/OutputFile.h"

#include "Ambrel/Base/RandomName.h"
#include "Ambrel/Platform/FileSystem.h"
#include "Ambrel/Platform/Posix/Retry.h"

#include <algorithm>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace ambrel {

namespace {

/// The size of a regular file, 0 for everything else.
std::int64_t sizeOf(const OwnedFd& file) {
    struct stat status {};
    const bool isFile = file && ::fstat(file.get(), &status) == 0 && S_ISREG(status.st_mode);
    return isFile ? status.st_size : 0;
}

/// Only for telling what was written: without it the child writes all the same.
OwnedFd tryOpen(const Path& path) noexcept {
    return OwnedFd(
        retryInterrupted([&] { return ::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC); }));
}

} // namespace

OutputFile::OutputFile(std::shared_ptr<const OwnedFd> writing, OwnedFd reading)
    : writing_(std::move(writing)), reading_(std::move(reading)), start_(sizeOf(reading_)) {}

OutputFile OutputFile::unnamed() {
    constexpr int flags = O_WRONLY | O_APPEND | O_CREAT | O_EXCL;
    const auto path = paths::join("/tmp", randomName());
    auto writing = std::make_shared<const OwnedFd>(OwnedFd::open("write", path, flags, 0600));
    auto reading = tryOpen(path);
    ::unlink(path.c_str());
    return {std::move(writing), std::move(reading)};
}

OutputFile OutputFile::appendingTo(const Path& path) {
    auto writing = std::make_shared<const OwnedFd>(fileSystem::openForAppending(path));
    return {std::move(writing), tryOpen(path)};
}

std::string OutputFile::written(std::size_t most) const {
    const auto end = sizeOf(reading_);
    const auto start = end < start_ ? 0 : start_;
    const auto size = std::min(static_cast<std::size_t>(end - start), most);
    std::string bytes(size, '\0');
    const auto from = static_cast<off_t>(end - static_cast<std::int64_t>(size));
    const auto count =
        retryInterrupted([&] { return ::pread(reading_.get(), bytes.data(), size, from); });
    bytes.resize(count > 0 ? static_cast<std::size_t>(count) : 0);
    return bytes;
}

} // namespace ambrel
