#pragma once

#include <stdexcept>
#include <string>

namespace ambrel {

/// A library of the system that is needed now but is not installed, or not usable. The description
/// names it and the loader's reason.
struct LibraryError : std::runtime_error {
    LibraryError(const std::string& library, const std::string& reason)
        : std::runtime_error("Cannot load the library " + library + ": " + reason) {}
    std::string description() const { return what(); }
};

} // namespace ambrel
