#pragma once

#include "Ambrel/Base/Path.h"

#include <stdexcept>

namespace ambrel {

/// A failed file operation. The description is "Cannot ACTION PATH: REASON", in one line.
struct FileError : std::runtime_error {
    /// `action` is what was tried ("read", "create the folder"), `code` the system's error number.
    FileError(const std::string& action, const Path& path, int code);

    /// The same failure, told of another path: of the one that the user knows, where work was done
    /// aside.
    FileError at(const Path& other) const { return {action, other, code}; }
    std::string description() const { return what(); }

    std::string action;
    Path path;
    int code;
};

/// Throws FileError with the calling thread's current error number.
[[noreturn]] void throwFileError(const std::string& action, const Path& path);

/// The system's text for an error number, independent of the user's language.
std::string errorReason(int code);

} // namespace ambrel
