#pragma once

#include "Ambrel/Path.h"

namespace ambrel {

/// Starts the program at `executable` (absolute) without arguments, in a session of its own, with
/// the three standard streams on /dev/null and this process's environment and working directory.
/// It lives on when this process or its terminal ends. Throws ChildProcessError when it cannot be
/// started.
void launchDetached(const Path& executable);

} // namespace ambrel
