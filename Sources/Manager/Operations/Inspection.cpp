#include "Manager/Operations/Inspection.h"

#include "Ambrel/Platform/Text.h"
#include "Manager/Operations/CreationPlan.h"

namespace korvane {

Inspection inspect(const ambrel::AppBundle& app, UseProfile use, const ambrel::UserPlaces& user,
                   const ambrel::Environment& environment) {
    auto engine = ambrel::findEngine(app.url, app.bundleId);
    // The identifier is compared in small letters.
    if (engine.proof == ambrel::text::lowercased(app.bundleId)) engine.proof = app.bundleId;
    CreationPlan plan;
    plan.request.kind = ambrel::ShortcutKind::app;
    plan.request.targetApp = app.url;
    plan.request.useProfile = use;
    plan.target = app;
    planStartFor(plan, std::string(desktopIdPlaceholder), user, environment);
    Inspection found{.app = app,
                     .engine = std::move(engine),
                     .strategy = plan.wrapper.strategy,
                     .arguments = plan.wrapper.extraArgs.value_or(std::vector<std::string>()),
                     .environment = plan.wrapper.environment,
                     .infoPlistOverrides = plan.wrapper.infoPlistOverrides,
                     .bus = busStanding(plan.wrapper.infoPlistOverrides, plan.wrapper.environment,
                                        plan.start->bus),
                     .profile = plan.start->profile};
    return found;
}

} // namespace korvane
