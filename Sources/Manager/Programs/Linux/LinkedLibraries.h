#pragma once

#include "Ambrel/Base/Path.h"

#include <set>
#include <string>

namespace korvane {

/// The shared libraries, by the names under which programs ask for them (DT_NEEDED), that `program`
/// links directly or through others. Empty for what is no ELF file. Libraries that cannot be found
/// are named, but not looked into.
std::set<std::string> linkedLibraries(const ambrel::Path& program);

/// Whether `program` itself, without its libraries, calls the function `name` of a shared library.
/// False for what is no ELF file.
bool importsFunction(const ambrel::Path& program, const std::string& name);

} // namespace korvane
