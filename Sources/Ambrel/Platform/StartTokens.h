#pragma once

#include "Ambrel/Platform/ProcessEnvironment.h"

namespace ambrel {

/// Takes out of `environment` what a desktop gave one start of a program, to know by it whose
/// windows come: another program that got it would pass for that start. On Linux
/// DESKTOP_STARTUP_ID (Startup Notification Protocol) and XDG_ACTIVATION_TOKEN (xdg-activation);
/// nothing on macOS.
void eraseStartTokens(Environment& environment);

} // namespace ambrel
