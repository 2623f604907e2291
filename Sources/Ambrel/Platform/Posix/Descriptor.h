#pragma once

#include "Ambrel/Base/Path.h"

#include <string>
#include <string_view>

namespace ambrel {

/// Reads from `fd` to the end. Throws FileError naming `action` and `path`, also when there is more
/// than any file of this system holds.
std::string readAll(int fd, const std::string& action, const Path& path);

/// Writes all of `bytes` to `fd`. Throws FileError naming `action` and `path`.
void writeAll(int fd, std::string_view bytes, const std::string& action, const Path& path);

/// Copies what `from` still holds to `to`. Throws FileError naming the path of the side that
/// failed.
void copyBytes(int from, const Path& source, int to, const Path& destination);

/// Gives the new file or folder `fd` exactly `mode`, where the mask took something from it. Throws
/// FileError.
void ensureMode(int fd, unsigned mode, const Path& path);

} // namespace ambrel
