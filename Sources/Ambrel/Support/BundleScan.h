#pragma once

#include "Ambrel/Path.h"

#include <vector>

namespace ambrel {

/// The entries lying directly in `folders` whose extension is exactly "app", in the order of the
/// folders and of their listings. Folders that cannot be listed are skipped.
std::vector<Path> bundlesIn(const std::vector<Path>& folders);

} // namespace ambrel
