#include "Manager/Programs/StartPlan.h"

#include "Ambrel/Instance/BundleLayout.h"
#include "Ambrel/Instance/DesktopId.h"
#include "Ambrel/Launch/InstanceLauncher.h"
#include "Ambrel/Platform/PropertyList.h"
#include "Ambrel/Wrapper/WrapperFactory.h"
#include "Manager/Base/Quoting.h"
#include "Manager/Base/Refusal.h"
#include "Manager/Programs/ProgramTraits.h"
#include "Manager/Rules/InfoPlistKeys.h"

#include <algorithm>

namespace korvane {

using ambrel::AppBundle;
using ambrel::Path;
using ambrel::WrapperFactory;

namespace {

std::string replacing(std::string text, std::string_view what, const std::string& by) {
    for (auto at = text.find(what); at != std::string::npos; at = text.find(what, at + by.size())) {
        text.replace(at, what.size(), by);
    }
    return text;
}

std::string underscored(std::string id) {
    std::replace(id.begin(), id.end(), '.', '_');
    return id;
}

std::string capitalized(std::string id) {
    if (!id.empty() && id.front() >= 'a' && id.front() <= 'z') id.front() += 'A' - 'a';
    return id;
}

std::string withDesktopId(std::string text, const std::string& desktopId) {
    // For an instance that is not there yet all placeholders stay, which are not the same.
    if (desktopId == desktopIdPlaceholder) return text;
    text = replacing(std::move(text), desktopIdPlaceholder, desktopId);
    text = replacing(std::move(text), underscoredIdPlaceholder, underscored(desktopId));
    return replacing(std::move(text), capitalizedIdPlaceholder, capitalized(desktopId));
}

/// What `adopt` has noted under `key`.
std::optional<ambrel::PropertyListValue> adoptedValue(const AppBundle& app, const char* key) {
    const auto info = ambrel::readPropertyList(ambrel::BundleLayout{app.url}.infoPlist());
    if (!info) return std::nullopt;
    const auto entry = info->find(key);
    return entry == info->end() ? std::nullopt : std::optional(entry->second);
}

std::optional<Path> adoptedPath(const AppBundle& app, const char* key) {
    const auto value = adoptedValue(app, key);
    const auto* const path = value ? value->string() : nullptr;
    const bool isPath = path != nullptr && path->starts_with('/');
    return isPath ? std::optional(*path) : std::nullopt;
}

/// What the libraries of the program, or of the terminal that it is opened in, tell.
WindowName nameByLibraries(const AppBundle& app) {
    const auto terminal = adoptedPath(app, adoptedTerminalKey);
    const auto naming =
        installedProgram::windowNamingOf(app.executableURL(), terminal.value_or(programOf(app)));
    WindowName name;
    for (const auto& variable : naming.variables) {
        name.environment.emplace(variable, desktopIdPlaceholder);
    }
    name.byProcessName = naming.byProcessName;
    return name;
}

WindowName windowNameFor(const AppBundle& app) {
    const auto engine = WrapperFactory::detectEngine(app.url, app.bundleId);
    auto arguments =
        installedProgram::windowNameArguments(engine, std::string(desktopIdPlaceholder));
    if (!arguments.empty()) {
        return {.arguments = std::move(arguments), .environment = {}, .startupWmClass = {}};
    }
    auto name = nameByLibraries(app);
    // The launcher of an Eclipse program looks for its settings by its own name.
    if (engine == WrapperFactory::AppEngine::eclipse) name.byProcessName = false;
    return name;
}

void addWindowName(StartPlan& plan, const WindowName& name, const std::string& desktopId) {
    for (const auto& argument : name.arguments) {
        plan.arguments.push_back(withDesktopId(argument, desktopId));
    }
    for (const auto& [key, value] : name.environment) {
        plan.environment.insert_or_assign(key, withDesktopId(value, desktopId));
    }
    for (const auto& [key, value] : name.environment) {
        if (value == desktopIdPlaceholder) plan.nameVariables.push_back(key);
    }
    if (name.byProcessName) plan.processName = desktopId;
    plan.keepsWindowName =
        name.arguments.empty() && name.environment.empty() && !name.byProcessName;
    if (name.startupWmClass) {
        plan.windowClass = withDesktopId(*name.startupWmClass, desktopId);
    } else if (!name.arguments.empty()) {
        plan.windowClass = desktopId;
    }
}

void addProfile(StartPlan& plan, ProgramProfile found, const AppBundle& app,
                const ambrel::Environment& environment) {
    plan.signature = installedProgram::signatureOf(programOf(app), environment);
    found.profile = found.profile.reconciled(plan.signature);
    plan.arguments.insert(plan.arguments.end(), found.profile.extraArgs.begin(),
                          found.profile.extraArgs.end());
    for (const auto& [key, value] : found.environment)
        plan.environment.insert_or_assign(key, value);
    plan.bus = found.bus;
    plan.profile = std::move(found);
}

/// Whether a profile tells how a copy of the program is kept apart.
bool isKnown(const StartPlan& plan) {
    return plan.profile && plan.profile->profile.confidence != ambrel::Confidence::broken;
}

/// A profile with arguments may say by which a program does without the bus. One without was tried
/// with names of the instance's own, unless it says how its program is without them.
bool mayHandOver(const StartPlan& plan, const AppBundle& app, const ambrel::UserPlaces& user,
                 const ambrel::Environment& environment) {
    if (plan.bus.handsOver) return *plan.bus.handsOver;
    if (isKnown(plan) && !plan.profile->profile.extraArgs.empty()) return false;
    const auto value = adoptedValue(app, adoptedActivatableKey);
    if (value && value->exactBoolean().value_or(false)) return true;
    return installedProgram::isServiceOnBus(app.bundleId, user, environment) ||
           installedProgram::registersOnBus(programOf(app));
}

StartPlan::Meeting meetingOf(const StartPlan& plan, const AppBundle& app) {
    if (isKnown(plan)) return {};
    const auto engine = WrapperFactory::detectEngine(app.url, app.bundleId);
    const bool isEclipse = engine == WrapperFactory::AppEngine::eclipse;
    return {.bySocket = installedProgram::mayMeetBySocket(programOf(app)),
            .byWindow = isEclipse,
            .unseen = plan.asksAccountForHome && !isEclipse};
}

/// A launcher is told by variables what it is to call its program.
void addLauncherVariables(StartPlan& plan, const AppBundle& app) {
    for (const auto& variable : installedProgram::launcherVariables(app.executableURL())) {
        plan.nameVariables.push_back(variable);
        if (plan.processName) plan.environment.insert_or_assign(variable, *plan.processName);
    }
}

void addHome(StartPlan& plan, const AppBundle& app) {
    auto variables = installedProgram::homeVariables(programOf(app));
    plan.asksAccountForHome = !variables.empty();
    plan.environment.merge(std::move(variables));
}

} // namespace

StartPlan planStart(const AppBundle& app, const std::string& desktopId, UseProfile use,
                    const ambrel::UserPlaces& user, const ambrel::Environment& environment) {
    StartPlan plan;
    plan.arguments = WrapperFactory::autoDataDirArgs(app.url, app.bundleId);
    plan.environment = installedProgram::separatingVariables();
    addHome(plan, app);
    auto found = use == UseProfile::yes ? findProfile(app.bundleId, user) : std::nullopt;
    if (found) addProfile(plan, std::move(*found), app, environment);
    plan.mayHandOver = mayHandOver(plan, app, user, environment);
    plan.meeting = meetingOf(plan, app);
    if (use == UseProfile::no) return plan;
    const bool isSaid = plan.profile && plan.profile->windowName;
    addWindowName(plan, isSaid ? *plan.profile->windowName : windowNameFor(app), desktopId);
    addLauncherVariables(plan, app);
    return plan;
}

bool isAdopted(const AppBundle& app) { return adoptedPath(app, adoptedProgramKey).has_value(); }

Path programOf(const AppBundle& app) {
    return adoptedPath(app, adoptedProgramKey).value_or(app.executableURL());
}

void requireOwnNames(const AppBundle& app, const BusStanding& standing) {
    if (standing.hasOwnNames() || !installedProgram::isStarterByBus(programOf(app))) return;
    const std::string name{ambrel::paths::stem(app.url)};
    throw Refusal(Refusal::Kind::startedByBus, app.url,
                  inQuotes(name) +
                      " is started by the session bus: without names of its own there it would "
                      "open with your own home instead of the instance's.");
}

BusStanding busStandingOf(const ambrel::InstanceConfig& config,
                          const ambrel::UserPlaces& user) noexcept {
    std::optional<BusUse> profile;
    try {
        const bool isShared =
            busChoice(config.infoPlistOverrides, ambrel::sharedBusKey).value_or(false);
        const auto app = isShared ? AppBundle::read(config.targetAppURL()) : std::nullopt;
        const auto found = app ? findProfile(app->bundleId, user) : std::nullopt;
        if (found) profile = found->bus;
    } catch (const std::exception&) {
        // A profile that cannot be read says nothing, and it is told of where it is used.
    }
    return busStanding(config.infoPlistOverrides, config.environment, profile);
}

std::string profileSentence(const StartPlan& plan) {
    using ambrel::Confidence;
    const auto& profile = plan.profile->profile;
    const auto start = "Used the profile of " + inQuotes(profile.displayName);
    const auto here = plan.signature.empty() ? std::string("this system") : plan.signature;
    switch (profile.confidence) {
    case Confidence::verified:
        return start + ", verified on " + here + ".";
    case Confidence::community:
        return start + ", reported to work on " + here + ".";
    case Confidence::autoDetected:
        return start + ", which was not tried on " + here + ".";
    case Confidence::broken:
        break;
    }
    return start + ", which says that it cannot be kept apart.";
}

void setProcessName(ambrel::InstanceConfig& config, const std::optional<std::string>& name) {
    auto& overrides = config.infoPlistOverrides;
    const auto id = ambrel::desktopId(config.bundleId);
    const auto found = overrides.find(ambrel::processNameKey);
    const auto old = found == overrides.end() ? id : found->second;
    for (auto& [variable, value] : config.environment) {
        if (value == old) value = name.value_or(id); // as RESOURCE_NAME has it
    }
    overrides.erase(ambrel::processNameKey);
    if (name) overrides.emplace(ambrel::processNameKey, *name);
    const bool isByArgument = std::ranges::any_of(config.extraArgs, [&](const auto& argument) {
        return argument == id || argument.ends_with("=" + id);
    });
    if (isByArgument && name) overrides.emplace(windowClassKey, id);
}

void requireProcessName(const std::string& name, const std::string& what) {
    if (ambrel::InstanceLauncher::isUsableProcessName(name)) return;
    throw Refusal(Refusal::Kind::badProcessName, name,
                  what + " wants a name without \"/\" and control characters, not " +
                      inQuotes(name) + ".");
}

} // namespace korvane
