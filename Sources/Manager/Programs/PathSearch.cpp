#include "Manager/Programs/PathSearch.h"

#include "Ambrel/Platform/FileSystem.h"
#include "Manager/Base/Quoting.h"
#include "Manager/Base/Refusal.h"

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

Path requireProgram(const std::string& program, const ambrel::Environment& environment) {
    if (auto found = findProgram(program, environment)) return std::move(*found);
    throw Refusal(Refusal::Kind::unknownProgram, program,
                  "No program called " + inQuotes(program) + " is in the folders of PATH.");
}

} // namespace korvane
