#include "korvane/Verbs/InstanceMaker.h"

#include "Ambrel/Base/Utf8.h"
#include "Ambrel/Instance/BundleLayout.h"
#include "Ambrel/Platform/FileError.h"
#include "Ambrel/Platform/FileSystem.h"
#include "Manager/Base/ManagerError.h"
#include "Manager/Base/Quoting.h"
#include "Manager/Files/IconConversion.h"
#include "Manager/Files/StagingFolder.h"
#include "Manager/Rules/InstanceHome.h"
#include "Manager/Rules/InstanceLookup.h"
#include "korvane/Output/JsonOutput.h"
#include "korvane/Output/Messages.h"
#include "korvane/Verbs/DesktopPresence.h"

#include <ostream>

namespace korvane {

using ambrel::BundleLayout;
using ambrel::InstanceConfig;
using ambrel::InstanceRecord;
using ambrel::InstanceRegistry;
using ambrel::Path;
using ambrel::ShortcutKind;
using ambrel::WrapperFactory;

namespace {

/// The instance at `place`, absent when nothing stands there. Throws for anything else.
std::optional<InstanceRecord> requireReplaceable(const Path& place, bool replace,
                                                 const ambrel::UserPlaces& user) {
    const auto kind = ambrel::fileSystem::kindOf(place);
    if (!kind) return std::nullopt;
    const auto record = InstanceRegistry(user).recordFor(place);
    if (!record || *kind != ambrel::fileSystem::ItemKind::folder) {
        throw Refusal(
            "What stands at " + ambrel::utf8::oneLine(place) +
            " is no instance, and is not replaced. Choose another name, or another folder "
            "with --output.");
    }
    if (!replace) {
        throw Refusal("The instance " + inQuotes(record->config.displayName) + " stands at " +
                      ambrel::utf8::oneLine(place) + " already. Replace it with --replace.");
    }
    return record;
}

/// The configuration as far as it decides whether another instance is in the way.
InstanceConfig claimsOf(const WrapperFactory::Request& request) {
    InstanceConfig config;
    config.displayName = request.displayName;
    config.bundleId = *request.bundleId;
    config.instanceHome = *request.instanceHome;
    return config;
}

void requireRunnableTarget(const Path& place, const WrapperFactory::Request& request,
                           const ambrel::UserPlaces& user) {
    const auto claims = claimsOf(request);
    const auto instances = instancesWith(*request.outputDir, user);
    requireOwnBundleId(claims, place, instances);
    requireOwnHome(claims, place, instances, user, "Choose another one with --home.");
    if (!usableHome(claims, user)) {
        throw Refusal("The home " + inQuotes(*request.instanceHome) + " names an unknown user.");
    }
}

void warnAboutTarget(const ambrel::AppBundle& target, const Surroundings& surroundings) {
    const auto name = inQuotes(ambrel::paths::stem(target.url));
    if (target.sandboxed) {
        warn(surroundings, name + " is sandboxed: the system keeps its data in a container of its "
                                  "own, so its data and settings will not be kept apart.");
    }
    if (target.prohibitsMultipleInstances) {
        warn(surroundings, name + " allows only one running copy: while one runs, opening another "
                                  "may lead to that one, and what you do there will not be kept "
                                  "apart.");
    }
}

void warnAboutMissingHosts(const WrapperFactory::Request& request,
                           const Surroundings& surroundings) {
    if (request.kind == ShortcutKind::web) {
        warn(surroundings,
             "The runner cannot host web sites yet: opening this instance will fail.");
    }
    if (request.menuBarIcon) {
        warn(surroundings, "The runner cannot host menu-bar items yet: this instance will run "
                           "without one.");
    }
}

void warnAboutLabel(const InstanceRecord& made, const Surroundings& surroundings) {
    const auto& label = made.config.iconLabel;
    if (!label) return;
    if (!ambrel::fileSystem::exists(BundleLayout{made.bundleURL}.icon())) {
        warn(surroundings, "There is no icon to draw the label on: give one with --icon.");
    } else if (const auto obstacle = obstacleTo(*label)) {
        warn(surroundings, *obstacle);
    }
}

void warnAboutHome(const InstanceRecord& made, const Surroundings& surroundings) {
    const auto home = usableHome(made.config, surroundings.user).value_or("");
    if (const auto obstacle = homeObstacle(home)) warn(surroundings, *obstacle);
    if (!isPrivateHome(made.config, surroundings.user)) {
        warn(surroundings, "Its home " + ambrel::utf8::oneLine(home) +
                               " is or contains your own: nothing is prepared in it.");
    }
}

void warnAboutStrategy(const WrapperFactory::Request& request, const Surroundings& surroundings) {
    const bool isRefused =
        request.kind == ShortcutKind::app && request.strategy == ambrel::Strategy::unsupported;
    if (isRefused) warn(surroundings, "Its strategy is \"unsupported\": opening it will fail.");
}

void tellAboutProfile(const PreparedRequest& prepared, const Surroundings& surroundings) {
    if (!prepared.plan || !prepared.plan->profile) return;
    const auto sentence = profileSentence(*prepared.plan);
    const bool isBroken = prepared.plan->profile->profile.confidence == ambrel::Confidence::broken;
    if (isBroken) {
        warn(surroundings, sentence);
    } else {
        say(surroundings, sentence);
    }
}

void warnAboutPaths(const WrapperFactory::Request& request, const Surroundings& surroundings) {
    const auto check = [&](const std::optional<Path>& path, bool mustRun) {
        if (!path) return;
        const auto place = surroundings.user.expandingTilde(*path);
        const bool fits = mustRun ? ambrel::fileSystem::isExecutableFile(place)
                                  : ambrel::fileSystem::exists(place);
        if (fits) return;
        warn(surroundings,
             ambrel::utf8::oneLine(place) +
                 (mustRun ? " is no program that can be run now." : " does not exist now."));
    };
    check(request.openPath, false);
    check(request.commandPath, true);
    check(request.workingDirectory, false);
}

/// Some fields are stored for every kind and used by few.
void warnAboutUnusedOptions(const CreateOptions& options, const Surroundings& surroundings) {
    const auto tell = [&](bool given, const std::string& option, const std::string& hint = "") {
        if (!given) return;
        warn(surroundings, option + " is stored, but means nothing to an instance of the kind " +
                               std::string(rawValue(options.kind)) + "." + hint);
    };
    const bool isApp = options.kind == ShortcutKind::app;
    const bool isCommand = options.kind == ShortcutKind::command;
    const std::string hint = isCommand ? " A command's arguments stand behind \"--\"." : "";
    tell(!isApp && !options.args.empty(), "--arg", hint);
    tell(!isApp && !options.addArgs.empty(), "--add-arg", hint);
    tell(!isApp && options.strategy, "--strategy");
    tell(!isApp && options.noShareFolders, "--no-share-folders");
    tell(!isApp && !isCommand && !options.environment.empty(), "--env");
    tell(!isCommand && options.workingDirectory, "--working-directory");
    tell(!isApp && options.processName, "--process-name");
    tell(!isApp && options.noProfile, "--no-profile");
}

struct Made {
    InstanceRecord record;
    bool homeExisted;
};

/// The chosen icon as an icon file, in `folder` where it was none: a bundle shows no other picture.
std::optional<Path> iconFor(const WrapperFactory::Request& request, const Path& folder) {
    const auto& chosen = request.customIcon;
    if (!chosen || isIconFile(*chosen)) return chosen;
    const auto converted = ambrel::paths::join(folder, "icon.icns");
    convertToIconFile(*chosen, converted);
    return converted;
}

Path createIn(const Path& folder, const PreparedRequest& prepared, const ambrel::UserPlaces& user) {
    auto request = prepared.request;
    request.outputDir = folder;
    request.customIcon = iconFor(request, folder);
    try {
        return WrapperFactory(user, prepared.runner).create(request);
    } catch (const WrapperFactory::FactoryError& error) {
        if (error.kind != WrapperFactory::FactoryError::Kind::runnerNotFound) throw;
        throw Refusal(error.description() + " Name its file with --runner.");
    }
}

/// The new instance is in place: what cannot be removed of the old one is no failure any more.
void removeOld(StagingFolder& staging, const Surroundings& surroundings) {
    const auto hidden = staging.path();
    try {
        staging.remove();
    } catch (const ambrel::FileError& error) {
        warn(surroundings, "Remains of what was replaced lie in " + ambrel::utf8::oneLine(hidden) +
                               ". " + error.description());
    }
}

Made build(const PreparedRequest& prepared, const Path& place, bool replaces,
           const Surroundings& surroundings) {
    const auto& parent = *prepared.request.outputDir;
    StagingFolder staging(parent);
    const auto built = createIn(staging.path(), prepared, surroundings.user);
    const auto record = InstanceRegistry(surroundings.user).recordFor(built);
    if (!record) throw Refusal("The new instance cannot be read back.");
    const auto home = usableHome(record->config, surroundings.user);
    const bool homeExisted = home && ambrel::fileSystem::exists(*home);
    ambrel::NewFolders folders;
    makeHome(record->config, surroundings.user, folders);
    if (replaces) {
        staging.exchange(built, place);
    } else {
        staging.putInPlace(built, place);
    }
    folders.keep();
    removeOld(staging, surroundings);
    // Only now: what lies in a new home would keep it from being removed after a failure.
    for (const auto& failure : furnishHome(record->config, surroundings.user))
        warn(surroundings, failure + ".");
    return {{place, record->config}, homeExisted};
}

void tellAboutHome(const Made& made, const std::optional<InstanceRecord>& old,
                   const Surroundings& surroundings) {
    const auto& home = made.record.config.instanceHome;
    say(surroundings, "Its data lives in " + ambrel::utf8::oneLine(home) +
                          (made.homeExisted ? ", with what was there already." : "."));
    if (old && old->config.instanceHome != home) {
        say(surroundings, "The replaced instance's data stays in " +
                              ambrel::utf8::oneLine(old->config.instanceHome) + ".");
    }
}

} // namespace

void makeInstance(const CreateOptions& options, const Surroundings& surroundings) {
    const auto prepared = prepareRequest(options, surroundings);
    const auto& request = prepared.request;
    const auto place = BundleLayout::wrapper(*request.outputDir, request.displayName).bundle;
    const auto old = requireReplaceable(place, options.replace, surroundings.user);
    requireRunnableTarget(place, request, surroundings.user);
    registration::requireFree(*request.bundleId, place, surroundings.user, surroundings.environment,
                              "Choose another identifier with --bundle-id.");

    const auto made = build(prepared, place, old.has_value(), surroundings);

    if (prepared.target) warnAboutTarget(*prepared.target, surroundings);
    warnAboutUnusedOptions(options, surroundings);
    warnAboutMissingHosts(request, surroundings);
    warnAboutLabel(made.record, surroundings);
    warnAboutPaths(request, surroundings);
    warnAboutStrategy(request, surroundings);
    warnAboutHome(made.record, surroundings);
    presence::created(made.record, surroundings);
    say(surroundings, (old ? "Replaced " : "Created ") + inQuotes(request.displayName) + ".");
    tellAboutProfile(prepared, surroundings);
    if (made.homeExisted && !old && !options.home) {
        warn(surroundings, "Its home was there before, perhaps as that of another instance. Choose "
                           "one of its own with --home.");
    }
    tellAboutHome(made, old, surroundings);
    say(surroundings,
        "Open it with: " + commandLine("open", {nameFor(made.record, surroundings.user)}));
    if (options.asJson) {
        auto object = json::bundle(place);
        object["profile"] = json::profile(prepared.plan ? prepared.plan->profile : std::nullopt);
        json::write(object, surroundings.results);
    } else {
        surroundings.results << place << '\n';
    }
}

} // namespace korvane
