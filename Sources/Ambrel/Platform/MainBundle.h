#pragma once

#include "Ambrel/Base/Path.h"

#include <optional>

namespace ambrel {

/// Where the running program lies. All are absent when the system does not tell.
struct MainBundle {
    std::optional<Path> executableURL; ///< the program's own file, links resolved
    std::optional<Path> resourceURL;   ///< the folder of its resources, if there is one
    std::optional<Path> dataURL = {};  ///< the folder of its data, if there is one

    /// That of this process. Inside an application bundle resources and data are
    /// Contents/Resources; on Linux a program in PREFIX/bin has its resources, for this machine
    /// alone, in PREFIX/lib/korvane and its data, for any machine, in PREFIX/share/korvane.
    static MainBundle current();
};

} // namespace ambrel
