#pragma once

#include "Ambrel/Path.h"

namespace ambrel {

/// The current user's home folder: CFFIXED_USER_HOME when set and not empty, else the account's
/// home in the user database, else HOME; empty when none of them tells.
Path userHome();

/// `path` with a leading "~" or "~name" replaced by that user's home folder. An unknown name, and
/// anything else, leaves the path as it is; nothing else is normalised.
Path expandingTilde(const Path& path);

} // namespace ambrel
