#pragma once

#include "Ambrel/Platform/UserPlaces.h"

#include <optional>
#include <string>
#include <vector>

namespace korvane {

/// The folders that --in names, for use now; absent where the option was not given.
std::optional<std::vector<ambrel::Path>> searchFolders(const std::vector<std::string>& given,
                                                       const ambrel::UserPlaces& user);

} // namespace korvane
