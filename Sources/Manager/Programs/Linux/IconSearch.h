#pragma once

#include "Ambrel/Base/Path.h"
#include "Ambrel/Platform/ProcessEnvironment.h"

#include <optional>
#include <string>

namespace korvane {

/// The picture for the value of an entry's Icon: the file itself, or what the hicolor theme and the
/// pixmaps have by that name (Icon Theme Specification): a large PNG, else an SVG, else the largest
/// PNG, else an XPM. Absent when there is none. Whether it can be read is not looked at.
std::optional<ambrel::Path> findIcon(const std::string& icon, const ambrel::UserPlaces& user,
                                     const ambrel::Environment& environment);

} // namespace korvane
