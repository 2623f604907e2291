#pragma once

#include "Ambrel/Base/Path.h"

namespace ambrel {

/// The current user's home folder: CFFIXED_USER_HOME when set and not empty, else the account's
/// home in the user database, else HOME; empty when none of them tells.
Path userHome();

/// The folders below which the user's programs keep settings and data, existing or not; empty when
/// there is no home. On Linux XDG_CONFIG_HOME and XDG_DATA_HOME where they are absolute, else their
/// defaults below userHome() (XDG Base Directory Specification); with CFFIXED_USER_HOME set the
/// defaults always, because the variables belong to another home then. On macOS both are
/// ~/Library/Application Support.
Path userConfigFolder();
Path userDataFolder();

/// `path` with a leading "~" or "~name" replaced by that user's home folder. An unknown name, and
/// anything else, leaves the path as it is; nothing else is normalised.
Path expandingTilde(const Path& path);

} // namespace ambrel
