#pragma once

#include "Ambrel/Base/Path.h"

#include <optional>

namespace ambrel {

/// Where the running program lies. Both are absent when the system does not tell.
struct MainBundle {
    std::optional<Path> executableURL; ///< the program's own file, links resolved
    std::optional<Path> resourceURL;   ///< the folder of its resources, if there is one

    /// That of this process. Inside an application bundle the resources are Contents/Resources;
    /// on Linux a program in PREFIX/bin has them in PREFIX/lib/korvane.
    static MainBundle current();
};

} // namespace ambrel
