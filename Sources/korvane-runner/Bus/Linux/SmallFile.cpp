#include "korvane-runner/Bus/Linux/SmallFile.h"

#include "Ambrel/Platform/FileSystem.h"

#include <sys/stat.h>

namespace korvane::runner::bus {

using namespace ambrel;

std::optional<std::string> tryReadSmallFile(const Path& file) {
    struct stat status {};
    const bool isSmallFile = ::stat(file.c_str(), &status) == 0 && S_ISREG(status.st_mode) &&
                             status.st_size <= static_cast<off_t>(longestSmallFile);
    if (!isSmallFile) return std::nullopt;
    try {
        return fileSystem::read(file);
    } catch (const FileError&) {
        return std::nullopt; // most often it may not be read, as the bus passes over it then
    }
}

} // namespace korvane::runner::bus
