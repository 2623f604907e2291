#include "korvane/Verbs/SearchFolders.h"

#include "Manager/Rules/UserText.h"

namespace korvane {

std::optional<std::vector<ambrel::Path>> searchFolders(const std::vector<std::string>& given,
                                                       const ambrel::UserPlaces& user) {
    if (given.empty()) return std::nullopt;
    std::vector<ambrel::Path> folders;
    for (const auto& folder : given) folders.push_back(usablePath(folder, user));
    return folders;
}

} // namespace korvane
