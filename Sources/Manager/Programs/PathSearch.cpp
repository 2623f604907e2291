#include "Manager/Programs/PathSearch.h"

#include "Ambrel/Platform/FileSystem.h"

#include <sstream>

namespace korvane {

using ambrel::Path;

std::optional<Path> findProgram(const std::string& program,
                                const ambrel::Environment& environment) {
    const auto path = environment.find("PATH");
    if (program.empty() || program.find('/') != std::string::npos || path == environment.end()) {
        return std::nullopt;
    }
    std::istringstream folders(path->second);
    for (std::string folder; std::getline(folders, folder, ':');) {
        // An empty entry stands for the working directory.
        const auto file = ambrel::fileSystem::absolute(
            ambrel::paths::join(folder.empty() ? "." : folder, program));
        if (ambrel::fileSystem::isExecutableFile(file)) return file;
    }
    return std::nullopt;
}

} // namespace korvane
