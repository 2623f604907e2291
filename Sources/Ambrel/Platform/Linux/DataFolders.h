#pragma once

#include "Ambrel/Base/Path.h"

#include <string_view>
#include <vector>

namespace ambrel {

/// Where programs look for what others have brought along (XDG Base Directory Specification): `own`
/// first, then the folders of `shared`, which is XDG_DATA_DIRS as it stands, or its default where
/// that is empty. Those that are not absolute are left out, and each is there once. They need not
/// exist.
std::vector<Path> dataFolders(const std::vector<Path>& own, std::string_view shared);

} // namespace ambrel
