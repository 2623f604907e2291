#pragma once

#include "Ambrel/Graphics/Image.h"

namespace korvane::runner {

/// A window with a title bar, for an instance of which there is no picture. As a template image it
/// is only lines, for its alpha must show what it is. `side` is at least 16.
ambrel::Image genericIcon(std::uint32_t side, bool isTemplate);

} // namespace korvane::runner
