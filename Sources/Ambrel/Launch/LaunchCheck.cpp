#include "Ambrel/Launch/LaunchCheck.h"

#include "Ambrel/Application/AppBundle.h"
#include "Ambrel/Instance/BundleLayout.h"
#include "Ambrel/Platform/FileSystem.h"

namespace ambrel {

namespace {

using Kind = LaunchObstacle::Kind;
using Finding = std::optional<LaunchObstacle>;

bool isGiven(const std::optional<Path>& path) { return path && !path->empty(); }

Finding checkThere(const std::optional<Path>& place, Kind kind) {
    const bool isAddress = place && place->find("://") != Path::npos;
    if (!isGiven(place) || isAddress || fileSystem::exists(*place)) return std::nullopt;
    return LaunchObstacle{kind, *place};
}

Finding checkRunnable(const Path& program, Kind kind) {
    if (fileSystem::isExecutableFile(program)) return std::nullopt;
    return LaunchObstacle{kind, program};
}

Finding checkFile(const ResolvedInstance& instance) {
    if (!isGiven(instance.openPath)) return LaunchObstacle{Kind::noDocument, ""};
    return checkThere(instance.openPath, Kind::documentMissing);
}

Finding checkCommand(const ResolvedInstance& instance) {
    if (!isGiven(instance.commandPath)) return LaunchObstacle{Kind::noCommand, ""};
    auto finding = checkRunnable(*instance.commandPath, Kind::commandNotRunnable);
    return finding ? finding : checkThere(instance.workingDirectory, Kind::folderMissing);
}

Finding checkApp(const InstanceConfig& config, const SystemTools& tools) {
    const auto app = AppBundle::read(config.targetAppURL(), tools);
    if (!app) return LaunchObstacle{Kind::badBundle, config.targetAppPath};
    if (config.strategy == Strategy::unsupported) {
        return LaunchObstacle{Kind::unsupported, app->bundleId};
    }
    return checkRunnable(app->executableURL(), Kind::programNotRunnable);
}

} // namespace

std::optional<LaunchObstacle> findLaunchObstacle(const ResolvedInstance& instance,
                                                 const SystemTools& tools) {
    switch (instance.config.kind) {
    case ShortcutKind::web:
        break;
    case ShortcutKind::file:
        return checkFile(instance);
    case ShortcutKind::command:
        return checkCommand(instance);
    case ShortcutKind::app:
        return checkApp(instance.config, tools);
    }
    return std::nullopt;
}

std::optional<LaunchObstacle> findRunnerObstacle(const Path& bundle) {
    return checkRunnable(BundleLayout{bundle}.runner(), Kind::noRunner);
}

} // namespace ambrel
