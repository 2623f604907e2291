#include "Manager/Programs/WebEngine.h"

#include "Manager/Programs/Linux/LinkedLibraries.h"

namespace korvane {

/// The package brings along the engine's own programs, and the one that locks them in.
std::optional<std::string> findMissingWebPackage() {
    if (isLibraryInstalled("libwebkitgtk-6.0.so.4")) return std::nullopt;
    return "libwebkitgtk-6.0-4";
}

} // namespace korvane
