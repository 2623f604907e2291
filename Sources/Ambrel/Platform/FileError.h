#pragma once

#include "Ambrel/Base/Path.h"

#include <stdexcept>

namespace ambrel {

/// A failed file operation. The description is "Cannot ACTION PATH: REASON", in one line.
struct FileError : std::runtime_error {
    /// `action` is what was tried ("read", "create the folder"), `code` the system's error number.
    FileError(const std::string& action, const Path& path, int code);

    std::string description() const { return what(); }

    Path path;
    int code;
};

/// Throws FileError with the calling thread's current error number.
[[noreturn]] void throwFileError(const std::string& action, const Path& path);

/// The system's text for an error number, independent of the user's language.
std::string errorReason(int code);

} // namespace ambrel
