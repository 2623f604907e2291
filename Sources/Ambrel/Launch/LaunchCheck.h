#pragma once

#include "Ambrel/Instance/ResolvedInstance.h"
#include "Ambrel/Platform/SystemTools.h"

namespace ambrel {

/// Why an instance could not be started now.
struct LaunchObstacle {
    enum class Kind {
        noRunner,           ///< the bundle has no runner that can be run
        noDocument,         ///< the file kind without a path
        documentMissing,    ///< it is no address, and nothing is there
        noCommand,          ///< the command kind without a program
        commandNotRunnable, ///< no file that this user may execute
        folderMissing,      ///< the command's working directory
        badBundle,          ///< the application cannot be read
        unsupported,        ///< the application is not to be cloned
        programNotRunnable, ///< the application's
    };
    Kind kind;
    std::string subject; ///< the path, or the application's identifier for `unsupported`

    bool operator==(const LaunchObstacle&) const = default;
};

/// What speaks against a start of `instance` that can be told without one; absent when nothing
/// does. Looks, and changes nothing. A web instance starts whatever its address is: where that is
/// none, its window says so.
std::optional<LaunchObstacle> findLaunchObstacle(const ResolvedInstance& instance,
                                                 const SystemTools& tools = {});

/// The same for the runner inside the wrapper at `bundle`.
std::optional<LaunchObstacle> findRunnerObstacle(const Path& bundle);

} // namespace ambrel
