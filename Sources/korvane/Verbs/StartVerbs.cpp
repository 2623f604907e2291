#include "korvane/Verbs/StartVerbs.h"

#include "Ambrel/Application/AppBundle.h"
#include "Ambrel/Base/Utf8.h"
#include "Ambrel/Instance/BundleLayout.h"
#include "Ambrel/Launch/InstanceLauncher.h"
#include "Ambrel/Launch/SignalRelay.h"
#include "Ambrel/Platform/DetachedProcess.h"
#include "Ambrel/Platform/FileSystem.h"
#include "Manager/Base/ManagerError.h"
#include "Manager/Base/Quoting.h"
#include "Manager/Rules/InstanceHome.h"
#include "Manager/Rules/InstanceLookup.h"
#include "korvane/CommandLine/Options.h"
#include "korvane/Output/Messages.h"

namespace korvane {

using ambrel::ChildProcess;
using ambrel::InstanceConfig;
using ambrel::InstanceRecord;
using ambrel::Path;
using ambrel::ShortcutKind;

namespace {

ambrel::Path requireRunner(const InstanceRecord& record) {
    const auto runner = ambrel::BundleLayout{record.bundleURL}.runner();
    if (ambrel::fileSystem::isExecutableFile(runner)) return runner;
    throw Refusal("The instance " + inQuotes(record.config.displayName) +
                  " is damaged: there is no runner at " + ambrel::utf8::oneLine(runner) +
                  ". Make it anew with: korvane create … --replace");
}

void requireThere(const std::optional<Path>& path, const std::string& what) {
    const auto place = path.value_or("");
    const bool isAddress = place.find("://") != Path::npos;
    if (place.empty() || isAddress || ambrel::fileSystem::exists(place)) return;
    throw Refusal(what + " is not there: " + ambrel::utf8::oneLine(place));
}

void requireRunnable(const Path& program, const std::string& what) {
    if (ambrel::fileSystem::isExecutableFile(program)) return;
    throw Refusal(what + " cannot be run: " + ambrel::utf8::oneLine(program));
}

/// What a detached start would fail at unseen.
void requireLaunchable(const InstanceConfig& config, const ambrel::UserPlaces& user) {
    using ambrel::LaunchError;
    const auto instance = ambrel::ResolvedInstance::of(config, user);
    if (config.kind == ShortcutKind::web) {
        throw Refusal("The runner cannot host web sites yet: this instance cannot be opened.");
    }
    if (config.kind == ShortcutKind::file && config.openPath.value_or("").empty()) {
        throw LaunchError::unsupported("file shortcut has no target path");
    }
    if (config.kind == ShortcutKind::command && config.commandPath.value_or("").empty()) {
        throw LaunchError::unsupported("command shortcut has no executable");
    }
    if (config.kind == ShortcutKind::file) requireThere(instance.openPath, "The document");
    if (config.kind == ShortcutKind::command) {
        requireRunnable(*instance.commandPath, "The command");
        requireThere(instance.workingDirectory, "The working directory");
    }
    if (config.kind != ShortcutKind::app) return;
    const auto target = ambrel::AppBundle::read(config.targetAppURL());
    if (!target) throw LaunchError::badBundle(config.targetAppPath);
    if (config.strategy == ambrel::Strategy::unsupported) {
        throw LaunchError::unsupported(target->bundleId);
    }
    requireRunnable(target->executableURL(), "The application's program");
}

int open(const std::string& name, const Surroundings& surroundings) {
    const auto record = requireInstance(name, surroundings.user);
    const auto runner = requireRunner(record);
    requireLaunchable(record.config, surroundings.user);
    ensureHome(record.config, surroundings.user);
    // Nobody watches the runner's own messages: they go where the instance's are looked for.
    const auto home = usableHome(record.config, surroundings.user);
    const auto log = home ? ambrel::InstanceLauncher::instanceLogHandle(*home) : nullptr;
    ambrel::launchDetached(runner, log);
    say(surroundings, "Opened " + inQuotes(record.config.displayName) + ".");
    if (record.config.kind != ShortcutKind::file) {
        say(surroundings, "See what it writes with: " +
                              commandLine("logs -f", {nameFor(record, surroundings.user)}));
    }
    return 0;
}

int run(const std::string& name, const Surroundings& surroundings) {
    // Before anything that may start a thread, as the hold asks.
    const ambrel::SignalHold signals;
    const auto record = requireInstance(name, surroundings.user);
    ChildProcess runner({.executable = requireRunner(record), .arguments = {}});
    ensureHome(record.config, surroundings.user);
    runner.launch();
    return ambrel::SignalRelay(runner).waitUntilExit(signals);
}

Verb startVerb(std::string name, std::string summary, std::vector<std::string> examples,
               const std::function<int(const std::string&, const Surroundings&)>& start) {
    return {std::move(name), std::move(summary), std::move(examples),
            [start](CLI::App& app, const Surroundings& surroundings) -> Action {
                const auto instance = std::make_shared<std::string>();
                options::instanceName(app, *instance);
                return [=, &surroundings](const auto&) { return start(*instance, surroundings); };
            }};
}

} // namespace

Verb openVerb() {
    return startVerb("open", "Start an instance and leave it running.", {"korvane open Work"},
                     open);
}

Verb runVerb() {
    return startVerb("run", "Run an instance and wait for it; ends with the program's status.",
                     {"korvane run Work"}, run);
}

} // namespace korvane
