#pragma once

#include "Ambrel/Base/Path.h"

#include <optional>
#include <string>
#include <string_view>

namespace korvane::runner {

/// The PNG in an Apple icon file that suits a banner and a window best: the smallest of at least
/// 128 pixels a side, else the largest. As it stands in the file, not decoded; absent where there
/// is none.
std::optional<std::string> bannerPicture(std::string_view icns);

/// Has `png` hold that picture of the icon file `icns`, and returns `png`; empty where there is no
/// picture, or it cannot be written. Never fails: banners and windows do without.
ambrel::Path ensurePicture(const ambrel::Path& icns, const ambrel::Path& png) noexcept;

} // namespace korvane::runner
