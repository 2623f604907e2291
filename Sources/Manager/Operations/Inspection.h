#pragma once

#include "Ambrel/Application/AppBundle.h"
#include "Ambrel/Application/AppEngine.h"
#include "Ambrel/Platform/ProcessEnvironment.h"
#include "Ambrel/Platform/UserPlaces.h"
#include "Manager/Programs/StartPlan.h"

namespace korvane {

/// What is known of an application.
struct Inspection {
    ambrel::AppBundle app;
    ambrel::EngineFinding engine; ///< an identifier as its proof is written as the bundle has it
    // What creation stores, with `desktopIdPlaceholder` for the instance's desktop id.
    ambrel::Strategy strategy = ambrel::Strategy::homeOverride;
    std::vector<std::string> arguments;
    ambrel::StringMap environment;
    ambrel::StringMap
        infoPlistOverrides; ///< the process name and the windows' name, where they count
    BusStanding bus;        ///< of that instance
    std::optional<ProgramProfile> profile;
};

/// Finds out how an instance of `app` would be stored that nothing else is asked of. Throws Refusal
/// unusableProfile.
Inspection inspect(const ambrel::AppBundle& app, UseProfile use, const ambrel::UserPlaces& user,
                   const ambrel::Environment& environment);

} // namespace korvane
