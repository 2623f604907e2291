#pragma once

#include "Ambrel/Platform/FileError.h"

#include <cerrno>

namespace ambrel {

/// Whether `path` can be handed to the system: a NUL byte would cut it short and name another item.
inline bool isUsablePath(const Path& path) { return path.find('\0') == Path::npos; }

/// The bytes of `path` for a system call. Throws FileError naming `action` when it is not usable.
inline const char* pathBytes(const std::string& action, const Path& path) {
    if (!isUsablePath(path)) throw FileError(action, path, EINVAL);
    return path.c_str();
}

} // namespace ambrel
