#include "Ambrel/Launch/InstanceLauncher.h"

#include "Ambrel/Base/Utf8.h"
#include "Ambrel/Home/DesktopAccess.h"
#include "Ambrel/Home/SharedUserFolders.h"
#include "Ambrel/Instance/BundleLayout.h"
#include "Ambrel/Launch/OpenedItems.h"
#include "Ambrel/Platform/FileSystem.h"
#include "Ambrel/Platform/HomeVariables.h"
#include "Ambrel/Platform/ProcessName.h"
#include "Ambrel/Platform/PropertyList.h"

namespace ambrel {

namespace {

static_assert(InstanceLauncher::sharedUserFolders == SharedUserFolders::names);

constexpr const char* keychains = "Library/Keychains";

bool isMissing(const std::optional<Path>& path) { return !path || path->empty(); }

ChildProcess launched(ChildProcess process) {
    process.launch();
    return process;
}

/// Applies the configuration's entries. A name with "=" in it would set another variable, and one
/// without a letter none (POSIX, setenv). What is inherited is not asked: whoever started this
/// process may have left an entry without a name in it, which no program minds.
void overwrite(Environment& environment, const StringMap& entries, const Path& executable) {
    for (const auto& [name, value] : entries) {
        if (name.empty() || name.find('=') != std::string::npos) {
            throw ChildProcessError(ChildProcessError::Fault::arguments, executable,
                                    "no environment variable can be called \"" + name + "\"");
        }
        environment[name] = value;
    }
}

/// A command runs without its home folder too: it is there for the log alone.
void tryCreateHome(const Path& home) noexcept {
    try {
        fileSystem::createFolders(home);
    } catch (const FileError&) {
    }
}

ChildProcess prepareFile(const ResolvedInstance& instance, const SystemTools& tools) {
    if (isMissing(instance.openPath))
        throw LaunchError::unsupported("file shortcut has no target path");
    return ChildProcess({.executable = tools.open, .arguments = {*instance.openPath}});
}

ChildProcess prepareCommand(const ResolvedInstance& instance, const Environment& inherited) {
    if (isMissing(instance.commandPath)) {
        throw LaunchError::unsupported("command shortcut has no executable");
    }
    tryCreateHome(instance.home);
    ChildProcess::Setup setup{.executable = *instance.commandPath,
                              .arguments = instance.commandArgs};
    if (!isMissing(instance.workingDirectory)) setup.currentDirectory = instance.workingDirectory;
    if (!instance.environment.empty()) { // without, the runner's own is inherited as it stands
        setup.environment = inherited;
        overwrite(*setup.environment, instance.environment, setup.executable);
    }
    setup.standardOutput = InstanceLauncher::instanceLogHandle(instance.home);
    setup.standardError = setup.standardOutput;
    return ChildProcess(std::move(setup));
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

Environment isolatedEnvironment(Environment environment, const AppBundle& app,
                                const AppStart& start, const UserPlaces& user) {
    environment["HOME"] = start.home;
    environment["CFFIXED_USER_HOME"] = start.home;
    redirectHomeVariables(environment, start.home, user);
    // The configuration has the last word.
    overwrite(environment, start.environment, app.executableURL());
    return environment;
}

AppBundle readBundle(const Path& appURL, const SystemTools& tools) {
    auto app = AppBundle::read(appURL, tools);
    if (!app) throw LaunchError::badBundle(appURL);
    return std::move(*app);
}

ChildProcess prepareStart(const AppBundle& app, const AppStart& start, const UserPlaces& user,
                          const Environment& inherited) {
    fileSystem::createFolders(start.home);
    const auto log = InstanceLauncher::instanceLogHandle(start.home);
    // Checked this late on purpose: a refused app still leaves its home folder and log behind.
    if (start.strategy == Strategy::unsupported) throw LaunchError::unsupported(app.bundleId);
    InstanceLauncher::ensureKeychainAccess(start.home, user);
    DesktopAccess::ensure(start.home, user);
    if (start.sharesTrash) DesktopAccess::ensureTrash(start.home, user);
    return ChildProcess({.executable = app.executableURL(),
                         .arguments = start.arguments,
                         .environment = isolatedEnvironment(inherited, app, start, user),
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

/// The argument that the application's program wants in front of what it opens; mostly absent.
std::optional<std::string> openMarkOf(const Path& appURL) {
    const auto info = readPropertyList(BundleLayout{appURL}.infoPlist());
    if (!info) return std::nullopt;
    const auto entry = info->find(openMarkKey);
    const auto* mark = entry == info->end() ? nullptr : entry->second.string();
    return mark == nullptr ? std::nullopt : std::optional(*mark);
}

/// Only a start that opens something looks for more than there always is.
std::vector<std::string> argumentsWith(const std::vector<std::string>& opened,
                                       const ResolvedInstance& instance) {
    auto arguments = instance.args;
    if (opened.empty()) return arguments;
    if (auto mark = openMarkOf(instance.config.targetAppURL())) {
        arguments.push_back(std::move(*mark));
    }
    arguments.insert(arguments.end(), opened.begin(), opened.end());
    return arguments;
}

ChildProcess prepareApp(const ResolvedInstance& instance, const UserPlaces& user,
                        const Environment& inherited, const SystemTools& tools,
                        const std::vector<std::string>& opened) {
    const auto& config = instance.config;
    // Before the bundle is looked at, and whatever the strategy.
    if (config.shareUserFolders) SharedUserFolders::ensure(instance.home, user);
    return prepareStart(readBundle(config.targetAppURL(), tools),
                        {.home = instance.home,
                         .strategy = config.strategy,
                         .arguments = argumentsWith(opened, instance),
                         .environment = instance.environment,
                         .processName = configuredProcessName(config),
                         .sharesTrash = config.shareUserFolders},
                        user, inherited);
}

} // namespace

ChildProcess InstanceLauncher::launch(const ResolvedInstance& instance, const UserPlaces& user,
                                      const Environment& inherited, const SystemTools& tools,
                                      const std::vector<std::string>& opened) {
    return launched(prepare(instance, user, inherited, tools, opened));
}

ChildProcess InstanceLauncher::prepare(const ResolvedInstance& instance, const UserPlaces& user,
                                       const Environment& inherited, const SystemTools& tools,
                                       const std::vector<std::string>& opened) {
    switch (instance.config.kind) {
    case ShortcutKind::web:
        break;
    case ShortcutKind::file:
        return prepareFile(instance, tools);
    case ShortcutKind::command:
        return prepareCommand(instance, inherited);
    case ShortcutKind::app:
        return prepareApp(instance, user, inherited, tools, opened);
    }
    throw LaunchError::unsupported("web shortcuts run in the runner's web host");
}

ChildProcess InstanceLauncher::launch(const Path& appURL, const Path& home, Strategy strategy,
                                      const std::vector<std::string>& extraArgs,
                                      const StringMap& environment, const UserPlaces& user,
                                      const Environment& inherited, const SystemTools& tools,
                                      const std::optional<std::string>& processName) {
    const auto app = readBundle(appURL, tools);
    return launch(app, home, strategy, extraArgs, environment, user, inherited, processName);
}

ChildProcess InstanceLauncher::launch(const AppBundle& app, const Path& home, Strategy strategy,
                                      const std::vector<std::string>& extraArgs,
                                      const StringMap& environment, const UserPlaces& user,
                                      const Environment& inherited,
                                      const std::optional<std::string>& processName) {
    return launched(
        prepareStart(app, {home, strategy, extraArgs, environment, processName}, user, inherited));
}

bool InstanceLauncher::isUsableProcessName(std::string_view name) noexcept {
    if (name.empty()) return false;
    while (!name.empty()) {
        const auto character = utf8::takeFirst(name);
        if (!character || *character == '/' || utf8::isControl(*character)) return false;
    }
    return true;
}

void InstanceLauncher::ensureKeychainAccess(const Path& home, const UserPlaces& user) noexcept {
    if (home.empty()) return; // the link would lie wherever the program was started
    linkIfSafe(paths::join(home, keychains), paths::join(user.home, keychains));
}

void InstanceLauncher::ensureDesktopAccess(const Path& home, const UserPlaces& user) noexcept {
    DesktopAccess::ensure(home, user);
}

void InstanceLauncher::ensureSharedTrash(const Path& home, const UserPlaces& user) noexcept {
    DesktopAccess::ensureTrash(home, user);
}

void InstanceLauncher::ensureSharedUserFolders(const Path& home, const UserPlaces& user) noexcept {
    SharedUserFolders::ensure(home, user);
}

void InstanceLauncher::linkIfSafe(const Path& link, const Path& target) noexcept {
    SharedUserFolders::linkIfSafe(link, target);
}

bool InstanceLauncher::needsSharedFolderMigration(const Path& home,
                                                  const UserPlaces& user) noexcept {
    return SharedUserFolders::needsMigration(home, user);
}

std::map<std::string, int> InstanceLauncher::migrateSharedUserFolders(const Path& home,
                                                                      const UserPlaces& user) {
    return SharedUserFolders::migrate(home, user);
}

std::map<std::string, int> InstanceLauncher::migrateSharedUserFolders(const Path& home,
                                                                      const Path& into) {
    return SharedUserFolders::migrate(home, into);
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
