#include "Ambrel/Instance/ResolvedInstance.h"

#include <utility>

namespace ambrel {

ResolvedInstance ResolvedInstance::of(InstanceConfig config, const UserPlaces& user) {
    const auto expanded = [&](const std::optional<Path>& path) {
        return path ? std::optional(user.expandingTilde(*path)) : std::nullopt;
    };
    ResolvedInstance instance{.config = {},
                              .home = config.resolvedHome(user),
                              .args = config.resolvedArgs(user),
                              .environment = config.resolvedEnvironment(user),
                              .commandArgs = config.resolvedCommandArgs(user),
                              .openPath = expanded(config.openPath),
                              .commandPath = expanded(config.commandPath),
                              .workingDirectory = expanded(config.workingDirectory)};
    instance.config = std::move(config); // last: everything else is made of it
    return instance;
}

} // namespace ambrel
