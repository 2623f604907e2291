#include "Ambrel/Instance/ResolvedInstance.h"

namespace ambrel {

ResolvedInstance ResolvedInstance::of(const InstanceConfig& config, const UserPlaces& user) {
    const auto expanded = [&](const std::optional<Path>& path) {
        return path ? std::optional(user.expandingTilde(*path)) : std::nullopt;
    };
    return {.config = config,
            .home = config.resolvedHome(user),
            .args = config.resolvedArgs(user),
            .environment = config.resolvedEnvironment(user),
            .commandArgs = config.resolvedCommandArgs(user),
            .openPath = expanded(config.openPath),
            .commandPath = expanded(config.commandPath),
            .workingDirectory = expanded(config.workingDirectory)};
}

} // namespace ambrel
