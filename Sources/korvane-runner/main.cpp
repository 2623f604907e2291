#include "Ambrel/Instance/BundleLayout.h"
#include "Ambrel/Launch/InstanceLauncher.h"
#include "Ambrel/Launch/SignalRelay.h"
#include "Ambrel/Platform/FileSystem.h"
#include "Ambrel/Platform/MainBundle.h"

#include <cstdio>

namespace {

using namespace ambrel;

constexpr int failureStatus = 1;

/// One line on standard error, in one write, so that lines of several runners do not mix.
int fail(const std::string& message) {
    const auto line = "runner: " + message + "\n";
    std::fwrite(line.data(), 1, line.size(), stderr); // standard error has no buffer
    return failureStatus;
}

/// Starts what `config` stands for and stays as long as that runs.
int launchAndWait(const InstanceConfig& config, const SignalHold& signals) {
    try {
        const auto user = UserPlaces::ofThisProcess();
        const auto instance = ResolvedInstance::of(config, user);
        auto process = InstanceLauncher::launch(instance, user, processEnvironment());
        return SignalRelay(process).waitUntilExit(signals);
    } catch (const std::exception& error) {
        return fail(std::string("failed to launch instance — ") + error.what());
    }
}

int run(const SignalHold& signals) {
    const auto executable = MainBundle::current().executableURL;
    if (!executable) return fail("no executable URL");
    InstanceConfig config;
    try {
        config = InstanceConfig::decode(
            fileSystem::read(BundleLayout::instanceJsonForExecutable(*executable)));
    } catch (const std::exception& error) {
        return fail(std::string("unreadable instance.json — ") + error.what());
    }
    return launchAndWait(config, signals);
}

} // namespace

int main() {
    const SignalHold signals; // first: a signal that comes early is passed on, not lost
    return run(signals);
}
