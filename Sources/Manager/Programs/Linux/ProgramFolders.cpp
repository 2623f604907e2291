#include "Manager/Programs/Linux/ProgramFolders.h"

#include "Ambrel/Base/TextParts.h"
#include "Ambrel/Platform/FileError.h"
#include "Ambrel/Platform/FileSystem.h"
#include "Ambrel/Platform/Linux/DataFolders.h"

#include <algorithm>

namespace korvane {

using ambrel::Environment;
using ambrel::Path;
namespace fileSystem = ambrel::fileSystem;

std::vector<Path> programDataFolders(const ambrel::UserPlaces& user,
                                     const Environment& environment) {
    return ambrel::dataFolders({user.data}, ambrel::valueOf(environment, "XDG_DATA_DIRS"));
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
