#pragma once

#include "Ambrel/Base/Path.h"

namespace ambrel {

/// The programs of the system that the library starts. The paths are fixed; only tests pass other
/// ones.
struct SystemTools {
    Path codesign = "/usr/bin/codesign"; ///< shows a bundle's entitlements; absent on Linux
    Path open = "/usr/bin/open";         ///< opens a document with its default handler
};

} // namespace ambrel
