#include "Ambrel/Launch/LaunchError.h"

#include "Ambrel/Base/Utf8.h"

namespace ambrel {

LaunchError::LaunchError(Kind errorKind, const std::string& text, const std::string& about)
    : std::runtime_error(utf8::oneLine(text)), kind(errorKind), subject(about) {}

LaunchError LaunchError::badBundle(const Path& app) {
    return {Kind::badBundle, "Not a readable .app bundle: " + app, app};
}

LaunchError LaunchError::unsupported(const std::string& reason) {
    return {Kind::unsupported, "App not clonable: " + reason, reason};
}

} // namespace ambrel
