#pragma once

#include "Ambrel/Platform/UserPlaces.h"

#include <map>
#include <string>

namespace ambrel {

using Environment = std::map<std::string, std::string>;

/// A copy of this process's environment, to be made once, in main, and handed down. Of a name that
/// stands twice the first value counts.
Environment processEnvironment();

/// Sets `variables` in this process's own environment and leaves all others alone. For a program
/// that goes on in another home, in main, before any thread starts: the libraries that it loads
/// afterwards read the environment whenever they like. A name that the system refuses (the empty
/// one, one with "=" in it) is passed over.
void setProcessVariables(const Environment& variables) noexcept;

} // namespace ambrel
