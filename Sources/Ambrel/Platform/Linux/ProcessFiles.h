#pragma once

#include <optional>
#include <string>
#include <string_view>

/// What the files of /proc tell of a process.
namespace ambrel::processFiles {

/// All that the file `name` holds, in the open folder `folder` unless it is an absolute path.
/// Nothing when the process has gone or may not be looked at, which is the ordinary case and no
/// failure.
std::string contentOf(int folder, const char* name);

/// The number that a text begins with. Absent where it begins with none.
std::optional<long> numberIn(std::string_view text);

/// The value of the variable in an environment, whose entries end in zero bytes. Absent without it.
std::optional<std::string> variableIn(std::string_view environment, std::string_view name);

} // namespace ambrel::processFiles
