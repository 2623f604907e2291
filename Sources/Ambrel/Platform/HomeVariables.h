#pragma once

#include "Ambrel/Platform/ProcessEnvironment.h"

#include <vector>

namespace ambrel {

/// The variables that make up "the home folder" of a program of this system: HOME,
/// CFFIXED_USER_HOME and those that redirectHomeVariables() always sets.
std::vector<std::string> homeVariableNames();

/// What else than HOME makes up "the home folder" for programs of this system: sets those
/// variables of `environment` (the inherited one) to places below `home` and makes the folders
/// that have to exist. Nothing on macOS. On Linux the four XDG base directories (XDG Base
/// Directory Specification), and XAUTHORITY where it is unset and the user has an authority file,
/// because X programs look for it below HOME. Failures are swallowed.
void redirectHomeVariables(Environment& environment, const Path& home,
                           const UserPlaces& user) noexcept;

} // namespace ambrel
