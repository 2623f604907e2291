#include "Ambrel/Launch/InstanceLauncher.h"

#include "Ambrel/Base/Utf8.h"
#include "Ambrel/Platform/FileSystem.h"
#include "Ambrel/Platform/ProcessName.h"
#include "Ambrel/Platform/UserPaths.h"

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

Environment isolatedEnvironment(const Path& home, const StringMap& configured) {
    auto environment = processEnvironment();
    environment["HOME"] = home;
    environment["CFFIXED_USER_HOME"] = home;
    redirectHomeVariables(environment, home);
    overwrite(environment, configured); // the configuration has the last word
    return environment;
}

/// What an application is started with.
struct AppStart {
    Path home;
    Strategy strategy;
    std::vector<std::string> arguments;
    StringMap environment;
    std::optional<std::string> processName;
    bool sharesTrash = false;
};

AppBundle readBundle(const Path& appURL, const SystemTools& tools) {
    auto app = AppBundle::read(appURL, tools);
    if (!app) throw LaunchError::badBundle(appURL);
    return std::move(*app);
}

ChildProcess startApp(const AppBundle& app, const AppStart& start) {
    fileSystem::createFolders(start.home);
    const auto log = InstanceLauncher::instanceLogHandle(start.home);
    // Checked this late on purpose: a refused app still leaves its home folder and log behind.
    if (start.strategy == Strategy::unsupported) throw LaunchError::unsupported(app.bundleId);
    InstanceLauncher::ensureKeychainAccess(start.home);
    InstanceLauncher::ensureDesktopAccess(start.home);
    if (start.sharesTrash) InstanceLauncher::ensureSharedTrash(start.home);
    return launched({.executable = app.executableURL(),
                     .arguments = start.arguments,
                     .environment = isolatedEnvironment(start.home, start.environment),
                     .standardOutput = log,
                     .standardError = log,
                     .processName = start.processName});
}

/// The configured name of the process, where this system has a use for it.
std::optional<std::string> configuredProcessName(const InstanceConfig& config) {
    if (!processNameNamesWindows()) return std::nullopt;
    const auto entry = config.infoPlistOverrides.find(processNameKey);
    if (entry == config.infoPlistOverrides.end()) return std::nullopt;
    const bool isUsable = InstanceLauncher::isUsableProcessName(entry->second);
    return isUsable ? std::optional(entry->second) : std::nullopt;
}

bool isControl(char32_t character) {
    return character < 0x20 || (character >= 0x7F && character < 0xA0);
}

ChildProcess launchApp(const InstanceConfig& config, const SystemTools& tools) {
    const auto home = config.resolvedHome();
    // Before the bundle is looked at, and whatever the strategy.
    if (config.shareUserFolders) InstanceLauncher::ensureSharedUserFolders(home);
    return startApp(readBundle(config.targetAppURL(), tools),
                    {.home = home,
                     .strategy = config.strategy,
                     .arguments = config.resolvedArgs(),
                     .environment = config.resolvedEnvironment(),
                     .processName = configuredProcessName(config),
                     .sharesTrash = config.shareUserFolders});
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
                                      const StringMap& environment, const SystemTools& tools,
                                      const std::optional<std::string>& processName) {
    const auto app = readBundle(appURL, tools);
    return launch(app, home, strategy, extraArgs, environment, processName);
}

ChildProcess InstanceLauncher::launch(const AppBundle& app, const Path& home, Strategy strategy,
                                      const std::vector<std::string>& extraArgs,
                                      const StringMap& environment,
                                      const std::optional<std::string>& processName) {
    return startApp(app, {home, strategy, extraArgs, environment, processName});
}

bool InstanceLauncher::isUsableProcessName(std::string_view name) noexcept {
    if (name.empty()) return false;
    while (!name.empty()) {
        const auto character = utf8::takeFirst(name);
        if (!character || *character == '/' || isControl(*character)) return false;
    }
    return true;
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
