#include "Manager/Operations/CreationPlan.h"

#include "Ambrel/Base/Utf8.h"
#include "Ambrel/Instance/BundleLayout.h"
#include "Ambrel/Instance/DesktopId.h"
#include "Ambrel/Platform/FileSystem.h"
#include "Manager/Base/Quoting.h"
#include "Manager/Base/Refusal.h"
#include "Manager/Desktop/Registration.h"
#include "Manager/Files/IconConversion.h"
#include "Manager/Operations/IconOrigin.h"
#include "Manager/Operations/KeptParts.h"
#include "Manager/Programs/ApplicationLookup.h"
#include "Manager/Programs/Terminal.h"
#include "Manager/Programs/WebEngine.h"
#include "Manager/Rules/DataSafety.h"
#include "Manager/Rules/InfoPlistKeys.h"
#include "Manager/Rules/InstanceLookup.h"
#include "Manager/Rules/OpenedTypes.h"
#include "Manager/Rules/Running.h"
#include "Manager/Rules/UserText.h"

namespace korvane {

using ambrel::BundleLayout;
using ambrel::Environment;
using ambrel::InstanceConfig;
using ambrel::InstanceRecord;
using ambrel::Path;
using ambrel::StringMap;
using ambrel::UserPlaces;
using ambrel::WrapperFactory;
using Kind = Refusal::Kind;

namespace {

/// The variables of the plan, and those given, which have the last word.
StringMap environmentFor(const CreationPlan& plan) {
    auto environment = plan.request.environment;
    if (!plan.start) return environment;
    if (const auto name = processNameOf(plan.request)) {
        for (const auto& variable : plan.start->nameVariables) environment.emplace(variable, *name);
    }
    environment.merge(StringMap(plan.start->environment));
    return environment;
}

/// Absent where the library is to choose, which then chooses nothing.
std::optional<std::vector<std::string>> argumentsFor(const CreationPlan& plan) {
    auto args = plan.request.args;
    const auto& added = plan.request.addedArgs;
    if (args.empty() && plan.start) args = plan.start->arguments;
    args.insert(args.end(), added.begin(), added.end());
    if (args.empty() && !plan.start) return std::nullopt;
    return args;
}

/// What is chosen stands before what the profile says, and "false" where that says otherwise.
void addBus(const CreationPlan& plan, StringMap& overrides) {
    const auto worked = plan.start ? overridesFor(plan.start->bus) : StringMap();
    const auto choose = [&](const char* key, std::optional<bool> choice) {
        if (!choice) return;
        const bool isSaid = *choice || worked.contains(key);
        setBusChoice(overrides, key, isSaid ? choice : std::nullopt);
    };
    choose(ambrel::sharedBusKey, plan.request.sharedBus);
    choose(ambrel::hidesSecretsKey, plan.request.hideSecrets);
    overrides.insert(worked.begin(), worked.end());
}

StringMap overridesFor(const CreationPlan& plan, const std::string& desktopId) {
    auto overrides = plan.request.infoPlistOverrides;
    addBus(plan, overrides);
    const auto chosen = processNameOf(plan.request);
    if (chosen) overrides.insert_or_assign(ambrel::processNameKey, *chosen);
    if (!plan.start) return overrides;
    const auto& start = *plan.start;
    if (start.processName) overrides.emplace(ambrel::processNameKey, *start.processName);
    const auto name = overrides.find(ambrel::processNameKey);
    const auto& expected = name == overrides.end() ? desktopId : name->second;
    if (start.windowClass && *start.windowClass != expected) {
        overrides.emplace(windowClassKey, *start.windowClass);
    }
    return overrides;
}

ambrel::Strategy strategyFor(const CreationPlan& plan) {
    if (plan.request.strategy) return *plan.request.strategy;
    const bool isSaid = plan.start && plan.start->profile;
    return isSaid ? plan.start->profile->profile.strategy : ambrel::Strategy::homeOverride;
}

void setLook(const CreateRequest& request, WrapperFactory::Request& wrapper) {
    wrapper.customIcon = request.icon;
    wrapper.hideWrapperIcon = request.hideIcon.value_or(false);
    wrapper.iconLabel = visibleLabel(request.iconLabel);
    wrapper.registerAsBrowser = request.registerAsBrowser.value_or(false);
    wrapper.openWithPassthrough = request.openWithPassthrough.value_or(false);
    wrapper.menuBarIcon = request.menuBarIcon.value_or(false);
    wrapper.menuBarIconTemplate = request.menuBarIconTemplate.value_or(false);
}

void setPlaces(const CreateRequest& request, WrapperFactory::Request& wrapper) {
    const auto& name = request.name;
    wrapper.displayName = name;
    wrapper.instanceHome = request.home.value_or(WrapperFactory::defaultInstanceHome(name));
    wrapper.workingDirectory = request.workingDirectory;
    wrapper.shareUserFolders = request.shareUserFolders.value_or(true);
}

ambrel::AppBundle targetOf(const CreateRequest& request, const UserPlaces& user,
                           const Environment& environment) {
    if (request.program) return requireApplication(*request.program, user, environment);
    if (auto app = ambrel::AppBundle::read(request.targetApp)) return *app;
    throw Refusal(Kind::unreadableApplication, request.targetApp,
                  "Not a readable .app: " + ambrel::utf8::oneLine(request.targetApp));
}

void requireRunnable(const Path& program, const Path& place) {
    if (ambrel::fileSystem::isExecutableFile(place)) return;
    const bool isThere = ambrel::fileSystem::exists(place);
    throw Refusal(Kind::unknownProgram, program,
                  ambrel::utf8::oneLine(place) +
                      (isThere ? " is no program that can be run." : " does not exist."));
}

void setCommand(const CreateRequest& request, const UserPlaces& user,
                const Environment& environment, WrapperFactory::Request& wrapper) {
    const auto program = user.expandingTilde(request.commandPath);
    requireRunnable(request.commandPath, program);
    wrapper.commandPath = request.commandPath;
    wrapper.commandArgs = request.commandArgs;
    if (!request.inTerminal) return;
    const auto terminal = findTerminal(environment);
    if (!terminal) {
        throw Refusal(Kind::notOffered, "",
                      "There is no terminal to open it in: none that is known is in the folders of "
                      "PATH.");
    }
    auto arguments = terminal->before;
    arguments.push_back(program);
    arguments.insert(arguments.end(), request.commandArgs.begin(), request.commandArgs.end());
    wrapper.commandPath = terminal->program;
    wrapper.commandArgs = std::move(arguments);
}

/// On a desktop of entries an instance opens what the entry of its application opens.
void requireOpenedTypes(const CreationPlan& plan) {
    if (!registration::isOffered()) return;
    const auto name = inQuotes(ambrel::paths::stem(plan.target->url));
    if (plan.request.openWithPassthrough.value_or(false) && openedTypes(plan.target->url).empty()) {
        throw Refusal(Kind::hasNoEffect, "openWithPassthrough",
                      name + " names no types of files that it opens: an instance of it cannot be "
                             "offered for opening documents.");
    }
    if (plan.request.registerAsBrowser.value_or(false) && !canBrowse(*plan.target)) {
        throw Refusal(Kind::hasNoEffect, "registerAsBrowser",
                      name + " names no addresses or web pages that it opens: an instance of it "
                             "cannot be offered as a web browser.");
    }
}

/// Before what is kept of a replaced instance, which depends on whether it is of the same target.
void setTarget(CreationPlan& plan, const UserPlaces& user, const Environment& environment) {
    if (plan.request.kind != ambrel::ShortcutKind::app) return;
    plan.target = targetOf(plan.request, user, environment);
    plan.request.targetApp = plan.target->url;
}

void setSubject(CreationPlan& plan, const UserPlaces& user, const Environment& environment) {
    const auto& request = plan.request;
    auto& wrapper = plan.wrapper;
    wrapper.kind = request.kind;
    switch (request.kind) {
    case ambrel::ShortcutKind::app:
        wrapper.targetApp = plan.target->url;
        requireOpenedTypes(plan);
        break;
    case ambrel::ShortcutKind::web:
        wrapper.url = request.url;
        plan.missingPackage = findMissingWebPackage();
        break;
    case ambrel::ShortcutKind::file:
        wrapper.openPath = request.openPath;
        break;
    case ambrel::ShortcutKind::command:
        setCommand(request, user, environment, wrapper);
        break;
    }
}

/// The instance at `place`, absent when nothing stands there. Throws for anything else.
std::optional<InstanceRecord> requireReplaceable(const Path& place, Existing existing,
                                                 const UserPlaces& user) {
    const auto kind = ambrel::fileSystem::kindOf(place);
    if (!kind) return std::nullopt;
    const auto record = ambrel::InstanceRegistry(user).recordFor(place);
    if (!record || *kind != ambrel::fileSystem::ItemKind::folder) {
        throw Refusal(Kind::notAnInstance, place,
                      "What stands at " + ambrel::utf8::oneLine(place) +
                          " is no instance, and is not replaced.",
                      Remedy::chooseName);
    }
    if (existing == Existing::refuse) {
        throw Refusal(Kind::instanceExists, place,
                      "The instance " + inQuotes(record->config.displayName) + " stands at " +
                          ambrel::utf8::oneLine(place) + " already.",
                      Remedy::replace);
    }
    return record;
}

/// That secrets are hidden where a profile or the instance from before says so may have no effect;
/// nobody was promised any.
void requireUsableStanding(const CreateRequest& asked, const CreationPlan& plan) {
    const auto& wrapper = plan.wrapper;
    const auto standing = busStanding(wrapper.infoPlistOverrides, wrapper.environment, {});
    if (asked.hideSecrets.value_or(false)) requireSecretsHideable(standing);
    if (plan.target) requireOwnNames(*plan.target, standing);
}

/// The configuration as far as it decides whether another instance is in the way.
InstanceConfig claimsOf(const WrapperFactory::Request& wrapper) {
    InstanceConfig config;
    config.displayName = wrapper.displayName;
    config.bundleId = *wrapper.bundleId;
    config.instanceHome = *wrapper.instanceHome;
    return config;
}

void requireOwnClaims(const CreationPlan& plan, const std::vector<InstanceRecord>& instances,
                      const UserPlaces& user) {
    const auto claims = claimsOf(plan.wrapper);
    requireOwnBundleId(claims, plan.bundle, instances);
    requireOwnHome(claims, plan.bundle, instances, user, Remedy::chooseHome);
    requireNoUserFolder(claims, user, Remedy::chooseHome);
    if (!usableHome(claims, user)) {
        throw Refusal(Kind::unknownUser, claims.instanceHome,
                      "The home " + inQuotes(claims.instanceHome) + " names an unknown user.");
    }
}

bool isFree(const std::string& bundleId, const CreationPlan& plan,
            const std::vector<InstanceRecord>& instances, const UserPlaces& user,
            const Environment& environment) {
    try {
        InstanceConfig config;
        config.bundleId = bundleId;
        requireOwnBundleId(config, plan.bundle, instances);
        registration::requireFree(bundleId, plan.bundle, user, environment,
                                  Remedy::chooseIdentifier);
        return true;
    } catch (const Refusal& refusal) {
        const bool isTaken =
            refusal.kind == Kind::identifierTaken || refusal.kind == Kind::entryTaken;
        if (!isTaken) throw;
        return false;
    }
}

/// Names that differ only in what an identifier cannot hold are told apart by a counter. Where all
/// are taken the last one is refused as one that was given is.
std::string freeBundleId(const CreationPlan& plan, const std::vector<InstanceRecord>& instances,
                         const UserPlaces& user, const Environment& environment) {
    constexpr int last = 999;
    const auto usual = WrapperFactory::defaultBundleId(plan.request.name);
    auto id = usual;
    for (int count = 2; count <= last && !isFree(id, plan, instances, user, environment); ++count) {
        id = usual + "-" + std::to_string(count);
    }
    return id;
}

} // namespace

void planStartFor(CreationPlan& plan, const std::string& desktopId, const UserPlaces& user,
                  const Environment& environment) {
    auto& wrapper = plan.wrapper;
    if (plan.target) {
        plan.start = planStart(*plan.target, desktopId, plan.request.useProfile, user, environment);
    }
    wrapper.strategy = strategyFor(plan);
    wrapper.environment = environmentFor(plan);
    wrapper.extraArgs = argumentsFor(plan);
    wrapper.infoPlistOverrides = overridesFor(plan, desktopId);
}

std::optional<InstanceRecord> requirePossible(const CreationPlan& plan,
                                              const std::vector<InstanceRecord>& instances,
                                              const UserPlaces& user,
                                              const Environment& environment) {
    auto replaced = requireReplaceable(plan.bundle, plan.request.existing, user);
    if (replaced) requireNotRunning(*replaced, user);
    requireOwnClaims(plan, instances, user);
    registration::requireFree(*plan.wrapper.bundleId, plan.bundle, user, environment,
                              Remedy::chooseIdentifier);
    return replaced;
}

CreationPlan planCreation(const CreateRequest& request, const UserPlaces& user,
                          const Environment& environment) {
    requireSensible(request);
    CreationPlan plan;
    plan.request = request;
    plan.request.name = checkedName(request.name);
    // The library falls back to the application's own icon without a word.
    if (request.icon) requirePicture(*request.icon);
    auto& wrapper = plan.wrapper;
    wrapper.outputDir = request.outputFolder.value_or(WrapperFactory::defaultOutputDir(user));
    plan.bundle = BundleLayout::wrapper(*wrapper.outputDir, plan.request.name).bundle;
    plan.replaced = requireReplaceable(plan.bundle, request.existing, user);
    setTarget(plan, user, environment);
    if (plan.replaced) plan.parts = keepParts(*plan.replaced, plan.request, user, environment);
    setLook(plan.request, wrapper);
    setPlaces(plan.request, wrapper);
    setSubject(plan, user, environment);
    // The only look at all of them: an identifier and a home can be those of any.
    const auto instances = instancesWith(*wrapper.outputDir, user);
    const auto& bundleId = plan.request.bundleId;
    wrapper.bundleId = bundleId ? *bundleId : freeBundleId(plan, instances, user, environment);
    planStartFor(plan, ambrel::desktopId(*wrapper.bundleId), user, environment);
    requireUsableStanding(request, plan);
    requirePossible(plan, instances, user, environment);
    plan.reference = nameAmong(instances, {plan.bundle, claimsOf(wrapper)}, user);
    if (plan.replaced) plan.replacedSize = sizeOfTree(plan.bundle);
    const auto home = usableHome(claimsOf(wrapper), user);
    plan.homeExists = home && ambrel::fileSystem::exists(*home);
    return plan;
}

} // namespace korvane
