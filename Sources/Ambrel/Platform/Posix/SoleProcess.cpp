#include "Ambrel/Platform/SoleProcess.h"

#include "Ambrel/Platform/Posix/Retry.h"

#include <array>
#include <cerrno>
#include <climits>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace ambrel {

namespace {

static_assert(SoleProcess::longestMessage < _POSIX_PIPE_BUF); // with its line end, in one piece

Path callsIn(const Path& folder) { return paths::join(folder, "calls"); }

/// Another thing in the pipe's place is not opened, waited for or written to.
std::optional<OwnedFd> openPipeEnd(const Path& pipe, int flags) {
    auto end = OwnedFd::open("open", pipe, flags | O_NONBLOCK | O_NOFOLLOW);
    struct stat status {};
    const bool isPipe = ::fstat(end.get(), &status) == 0 && S_ISFIFO(status.st_mode) &&
                        status.st_uid == ::geteuid();
    return isPipe ? std::optional(std::move(end)) : std::nullopt;
}

} // namespace

SoleProcess::SoleProcess(FolderLock lock, OwnedFd listening, OwnedFd speaking)
    : lock_(std::move(lock)), listening_(std::move(listening)), speaking_(std::move(speaking)) {}

std::optional<SoleProcess> SoleProcess::claim(const Path& folder) noexcept {
    try {
        auto lock = FolderLock::tryTake(folder);
        if (!lock) return std::nullopt;
        const auto pipe = callsIn(folder);
        if (::mkfifo(pipe.c_str(), S_IRUSR | S_IWUSR) != 0 && errno != EEXIST) return std::nullopt;
        auto listening = openPipeEnd(pipe, O_RDONLY);
        if (!listening) return std::nullopt;
        auto speaking = openPipeEnd(pipe, O_WRONLY);
        if (!speaking) return std::nullopt;
        return SoleProcess(std::move(*lock), std::move(*listening), std::move(*speaking));
    } catch (const std::exception&) {
        return std::nullopt;
    }
}

bool SoleProcess::call(const Path& folder, std::string_view message) noexcept {
    try {
        if (message.size() > longestMessage) return false;
        const auto pipe = openPipeEnd(callsIn(folder), O_WRONLY);
        if (!pipe) return false;
        const auto line = std::string(message) + "\n";
        const auto written =
            retryInterrupted([&] { return ::write(pipe->get(), line.data(), line.size()); });
        return written == static_cast<ssize_t>(line.size());
    } catch (const std::exception&) {
        return false; // no pipe, or nobody at its other end
    }
}

std::optional<std::string> SoleProcess::nextMessage() {
    std::array<char, _POSIX_PIPE_BUF> bytes;
    while (received_.find('\n') == std::string::npos) {
        const auto count =
            retryInterrupted([&] { return ::read(listening_.get(), bytes.data(), bytes.size()); });
        if (count <= 0) return std::nullopt;
        received_.append(bytes.data(), static_cast<std::size_t>(count));
    }
    const auto end = received_.find('\n');
    auto message = received_.substr(0, end);
    received_.erase(0, end + 1);
    return message;
}

void SoleProcess::stopListening() noexcept {
    listening_ = OwnedFd();
    speaking_ = OwnedFd();
}

} // namespace ambrel
