#pragma once

#include "Ambrel/Base/Path.h"

#include <stdexcept>
#include <string>

namespace ambrel {

/// Why an instance was not started.
struct LaunchError : std::runtime_error {
    enum class Kind { badBundle, unsupported };
    static LaunchError badBundle(const Path& app); ///< "Not a readable .app bundle: " + path
    static LaunchError unsupported(const std::string& reason); ///< "App not clonable: " + reason
    std::string description() const { return what(); }
    Kind kind;
    std::string subject; ///< the path or reason alone

private:
    LaunchError(Kind kind, const std::string& text, const std::string& subject);
};

} // namespace ambrel
