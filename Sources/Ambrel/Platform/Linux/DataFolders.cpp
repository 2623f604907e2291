#include "Ambrel/Platform/Linux/DataFolders.h"

#include "Ambrel/Base/TextParts.h"

#include <algorithm>

namespace ambrel {

std::vector<Path> dataFolders(const std::vector<Path>& own, std::string_view shared) {
    std::vector<Path> folders;
    const auto add = [&folders](const Path& folder) {
        const bool isNew = std::ranges::find(folders, folder) == folders.end();
        if (folder.starts_with('/') && isNew) folders.push_back(folder);
    };
    std::ranges::for_each(own, add);
    if (shared.empty()) shared = "/usr/local/share:/usr/share";
    while (!shared.empty()) add(Path(takeUntil(shared, ':')));
    return folders;
}

} // namespace ambrel
