#pragma once

#include "Ambrel/Base/Path.h"
#include "Ambrel/Platform/ProcessEnvironment.h"

#include <optional>
#include <string>

namespace korvane {

/// The file that the bare name `program` stands for by PATH, absolute; absent when there is none.
std::optional<ambrel::Path> findProgram(const std::string& program,
                                        const ambrel::Environment& environment);

/// The same. Throws Refusal unknownProgram when there is none.
ambrel::Path requireProgram(const std::string& program, const ambrel::Environment& environment);

} // namespace korvane
