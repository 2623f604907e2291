#pragma once

#include "Ambrel/Base/Path.h"

namespace korvane {

/// Whether the kernel starts `program` by an interpreter, under that one's name. What cannot be
/// read counts as a script: nothing is known of it, so nothing is changed.
bool isScript(const ambrel::Path& program);

/// Whether `file` is a launcher of ours that starts its program by the name that the variable
/// processNameVariable holds.
bool isNamingLauncher(const ambrel::Path& file);

inline constexpr const char* processNameVariable = "KORVANE_PROCESS_NAME";

/// Whether `program` runs in a Java machine: it is one, or an archive for one (.jar), or links one,
/// has one of its own beside it, or is a script that looks for one.
bool isJavaProgram(const ambrel::Path& program);

} // namespace korvane
