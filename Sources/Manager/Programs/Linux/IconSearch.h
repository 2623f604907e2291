#pragma once

#include "Ambrel/Base/Path.h"
#include "Ambrel/Platform/ProcessEnvironment.h"

#include <optional>
#include <string>

namespace korvane {

/// The picture for the value of an entry's Icon: the file itself, or what is found by that name
/// (Icon Theme Specification) in the user's theme, in those that it inherits, in hicolor and the
/// pixmaps together, or in any other theme; of several there a large PNG, else an SVG, else the
/// largest PNG, else an XPM. One in a single colour comes last. Absent when there is none. Whether
/// it can be read is not looked at.
std::optional<ambrel::Path> findIcon(const std::string& icon, const ambrel::UserPlaces& user,
                                     const ambrel::Environment& environment);

} // namespace korvane
