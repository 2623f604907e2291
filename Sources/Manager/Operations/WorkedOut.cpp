#include "Manager/Operations/WorkedOut.h"

#include "Ambrel/Base/Utf8.h"
#include "Ambrel/Instance/DesktopId.h"
#include "Manager/Base/Refusal.h"
#include "Manager/Rules/InfoPlistKeys.h"

#include <algorithm>

namespace korvane {

using ambrel::InstanceConfig;
using ambrel::StringMap;

namespace {

std::optional<StartPlan> tryPlanStart(const ambrel::AppBundle& app, const std::string& desktopId,
                                      const ambrel::UserPlaces& user,
                                      const ambrel::Environment& environment) {
    try {
        return planStart(app, desktopId, UseProfile::yes, user, environment);
    } catch (const Refusal&) {
        return std::nullopt; // the profile is told of where it is asked for
    }
}

std::optional<std::string> valueIn(const StringMap& map, const std::string& key) {
    const auto found = map.find(key);
    return found == map.end() ? std::nullopt : std::optional(found->second);
}

/// `from` without as many of each text as `taken` has.
std::vector<std::string> without(const std::vector<std::string>& taken,
                                 std::vector<std::string> from) {
    for (const auto& text : taken) {
        const auto found = std::ranges::find(from, text);
        if (found != from.end()) from.erase(found);
    }
    return from;
}

} // namespace

WorkedOut WorkedOut::of(const InstanceConfig& config, const ambrel::Path& otherwise,
                        const ambrel::UserPlaces& user, const ambrel::Environment& environment) {
    WorkedOut worked;
    if (config.kind != ambrel::ShortcutKind::app) return worked;
    auto app = ambrel::AppBundle::read(config.targetAppURL());
    if (!app && !otherwise.empty()) app = ambrel::AppBundle::read(otherwise);
    if (!app) return worked;
    const auto id = ambrel::desktopId(config.bundleId);
    worked.desktopId = id;
    auto with = tryPlanStart(*app, id, user, environment);
    worked.plan = planStart(*app, id, UseProfile::no, user, environment);
    worked.use = UseProfile::no;
    if (!with) return worked;
    const WorkedOut full{std::move(*with), UseProfile::yes, id};
    // Without arguments of the engine's it is the missing name that tells of no profile.
    const bool isNameless =
        full.plan.processName && !config.infoPlistOverrides.contains(ambrel::processNameKey);
    const bool isTold = isNameless || !worked.plan.arguments.empty();
    const bool isWithout = isTold && worked.isIn(config.extraArgs);
    return isWithout && !full.isIn(config.extraArgs) ? worked : full;
}

ambrel::Strategy WorkedOut::strategy() const {
    return plan.profile ? plan.profile->profile.strategy : ambrel::Strategy::homeOverride;
}

bool WorkedOut::isIn(const std::vector<std::string>& arguments) const {
    auto next = plan.arguments.begin();
    for (const auto& argument : arguments) {
        if (next != plan.arguments.end() && argument == *next) ++next;
    }
    return next == plan.arguments.end();
}

std::vector<std::string> WorkedOut::missingIn(const std::vector<std::string>& arguments) const {
    return without(arguments, plan.arguments);
}

std::vector<std::string> WorkedOut::ownArguments(const std::vector<std::string>& arguments) const {
    return without(formerArguments(arguments), without(plan.arguments, arguments));
}

/// An earlier version gave all of them or none.
std::vector<std::string>
WorkedOut::formerArguments(const std::vector<std::string>& arguments) const {
    if (!plan.profile) return {};
    const auto& former = plan.profile->former.arguments;
    const auto rest = without(plan.arguments, arguments);
    return without(rest, former).empty() ? former : std::vector<std::string>();
}

std::vector<std::string> WorkedOut::formerVariables(const InstanceConfig& config) const {
    std::vector<std::string> names;
    if (!plan.profile) return names;
    for (const auto& [name, value] : plan.profile->former.environment) {
        const bool isWorked = valueIn(plan.environment, name) == value;
        if (!isWorked && valueIn(config.environment, name) == value) names.push_back(name);
    }
    return names;
}

StringMap WorkedOut::ownVariables(const InstanceConfig& config) const {
    auto own = config.environment;
    for (const auto& variable : formerVariables(config)) own.erase(variable);
    const auto name = valueIn(config.infoPlistOverrides, ambrel::processNameKey);
    std::erase_if(own, [&](const auto& entry) {
        const bool isName =
            name == entry.second &&
            std::ranges::find(plan.nameVariables, entry.first) != plan.nameVariables.end();
        const bool wasName = !desktopId.empty() && entry.second == desktopId;
        return isName || wasName || valueIn(plan.environment, entry.first) == entry.second;
    });
    return own;
}

WorkedOut::BusChoices WorkedOut::takeBus(StringMap& overrides) const {
    const auto take = [&](const char* key, bool worked) {
        const auto choice = busChoice(overrides, key);
        overrides.erase(key);
        return choice == worked ? std::nullopt : choice;
    };
    const BusChoices choices{take(ambrel::sharedBusKey, plan.bus.isShared),
                             take(ambrel::hidesSecretsKey, plan.bus.hidesSecrets)};
    if (overridesFor(plan.bus).contains(ambrel::busNamesKey)) overrides.erase(ambrel::busNamesKey);
    return choices;
}

std::optional<std::string> WorkedOut::takeNames(StringMap& overrides) const {
    const auto name = valueIn(overrides, ambrel::processNameKey);
    overrides.erase(ambrel::processNameKey);
    overrides.erase(windowClassKey);
    return name == plan.processName || name == desktopId ? std::nullopt : name;
}

StartPlan requireStart(const InstanceConfig& config, const ambrel::UserPlaces& user,
                       const ambrel::Environment& environment) {
    const auto app = ambrel::AppBundle::read(config.targetAppURL());
    if (!app) {
        throw Refusal(Refusal::Kind::unreadableApplication, config.targetAppURL(),
                      "Not a readable .app: " + ambrel::utf8::oneLine(config.targetAppURL()) +
                          ". What keeps the instance apart cannot be worked out.");
    }
    auto plan =
        planStart(*app, ambrel::desktopId(config.bundleId), UseProfile::yes, user, environment);
    if (const auto name = valueIn(config.infoPlistOverrides, ambrel::processNameKey)) {
        for (const auto& variable : plan.nameVariables) plan.environment[variable] = *name;
    }
    return plan;
}

} // namespace korvane
