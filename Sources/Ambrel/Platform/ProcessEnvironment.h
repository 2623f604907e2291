#pragma once

#include "Ambrel/Platform/UserPlaces.h"

#include <map>
#include <string>

namespace ambrel {

using Environment = std::map<std::string, std::string>;

/// A copy of this process's environment, to be made once, in main, and handed down. Of a name that
/// stands twice the first value counts.
Environment processEnvironment();

/// What else than HOME makes up "the home folder" for programs of this system: sets those
/// variables of `environment` (the inherited one) to places below `home` and makes the folders
/// that have to exist. Nothing on macOS. On Linux the four XDG base directories (XDG Base
/// Directory Specification), and XAUTHORITY where it is unset and the user has an authority file,
/// because X programs look for it below HOME. Failures are swallowed.
void redirectHomeVariables(Environment& environment, const Path& home,
                           const UserPlaces& user) noexcept;

} // namespace ambrel
