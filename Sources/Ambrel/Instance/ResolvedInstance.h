#pragma once

#include "Ambrel/Instance/InstanceConfig.h"

namespace ambrel {

/// A configuration as one user's start of it takes it: everything expanded, once.
struct ResolvedInstance {
    InstanceConfig config;                ///< as it is stored
    Path home;                            ///< empty or relative where the configuration has it so
    std::vector<std::string> args;        ///< those of the application
    StringMap environment;                ///< the added variables
    std::vector<std::string> commandArgs; ///< those of the command
    std::optional<Path> openPath;         ///< absent and empty as in the configuration; so the next
    std::optional<Path> commandPath;
    std::optional<Path> workingDirectory;

    /// Looks at no file; only "~name" asks the user database.
    static ResolvedInstance of(InstanceConfig config, const UserPlaces& user);
};

} // namespace ambrel
