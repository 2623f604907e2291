#include "Manager/Operations/Inspection.h"

#include "Ambrel/Platform/Text.h"

namespace korvane {

Inspection inspect(const ambrel::AppBundle& app, UseProfile use, const ambrel::UserPlaces& user,
                   const ambrel::Environment& environment) {
    auto engine = ambrel::findEngine(app.url, app.bundleId);
    // The identifier is compared in small letters.
    if (engine.proof == ambrel::text::lowercased(app.bundleId)) engine.proof = app.bundleId;
    return {app, engine, planStart(app, std::string(desktopIdPlaceholder), use, user, environment)};
}

} // namespace korvane
