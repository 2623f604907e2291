#pragma once

#include "Ambrel/Platform/ChildProcess.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace ambrel {

/// Starts the program at `executable` (absolute) with `arguments` behind its name, in a session of
/// its own, with the standard streams on /dev/null (standard error on `standardError` where that is
/// not null), with `environment` (absent: this process's) and this process's working directory.
/// It lives on when this process or its terminal ends, and when the returned object goes, which is
/// for watching it alone. Throws ChildProcessError when it cannot be started.
ChildProcess launchDetached(const Path& executable, std::vector<std::string> arguments = {},
                            const std::shared_ptr<const OwnedFd>& standardError = {},
                            std::optional<Environment> environment = {});

} // namespace ambrel
