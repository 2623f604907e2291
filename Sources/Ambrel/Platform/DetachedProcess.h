#pragma once

#include "Ambrel/Base/Path.h"
#include "Ambrel/Platform/OwnedFd.h"

#include <memory>
#include <string>
#include <vector>

namespace ambrel {

/// Starts the program at `executable` (absolute) in a session of its own, with the standard streams
/// on /dev/null (standard error on `standardError` where that is not null) and this process's
/// environment and working directory. It lives on when this process or its terminal ends. Throws
/// ChildProcessError when it cannot be started.
void launchDetached(const Path& executable,
                    const std::shared_ptr<const OwnedFd>& standardError = {},
                    const std::vector<std::string>& arguments = {});

} // namespace ambrel
