#pragma once

#include "Ambrel/Base/Path.h"

namespace ambrel {

/// The key of an application's Info.plist that names the installed program that it was made of.
inline constexpr const char* adoptedProgramKey = "KorvaneProgram";

/// The program that has the session bus start another by its name: "gapplication launch ID FILE…".
inline constexpr const char* busStarter = "gapplication";

/// Whether the application at `appURL` is one that the session bus starts. False for one that
/// cannot be read.
bool isStartedByBus(const Path& appURL);

} // namespace ambrel
