#pragma once

#include "Ambrel/Base/Path.h"

#include <set>
#include <string>

namespace korvane {

/// The shared libraries, by the names under which programs ask for them (DT_NEEDED), that `program`
/// links directly or through others. Empty for what is no ELF file. Libraries that cannot be found
/// are named, but not looked into.
std::set<std::string> linkedLibraries(const ambrel::Path& program);

/// Whether `program` itself, without its libraries, calls one of the functions `names` of shared
/// libraries. False for what is no ELF file.
bool importsAny(const ambrel::Path& program, const std::set<std::string>& names);

/// Whether programs like this one find the shared library `name` where the loader looks by itself.
/// What is there but no library, or one for other machines, does not count.
bool isLibraryInstalled(const std::string& name);

} // namespace korvane
