#include "Ambrel/Home/HomePreparation.h"
#include "Ambrel/Instance/BundleLayout.h"
#include "Ambrel/Launch/InstanceLauncher.h"
#include "Ambrel/Launch/LaunchCheck.h"
#include "Ambrel/Launch/OpenedItems.h"
#include "Ambrel/Platform/FileSystem.h"
#include "Ambrel/Platform/MainBundle.h"
#include "korvane-runner/Bus/OwnBusNames.h"
#include "korvane-runner/Hosts.h"
#include "korvane-runner/MenuBarHost.h"
#include "korvane-runner/WaitingHost.h"
#include "korvane-runner/Web/WebHost.h"

#include <cstdio>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace {

using namespace ambrel;
using namespace korvane::runner;

constexpr int failureStatus = 1;

/// One line on standard error, in one write, so that lines of several runners do not mix.
void tell(const std::string& message) {
    const auto line = "runner: " + message + "\n";
    std::fwrite(line.data(), 1, line.size(), stderr); // standard error has no buffer
}

int fail(const std::string& message) {
    tell(message);
    return failureStatus;
}

/// A home that has gone is made again as it was when the instance was made, whoever starts it.
/// Where the start is going to be refused that is left to the launch, which knows what remains.
void prepareHome(const ResolvedInstance& instance, const UserPlaces& user) noexcept {
    HomePreparation::ensure(instance, user, [&] { return !findLaunchObstacle(instance); });
}

/// What this process was started with, which only an application has a use for.
struct Arguments {
    int count;
    const char* const* words;
};

std::vector<std::string> openedBy(const InstanceConfig& config, const Arguments& arguments) {
    if (config.kind != ShortcutKind::app) return {};
    return openedItems(arguments.count, arguments.words);
}

std::unique_ptr<HostedProgram> launchProgram(const ResolvedInstance& instance,
                                             const UserPlaces& user,
                                             const std::vector<std::string>& opened) {
    prepareHome(instance, user);
    const auto inherited = processEnvironment();
    if (auto program = OwnBusNames::tryLaunch(instance, user, inherited, opened, tell)) {
        return program;
    }
    return std::make_unique<ChildProcess>(
        InstanceLauncher::launch(instance, user, inherited, {}, opened));
}

/// A program that runs is not to suffer from what is only beside it.
int hostWithItem(const ResolvedInstance& instance, const UserPlaces& user, const Path& icon,
                 HostedProgram& program, const SignalHold& signals) {
    const bool isApp = instance.config.kind == ShortcutKind::app;
    const StatusIconFiles icons{.own = icon, .app = isApp ? instance.config.targetAppPath : Path()};
    try {
        return MenuBarHost::run(instance, user, icons, program, signals, Desktop::open);
    } catch (const std::exception& error) {
        tell(std::string("cannot show the status item — ") + error.what());
        return WaitingHost::run(program, signals);
    }
}

/// Runs the instance of the wrapper with this executable to its end and returns its status.
int host(InstanceConfig config, const Path& executable, const Arguments& arguments,
         const SignalHold& signals) {
    const auto opened = openedBy(config, arguments);
    // A command and a document's program are what they would be where they are started.
    if (config.kind == ShortcutKind::app || config.kind == ShortcutKind::web) {
        OwnBusNames::returnToUsersBus();
    }
    const auto user = UserPlaces::ofThisProcess();
    const auto instance = ResolvedInstance::of(std::move(config), user);
    const auto icon = BundleLayout::iconForExecutable(executable);
    const auto chosen = hostFor(instance.config);
    if (chosen == Host::web) {
        return WebHost::run(instance, {user, processEnvironment(), icon}, signals,
                            WebDesktop::open);
    }
    const auto program = launchProgram(instance, user, opened);
    if (chosen == Host::menuBar) return hostWithItem(instance, user, icon, *program, signals);
    return WaitingHost::run(*program, signals);
}

int run(const Arguments& arguments, const SignalHold& signals) {
    const auto executable = MainBundle::current().executableURL;
    if (!executable) return fail("no executable URL");
    InstanceConfig config;
    try {
        config = InstanceConfig::decode(
            fileSystem::read(BundleLayout::instanceJsonForExecutable(*executable)));
    } catch (const std::exception& error) {
        return fail(std::string("unreadable instance.json — ") + error.what());
    }
    try {
        return host(std::move(config), *executable, arguments, signals);
    } catch (const std::exception& error) {
        return fail(std::string("failed to launch instance — ") + error.what());
    }
}

} // namespace

int main(int count, char** words) {
    const SignalHold signals; // first: a signal that comes early is passed on, not lost
    return run({count, words}, signals);
}
