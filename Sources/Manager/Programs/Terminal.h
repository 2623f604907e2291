#pragma once

#include "Ambrel/Platform/ProcessEnvironment.h"
#include "Manager/Programs/ProgramCall.h"

#include <optional>

namespace korvane {

/// What opens a terminal window: behind `before` stand a program and its arguments. Absent where no
/// terminal is in the folders of PATH, and on systems whose terminals cannot be given a program.
std::optional<ProgramCall> findTerminal(const ambrel::Environment& environment);

} // namespace korvane
