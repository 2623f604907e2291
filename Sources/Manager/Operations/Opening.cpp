#include "Manager/Operations/Opening.h"

#include "Ambrel/Base/Utf8.h"
#include "Ambrel/Instance/BundleLayout.h"
#include "Ambrel/Launch/InstanceLauncher.h"
#include "Ambrel/Launch/LaunchCheck.h"
#include "Ambrel/Launch/OpenedItems.h"
#include "Ambrel/Platform/DetachedProcess.h"
#include "Manager/Base/Quoting.h"
#include "Manager/Base/Refusal.h"
#include "Manager/Rules/InstanceHome.h"
#include "Manager/Rules/InstanceLookup.h"

#include <algorithm>

namespace korvane {

using ambrel::InstanceRecord;
using ambrel::LaunchError;
using ambrel::LaunchObstacle;
using ambrel::Path;
using ambrel::ResolvedInstance;
using ambrel::UserPlaces;
namespace {

std::string sentenceOn(const LaunchObstacle& obstacle, const std::string& name) {
    using Kind = LaunchObstacle::Kind;
    const auto place = ambrel::utf8::oneLine(obstacle.subject);
    switch (obstacle.kind) {
    case Kind::noRunner:
        return "The instance " + inQuotes(name) + " is damaged: there is no runner at " + place +
               ".";
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

Refusal::Kind kindOf(LaunchObstacle::Kind obstacle) {
    using Obstacle = LaunchObstacle::Kind;
    if (obstacle == Obstacle::noRunner) return Refusal::Kind::damagedInstance;
    if (obstacle == Obstacle::webSite) return Refusal::Kind::notHosted;
    if (obstacle == Obstacle::badBundle) return Refusal::Kind::unreadableApplication;
    return Refusal::Kind::notLaunchable;
}

void requireNone(const std::optional<LaunchObstacle>& obstacle, const InstanceRecord& record) {
    if (!obstacle) return;
    const bool isDamage = obstacle->kind == LaunchObstacle::Kind::noRunner;
    throw Refusal(kindOf(obstacle->kind), isDamage ? record.bundleURL : obstacle->subject,
                  ambrel::utf8::oneLine(sentenceOn(*obstacle, record.config.displayName)),
                  isDamage ? Remedy::createAgain : Remedy::none);
}

/// What opens a document needs no home, but its complaints are kept there. Without one they go
/// nowhere, which is no reason not to open it.
void tryMakeHome(const InstanceRecord& record, const UserPlaces& user) noexcept {
    try {
        ambrel::NewFolders folders;
        makeHome(record.config, user, folders);
        folders.keep();
    } catch (const std::exception&) {
    }
}

/// The runner's arguments for an instance that is to open `words`.
std::vector<std::string> requireArguments(const InstanceRecord& record,
                                          const std::vector<std::string>& words) {
    if (words.empty()) return {};
    if (record.config.kind != ambrel::ShortcutKind::app) {
        throw Refusal(Refusal::Kind::hasNoEffect, words.front(),
                      "Only an instance of an application can be given something to open: " +
                          inQuotes(record.config.displayName) + " is none.");
    }
    if (std::ranges::find(words, "") != words.end()) {
        throw Refusal(Refusal::Kind::badPath, "", "The name of a file to open is empty.");
    }
    std::vector<std::string> arguments{std::string(ambrel::openArgument)};
    for (auto& item : ambrel::openedItems(words)) arguments.push_back(std::move(item));
    return arguments;
}

Path requireRunner(const InstanceRecord& record) {
    requireNone(ambrel::findRunnerObstacle(record.bundleURL), record);
    return ambrel::BundleLayout{record.bundleURL}.runner();
}

} // namespace

Path prepareRun(const InstanceRecord& record, const UserPlaces& user) {
    auto runner = requireRunner(record);
    ensureHome(record.config, user);
    return runner;
}

void requireOpenable(const InstanceRecord& record, const UserPlaces& user) {
    requireRunner(record);
    requireNone(ambrel::findLaunchObstacle(ResolvedInstance::of(record.config, user)), record);
}

void open(const InstanceRecord& record, const UserPlaces& user,
          const std::vector<std::string>& words) {
    const auto arguments = requireArguments(record, words);
    requireOpenable(record, user);
    const auto runner = prepareRun(record, user);
    // Nobody watches the runner's own messages: they go where the instance's are looked for.
    tryMakeHome(record, user);
    const auto home = usableHome(record.config, user);
    const auto log = home ? ambrel::InstanceLauncher::instanceLogHandle(*home) : nullptr;
    ambrel::launchDetached(runner, log, arguments);
}

} // namespace korvane
