#include "korvane/Verbs/StartVerbs.h"

#include "Ambrel/Base/Utf8.h"
#include "Ambrel/Instance/BundleLayout.h"
#include "Ambrel/Launch/InstanceLauncher.h"
#include "Ambrel/Launch/LaunchCheck.h"
#include "Ambrel/Launch/SignalRelay.h"
#include "Ambrel/Platform/DetachedProcess.h"
#include "Manager/Base/ManagerError.h"
#include "Manager/Base/Quoting.h"
#include "Manager/Rules/InstanceHome.h"
#include "Manager/Rules/InstanceLookup.h"
#include "korvane/CommandLine/Options.h"
#include "korvane/Output/Messages.h"

namespace korvane {

using ambrel::ChildProcess;
using ambrel::InstanceRecord;
using ambrel::LaunchError;
using ambrel::LaunchObstacle;
using ambrel::Path;
using ambrel::ShortcutKind;

namespace {

std::string sentenceOn(const LaunchObstacle& obstacle, const std::string& name) {
    using Kind = LaunchObstacle::Kind;
    const auto place = ambrel::utf8::oneLine(obstacle.subject);
    switch (obstacle.kind) {
    case Kind::noRunner:
        return "The instance " + inQuotes(name) + " is damaged: there is no runner at " + place +
               ". Make it anew with: korvane create … --replace";
    case Kind::webSite:
        return "The runner cannot host web sites yet: this instance cannot be opened.";
    case Kind::documentMissing:
        return "The document is not there: " + place;
    case Kind::commandNotRunnable:
        return "The command cannot be run: " + place;
    case Kind::folderMissing:
        return "The working directory is not there: " + place;
    case Kind::programNotRunnable:
        return "The application's program cannot be run: " + place;
    // The rest in the runner's own words.
    case Kind::noDocument:
        return LaunchError::unsupported("file shortcut has no target path").description();
    case Kind::noCommand:
        return LaunchError::unsupported("command shortcut has no executable").description();
    case Kind::badBundle:
        return LaunchError::badBundle(obstacle.subject).description();
    case Kind::unsupported:
        return LaunchError::unsupported(obstacle.subject).description();
    }
    return {};
}

void requireNone(const std::optional<LaunchObstacle>& obstacle, const InstanceRecord& record) {
    if (obstacle) throw Refusal(sentenceOn(*obstacle, record.config.displayName));
}

Path requireRunner(const InstanceRecord& record) {
    requireNone(ambrel::findRunnerObstacle(record.bundleURL), record);
    return ambrel::BundleLayout{record.bundleURL}.runner();
}

int open(const std::string& name, const Surroundings& surroundings) {
    const auto record = requireInstance(name, surroundings.user);
    const auto runner = requireRunner(record);
    // What a detached start would fail at unseen.
    const auto instance = ambrel::ResolvedInstance::of(record.config, surroundings.user);
    requireNone(ambrel::findLaunchObstacle(instance), record);
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
