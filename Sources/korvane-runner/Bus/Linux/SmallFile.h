#pragma once

#include "Ambrel/Base/Path.h"

#include <optional>
#include <string>

namespace korvane::runner::bus {

/// How long a file may be that tells of a program. The bus reads no longer one either.
inline constexpr std::size_t longestSmallFile = 1024 * 1024;

/// What such a file says. Absent where there is none, and where something else stands in its place:
/// whoever can write into a folder that is read here must be able to hold nobody up. Never waits.
std::optional<std::string> tryReadSmallFile(const ambrel::Path& file);

} // namespace korvane::runner::bus
