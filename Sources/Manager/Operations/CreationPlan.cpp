#include "Manager/Operations/CreationPlan.h"

#include "Ambrel/Base/Utf8.h"
#include "Ambrel/Instance/BundleLayout.h"
#include "Ambrel/Instance/DesktopId.h"
#include "Ambrel/Platform/FileSystem.h"
#include "Manager/Base/Quoting.h"
#include "Manager/Base/Refusal.h"
#include "Manager/Desktop/Registration.h"
#include "Manager/Programs/ApplicationLookup.h"
#include "Manager/Rules/InfoPlistKeys.h"
#include "Manager/Rules/InstanceLookup.h"
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

/// The library falls back to the application's own icon without a word.
void requireIconFile(const std::optional<Path>& icon) {
    if (!icon) return;
    if (ambrel::fileSystem::exists(*icon) && !ambrel::fileSystem::isFolder(*icon)) return;
    throw Refusal(Kind::unusableIcon, *icon,
                  "The icon is no file: " + ambrel::utf8::oneLine(*icon));
}

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

StringMap overridesFor(const CreationPlan& plan) {
    auto overrides = plan.request.infoPlistOverrides;
    const auto chosen = processNameOf(plan.request);
    if (chosen) overrides.insert_or_assign(ambrel::processNameKey, *chosen);
    if (!plan.start) return overrides;
    const auto& start = *plan.start;
    if (start.processName) overrides.emplace(ambrel::processNameKey, *start.processName);
    const auto name = overrides.find(ambrel::processNameKey);
    const auto expected =
        name == overrides.end() ? ambrel::desktopId(*plan.wrapper.bundleId) : name->second;
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
    wrapper.hideWrapperIcon = request.hideIcon;
    wrapper.iconLabel = request.iconLabel;
    wrapper.registerAsBrowser = request.registerAsBrowser;
    wrapper.openWithPassthrough = request.openWithPassthrough;
    wrapper.menuBarIcon = request.menuBarIcon;
    wrapper.menuBarIconTemplate = request.menuBarIconTemplate;
}

void setPlaces(const CreateRequest& request, const UserPlaces& user,
               WrapperFactory::Request& wrapper) {
    const auto& name = request.name;
    wrapper.displayName = name;
    wrapper.instanceHome = request.home.value_or(WrapperFactory::defaultInstanceHome(name));
    wrapper.outputDir = request.outputFolder.value_or(WrapperFactory::defaultOutputDir(user));
    wrapper.bundleId = request.bundleId.value_or(WrapperFactory::defaultBundleId(name));
    wrapper.workingDirectory = request.workingDirectory;
    wrapper.shareUserFolders = request.shareUserFolders;
}

ambrel::AppBundle targetOf(const CreateRequest& request, const UserPlaces& user,
                           const Environment& environment) {
    if (request.program) return requireApplication(*request.program, user, environment);
    if (auto app = ambrel::AppBundle::read(request.targetApp)) return *app;
    throw Refusal(Kind::unreadableApplication, request.targetApp,
                  "Not a readable .app: " + ambrel::utf8::oneLine(request.targetApp));
}

void setSubject(CreationPlan& plan, const UserPlaces& user, const Environment& environment) {
    const auto& request = plan.request;
    auto& wrapper = plan.wrapper;
    wrapper.kind = request.kind;
    switch (request.kind) {
    case ambrel::ShortcutKind::app:
        plan.target = targetOf(request, user, environment);
        wrapper.targetApp = plan.target->url;
        break;
    case ambrel::ShortcutKind::web:
        wrapper.url = request.url;
        break;
    case ambrel::ShortcutKind::file:
        wrapper.openPath = request.openPath;
        break;
    case ambrel::ShortcutKind::command:
        wrapper.commandPath = request.commandPath;
        wrapper.commandArgs = request.commandArgs;
        break;
    }
}

/// What depends on how the target is started.
void setStart(CreationPlan& plan, const UserPlaces& user, const Environment& environment) {
    auto& wrapper = plan.wrapper;
    if (plan.target) {
        plan.start = planStart(*plan.target, ambrel::desktopId(*wrapper.bundleId),
                               plan.request.useProfile, user, environment);
    }
    wrapper.strategy = strategyFor(plan);
    wrapper.environment = environmentFor(plan);
    wrapper.extraArgs = argumentsFor(plan);
    wrapper.infoPlistOverrides = overridesFor(plan);
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
    if (!usableHome(claims, user)) {
        throw Refusal(Kind::unknownUser, claims.instanceHome,
                      "The home " + inQuotes(claims.instanceHome) + " names an unknown user.");
    }
}

} // namespace

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
    requireIconFile(request.icon);
    setLook(plan.request, plan.wrapper);
    setPlaces(plan.request, user, plan.wrapper);
    setSubject(plan, user, environment);
    setStart(plan, user, environment);
    plan.bundle = BundleLayout::wrapper(*plan.wrapper.outputDir, plan.request.name).bundle;
    // The only look at all of them: an identifier and a home can be those of any.
    const auto instances = instancesWith(*plan.wrapper.outputDir, user);
    plan.replaced = requirePossible(plan, instances, user, environment);
    plan.reference = nameAmong(instances, {plan.bundle, claimsOf(plan.wrapper)}, user);
    if (plan.replaced) plan.replacedSize = sizeOfTree(plan.bundle);
    const auto home = usableHome(claimsOf(plan.wrapper), user);
    plan.homeExists = home && ambrel::fileSystem::exists(*home);
    return plan;
}

} // namespace korvane
