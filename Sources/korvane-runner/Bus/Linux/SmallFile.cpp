#include "korvane-runner/Bus/Linux/SmallFile.h"

#include "Ambrel/Platform/OwnedFd.h"
#include "Ambrel/Platform/Posix/Retry.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace korvane::runner::bus {

using namespace ambrel;

// Looked at and read by one descriptor: what is put in its place meanwhile is another file.
std::optional<std::string> tryReadSmallFile(const Path& file) {
    const OwnedFd fd(retryInterrupted(
        [&] { return ::open(file.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC); }));
    struct stat status {};
    const bool isSmallFile = fd && ::fstat(fd.get(), &status) == 0 && S_ISREG(status.st_mode) &&
                             status.st_size <= static_cast<off_t>(longestSmallFile);
    if (!isSmallFile) return std::nullopt;
    std::string text(static_cast<std::size_t>(status.st_size), '\0');
    std::size_t there = 0;
    while (there < text.size()) {
        const auto size = retryInterrupted(
            [&] { return ::read(fd.get(), text.data() + there, text.size() - there); });
        if (size < 0) return std::nullopt;
        if (size == 0) break; // it has become shorter
        there += static_cast<std::size_t>(size);
    }
    text.resize(there);
    return text;
}

} // namespace korvane::runner::bus
