#pragma once

#include "Ambrel/Base/Path.h"

#include <optional>
#include <string>

namespace ambrel {

/// The icon file that the Info.plist of the bundle at `app` declares as CFBundleIconFile, with
/// ".icns" added where the name lacks it, if that file exists. No other key and no default name is
/// tried. Throws LibraryError as AppBundle::read does.
std::optional<Path> declaredIcon(const Path& app);

} // namespace ambrel
