#pragma once

#include "Ambrel/Base/Path.h"
#include "Ambrel/Platform/ProcessEnvironment.h"

#include <string>
#include <vector>

namespace korvane {

/// Where programs put their entries and icons by the XDG Base Directory Specification, the user's
/// own folder, user.data, first.
std::vector<ambrel::Path> programDataFolders(const ambrel::UserPlaces& user,
                                             const ambrel::Environment& environment);

/// The names in a folder in their order; none when it cannot be listed, because what is not
/// installed has no entries and no icons.
std::vector<std::string> sortedNamesIn(const ambrel::Path& folder);

} // namespace korvane
