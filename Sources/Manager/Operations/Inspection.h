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
    StartPlan start;              ///< with `desktopIdPlaceholder` for an instance's desktop id
};

/// Finds out how instances of `app` would be started. Throws Refusal unusableProfile.
Inspection inspect(const ambrel::AppBundle& app, UseProfile use, const ambrel::UserPlaces& user,
                   const ambrel::Environment& environment);

} // namespace korvane
