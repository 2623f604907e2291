#include "Manager/Programs/Linux/ProgramFolders.h"

#include "Ambrel/Platform/FileError.h"
#include "Ambrel/Platform/FileSystem.h"

#include <algorithm>
#include <sstream>

namespace korvane {

using ambrel::Environment;
using ambrel::Path;
namespace fileSystem = ambrel::fileSystem;

namespace {

std::string valueOf(const Environment& environment, const std::string& name) {
    const auto found = environment.find(name);
    return found == environment.end() ? "" : found->second;
}

} // namespace

std::vector<Path> programDataFolders(const ambrel::UserPlaces& user,
                                     const Environment& environment) {
    std::vector<Path> folders;
    if (!user.data.empty()) folders.push_back(user.data);
    const auto shared = valueOf(environment, "XDG_DATA_DIRS");
    std::istringstream list(shared.empty() ? "/usr/local/share:/usr/share" : shared);
    for (std::string folder; std::getline(list, folder, ':');) {
        // Relative entries are to be ignored.
        if (folder.starts_with('/')) folders.push_back(folder);
    }
    return folders;
}

std::vector<std::string> sortedNamesIn(const Path& folder) {
    try {
        auto names = fileSystem::list(folder);
        std::sort(names.begin(), names.end());
        return names;
    } catch (const ambrel::FileError&) {
        return {};
    }
}

} // namespace korvane
