#include "Ambrel/InstanceLauncher.h"

#include "Ambrel/Platform/FileSystem.h"
#include "Ambrel/Platform/UserPaths.h"
#include "Ambrel/Support/Utf8.h"

namespace ambrel {

LaunchError::LaunchError(Kind errorKind, const std::string& text, const std::string& about)
    : std::runtime_error(utf8::oneLine(text)), kind(errorKind), subject(about) {}

LaunchError LaunchError::badBundle(const Path& app) {
    return {Kind::badBundle, "Not a readable .app bundle: " + app, app};
}

LaunchError LaunchError::unsupported(const std::string& reason) {
    return {Kind::unsupported, "App not clonable: " + reason, reason};
}

namespace {

constexpr const char* keychains = "Library/Keychains";

bool isMissing(const std::optional<Path>& path) { return !path || path->empty(); }

ChildProcess launched(ChildProcess::Setup setup) {
    ChildProcess process(std::move(setup));
    process.launch();
    return process;
}

void overwrite(Environment& environment, const StringMap& entries) {
    for (const auto& [key, value] : entries) environment[key] = value;
}

/// A command runs without its home folder too: it is there for the log alone.
void tryCreateHome(const Path& home) noexcept {
    try {
        fileSystem::createFolders(home);
    } catch (const FileError&) {
    }
}

ChildProcess launchFile(const InstanceConfig& config, const SystemTools& tools) {
    if (isMissing(config.openPath))
        throw LaunchError::unsupported("file shortcut has no target path");
    return launched({.executable = tools.open, .arguments = {expandingTilde(*config.openPath)}});
}

ChildProcess launchCommand(const InstanceConfig& config) {
    if (isMissing(config.commandPath)) {
        throw LaunchError::unsupported("command shortcut has no executable");
    }
    const auto home = config.resolvedHome();
    tryCreateHome(home);
    ChildProcess::Setup setup{.executable = expandingTilde(*config.commandPath),
                              .arguments = config.resolvedCommandArgs()};
    if (!isMissing(config.workingDirectory)) {
        setup.currentDirectory = expandingTilde(*config.workingDirectory);
    }
    if (!config.environment.empty()) { // without, the runner's own is inherited as it stands
        setup.environment = processEnvironment();
        overwrite(*setup.environment, config.resolvedEnvironment());
    }
    setup.standardOutput = InstanceLauncher::instanceLogHandle(home);
    setup.standardError = setup.standardOutput;
    return launched(std::move(setup));
}

ChildProcess launchApp(const InstanceConfig& config, const SystemTools& tools) {
    const auto home = config.resolvedHome();
    // Before the bundle is looked at, and whatever the strategy.
    if (config.shareUserFolders) InstanceLauncher::ensureSharedUserFolders(home);
    return InstanceLauncher::launch(config.targetAppURL(), home, config.strategy,
                                    config.resolvedArgs(), config.resolvedEnvironment(), tools);
}

Environment isolatedEnvironment(const Path& home, const StringMap& configured) {
    auto environment = processEnvironment();
    environment["HOME"] = home;
    environment["CFFIXED_USER_HOME"] = home;
    redirectHomeVariables(environment, home);
    overwrite(environment, configured); // the configuration has the last word
    return environment;
}

} // namespace

ChildProcess InstanceLauncher::launch(const InstanceConfig& config, const SystemTools& tools) {
    switch (config.kind) {
    case ShortcutKind::web:
        break;
    case ShortcutKind::file:
        return launchFile(config, tools);
    case ShortcutKind::command:
        return launchCommand(config);
    case ShortcutKind::app:
        return launchApp(config, tools);
    }
    throw LaunchError::unsupported("web shortcuts run in the runner's web host");
}

ChildProcess InstanceLauncher::launch(const Path& appURL, const Path& home, Strategy strategy,
                                      const std::vector<std::string>& extraArgs,
                                      const StringMap& environment, const SystemTools& tools) {
    const auto app = AppBundle::read(appURL, tools);
    if (!app) throw LaunchError::badBundle(appURL);
    return launch(*app, home, strategy, extraArgs, environment);
}

ChildProcess InstanceLauncher::launch(const AppBundle& app, const Path& home, Strategy strategy,
                                      const std::vector<std::string>& extraArgs,
                                      const StringMap& environment) {
    fileSystem::createFolders(home);
    const auto log = instanceLogHandle(home);
    // Checked this late on purpose: a refused app still leaves its home folder and log behind.
    if (strategy == Strategy::unsupported) throw LaunchError::unsupported(app.bundleId);
    ensureKeychainAccess(home);
    return launched({.executable = app.executableURL(),
                     .arguments = extraArgs,
                     .environment = isolatedEnvironment(home, environment),
                     .standardOutput = log,
                     .standardError = log});
}

void InstanceLauncher::ensureKeychainAccess(const Path& home) noexcept {
    linkIfSafe(paths::join(home, keychains), paths::join(userHome(), keychains));
}

std::shared_ptr<const OwnedFd> InstanceLauncher::instanceLogHandle(const Path& home) noexcept {
    if (home.empty()) return nullptr; // else it would lie wherever the program was started
    try {
        return std::make_shared<const OwnedFd>(
            fileSystem::openForAppending(paths::join(home, instanceLogName)));
    } catch (const FileError&) {
        return nullptr; // the program's output then goes where the runner's goes
    }
}

} // namespace ambrel
